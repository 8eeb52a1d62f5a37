#!/usr/bin/env python3
"""Whole imports, compared file by file: check_imports.py BIN_DIRECTORY DATA_DIRECTORY [CASE...]

A case is a directory with input.enex (or a file `export` that names one, relative to the project's root), optionally `options` (command-line
options, one a line), `rtf` (empty: the RTF form of each note is compared too), and expected.txt: everything that the import left
behind, as text. Identifiers and the moment of the run are replaced by fixed words. QUILLET_ACCEPT=1 rewrites expected.txt; review it
like code.
"""
import json
import os
import pathlib
import plistlib
import re
import subprocess
import sys
import tempfile
import time

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent
UUID = re.compile(r"[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}")
CELL_SIZE = re.compile(r"\\width\d+ \\height\d+")  # of a file's icon with its name: depends on the fonts installed
LOG_DATE = re.compile(r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d \+0000")


def attributes(path):
    """The attributes that an output carries, a line each."""
    lines = []
    for name in sorted(os.listxattr(path)):
        value = os.getxattr(path, name)
        if name.endswith("_kMDItemUserTags"):
            shown = repr(plistlib.loads(value))
        elif name.endswith("FinderInfo"):
            shown = value[8:10].hex()
        else:
            shown = value.decode()
        lines.append(f"  {name}: {shown}")
    if any("creationDate" in line for line in lines):
        moment = int(path.stat().st_mtime)
        lines.append(f"  mtime: {moment if time.time() - moment > 86400 else 'NOW'}")
    return lines


def package(path, binaries, with_rtf):
    own = ("TXT.rtf", "NoteText", "NoteAttributes")
    lines = sorted(f"  {UUID.sub('UUID', child.name)} {'' if child.name in own else child.stat().st_size}".rstrip()
                   for child in path.iterdir())
    note = plistlib.loads((path / "NoteAttributes").read_bytes())
    note.pop("appVersion", None)
    lines += [f"  NoteAttributes {key}: {note[key]!r}" for key in sorted(note)]
    dump = subprocess.run([binaries / "quillet-dump", path], check=True, capture_output=True, text=True).stdout
    lines += [f"  | {line}" for line in dump.splitlines()]
    if with_rtf:
        lines += [f"  rtf | {CELL_SIZE.sub('SIZE', line)}" for line in (path / "TXT.rtf").read_bytes().decode("latin-1").splitlines()]
    return lines


def describe(out, reply, status, binaries, with_rtf):
    reply = json.dumps(reply, ensure_ascii=False, indent=1, sort_keys=True).replace(str(out), "OUT")
    lines = [f"exit status {status}", reply]
    for path in sorted(out.iterdir()):
        lines.append(f"== {path.name}")
        lines += attributes(path)
        if path.is_dir():
            lines += package(path, binaries, with_rtf)
        elif path.suffix in (".log", ".html"):
            lines += [f"  | {line}" for line in path.read_text().replace(str(out), "OUT").replace(str(ROOT), "ROOT").splitlines()]
        else:
            lines.append(f"  {path.stat().st_size} bytes")
    return LOG_DATE.sub("DATE", UUID.sub("UUID", "\n".join(lines))) + "\n"


def run_case(case, binaries, data):
    export = ROOT / (case / "export").read_text().strip() if (case / "export").exists() else case / "input.enex"
    options = (case / "options").read_text().split() if (case / "options").exists() else []
    with tempfile.TemporaryDirectory() as scratch:
        out = pathlib.Path(scratch) / "out"
        environment = {"PATH": os.environ["PATH"], "HOME": scratch, "TZ": "UTC", "LANG": "C.UTF-8", "QUILLET_DATA_DIR": str(data)}
        done = subprocess.run([binaries / "quillet-enex-import", "--json", *options, export, out],
                              env=environment, capture_output=True, text=True, timeout=120)
        assert done.stdout.count("\n") == 1, f"one reply on stdout expected: {done.stdout!r} {done.stderr!r}"
        return describe(out, json.loads(done.stdout), done.returncode, binaries, (case / "rtf").exists())


def main():
    binaries, data = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
    names = sys.argv[3:] or sorted(path.name for path in HERE.iterdir() if path.is_dir())
    failed = []
    for name in names:
        actual, expected = run_case(HERE / name, binaries, data), HERE / name / "expected.txt"
        if os.environ.get("QUILLET_ACCEPT"):
            expected.write_text(actual)
        elif not expected.exists() or expected.read_text() != actual:
            failed.append(name)
            made = pathlib.Path(tempfile.gettempdir()) / f"import-{name}.txt"
            made.write_text(actual)
            subprocess.run(["diff", "-u", expected, made])
    print(f"{len(names) - len(failed)} imports as expected, {len(failed)} not")
    sys.exit(1 if failed or not names else 0)


main()
