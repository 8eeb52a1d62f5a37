#!/usr/bin/env python3
"""Clients that misbehave, processes that die or stand still, places that cannot be written: the service stays up, every
call is answered, and nothing half written has a name.

usage: check_robustness.py SERVICE_PROGRAM COMMAND DATA_DIRECTORY [unittest arguments]

QUILLET_LONG_TESTS=1 adds what takes half a minute.
"""
import os
import pathlib
import shutil
import signal
import subprocess
import time
import unittest
import urllib.parse

import private_bus  # first: starts the bus
from private_bus import (COMMAND, FOREVER, INVALID, JOB, JOBS, NAME, PATH, PROTOCOL, SERVICE, client, export_with, options,
                         run_loop, service)
import dbus
from gi.repository import Gio, GLib

LIMITS = "org.freedesktop.DBus.Error.LimitsExceeded"
IMPORTS_OF_ONE_CLIENT = 16
IMPORTS_IN_ALL = 64


def processes_below(process):
    return [int(line) for line in subprocess.run(["pgrep", "-P", str(process)], capture_output=True, text=True,
                                                 check=False).stdout.split()]


def package_is_whole(package):
    return {"TXT.rtf", "NoteText", "NoteAttributes"} <= {entry.name for entry in package.iterdir()}


class RobustnessTest(private_bus.ServiceTest):
    def start_job(self, bus, file, output=None):
        path = service(bus, JOBS).StartImportENEXFile(file.as_uri(), options(), (output or self.output).as_uri())
        return service(bus, JOB, path)

    def assert_serves(self, bus=None):
        output = self.scratch / f"after {time.monotonic()}"
        output.mkdir()
        reply = self.import_with(bus or client(), export_with(self.scratch / "after.enex", 1), output)
        self.assertEqual(1, len(reply["Items"]))

    def stopped_import(self, bus, count=300):
        """A job whose worker stands still, and the worker."""
        known = processes_below(self.service_process(bus)) if bus.name_has_owner(NAME) else []
        job = self.start_job(bus, export_with(self.scratch / "stopped.enex", count))
        process, workers = self.service_process(bus), []
        self.assertTrue(run_loop(lambda: workers or workers.extend(set(processes_below(process)) - set(known))))
        os.kill(workers[0], signal.SIGSTOP)
        return job, workers[0]

    # Clients

    def test_ten_thousand_calls_at_once(self):
        bus, answers = client(), []
        file = export_with(self.scratch / "empty.enex", 0)
        for number in range(10_000):
            arguments = ("nonsense", options(), "x") if number % 100 else (file.as_uri(), options(), self.output.as_uri())
            service(bus).ImportENEXFile(*arguments, timeout=FOREVER, reply_handler=answers.append,
                                        error_handler=answers.append)
        self.assertTrue(run_loop(lambda: len(answers) == 10_000, 200), len(answers))
        names = [answer.get_dbus_name() for answer in answers if isinstance(answer, dbus.DBusException)]
        self.assertEqual(9_900, names.count(INVALID))
        self.assertLessEqual(set(names), {INVALID, LIMITS})
        self.assertGreaterEqual(10_000 - len(names), IMPORTS_OF_ONE_CLIENT)
        self.assert_serves()

    def test_a_client_has_so_many_imports_and_no_more(self):
        bus = client()
        file = export_with(self.scratch / "many.enex", 500)
        jobs = [self.start_job(bus, file) for _ in range(IMPORTS_OF_ONE_CLIENT)]
        for call in (lambda: self.start_job(bus, file), lambda: self.import_with(bus, file)):
            with self.assertRaises(dbus.DBusException) as refused:
                call()
            self.assertEqual(LIMITS, refused.exception.get_dbus_name())
        self.assert_serves()  # another client
        for job in jobs:
            job.Cancel()
        for job in jobs:
            self.assertEqual(512, job.GetReply(timeout=FOREVER)["Error"]["code"])
        self.assert_serves(bus)

    def test_all_clients_together_have_so_many_imports_and_no_more(self):
        file = export_with(self.scratch / "many.enex", 3000)
        jobs = [self.start_job(bus, file) for bus in [client() for _ in range(IMPORTS_IN_ALL // IMPORTS_OF_ONE_CLIENT)]
                for _ in range(IMPORTS_OF_ONE_CLIENT)]
        other = client()
        with self.assertRaises(dbus.DBusException) as refused:
            self.start_job(other, file)
        self.assertEqual(LIMITS, refused.exception.get_dbus_name())
        for job in jobs:
            job.Cancel()
        for job in jobs:
            self.assertEqual(512, job.GetReply(timeout=FOREVER)["Error"]["code"])
        self.assert_serves(other)

    @unittest.skipUnless(os.environ.get("QUILLET_LONG_TESTS"), "a long test")
    def test_a_client_has_so_many_jobs_and_no_more(self):
        bus, file = client(), export_with(self.scratch / "empty.enex", 0)
        for _ in range(1000):
            self.start_job(bus, file).GetReply(timeout=FOREVER)
        with self.assertRaises(dbus.DBusException) as refused:
            self.start_job(bus, file)
        self.assertEqual(LIMITS, refused.exception.get_dbus_name())
        self.assert_serves(bus)

    def test_huge_and_odd_arguments(self):
        bus = client()
        long_path = "/" + "x" * 2_000_000
        with self.assertRaises(dbus.DBusException) as refused:
            service(bus).ImportENEXFile("http://" + long_path, options(), self.output.as_uri(), timeout=FOREVER)
        self.assertEqual(INVALID, refused.exception.get_dbus_name())
        self.assertLess(len(refused.exception.get_dbus_message()), 1000)
        reply = service(bus).ImportENEXFile("file://" + long_path, options(), self.output.as_uri(), timeout=FOREVER)
        self.assertEqual(1001, reply["Error"]["code"])
        many = dbus.Dictionary({f"option {number}": "x" * 100 for number in range(100_000)}, signature="sv")
        reply = service(bus).ImportENEXFile(export_with(self.scratch / "e.enex", 1).as_uri(), many, self.output.as_uri(),
                                            timeout=FOREVER)
        self.assertEqual(1, len(reply["Items"]))
        for odd in (dbus.Dictionary({1: 2}, signature="iv"), dbus.Double(1.0), dbus.Array([True], "b")):
            with self.assertRaises(dbus.DBusException) as refused:
                service(bus).ImportENEXFile("file:///x", options(Debug=odd), self.output.as_uri())
            self.assertEqual(INVALID, refused.exception.get_dbus_name())
        with open("/dev/null", "rb") as file, self.assertRaises(dbus.DBusException) as refused:
            service(bus).ImportENEXFile("file:///x", options(Later=dbus.types.UnixFd(file)), self.output.as_uri())
        self.assertEqual(INVALID, refused.exception.get_dbus_name())
        self.assert_serves(bus)

    def test_text_that_is_no_utf8_harms_its_sender_alone(self):
        process = self.service_process_of_a_started_service()
        flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
        bus = Gio.DBusConnection.new_for_address_sync(os.environ["DBUS_SESSION_BUS_ADDRESS"], flags, None, None)
        message = Gio.DBusMessage.new_method_call(NAME, PATH, PROTOCOL, "ImportENEXFile")
        message.set_body(GLib.Variant("(sa{sv}s)", ("file:///QQQQ", {}, "file:///x")))
        blob = bytes(message.to_blob(Gio.DBusCapabilityFlags.NONE)).replace(b"QQQQ", b"\xFF\xFE\xC0Q")
        bus.get_stream().get_output_stream().write_all(blob)
        self.assertTrue(run_loop(bus.is_closed, 10))
        self.assertEqual(process, self.service_process(client()))
        self.assert_serves()

    def service_process_of_a_started_service(self):
        bus = client()
        self.assert_serves(bus)
        return self.service_process(bus)

    def test_names_that_are_no_utf8_travel_as_urls(self):
        file = os.path.join(os.fsencode(self.scratch), b"\xFF \xE4.enex")
        os.rename(export_with(self.scratch / "plain.enex", 1), file)
        output = os.path.join(os.fsencode(self.scratch), b"out \xFE")
        os.mkdir(output)
        reply = service(client()).ImportENEXFile("file://" + urllib.parse.quote(file), options(),
                                                 "file://" + urllib.parse.quote(output), timeout=FOREVER)
        self.assertEqual(1, len(reply["Items"]))
        log = urllib.parse.unquote_to_bytes(reply["Log File"].removeprefix("file://"))
        self.assertEqual(os.path.join(output, b"\xFF \xE4.log"), log)
        self.assertTrue(os.path.exists(log))

    # Workers

    def test_cancelling_again_and_again_holds_up_nobody(self):
        bus, answers = client(), []
        job, worker = self.stopped_import(bus)
        for _ in range(2_000):
            job.Cancel(reply_handler=lambda: answers.append(None), error_handler=answers.append)
        self.assertTrue(run_loop(lambda: len(answers) == 2_000, 20))
        self.assert_serves()
        os.kill(worker, signal.SIGCONT)
        self.assertEqual(512, job.GetReply(timeout=FOREVER)["Error"]["code"])

    def test_a_stopped_worker_that_is_killed_gives_an_error(self):
        bus = client()
        job, worker = self.stopped_import(bus)
        self.assert_serves()
        os.kill(worker, signal.SIGKILL)
        self.assertEqual(4097, job.GetReply(timeout=FOREVER)["Error"]["code"])
        self.assertTrue(all(map(package_is_whole, self.output.glob("*.qltnote"))))

    def test_being_told_to_leave_ends_all_imports_of_a_client(self):
        bus = client()
        file = export_with(self.scratch / "long.enex", 3000)
        outputs = [self.scratch / "one", self.scratch / "two"]
        for output in outputs:
            output.mkdir()
        outcomes = [self.start(bus, file, output) for output in outputs]
        self.assertTrue(run_loop(lambda: all(list(output.glob("*.qltnote")) for output in outputs)))
        os.kill(self.service_process(bus), signal.SIGTERM)
        self.assertTrue(run_loop(lambda: all(outcomes)))
        for outcome, output in zip(outcomes, outputs):
            self.assertEqual(512, outcome[0]["Error"]["code"])
            self.assertLess(len(list(output.glob("*.qltnote"))), 3000)
        self.assertTrue(run_loop(lambda: not bus.name_has_owner(NAME)))

    # The service

    def test_a_killed_service_leaves_nothing_half_written(self):
        bus = client()
        outcome = self.start(bus, export_with(self.scratch / "long.enex", 2000), self.output)
        self.assertTrue(run_loop(lambda: list(self.output.glob("*.qltnote"))))
        process = self.service_process(bus)
        worker = processes_below(process)[0]
        os.kill(process, signal.SIGKILL)
        self.assertTrue(run_loop(lambda: outcome))
        self.assertEqual("org.freedesktop.DBus.Error.NoReply", outcome[0].get_dbus_name())
        self.assertTrue(run_loop(lambda: not pathlib.Path(f"/proc/{worker}/exe").exists()), "the worker went on")
        written = list(self.output.glob("*.qltnote"))
        self.assertLess(len(written), 2000)
        self.assertTrue(all(map(package_is_whole, written)))
        (self.output / ".quillet-new-1-1").mkdir()  # what the dead import may have left, in any case
        self.import_with(client(), export_with(self.scratch / "next.enex", 1))
        self.assertEqual([], [entry for entry in os.listdir(self.output) if not entry.endswith((".qltnote", ".log"))])

    def test_a_slow_destination_holds_up_its_own_client_alone(self):
        if not shutil.which("strace"):
            self.skipTest("no strace")
        process = self.service_process_of_a_started_service()
        slow, fast = client(), client()
        tracer = subprocess.Popen(["strace", "-f", "-qq", "-o", "/dev/null", "-P", self.output, "-e", "inject=openat:delay_enter=4s:when=1",
                                   "-p", str(process)], stderr=subprocess.DEVNULL)
        try:
            self.assertTrue(run_loop(lambda: "TracerPid:\t0\n" not in
                                     pathlib.Path(f"/proc/{process}/status").read_text(), 10))
            started = time.monotonic()
            outcome = self.start(slow, export_with(self.scratch / "slow.enex", 1), self.output)
            run_loop(lambda: False, 0.5)
            self.assert_serves(fast)
            self.assertLess(time.monotonic() - started, 4)
            self.assertFalse(outcome)
            self.assertTrue(run_loop(lambda: outcome))
            self.assertEqual(1, len(outcome[0]["Items"]))
        finally:
            tracer.terminate()
            tracer.wait()

    # Places

    def test_destinations_that_cannot_be_written(self):
        file = export_with(self.scratch / "places.enex", 2)
        regular = self.scratch / "regular"
        regular.write_text("")
        for place in (self.scratch / "missing", regular, pathlib.Path("/proc"), pathlib.Path("/dev/null"),
                      pathlib.Path("/dev/full")):
            with self.subTest(place):
                reply = self.import_with(client(), file, place)
                self.assertEqual((0, ["Note 0", "Note 1"]), (len(reply["Items"]), list(reply["Error Notes"])))
        self.assertEqual("", regular.read_text())
        self.assertFalse((self.scratch / "missing").exists())

    def test_a_log_that_cannot_be_written_stops_nothing(self):
        file = export_with(self.scratch / "places.enex", 2)
        (self.output / "places.log").mkdir()
        self.assertEqual(2, len(self.import_with(client(), file)["Items"]))

    def test_exports_that_are_none(self):
        fifo = self.scratch / "fifo.enex"
        os.mkfifo(fifo)
        for file in (fifo, self.scratch, pathlib.Path("/dev/zero"), pathlib.Path("/dev/tty"), self.scratch / "missing.enex"):
            with self.subTest(file):
                self.assertEqual(1001, self.import_with(client(), file)["Error"]["code"])

    # Surroundings

    def test_strange_environments(self):
        """The service and the command by themselves, without what a session usually gives them."""
        file = export_with(self.scratch / "strange.enex", 1)
        kept = {name: os.environ[name] for name in ("PATH", "QUILLET_DATA_DIR", "DBUS_SESSION_BUS_ADDRESS")}
        strange = [{}, {"HOME": "/nowhere"}, {"HOME": "relative", "XDG_CONFIG_HOME": "relative", "XDG_DATA_HOME": "../.."},
                   {"HOME": "/", "XDG_DATA_HOME": "/", "XDG_CONFIG_HOME": "/dev/null", "LC_ALL": "xx_YY.none", "TZ": ":/dev/full"},
                   {"HOME": "x" * 5000, "TMPDIR": "/nowhere", "LC_ALL": "tr_TR.UTF-8"}]
        bus = client()
        for number, environment in enumerate(strange):
            with self.subTest(environment):
                output = self.scratch / f"command {number}"
                done = subprocess.run([COMMAND, "--json", file, output], env={**kept, **environment}, capture_output=True,
                                      text=True, check=False)
                self.assertEqual((0, ""), (done.returncode, done.stderr))
                self.assertTrue(run_loop(lambda: not bus.name_has_owner(NAME), 20))
                process = subprocess.Popen([SERVICE], env={**kept, **environment, "QUILLET_IDLE_TIME_MS": "100"})
                self.assertTrue(run_loop(lambda: bus.name_has_owner(NAME), 10))
                output = self.scratch / f"service {number}"
                output.mkdir()
                self.assertEqual(1, len(self.import_with(bus, file, output)["Items"]))
                self.assertEqual(0, process.wait(20))

    def test_without_a_bus_the_service_says_so(self):
        for environment in ({"DBUS_SESSION_BUS_ADDRESS": "unix:path=/nowhere"}, {"DBUS_SESSION_BUS_ADDRESS": "nonsense"}):
            done = subprocess.run([SERVICE], env=dict(os.environ, **environment), capture_output=True, text=True, check=False)
            self.assertEqual(69, done.returncode)
            self.assertTrue(done.stderr.startswith("quillet-enex-importd: "), done.stderr)


if __name__ == "__main__":
    private_bus.run()
