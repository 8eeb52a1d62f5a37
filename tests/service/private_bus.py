"""A private bus for the tests in this directory, with the service on it as the bus itself starts it.

A script that imports this runs again under a bus of its own: script.py SERVICE_PROGRAM COMMAND DATA_DIRECTORY
[unittest arguments]. Exits 77 where dbus-run-session, python3-dbus or python3-gi are missing.
"""
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time
import unittest

NAME = "com.tesseral.Quillet.ENEXImport1"
PATH = "/com/tesseral/Quillet/ENEXImport1"
PROTOCOL = NAME + ".QLTImportENEXProtocol"
JOBS = NAME + ".Jobs"
JOB = NAME + ".Job"
INVALID = "org.freedesktop.DBus.Error.InvalidArgs"
IDLE_MS = 2000


def reenter_on_private_bus():
    """Runs this script again under a bus of its own, whose services are in a scratch directory."""
    program, data = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[3])
    with tempfile.TemporaryDirectory() as scratch:
        services = pathlib.Path(scratch) / "dbus-1/services"
        services.mkdir(parents=True)
        template = (data / f"dbus/{NAME}.service.in").read_text()
        (services / f"{NAME}.service").write_text(template.replace("@QUILLET_SERVICE_PROGRAM@", str(program)))
        environment = dict(os.environ, XDG_DATA_HOME=scratch, QUILLET_DATA_DIR=str(data), QUILLET_CHECK_SCRATCH=scratch,
                           QUILLET_IDLE_TIME_MS=str(IDLE_MS))
        command = ["dbus-run-session", "--", sys.executable, *sys.argv]
        sys.exit(subprocess.run(command, env=environment, check=False).returncode)


if shutil.which("dbus-run-session") is None:
    print("skipped: no dbus-run-session")
    sys.exit(77)
try:
    import dbus
    import dbus.bus
    import dbus.mainloop.glib
    from gi.repository import GLib
except ImportError as missing:
    print(f"skipped: {missing}")
    sys.exit(77)
if "QUILLET_CHECK_SCRATCH" not in os.environ:
    reenter_on_private_bus()

SERVICE, COMMAND, DATA = sys.argv[1], sys.argv[2], pathlib.Path(sys.argv[3])
EXAMPLE = DATA.parent / "examples/notebook.enex"
FOREVER = 3600  # seconds; a client's own limit of 25 s would end long imports
dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)


def client():
    """A client of its own on the bus."""
    return dbus.bus.BusConnection(os.environ["DBUS_SESSION_BUS_ADDRESS"])


def service(bus, interface=PROTOCOL, path=PATH):
    return dbus.Interface(bus.get_object(NAME, path, introspect=False), interface)


def options(**values):
    return dbus.Dictionary(values, signature="sv")


def owner_of(manager):
    try:
        return str(manager.GetNameOwner(NAME))
    except dbus.DBusException:
        return None


def run_loop(until, seconds=60):
    """Dispatches signals and replies until the condition holds."""
    context, end = GLib.MainContext.default(), time.monotonic() + seconds
    while not until() and time.monotonic() < end:
        if not context.iteration(False):
            time.sleep(0.002)
    return until()


def export_with(path, count, words=20):
    note = ("<note><title>Note {0}</title><content><![CDATA[<en-note>" + "<div>word {0}</div>" * words +
            "</en-note>]]></content><tag>t</tag></note>")
    path.write_text("<en-export>" + "".join(note.format(number) for number in range(count)) + "</en-export>")
    return path


class ServiceTest(unittest.TestCase):
    def setUp(self):
        self.scratch = pathlib.Path(tempfile.mkdtemp(dir=os.environ["QUILLET_CHECK_SCRATCH"]))
        self.output = self.scratch / "out"
        self.output.mkdir()
        bus = client()  # the worker of the test before may not have ended yet, and be taken for this one's
        self.assertTrue(run_loop(lambda: not self.workers(bus)))

    def import_with(self, bus, file, output=None, **values):
        return service(bus).ImportENEXFile(file.as_uri(), options(**values), (output or self.output).as_uri(),
                                           timeout=FOREVER)

    def service_process(self, bus):
        return int(bus.get_object("org.freedesktop.DBus", "/org/freedesktop/DBus").GetConnectionUnixProcessID(
            NAME, dbus_interface="org.freedesktop.DBus"))

    def workers(self, bus):
        """The service's child processes; none when nobody has its name."""
        try:
            process = self.service_process(bus)
        except dbus.DBusException:
            return []
        found = subprocess.run(["pgrep", "-P", str(process)], capture_output=True, text=True, check=False)
        return [int(worker) for worker in found.stdout.split()]

    def wait_for_worker(self, bus):
        for _ in range(1000):
            workers = self.workers(bus)
            if workers:
                return workers[0]
            time.sleep(0.01)
        return self.fail("no worker was started")

    def start(self, bus, file, output):
        """An import whose outcome comes later: a list that gets one reply or error."""
        outcome = []
        service(bus).ImportENEXFile(file.as_uri(), options(), output.as_uri(), timeout=FOREVER,
                                    reply_handler=outcome.append, error_handler=outcome.append)
        return outcome


def run():
    """The script's main: its tests, as the command line chooses them."""
    unittest.main(argv=[sys.argv[0], *sys.argv[4:]], verbosity=2)
