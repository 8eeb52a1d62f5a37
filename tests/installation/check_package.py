#!/usr/bin/env python3
"""The Debian package of a build: check_package.py BUILD_DIRECTORY

Makes the package and looks at what is in it, what it depends on, and what the distribution's own checkers say. A test
whose tool is missing skips itself.
"""
import configparser
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ET

BUILD = pathlib.Path(sys.argv[1]).resolve()
SOURCE = pathlib.Path(__file__).resolve().parents[2]
NAME = "com.tesseral.Quillet.ENEXImport1"
SERVICE = "usr/libexec/quillet-enex-import/quillet-enex-importd"
MOST_EXPOSURE = 1.9  # of 10, as systemd-analyze counts
CONTENTS = {
    "usr/bin/quillet-enex-import", "usr/bin/quillet-note", SERVICE,
    "usr/share/quillet-enex-import/Template.html", "usr/share/quillet-enex-import/MarkdownExtensions.plist",
    "usr/share/locale/de/LC_MESSAGES/quillet-enex-import.mo",
    f"usr/share/dbus-1/services/{NAME}.service",
    *(f"usr/share/dbus-1/interfaces/{NAME}.{interface}.xml" for interface in ("QLTImportENEXProtocol", "Jobs", "Job")),
    "usr/lib/systemd/user/quillet-enex-importd.service",
    "usr/share/mime/packages/com.tesseral.Quillet.ENEXImport.xml",
    "usr/share/metainfo/com.tesseral.Quillet.ENEXImport.metainfo.xml",
    *(f"usr/share/man/man1/{program}.1.gz" for program in ("quillet-enex-import", "quillet-note", "quillet-enex-importd")),
    *(f"usr/share/bash-completion/completions/{program}" for program in ("quillet-enex-import", "quillet-note")),
    *(f"usr/share/zsh/vendor-completions/_{program}" for program in ("quillet-enex-import", "quillet-note")),
    *(f"usr/share/fish/vendor_completions.d/{program}.fish" for program in ("quillet-enex-import", "quillet-note")),
    "usr/share/doc/quillet-enex-import/copyright", "usr/share/doc/quillet-enex-import/changelog.gz",
}
LIBRARIES = {"libc6", "libstdc++6", "libgcc-s1", "libxml2", "libicu72", "libssl3", "libglib2.0-0", "libfmt9",
             "libcairo2", "libpango-1.0-0", "libpangocairo-1.0-0", "libfontconfig1", "libfreetype6", "libqpdf29"}


def needs(tool):
    return unittest.skipUnless(shutil.which(tool), f"no {tool}")


def run(*command, **settings):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False, **settings)


def ini(path):
    parser = configparser.RawConfigParser(strict=False)
    parser.optionxform = str
    parser.read(path)
    return parser


