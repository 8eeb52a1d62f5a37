#!/usr/bin/env python3
"""quillet-note and quillet-dump as programs: check_note.py BIN_DIRECTORY DATA_DIRECTORY

Imports examples/notebook.enex, holds every package against `quillet-note check`, exports each to every format, and looks
at exit statuses and messages.
"""
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

BINARIES, DATA = (pathlib.Path(argument).resolve() for argument in sys.argv[1:3])
NOTEBOOK = pathlib.Path(__file__).resolve().parents[2] / "examples/notebook.enex"


def run(program, *arguments, home, cwd=None):
    environment = {"PATH": os.environ["PATH"], "HOME": home, "TZ": "UTC", "LANG": "C.UTF-8", "QUILLET_DATA_DIR": str(DATA)}
    return subprocess.run([BINARIES / program, *arguments], env=environment, cwd=cwd, capture_output=True, timeout=120)


class Note(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.scratch = tempfile.TemporaryDirectory()
        cls.out = pathlib.Path(cls.scratch.name) / "out"
        run("quillet-enex-import", "-q", NOTEBOOK, cls.out, home=cls.scratch.name)
        cls.notes = sorted(cls.out.glob("*.qltnote"))

    @classmethod
    def tearDownClass(cls):
        cls.scratch.cleanup()

    def note(self, *arguments, cwd=None):
        return run("quillet-note", *arguments, home=self.scratch.name, cwd=cwd)

    def copy(self, name):
        copied = pathlib.Path(self.scratch.name) / name
        shutil.copytree(self.notes[0], copied)
        self.addCleanup(shutil.rmtree, copied)
        return copied

    def test_every_package_of_an_import_is_sound(self):
        self.assertGreater(len(self.notes), 5)
        done = self.note("check", *self.notes)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, b"", b""))

    def test_check_names_what_is_wrong(self):
        damaged = self.copy("damaged.qltnote")
        (damaged / "NoteText").unlink()
        (damaged / "stray").write_text("x")
        done = self.note("check", self.notes[0], damaged, self.out / "none.qltnote")
        self.assertEqual(done.returncode, 1)
        lines = done.stdout.decode().splitlines()
        self.assertEqual(lines[0], f"{damaged}: NoteText: is missing")
        self.assertIn("none.qltnote: ", lines[-1])

    def test_every_note_exports_to_every_format(self):
        starts = {"html": b"<!DOCTYPE html", "rtf": b"{\\rtf1", "markdown": b"", "text": b"", "json": b'{"text":'}
        for note in self.notes:
            for form, start in starts.items():
                done = self.note("export", "--to", form, note)
                self.assertEqual((done.returncode, done.stderr), (0, b""), (note, form))
                self.assertTrue(done.stdout.startswith(start), (note, form))
                self.assertTrue(done.stdout, (note, form))
                written = pathlib.Path(self.scratch.name) / "written"
                self.assertEqual(self.note("export", note, "--to", form, "-o", written).returncode, 0)
                if form != "markdown":  # whose links depend on the place
                    self.assertEqual(written.read_bytes(), done.stdout, (note, form))

    def test_json_covers_the_text(self):
        for note in self.notes:
            form = json.loads(self.note("export", "--to", "json", note).stdout)
            units = len(form["text"].encode("utf-16-le")) // 2
            self.assertEqual(list(form), ["text", "runs", "attachments", "noteAttributes"])
            self.assertEqual(sum(each["length"] for each in form["runs"]), units)
            self.assertTrue(form["noteAttributes"]["usesColorTypes"])
            for each in form["attachments"]:
                self.assertEqual(form["text"].encode("utf-16-le")[2 * each["location"] :][:2], b"\xfc\xff")

    def test_markdown_links_lead_to_the_files(self):
        note = self.out / "Garden plan 2024.qltnote"
        done = self.note("export", "--to", "markdown", note.name, cwd=self.out)
        self.assertIn(b"![first beds.png](Garden%20plan%202024.qltnote/first%20beds.png)\n", done.stdout)
        self.assertTrue(done.stdout.startswith(b"# Garden plan\n"))
        folder = pathlib.Path(self.scratch.name) / "elsewhere"
        folder.mkdir()
        self.note("export", "--to", "markdown", note, "-o", folder / "n.md")
        self.assertIn("](../out/Garden%20plan%202024.qltnote/first%20beds.png)", (folder / "n.md").read_text())

    def test_rtfd_is_a_directory_of_its_own(self):
        place = pathlib.Path(self.scratch.name) / "note.rtfd"
        note = self.out / "Garden plan 2024.qltnote"
        self.assertEqual(self.note("export", "--to", "rtfd", note).returncode, 64)
        self.assertEqual(self.note("export", "--to", "rtfd", note, "-o", place).returncode, 0)
        self.assertEqual(sorted(child.name for child in place.iterdir()), ["TXT.rtf", "first beds.png", "unknown.png"])
        self.assertEqual(self.note("export", "--to", "rtfd", note, "-o", place).returncode, 1)

    def test_rtfd_takes_names_that_no_file_can_have(self):
        odd = pathlib.Path(self.scratch.name) / "odd.qltnote"
        shutil.copytree(self.out / "Garden plan 2024.qltnote", odd)
        archive = (odd / "NoteText").read_bytes()
        self.assertIn(b"first beds.png", archive)
        (odd / "NoteText").write_bytes(archive.replace(b"first beds.png", b"first/beds.png"))
        place = pathlib.Path(self.scratch.name) / "odd.rtfd"
        done = self.note("export", "--to", "rtfd", odd, "-o", place)
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        self.assertIn("first-beds.png", [child.name for child in place.iterdir()])

    def test_show_lists_attachments(self):
        shown = self.note("show", self.out / "Garden plan 2024.qltnote").stdout.decode()
        self.assertTrue(shown.startswith("Garden plan\n"))
        self.assertIn("\nAttachments:\nfirst beds.png  public.png  ", shown)

    def test_wrong_usage_and_failures(self):
        for arguments in ([], ["show"], ["export", self.notes[0]], ["export", "--to", "0", self.notes[0]], ["check"], ["look", "x"]):
            done = self.note(*arguments)
            self.assertEqual((done.returncode, done.stdout), (64, b""), arguments)
        for arguments in (["show", ""], ["check", self.notes[0], ""], ["export", "--to", "html", self.notes[0], "-o", ""]):
            done = self.note(*arguments)
            self.assertEqual((done.returncode, done.stdout), (64, b""), arguments)
        done = self.note("show", "/nonexistent/n.qltnote")
        self.assertEqual(done.returncode, 1)
        self.assertTrue(done.stderr.startswith(b"quillet-note: /nonexistent/n.qltnote: "))
        self.assertEqual(self.note("--version").returncode, 0)

    def test_output_that_nothing_takes_is_a_failure(self):
        environment = {"HOME": self.scratch.name, "QUILLET_DATA_DIR": str(DATA)}
        for command in (["quillet-note", "show"], ["quillet-note", "export", "--to", "json"], ["quillet-dump"]):
            with open("/dev/full", "wb") as full:
                done = subprocess.run([BINARIES / command[0], *command[1:], self.notes[0]], env=environment, stdout=full,
                                      stderr=subprocess.PIPE, timeout=120)
            self.assertEqual(done.returncode, 1, command)
            self.assertIn(b"No space left", done.stderr, command)

    def test_links_and_fifos_in_a_package_are_named(self):
        damaged = self.copy("linked.qltnote")
        (damaged / "evil").symlink_to("/etc/passwd")
        done = self.note("check", damaged)
        self.assertEqual(done.returncode, 1)
        self.assertEqual(done.stdout.decode(), f"{damaged}: Cannot read “{damaged}/evil”: it is a symbolic link.\n")
        (damaged / "evil").unlink()
        os.mkfifo(damaged / "pipe")
        self.assertIn(b"neither a file nor a directory", self.note("show", damaged).stderr)

    def test_dump_writes_what_it_read(self):
        for form in ("rtf", "rtfd", "html", "archive"):
            place = pathlib.Path(self.scratch.name) / f"dumped.{form}"
            self.assertEqual(run("quillet-dump", self.notes[0], "--to", form, place, home=self.scratch.name).returncode, 0)
            read = run("quillet-dump", "--json", place, home=self.scratch.name)
            self.assertEqual(list(json.loads(read.stdout)), ["text", "runs", "attachments"], form)
        self.assertEqual(run("quillet-dump", self.notes[0], "--to", "odd", "x", home=self.scratch.name).returncode, 64)


unittest.main(argv=sys.argv[:1])
