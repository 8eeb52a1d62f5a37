#!/usr/bin/env python3
"""Installs a build into a temporary prefix, moves it, and runs a program from there: check_installation.py BUILD PROBE"""
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

DATA = "share/quillet-enex-import"
INSTALLED = [f"{DATA}/Template.html", f"{DATA}/MarkdownExtensions.plist",
             "share/locale/de/LC_MESSAGES/quillet-enex-import.mo"]

GERMAN, ENGLISH = ["noch 2 Tage", "Titel"], ["2 days remaining", "Title"]
# Environment variables, and the texts in that language.
LANGUAGES = [
    ({"LANG": "de_DE.UTF-8"}, GERMAN),
    ({"LANG": "en_US.UTF-8", "LC_ALL": "de_AT.UTF-8"}, GERMAN),
    ({"LANG": "de_DE.UTF-8", "LC_ALL": "C"}, ENGLISH),
    ({"LANG": "ja_JP.UTF-8"}, ENGLISH),
    ({}, ENGLISH),
]


def lines(program, variables):
    environment = {"PATH": os.environ["PATH"], **variables}
    return subprocess.run([program], env=environment, stdout=subprocess.PIPE, text=True, encoding="utf-8",
                          check=True).stdout.splitlines()


def expect(what, actual, expected):
    if actual != expected:
        sys.exit(f"{what}: {actual!r} instead of {expected!r}")


def main(build, probe):
    with tempfile.TemporaryDirectory() as scratch:
        planned, prefix = pathlib.Path(scratch, "planned"), pathlib.Path(scratch, "a moved tree")
        subprocess.run(["cmake", "--install", build, "--prefix", planned], stdout=subprocess.DEVNULL, check=True)
        # Who starts the service finds it, whatever the build was configured for.
        service = planned / "libexec/quillet-enex-import/quillet-enex-importd"
        for file, line in (("share/dbus-1/services/com.tesseral.Quillet.ENEXImport1.service", f"Exec={service}"),
                           ("lib/systemd/user/quillet-enex-importd.service", f"ExecStart={service}")):
            expect(file, line in (planned / file).read_text().splitlines(), True)
        expect("service", os.access(service, os.X_OK), True)
        planned.rename(prefix)
        for name in INSTALLED:
            if not (prefix / name).is_file():
                sys.exit(f"{name} is not installed")
        program = shutil.copy(probe, prefix / "bin")
        for variables, texts in LANGUAGES:
            expect(variables, lines(program, variables), [str(prefix / DATA), "data", *texts])
        # The service's own directory lies deeper.
        deeper = prefix / "lib/deeper"
        deeper.mkdir(parents=True)
        expect("deeper", lines(shutil.copy(probe, deeper), {})[0], str(prefix / DATA))
        # What the user runs: the reason for the failed import is in the user's language.
        missing = subprocess.run([prefix / "bin/quillet-enex-import", "--json", prefix / "missing.enex", prefix / "out"],
                                 env={"PATH": os.environ["PATH"], "LANG": "de_DE.UTF-8"}, stdout=subprocess.PIPE)
        expect("import", json.loads(missing.stdout)["Error"]["localizedDescription"],
               "Die Eingabedatei kann nicht geöffnet werden.")
        # The variable names another directory, and one without data is no crash.
        expect("QUILLET_DATA_DIR", lines(program, {"QUILLET_DATA_DIR": scratch})[:2], [scratch, "no data"])
        # From a program through a link the way starts where the program is.
        link = pathlib.Path(scratch, "link")
        link.symlink_to(program)
        expect("link", lines(link, {})[0], str(prefix / DATA))


if __name__ == "__main__":
    main(*sys.argv[1:])