@needs("dpkg-deb")
@needs("dpkg-shlibdeps")
class Package(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        scratch = tempfile.TemporaryDirectory()
        cls.addClassCleanup(scratch.cleanup)
        cls.scratch = pathlib.Path(scratch.name)
        made = run("cpack", "-G", "DEB", "--config", BUILD / "CPackConfig.cmake", "-B", cls.scratch, cwd=cls.scratch)
        packages = list(cls.scratch.glob("*.deb"))
        if made.returncode != 0 or len(packages) != 1:
            raise RuntimeError(made.stdout)
        cls.package = packages[0]
        cls.root = cls.scratch / "root"
        subprocess.run(["dpkg-deb", "-x", cls.package, cls.root], check=True)

    def field(self, name):
        return run("dpkg-deb", "-f", self.package, name).stdout.strip()

    def test_holds_what_belongs_into_it_and_nothing_else(self):
        listed = run("dpkg-deb", "-c", self.package).stdout.splitlines()
        files = {}
        for line in listed:
            mode, owner, *_, path = line.split(None, 5)
            self.assertEqual("root/root", owner, path)
            if not path.endswith("/"):
                files[path.removeprefix("./")] = mode
            else:
                self.assertEqual("drwxr-xr-x", mode, path)
        self.assertEqual(CONTENTS, set(files))
        for path, mode in files.items():
            program = path.startswith(("usr/bin/", "usr/libexec/"))
            self.assertEqual("-rwxr-xr-x" if program else "-rw-r--r--", mode, path)

    def test_says_what_it_is_and_what_it_needs(self):
        self.assertEqual("quillet-enex-import", self.field("Package"))
        version = re.search(r"project\(\S+ VERSION (\S+)", (SOURCE / "CMakeLists.txt").read_text()).group(1)
        self.assertEqual(version, self.field("Version"))
        self.assertIn(f"({version})", (SOURCE / "data/debian/changelog").read_text().splitlines()[0])
        depends = {alternative.split()[0] for alternative in self.field("Depends").split(", ")}
        self.assertEqual(LIBRARIES, depends)
        self.assertEqual("default-dbus-session-bus | dbus-session-bus, shared-mime-info", self.field("Recommends"))

    @needs("lintian")
    def test_lintian_finds_no_error(self):
        done = run("lintian", "--fail-on", "error", "--no-cfg", "--allow-root", self.package)
        self.assertEqual(0, done.returncode, done.stdout)

    def test_the_bus_and_systemd_start_the_same_installed_program(self):
        service = ini(self.root / f"usr/share/dbus-1/services/{NAME}.service")["D-BUS Service"]
        unit = ini(self.root / "usr/lib/systemd/user" / service["SystemdService"])["Service"]
        self.assertEqual((NAME, f"/{SERVICE}"), (service["Name"], service["Exec"]))
        self.assertEqual((NAME, f"/{SERVICE}"), (unit["BusName"], unit["ExecStart"]))
        for path in (self.root / "usr/share/dbus-1/interfaces").iterdir():
            self.assertEqual(path.stem, ET.parse(path).getroot().find("interface").get("name"))

    @needs("systemd-analyze")
    def test_the_unit_is_hardened(self):
        unit = self.root / "usr/lib/systemd/user/quillet-enex-importd.service"
        score = ["systemd-analyze", "--user", "security", "--offline=true", f"--threshold={int(MOST_EXPOSURE * 10)}"]
        done = run(*score, unit, env=dict(os.environ, XDG_RUNTIME_DIR=str(self.scratch), SYSTEMD_COLORS="0"))
        exposure = re.search(r"Overall exposure level for \S+: ([\d.]+)", done.stdout)
        self.assertTrue(exposure, done.stdout)
        self.assertLessEqual(float(exposure.group(1)), MOST_EXPOSURE, done.stdout)
        self.assertEqual(0, done.returncode, done.stdout)

    @needs("appstreamcli")
    def test_the_metadata_are_valid(self):
        file = self.root / "usr/share/metainfo/com.tesseral.Quillet.ENEXImport.metainfo.xml"
        done = run("appstreamcli", "validate", "--no-net", "--no-color", file)
        self.assertEqual(0, done.returncode, done.stdout)
        self.assertNotIn("W:", done.stdout)

    @needs("update-mime-database")
    @needs("gio")
    def test_the_types_are_known(self):
        share = self.root / "usr/share"
        self.assertEqual(0, run("update-mime-database", share / "mime").returncode)
        self.addCleanup(lambda: [shutil.rmtree(path) if path.is_dir() else path.unlink()
                                 for path in (share / "mime").iterdir() if path.name != "packages"])
        samples = {"by name.enex": (b"<damaged", "application/enex+xml"),
                   "by content": (b'<?xml version="1.0"?>\n<!DOCTYPE en-export SYSTEM "x">\n<en-export/>', "application/enex+xml")}
        for name, (content, expected) in samples.items():
            (self.scratch / name).write_bytes(content)
            done = run("gio", "info", "-a", "standard::content-type", self.scratch / name,
                       env=dict(os.environ, XDG_DATA_DIRS=str(share), XDG_DATA_HOME=str(self.scratch / "none")))
            self.assertIn(f"standard::content-type: {expected}\n", done.stdout, name)

    def test_its_programs_run_from_where_it_is_unpacked(self):
        environment = {"PATH": os.environ["PATH"], "HOME": str(self.scratch)}
        done = run(self.root / "usr/bin/quillet-enex-import", SOURCE / "examples/notebook.enex", self.scratch / "out",
                   env=environment)
        self.assertEqual(1, done.returncode, done.stdout)  # the example has a broken note
        self.assertIn("notes written: 10", done.stdout)
        notes = list((self.scratch / "out").glob("*.qltnote"))
        self.assertEqual(0, run(self.root / "usr/bin/quillet-note", "check", *notes, env=environment).returncode)
        self.assertRegex(run(self.root / SERVICE, "--version", env=environment).stdout, r"^quillet-enex-importd \d")


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[2:]])
