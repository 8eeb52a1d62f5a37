#!/usr/bin/env python3
"""The import command from outside: check_command.py BIN_DIRECTORY DATA_DIRECTORY [TEST...]

Exit statuses, what goes to which stream, signals, exports and destinations that cannot be used, full disks, odd environments.
What needs another user or a file system of its own is skipped when the tests do not run as root.
"""
import base64
import hashlib
import json
import os
import pathlib
import pty
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

BINARIES, DATA = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve()
COMMAND = BINARIES / "quillet-enex-import"
UUID = re.compile(r"^[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}$")
PACKAGE_PARTS = {"TXT.rtf", "NoteText", "NoteAttributes"}
NOBODY = 65534


def note(title, body="<en-note><div>text</div></en-note>", more=""):
    return f"<note><title>{title}</title><content><![CDATA[{body}]]></content><created>20240501T091502Z</created>{more}</note>"


def with_attachment(title, size, number):
    """A note with one file of that size, unlike every other."""
    data = hashlib.sha256(str(number).encode()).digest() * (size // 32)
    body = f'<en-note>x<en-media hash="{hashlib.md5(data).hexdigest()}" type="application/zip"/></en-note>'
    return note(title, body, f"<resource><data>{base64.b64encode(data).decode()}</data><mime>application/zip</mime></resource>")


def enex(*notes):
    return '<?xml version="1.0" encoding="UTF-8"?>\n<en-export version="10.88.4">' + "".join(notes) + "</en-export>"


GOOD, FAILING, MALFORMED = enex(note("Good")), enex(note("Good"), note("Failing", "")), enex(note("Good")) + "<"


class Case(unittest.TestCase):
    def setUp(self):
        self.scratch = pathlib.Path(tempfile.mkdtemp(prefix="quillet-command-"))
        self.scratch.chmod(0o755)
        self.out = self.scratch / "out"
        self.environment = {"PATH": os.environ["PATH"], "HOME": str(self.scratch), "TZ": "UTC", "LANG": "C.UTF-8",
                            "QUILLET_DATA_DIR": str(DATA)}
        for name in os.environ:  # of the sanitizers
            if name.endswith("SAN_OPTIONS"):
                self.environment[name] = os.environ[name]

    def tearDown(self):
        shutil.rmtree(self.scratch)

    def export(self, name, text):
        path = self.scratch / name
        path.write_text(text, encoding="utf-8")
        return path

    def run_command(self, *arguments, environment=None, **more):
        return subprocess.run([COMMAND, *arguments], env=environment or self.environment, capture_output=True, text=True,
                              timeout=120, cwd=self.scratch, **more)

    def outputs(self, directory=None):
        return sorted(path.name for path in (directory or self.out).iterdir())

    def expect_whole_outputs(self, directory=None):
        """Every package is complete, and nothing of an unfinished one is left."""
        for path in (directory or self.out).iterdir():
            self.assertFalse(path.name.startswith("."), path.name)
            self.assertIsNone(UUID.match(path.name), path.name)
            if path.is_dir() and path.suffix == ".qltnote":
                self.assertLessEqual(PACKAGE_PARTS, {child.name for child in path.iterdir()}, path.name)


class ExitStatus(Case):
    def test_says_what_became_of_the_notes(self):
        rows = [((GOOD,), 0), ((FAILING,), 1), ((MALFORMED,), 2), ((GOOD, FAILING), 1), ((FAILING, MALFORMED), 2),
                ((MALFORMED, FAILING), 2), ((GOOD, GOOD), 0)]
        for number, (texts, status) in enumerate(rows):
            files = [self.export(f"{number}-{index}.enex", text) for index, text in enumerate(texts)]
            self.assertEqual(self.run_command(*files, self.out).returncode, status, texts)

    def test_is_64_for_wrong_usage(self):
        self.export("a.enex", GOOD)
        for arguments in [(), ("a.enex",), ("--nonsense", "a.enex", "out"), ("-x", "a.enex", "out"), ("--json=maybe", "a.enex", "out"), ("a.enex", ""), ("", "out"), ("a.enex", "", "out")]:
            done = self.run_command(*arguments)
            self.assertEqual(done.returncode, 64, arguments)
            self.assertTrue(done.stderr, arguments)
            self.assertEqual(done.stdout, "", arguments)
        self.assertFalse(self.out.exists())
        self.assertEqual(self.outputs(self.scratch), ["a.enex"])

    def test_is_0_for_help_and_version(self):
        for option in ("--help", "-h", "--version"):
            done = self.run_command(option)
            self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertRegex(self.run_command("--version").stdout, r"^quillet-enex-import \d+\.\d+\.\d+\n$")

    def test_is_74_when_the_result_cannot_be_printed(self):
        export = self.export("a.enex", GOOD)
        for options in ((), ("--json",)):
            with open("/dev/full", "w", encoding="utf-8") as full:
                done = subprocess.run([COMMAND, *options, export, self.out], env=self.environment, stdout=full,
                                      stderr=subprocess.PIPE, text=True, timeout=60)
            self.assertEqual(done.returncode, 74, done.stderr)
            self.assertIn("standard output", done.stderr)


class Streams(Case):
    def test_that_are_closed_lend_their_descriptors_to_no_file(self):
        export = self.export("a.enex", FAILING)
        for closed, status in [("<&-", 1), ("2>&-", 1), (">&-", 74), ("<&- >&-", 74), ("<&- >&- 2>&-", 74)]:
            done = subprocess.run(["sh", "-c", f'exec "$0" -v "$@" {closed}', COMMAND, export, self.scratch / "absent.enex", self.out],
                                  env=self.environment, capture_output=True, text=True, timeout=60)
            self.assertEqual(done.returncode, max(status, 2) if status != 74 else 74, (closed, done.stderr))
            log = (self.out / "a.log").read_text()
            self.assertRegex(log, r"^Importing .*/a\.enex[-\d]+ [:\d]+ \+0000 ENEX file created by: 10\.88\.4\n", closed)
            self.assertTrue(all(re.match(r"\d{4}-", line) for line in log.splitlines()[1:]), log)
            self.expect_whole_outputs()
            shutil.rmtree(self.out)

    def test_errors_name_the_file_once(self):
        done = self.run_command(self.export("a.enex", MALFORMED), self.out)
        self.assertEqual(done.stderr.count("a.enex"), 1, done.stderr)
        self.assertTrue(done.stderr.startswith(f"quillet-enex-import: {self.scratch}/a.enex: line 2, column "), done.stderr)

    def test_json_is_one_line_a_file_and_nothing_else(self):
        files = [self.export("a.enex", GOOD), self.export("b.enex", MALFORMED), self.export("c.enex", FAILING),
                 self.scratch / "absent.enex"]
        done = self.run_command("--json", *files, self.out)
        replies = [json.loads(line) for line in done.stdout.splitlines()]
        self.assertEqual([sorted(reply) for reply in replies],
                         [["Error Notes", "Items", "Log File"], ["Error", "Log File"], ["Error Notes", "Items", "Log File"],
                          ["Error", "Log File"]])
        self.assertEqual(replies[0]["Items"][0]["name"], "Good")
        self.assertEqual(replies[2]["Error Notes"], ["Failing"])
        self.assertEqual(sorted(replies[3]["Error"]), ["code", "domain", "localizedDescription", "userInfo"])
        self.assertEqual(replies[3]["Error"]["code"], 1001)
        self.assertIn("absent.enex: Cannot create input stream.", done.stderr)
        self.assertIn("No such file or directory", done.stderr)

    def test_quiet_prints_nothing_but_errors(self):
        done = self.run_command("-q", self.export("a.enex", FAILING), self.out)
        self.assertEqual((done.stdout, done.stderr), ("", ""))
        done = self.run_command("--quiet", self.export("b.enex", MALFORMED), self.out)
        self.assertEqual(done.stdout, "")
        self.assertIn("b.enex", done.stderr)

    def test_the_summary_counts_and_names(self):
        done = self.run_command(self.export("a.enex", enex(note("Good"), note("Fa\u009biled \u202e", ""))), self.out)
        self.assertEqual(done.stdout, f"{self.scratch}/a.enex\n  notes written: 1\n  notes failed: 1\n"
                                      f"    Fa\\u{{9b}}iled \\u{{202e}}\n  log: {self.out}/a.log\n")
        self.assertEqual(done.stderr, "")

    def test_verbose_sends_the_system_log_to_stderr(self):
        done = self.run_command("-v", self.export("a.enex", GOOD), self.out)
        self.assertEqual(done.stderr, "ENEX file created by: 10.88.4\nConverting \"Good\"\nFinish parsing ENEX file.\n")

    def test_debug_logs_every_event(self):
        self.run_command("--debug", self.export("a.enex", GOOD), self.out)
        self.assertIn("parser:didStartElement: note\n", (self.out / "a.log").read_text())

    def new_terminal(self):
        try:
            return pty.openpty()
        except OSError as error:
            self.skipTest(f"no terminals here: {error}")  # a bare chroot has no /dev/pts

    def test_progress_needs_a_terminal(self):
        export = self.export("a.enex", enex(*(note(f"n{index}") for index in range(200))))
        for options, shown in [((), True), (("--quiet",), False)]:
            terminal, side = self.new_terminal()
            process = subprocess.Popen([COMMAND, *options, export, self.out], env=self.environment, stderr=side,
                                       stdout=subprocess.DEVNULL)
            os.close(side)
            text = b""
            while True:
                try:
                    piece = os.read(terminal, 4096)
                except OSError:  # the other side has closed
                    break
                if not piece:
                    break
                text += piece
            os.close(terminal)
            self.assertEqual(process.wait(60), 0)
            if shown:
                self.assertRegex(text.decode(), r"a\.enex \[#*\.*\] \d+\.\d/\d+\.\d MB, \d+ notes")
                self.assertTrue(text.endswith(b"\r\x1b[K"), text[-80:])
            else:
                self.assertEqual(text, b"")

    def test_two_files_of_one_base_name_are_warned_of(self):
        (self.scratch / "d").mkdir()
        done = self.run_command(self.export("a.enex", GOOD), self.export("d/a.enex", GOOD), self.out)
        self.assertEqual(done.returncode, 0)
        self.assertIn("d/a.enex: another FILE has the same base name; its log will be overwritten", done.stderr)
        self.assertEqual(self.outputs(), ["Good 1.qltnote", "Good.qltnote", "a.log"])


class Signals(Case):
    def start(self, *options, notes=4000, **more):
        export = self.export("big.enex", enex(*(with_attachment(f"n{index}", 3200, index) for index in range(notes))))
        process = subprocess.Popen([COMMAND, *options, export, self.out], env=self.environment, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE, text=True, **more)
        deadline = time.monotonic() + 60
        while not self.out.exists() or len(list(self.out.glob("*.qltnote"))) < 5:
            self.assertLess(time.monotonic(), deadline)
            time.sleep(0.005)
        return process

    def test_cancel_between_two_notes(self):
        for number, status in [(signal.SIGINT, 130), (signal.SIGTERM, 143), (signal.SIGHUP, 129)]:
            process = self.start("--json")
            process.send_signal(number)
            stdout, _ = process.communicate(timeout=60)
            self.assertEqual(process.returncode, status)
            self.assertEqual(json.loads(stdout)["Error"]["code"], 512)
            self.expect_whole_outputs()
            self.assertLess(len(self.outputs()), 4000)
            log = (self.out / "big.log").read_text()
            self.assertRegex(log, r"Finish parsing ENEX file with error: .* \(NSXMLParserErrorDomain 512\)\n$")
            self.assertEqual(log.count("Converting"), len(self.outputs()) - 1)
            shutil.rmtree(self.out)

    def test_that_were_ignored_stay_ignored(self):
        ignored = (signal.SIGINT, signal.SIGHUP)
        process = self.start(notes=400, preexec_fn=lambda: [signal.signal(number, signal.SIG_IGN) for number in ignored])
        for number in ignored:
            process.send_signal(number)
        process.communicate(timeout=120)
        self.assertEqual(process.returncode, 0)
        self.assertEqual(len(self.outputs()), 401)

    def test_the_second_one_ends_the_program_at_once(self):
        process = self.start()
        process.send_signal(signal.SIGSTOP)  # both are waiting when it goes on
        process.send_signal(signal.SIGINT)
        process.send_signal(signal.SIGTERM)
        process.send_signal(signal.SIGCONT)
        stdout, _ = process.communicate(timeout=60)
        self.assertIn(process.returncode, (130, 143))
        self.assertEqual(stdout, "")  # no summary any more

    def test_the_remains_of_a_killed_import_are_cleared_away(self):
        process = self.start()
        process.kill()
        process.communicate()
        for path in self.out.iterdir():  # what has its name is whole, even now
            if path.suffix == ".qltnote" and not path.name.startswith("."):
                self.assertLessEqual(PACKAGE_PARTS, {child.name for child in path.iterdir()})
        self.assertEqual(self.run_command(self.export("a.enex", GOOD), self.out).returncode, 0)
        self.expect_whole_outputs()


class Exports(Case):
    def expect_error(self, path, code, **more):
        done = self.run_command("--json", path, self.out, **more)
        self.assertEqual(done.returncode, 2, done.stderr)
        self.assertEqual(json.loads(done.stdout)["Error"]["code"], code)
        self.assertIn(str(path), done.stderr)
        return done

    def test_that_are_no_files_are_errors(self):
        os.mkfifo(self.scratch / "fifo.enex")
        (self.scratch / "directory.enex").mkdir()
        os.symlink("loop.enex", self.scratch / "loop.enex")
        for name in ("absent.enex", "fifo.enex", "directory.enex", "loop.enex", "/dev/null", "x" * 300, "afile/a.enex"):
            self.export("afile", "")
            self.expect_error(self.scratch / name, 1001)

    def test_that_come_from_a_pipe_are_errors_of_their_own(self):
        done = self.run_command("--json", "/dev/stdin", self.export("a.enex", GOOD), self.out, input=GOOD)
        replies = [json.loads(line) for line in done.stdout.splitlines()]
        self.assertEqual(done.returncode, 2, done.stderr)
        self.assertEqual([sorted(reply) for reply in replies], [["Error", "Log File"], ["Error Notes", "Items", "Log File"]])
        self.assertIn("/dev/stdin: not a regular file", done.stderr)

    def test_may_be_redirected_from_a_file(self):
        with open(self.export("a.enex", GOOD), encoding="utf-8") as export:
            self.assertEqual(self.run_command("/dev/stdin", self.out, stdin=export).returncode, 0)
        self.assertEqual(self.outputs(), ["Good.qltnote", "stdin.log"])

    @unittest.skipIf(os.geteuid() != 0, "needs root, to become somebody else")
    def test_that_may_not_be_read_are_errors(self):
        export = self.export("a.enex", GOOD)
        export.chmod(0)
        self.out.mkdir()
        self.out.chmod(0o777)
        done = self.expect_error(export, 1001, user=NOBODY, group=NOBODY, extra_groups=[])
        self.assertIn("Permission denied", done.stderr)

    def test_that_are_malformed_keep_what_came_before(self):
        rows = [("", 5), ("\n", 5), ("no markup", 4), (MALFORMED, None), ("\x00\x01", None),
                (GOOD.replace("</en-export>", ""), None), (GOOD[:60], None)]
        for number, (text, code) in enumerate(rows):
            path = self.export(f"{number}.enex", text)
            done = self.run_command("--json", path, self.out)
            self.assertEqual(done.returncode, 2, repr(text))
            error = json.loads(done.stdout)["Error"]
            self.assertEqual(error["domain"], "NSXMLParserErrorDomain", repr(text))
            if code:
                self.assertEqual(error["code"], code, repr(text))
            self.assertIn(str(path), done.stderr)
            self.assertRegex((self.out / f"{number}.log").read_text(), "Finish parsing ENEX file with error: ")
        self.expect_error(self.export("inside-a-note.enex", GOOD[:-20]), 1006)
        self.expect_whole_outputs()

    def test_that_are_cut_off_anywhere_leave_whole_notes_only(self):
        text = enex(note("First"), with_attachment("Second", 320, 1), note("Third"))
        for length in range(0, len(text), 61):
            done = self.run_command("--json", self.export("cut.enex", text[:length]), self.out)
            self.assertEqual(done.returncode, 2, length)
            self.expect_whole_outputs()
            shutil.rmtree(self.out)

    def test_may_be_utf16_or_have_a_mark(self):
        for name, encoding in [("mark.enex", "utf-8-sig"), ("wide.enex", "utf-16")]:
            text = enex(note("Ünïcode 京")).replace('encoding="UTF-8"', 'encoding="UTF-16"' if encoding == "utf-16" else 'encoding="UTF-8"')
            (self.scratch / name).write_bytes(text.encode(encoding))
            self.assertEqual(self.run_command(self.scratch / name, self.out).returncode, 0)
        self.assertEqual([name for name in self.outputs() if name.endswith("note")], ["Ünïcode 京 1.qltnote", "Ünïcode 京.qltnote"])

    def test_may_lie_in_their_destination(self):
        self.out.mkdir()
        export = self.out / "a.enex"
        export.write_text(GOOD)
        self.assertEqual(self.run_command(export, self.out).returncode, 0)
        self.assertEqual(self.outputs(), ["Good.qltnote", "a.enex", "a.log"])
        self.assertEqual(export.read_text(), GOOD)

    def test_are_never_overwritten_by_their_log(self):
        self.out.mkdir()
        export = self.out / "export.log"
        export.write_text(GOOD)
        os.link(export, self.out / "other.log")
        done = self.run_command(export, self.out)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(export.read_text(), GOOD)
        self.assertIn("Good.qltnote", self.outputs())

    def test_of_any_name_are_read(self):
        for name in ("-x.enex", "[a,b].enex", "a b%20.enex", "{}", "ü\n.enex", "'"):
            self.export(name, GOOD)
            done = self.run_command("--", name, "[out]")
            self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("Good.qltnote", self.outputs(self.scratch / "[out]"))


class Destinations(Case):
    def expect_failed(self, directory, **more):
        done = self.run_command("--json", self.export("a.enex", FAILING), directory, **more)
        self.assertEqual(done.returncode, 1, done.stderr)
        reply = json.loads(done.stdout)
        self.assertEqual(reply["Items"], [])
        self.assertEqual(reply["Error Notes"], ["Good", "Failing"])
        return done

    def test_are_made_with_their_parents(self):
        self.assertEqual(self.run_command(self.export("a.enex", GOOD), self.out / "a" / "b").returncode, 0)
        self.assertEqual(self.outputs(self.out / "a" / "b"), ["Good.qltnote", "a.log"])

    def test_that_are_files_fail_every_note(self):
        place = self.export("place", "precious")
        for directory in (place, place / "below"):
            done = self.expect_failed(directory)
            self.assertIn(str(directory), done.stderr)
        self.assertEqual(place.read_text(), "precious")

    @unittest.skipIf(os.geteuid() != 0, "needs root, to become somebody else")
    def test_that_may_not_be_written_fail_every_note(self):
        self.out.mkdir(mode=0o755)
        done = self.expect_failed(self.out, user=NOBODY, group=NOBODY, extra_groups=[])
        self.assertEqual(self.outputs(), [])
        done = self.run_command("-v", self.scratch / "a.enex", self.out, user=NOBODY, group=NOBODY, extra_groups=[])
        self.assertRegex(done.stderr, rf"{self.out}/\S+.*Permission denied")

    def test_keep_what_others_planted(self):
        self.out.mkdir()
        victim = self.export("victim", "precious")
        for name in ("a.log", "Good.qltnote", "Good 1.qltnote"):
            os.symlink(victim, self.out / name)
        os.symlink("/nonexistent", self.out / "Good 2.qltnote")
        self.assertEqual(self.run_command(self.export("a.enex", GOOD), self.out).returncode, 0)
        self.assertTrue((self.out / "Good 3.qltnote").is_dir())
        self.assertEqual(victim.read_text(), "precious")


class FullDisks(Case):
    def setUp(self):
        super().setUp()
        self.out.mkdir()

    def mount(self, options):
        if os.geteuid() != 0:
            self.skipTest("needs root, to mount")
        if subprocess.run(["mount", "-t", "tmpfs", "-o", options, "tmpfs", self.out], capture_output=True).returncode:
            self.skipTest("mounting is not possible here")

    def tearDown(self):
        subprocess.run(["umount", "-l", self.out], capture_output=True)  # fails when nothing was mounted
        super().tearDown()

    def test_leave_whole_notes_and_fail_the_others(self):
        self.mount("size=300k")
        export = self.export("a.enex", enex(*(with_attachment(f"n{index}", 32_000, index) for index in range(12))))
        done = self.run_command("--json", "-v", export, self.out)
        reply = json.loads(done.stdout)
        self.assertEqual(done.returncode, 1)
        self.assertGreater(len(reply["Items"]), 0)
        self.assertGreater(len(reply["Error Notes"]), 0)
        self.assertEqual(len(reply["Items"]) + len(reply["Error Notes"]), 12)
        self.assertRegex(done.stderr, rf"Skipping note \(n\d+\) with error: .*{self.out}.*No space left on device")
        self.expect_whole_outputs()

    def test_that_are_full_already_fail_every_note(self):
        self.mount("size=64k")
        (self.out / "ballast").write_bytes(b"")
        with open(self.out / "ballast", "wb", buffering=0) as ballast:
            try:
                while True:
                    ballast.write(bytes(4096))
            except OSError:
                pass
        done = self.run_command("--json", self.export("a.enex", GOOD), self.out)
        self.assertEqual(done.returncode, 1, done.stderr)
        self.assertEqual(json.loads(done.stdout)["Error Notes"], ["Good"])
        self.expect_whole_outputs()

    def test_without_room_for_another_name_fail_the_notes(self):
        self.mount("size=10m,nr_inodes=30")
        done = self.run_command("--json", self.export("a.enex", enex(*(note(f"n{index}") for index in range(20)))), self.out)
        reply = json.loads(done.stdout)
        self.assertEqual(done.returncode, 1)
        self.assertEqual(len(reply["Items"]) + len(reply["Error Notes"]), 20)
        self.expect_whole_outputs()

    def test_that_are_read_only_fail_every_note(self):
        self.mount("size=1m")
        if subprocess.run(["mount", "-o", "remount,ro", self.out], capture_output=True).returncode:
            self.skipTest("remounting is not possible here")
        done = self.run_command("--json", "-v", self.export("a.enex", GOOD), self.out)
        self.assertEqual(done.returncode, 1, done.stderr)
        self.assertIn("Read-only file system", done.stderr)


class Environments(Case):
    def test_do_not_change_names_or_texts(self):
        export = self.export("a.enex", enex(note("İstanbul ışık I i ß Σ"), note("Zweite", "<en-note>1,5 <b>x</b></en-note>")))
        described = set()
        for number, changes in enumerate([{}, {"LANG": "tr_TR.UTF-8"}, {"LC_ALL": "ar_EG.UTF-8"}, {"LANG": None}, {"LANG": "xx_nonsense"},
                                          {"LANG": "de_DE@euro", "LC_ALL": ""}, {"LC_ALL": "C"}, {"LC_ALL": "POSIX"}, {"LANG": "ja_JP.eucJP"},
                                          {"LANG": "th_TH.UTF-8"}, {"LANG": "fa_IR.UTF-8"}, {"LANG": "ar_SA.UTF-8"}, {"HOME": None}, {"LANGUAGE": "de:fr"}]):
            environment = {name: value for name, value in {**self.environment, **changes}.items() if value is not None}
            out = self.out / str(number)
            done = self.run_command(export, out, environment=environment)
            self.assertEqual(done.returncode, 0, (changes, done.stderr))
            described.add(str([(path.name, (path / "TXT.rtf").read_bytes(), os.getxattr(path, "user.com.tesseral.quillet.creationDate"))
                               for path in sorted(out.glob("*.qltnote"))]))
        self.assertEqual(len(described), 1, described)

    def test_time_zones_move_the_dates(self):
        export = self.export("a.enex", GOOD)  # 2024-05-01 09:15:02 wherever the reader is
        for number, (zone, expected) in enumerate([("UTC", "09:15:02Z"), ("America/New_York", "13:15:02Z"), ("Asia/Kolkata", "03:45:02Z"),
                                                   ("Nonsense/Zone", "09:15:02Z"), (":Europe/Berlin", "07:15:02Z")]):
            out = self.out / str(number)
            self.assertEqual(self.run_command(export, out, environment={**self.environment, "TZ": zone}).returncode, 0)
            self.assertEqual(os.getxattr(out / "Good.qltnote", "user.com.tesseral.quillet.creationDate").decode(), "2024-05-01T" + expected)

    def test_without_the_page_template_every_note_fails(self):
        done = self.run_command("-v", self.export("a.enex", GOOD), self.out,
                                environment={**self.environment, "QUILLET_DATA_DIR": "/nonexistent"})
        self.assertEqual(done.returncode, 1)
        self.assertIn("/nonexistent/Template.html", done.stderr)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]])
