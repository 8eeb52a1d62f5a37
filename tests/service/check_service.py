#!/usr/bin/env python3
"""The service as its clients see it: real programs on a private bus, started by the bus from the installed service file.

usage: check_service.py SERVICE_PROGRAM COMMAND DATA_DIRECTORY [unittest arguments]

QUILLET_LONG_TESTS=1 makes the long import last a minute instead of three seconds, and waits for the service to leave. Exits 77 where dbus-run-session,
python3-dbus or python3-gi are missing; a test whose client is missing skips itself.
"""
import json
import os
import pathlib
import pty
import random
import re
import shutil
import signal
import subprocess
import sys
import time
import unittest
import xml.etree.ElementTree as ET

import private_bus  # first: starts the bus
from private_bus import (COMMAND, DATA, EXAMPLE, FOREVER, IDLE_MS, INVALID, JOB, JOBS, NAME, PATH, PROTOCOL, SERVICE, client,
                         export_with, options, owner_of, run_loop, service)
import dbus

# Calls and waits, until it is killed.
KILLED_CLIENT = """
import dbus, sys
name, path, interface, file, output = sys.argv[1:]
dbus.SessionBus().call_blocking(name, path, interface, "ImportENEXFile", "sa{sv}s", (file, {}, output), timeout=3600)
"""


class ServiceTest(private_bus.ServiceTest):
    # Replies

    def test_imports_the_example(self):
        reply = self.import_with(client(), EXAMPLE)
        self.assertEqual({"Items", "Error Notes", "Log File"}, set(reply))
        self.assertEqual("aa{sv}", "a" + reply["Items"].signature)
        self.assertEqual("as", "a" + reply["Error Notes"].signature)
        tagged = [item for item in reply["Items"] if "tags" in item]
        self.assertTrue(tagged)
        self.assertEqual("s", tagged[0]["tags"].signature)
        for item in reply["Items"]:
            self.assertTrue(item["fileURL"].startswith(self.output.as_uri()))
        self.assertTrue((self.output / "notebook.log").is_file())

    def test_empty_lists_keep_their_signatures(self):
        reply = self.import_with(client(), export_with(self.scratch / "empty.enex", 0))
        self.assertEqual(("a{sv}", "s"), (reply["Items"].signature, reply["Error Notes"].signature))
        self.assertEqual((0, 0), (len(reply["Items"]), len(reply["Error Notes"])))

    def test_missing_export_is_an_error_in_the_reply(self):
        reply = self.import_with(client(), self.scratch / "missing.enex")
        self.assertEqual({"Error", "Log File"}, set(reply))
        self.assertEqual({"domain", "code", "localizedDescription", "userInfo"}, set(reply["Error"]))
        self.assertEqual(("EvernoteXMLParseOperationErrorDomain", 1001), (reply["Error"]["domain"], reply["Error"]["code"]))
        self.assertIsInstance(reply["Error"]["code"], dbus.Int64)

    def test_malformed_arguments_are_refused(self):
        good = EXAMPLE.as_uri()
        cases = [
            ("http://example.org/x.enex", options(), self.output.as_uri()),
            ("", options(), self.output.as_uri()),
            ("notebook.enex", options(), self.output.as_uri()),
            ("file://elsewhere/x.enex", options(), self.output.as_uri()),
            ("file:///x%00y", options(), self.output.as_uri()),
            (good, options(), "/plain/path"),
            (good, options(Debug="yes"), self.output.as_uri()),
            (good, options(QLTImportENEXOptionWebClippingsAsNotes=dbus.Array([], "s")), self.output.as_uri()),
        ]
        bus = client()
        for arguments in cases:
            with self.subTest(arguments), self.assertRaises(dbus.DBusException) as refused:
                service(bus).ImportENEXFile(*arguments)
            self.assertEqual(INVALID, refused.exception.get_dbus_name())
        for signature, arguments in (("s", ["x"]), ("sa{ss}s", [good, {"a": "b"}, "x"]), ("", [])):
            with self.subTest(signature), self.assertRaises(dbus.DBusException) as refused:
                bus.call_blocking(NAME, PATH, PROTOCOL, "ImportENEXFile", signature, arguments)
            self.assertEqual(INVALID, refused.exception.get_dbus_name())
        self.assertEqual([], list(self.output.iterdir()))

    def test_unknown_options_are_for_later_versions(self):
        self.assertIn("Items", self.import_with(client(), export_with(self.scratch / "e.enex", 1), Later="x"))

    def test_introspection_is_what_is_installed(self):
        answered = ET.fromstring(client().get_object(NAME, PATH, introspect=False).Introspect(
            dbus_interface="org.freedesktop.DBus.Introspectable"))
        own = {element.get("name"): element for element in answered.findall("interface")
               if element.get("name").startswith(NAME)}
        self.assertEqual({PROTOCOL, JOBS}, set(own))
        for name, element in own.items():
            installed = ET.parse(DATA / f"dbus/{name}.xml").getroot().find("interface")
            self.assertEqual(described(installed), described(element))
        self.assertEqual(["ImportENEXFile"], [method.get("name") for method in own[PROTOCOL]])

    def test_confinement_can_be_read(self):
        value = service(client(), dbus.PROPERTIES_IFACE).Get(JOBS, "Confinement")
        self.assertIn(value, ("full", "partial", "none"))

    # Clients

    def test_two_clients_at_once_keep_apart(self):
        buses, outputs, outcomes = [client(), client()], [], []
        for number, bus in enumerate(buses):
            file = export_with(self.scratch / f"export {number}.enex", 20 + number)
            outputs.append(self.scratch / f"out {number}")
            outputs[-1].mkdir()
            outcomes.append(self.start(bus, file, outputs[-1]))
        self.assertTrue(run_loop(lambda: all(outcomes)))
        for number, (outcome, output) in enumerate(zip(outcomes, outputs)):
            self.assertEqual(20 + number, len(outcome[0]["Items"]))
            self.assertEqual((output / f"export {number}.log").as_uri(), outcome[0]["Log File"])
            self.assertEqual(20 + number, len(list(output.glob("*.qltnote"))))

    def test_an_import_goes_on_when_its_client_is_killed(self):
        file = export_with(self.scratch / "long.enex", 150)
        caller = subprocess.Popen(
            [sys.executable, "-c", KILLED_CLIENT, NAME, PATH, PROTOCOL, file.as_uri(), self.output.as_uri()],
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        bus = client()
        run_loop(lambda: bus.name_has_owner(NAME))
        process = self.service_process(bus)
        self.wait_for_worker(bus)
        caller.kill()
        caller.wait()
        log = self.output / "long.log"
        self.assertTrue(run_loop(lambda: "Finish parsing ENEX file." in log.read_text()))
        self.assertEqual(150, len(list(self.output.glob("*.qltnote"))))
        self.assertEqual(process, self.service_process(bus))

    def test_a_killed_worker_gives_an_error_and_leaves_the_service_up(self):
        bus = client()
        outcome = self.start(bus, export_with(self.scratch / "long.enex", 400), self.output)
        run_loop(lambda: bus.name_has_owner(NAME))
        process = self.service_process(bus)
        os.kill(self.wait_for_worker(bus), signal.SIGKILL)
        self.assertTrue(run_loop(lambda: outcome))
        self.assertEqual({"Error", "Log File"}, set(outcome[0]))
        self.assertEqual(("NSCocoaErrorDomain", 4097), (outcome[0]["Error"]["domain"], outcome[0]["Error"]["code"]))
        self.assertEqual((self.output / "long.log").as_uri(), outcome[0]["Log File"])
        self.assertIn("Items", self.import_with(bus, export_with(self.scratch / "next.enex", 1)))
        self.assertEqual(process, self.service_process(bus))

    def test_a_long_import_is_answered(self):
        seconds = 60 if os.environ.get("QUILLET_LONG_TESTS") else 3
        bus = client()
        outcome = self.start(bus, export_with(self.scratch / "long.enex", 200), self.output)
        run_loop(lambda: bus.name_has_owner(NAME))
        worker = self.wait_for_worker(bus)
        os.kill(worker, signal.SIGSTOP)
        started = time.monotonic()
        run_loop(lambda: False, seconds)
        # The connection stays free meanwhile.
        short = self.scratch / "short"
        short.mkdir()
        self.assertIn("Items", self.import_with(client(), export_with(self.scratch / "short.enex", 1), short))
        os.kill(worker, signal.SIGCONT)
        self.assertTrue(run_loop(lambda: outcome))
        self.assertGreater(time.monotonic() - started, seconds)
        self.assertEqual(200, len(outcome[0]["Items"]))

    def test_busctl(self):
        if not shutil.which("busctl"):
            self.skipTest("no busctl")
        done = subprocess.run(["busctl", "--user", "--json=short", "call", NAME, PATH, PROTOCOL, "ImportENEXFile", "sa{sv}s",
                               EXAMPLE.as_uri(), "1", "Debug", "b", "true", self.output.as_uri()],
                              capture_output=True, text=True, check=True)
        reply = json.loads(done.stdout)["data"][0]
        self.assertEqual("aa{sv}", reply["Items"]["type"])
        self.assertIn("parser:didStartElement", (self.output / "notebook.log").read_text())

    def test_gdbus(self):
        if not shutil.which("gdbus"):
            self.skipTest("no gdbus")
        call = ["gdbus", "call", "--session", "-d", NAME, "-o", PATH, "-m", PROTOCOL + ".ImportENEXFile"]
        done = subprocess.run([*call, EXAMPLE.as_uri(), "{'Debug': <true>}", self.output.as_uri()], capture_output=True,
                              text=True, check=True)
        self.assertIn("'Items': <[{'", done.stdout)
        refused = subprocess.run([*call, "nonsense", "{}", "x"], capture_output=True, text=True, check=False)
        self.assertIn(INVALID, refused.stderr)

    def test_the_command_gives_the_same_reply_with_and_without_the_service(self):
        replies = []
        for name, arguments in (("here", []), ("there", ["--service"])):
            done = subprocess.run([COMMAND, "--json", *arguments, EXAMPLE, self.scratch / name], capture_output=True,
                                  text=True, check=False)
            self.assertEqual(1, done.returncode, done.stderr)  # the example has a broken note
            text = re.sub(r'"identifier":"[^"]*"', "", done.stdout).replace(f"/{name}/", "/")
            replies.append(text)
        self.assertEqual(replies[0], replies[1])

    def test_gjs(self):
        if not shutil.which("gjs"):
            self.skipTest("no gjs")
        done = subprocess.run(["gjs", pathlib.Path(__file__).parent / "client.js", EXAMPLE.as_uri(), self.output.as_uri(),
                               DATA / f"dbus/{PROTOCOL}.xml"], capture_output=True, text=True, check=True)
        seen = json.loads(done.stdout)
        self.assertEqual((["aa{sv}", "as"], INVALID), (seen["types"], seen["refusal"]))
        self.assertEqual((10, ["A broken note"]), (len(seen["items"]), seen["failed"]))
        self.assertEqual((self.output / "notebook.log").as_uri(), seen["log"])

    def test_the_command_shows_the_services_progress(self):
        file = export_with(self.scratch / "bar.enex", 300)
        try:
            terminal, inner = pty.openpty()
        except OSError as error:
            self.skipTest(f"no terminals here: {error}")  # a bare chroot has no /dev/pts
        command = subprocess.Popen([COMMAND, "--json", "--service", file, self.output], stdout=subprocess.DEVNULL, stderr=inner)
        os.close(inner)
        shown = b""
        while True:
            try:
                shown += os.read(terminal, 4096)
            except OSError:  # the other end is closed
                break
        os.close(terminal)
        self.assertEqual(0, command.wait())
        self.assertRegex(shown.decode(), r"bar\.enex.*\d+ notes")

    def test_the_command_says_when_there_is_no_bus_or_no_service(self):
        without_service = {"XDG_DATA_HOME": "/nowhere", "XDG_DATA_DIRS": "/nowhere", "XDG_RUNTIME_DIR": str(self.scratch)}
        for prefix, environment in (([], {"DBUS_SESSION_BUS_ADDRESS": "unix:path=/nowhere"}),
                                    (["dbus-run-session", "--"], without_service)):
            done = subprocess.run([*prefix, COMMAND, "--json", "--service", EXAMPLE, self.output], capture_output=True,
                                  text=True, check=False, env=dict(os.environ, **environment))
            self.assertEqual(69, done.returncode, done.stderr)
            self.assertIn("quillet-enex-import: the service cannot be used: ", done.stderr)
            self.assertEqual("", done.stdout)

    def test_an_interrupted_command_cancels_its_import_in_the_service(self):
        file = export_with(self.scratch / "long.enex", 2000)
        for number, status in ((signal.SIGINT, 130), (signal.SIGTERM, 143)):
            output = self.scratch / str(status)
            command = subprocess.Popen([COMMAND, "--json", "--service", file, output], stdout=subprocess.PIPE, text=True)
            self.assertTrue(run_loop(lambda: list(output.glob("*.qltnote"))))
            command.send_signal(number)
            reply = json.loads(command.communicate()[0])
            self.assertEqual((status, 512), (command.returncode, reply["Error"]["code"]))
            self.assertLess(len(list(output.glob("*.qltnote"))), 2000)

    # Jobs

    def test_a_job_reports_progress_to_its_client_alone(self):
        bus, other, mine, theirs, changes = client(), client(), [], [], []
        other.add_signal_receiver(lambda *values: theirs.append(values), "Progress", JOBS)
        bus.add_signal_receiver(lambda *values: mine.append((time.monotonic(), values)), "Progress", JOBS)
        bus.add_signal_receiver(lambda *values: changes.append(values[1]), "PropertiesChanged", dbus.PROPERTIES_IFACE)
        file = export_with(self.scratch / "jobs.enex", 300)
        path = service(bus, JOBS).StartImportENEXFile(file.as_uri(), options(), self.output.as_uri())
        reply = []
        service(bus, JOB, path).GetReply(timeout=FOREVER, reply_handler=reply.append, error_handler=reply.append)
        self.assertTrue(run_loop(lambda: reply))
        self.assertEqual(300, len(reply[0]["Items"]))
        self.assertTrue(run_loop(lambda: changes and changes[-1]["Finished"]))
        self.assertTrue(mine)
        self.assertEqual([], theirs)
        self.assertEqual(file.as_uri(), mine[0][1][0])
        first = mine[0][0]
        self.assertLessEqual(len(mine), 10 * (mine[-1][0] - first) + 2)
        values = service(bus, dbus.PROPERTIES_IFACE, path).GetAll(JOB)
        self.assertEqual((300, 0, True), (values["NotesWritten"], values["NotesFailed"], bool(values["Finished"])))
        self.assertEqual(file.stat().st_size, values["BytesTotal"])
        self.assertEqual(reply[0], service(bus, JOB, path).GetReply())

    def test_who_waits_for_an_import_gets_progress_too(self):
        bus, mine = client(), []
        bus.add_signal_receiver(lambda *values: mine.append(values), "Progress", JOBS)
        file = export_with(self.scratch / "waiting.enex", 100)
        outcome = self.start(bus, file, self.output)
        self.assertTrue(run_loop(lambda: outcome))
        self.assertTrue(mine)
        for url, read, total, written, failed in mine:
            self.assertEqual((file.as_uri(), file.stat().st_size, 0), (url, total or file.stat().st_size, failed))
            self.assertTrue(read <= file.stat().st_size and written <= 100)

    def test_a_job_is_what_is_installed(self):
        bus = client()
        path = service(bus, JOBS).StartImportENEXFile(EXAMPLE.as_uri(), options(), self.output.as_uri())
        answered = ET.fromstring(bus.get_object(NAME, path, introspect=False).Introspect(
            dbus_interface="org.freedesktop.DBus.Introspectable"))
        own = [element for element in answered.findall("interface") if element.get("name").startswith(NAME)]
        installed = ET.parse(DATA / f"dbus/{JOB}.xml").getroot().find("interface")
        self.assertEqual([described(installed)], [described(element) for element in own])
        service(bus, JOB, path).GetReply(timeout=FOREVER)

    def test_a_job_is_its_clients_alone(self):
        bus, other = client(), client()
        path = service(bus, JOBS).StartImportENEXFile(EXAMPLE.as_uri(), options(), self.output.as_uri())
        for call in (service(other, JOB, path).Cancel, service(other, JOB, path).GetReply,
                     lambda: service(other, dbus.PROPERTIES_IFACE, path).Get(JOB, "Finished")):
            with self.assertRaises(dbus.DBusException) as refused:
                call()
            self.assertEqual("org.freedesktop.DBus.Error.AccessDenied", refused.exception.get_dbus_name())
        service(bus, JOB, path).GetReply(timeout=FOREVER)

    def test_a_cancelled_job_ends_with_an_error(self):
        bus = client()
        file = export_with(self.scratch / "cancel.enex", 2000)
        path = service(bus, JOBS).StartImportENEXFile(file.as_uri(), options(), self.output.as_uri())
        run_loop(lambda: service(bus, dbus.PROPERTIES_IFACE, path).Get(JOB, "NotesWritten") > 0)
        service(bus, JOB, path).Cancel()
        reply = service(bus, JOB, path).GetReply(timeout=FOREVER)
        self.assertEqual(("NSXMLParserErrorDomain", 512), (reply["Error"]["domain"], reply["Error"]["code"]))
        written = len(list(self.output.glob("*.qltnote")))
        self.assertTrue(0 < written < 2000, written)

    # Leaving

    def test_leaves_when_idle_and_when_told_to(self):
        bus = client()
        self.import_with(bus, export_with(self.scratch / "e.enex", 1))
        process = self.service_process(bus)
        self.assertTrue(run_loop(lambda: not bus.name_has_owner(NAME), 10 * IDLE_MS / 1000))
        self.assertTrue(run_loop(lambda: not pathlib.Path(f"/proc/{process}/exe").exists(), 5))
        outcome = self.start(bus, export_with(self.scratch / "long.enex", 2000), self.output)
        run_loop(lambda: bus.name_has_owner(NAME))
        process = self.service_process(bus)
        self.wait_for_worker(bus)
        os.kill(process, signal.SIGTERM)
        self.assertTrue(run_loop(lambda: outcome))
        self.assertEqual(512, outcome[0]["Error"]["code"])  # cancelled: the note under way was finished
        self.assertTrue(run_loop(lambda: not bus.name_has_owner(NAME)))

    @unittest.skipUnless(os.environ.get("QUILLET_LONG_TESTS"), "a long test")
    def test_leaves_after_half_a_minute_by_itself(self):
        bus = client()
        self.assertTrue(run_loop(lambda: not bus.name_has_owner(NAME), 20))
        environment = {name: value for name, value in os.environ.items() if name != "QUILLET_IDLE_TIME_MS"}
        process = subprocess.Popen([SERVICE], env=environment)
        self.assertTrue(run_loop(lambda: bus.name_has_owner(NAME)))
        started = time.monotonic()
        self.assertEqual(0, process.wait(60))
        self.assertTrue(30 <= time.monotonic() - started < 33)

    def test_a_thousand_calls_racing_the_idle_exit(self):
        bus, owners = client(), set()
        manager = dbus.Interface(bus.get_object("org.freedesktop.DBus", "/org/freedesktop/DBus"), "org.freedesktop.DBus")
        bus.add_signal_receiver(lambda name, old, new: owners.add(new), "NameOwnerChanged", "org.freedesktop.DBus",
                                arg0=NAME)
        run_loop(lambda: not bus.name_has_owner(NAME), 10 * IDLE_MS / 1000)
        manager.UpdateActivationEnvironment({"QUILLET_IDLE_TIME_MS": "2"})
        file, generator = export_with(self.scratch / "race.enex", 0), random.Random(1)
        try:
            for number in range(1000):
                # Mostly by name; sometimes to the process that has the name, as some client libraries do.
                receiver = NAME if number % 10 != 5 else owner_of(manager) or NAME
                if number % 25 == 0:
                    arguments = (file.as_uri(), options(), self.output.as_uri())
                    self.assertIn("Items", bus.call_blocking(receiver, PATH, PROTOCOL, "ImportENEXFile", "sa{sv}s", arguments))
                else:
                    with self.assertRaises(dbus.DBusException) as refused:
                        bus.call_blocking(receiver, PATH, PROTOCOL, "ImportENEXFile", "sa{sv}s", ("nonsense", options(), "x"))
                    self.assertEqual(INVALID, refused.exception.get_dbus_name(), number)
                time.sleep(generator.uniform(0, 0.005))
        finally:
            manager.UpdateActivationEnvironment({"QUILLET_IDLE_TIME_MS": str(IDLE_MS)})
        self.assertTrue(run_loop(lambda: len(owners) > 20, 10), "the service did not leave between the calls")
        run_loop(lambda: not bus.name_has_owner(NAME), 10)


def described(interface):
    """An interface without comments and white space, in a form that compares."""
    members = []
    for member in interface:
        if isinstance(member.tag, str):
            arguments = [tuple(sorted(argument.attrib.items())) for argument in member.findall("arg")]
            members.append((member.tag, tuple(sorted(member.attrib.items())), tuple(arguments)))
    return interface.get("name"), sorted(members)


if __name__ == "__main__":
    private_bus.run()
