#!/usr/bin/env python3
"""Holds every #include "dir/File.h" under src/ against one table of layers, and two naming rules.

usage: check_layers.py ROOT | --selftest

A directory may include itself, its ancestors, and what its row names, with everything those may include.
Prints one line a violation (file:line: what) and exits 1 when there is any.
"""
import pathlib
import re
import sys
import tempfile

# Directory -> directories directly below it in the order of building. Lowest first.
LAYERS = {
    "platform/base": [],
    "platform/foundation": ["platform/base"],
    "platform/operations": ["platform/base"],
    "platform/plist": ["platform/foundation"],
    "platform/archive": ["platform/plist"],
    "platform/files": ["platform/archive"],
    "platform/defaults": ["platform/files"],
    "platform/xml": ["platform/files"],
    "platform/graphics": ["platform/defaults"],
    "platform/text": ["platform/graphics"],
    "platform/html": ["platform/text", "platform/xml"],
    "platform/rtf": ["platform/text"],
    "platform/pasteboard": ["platform/text"],
    "platform/ipc": ["platform/operations", "platform/foundation"],
    "service/operations": ["platform/operations", "platform/foundation"],
    "util": ["platform/defaults", "platform/files"],
    "styles/base": ["platform/text"],
    "richtext/highlights": ["styles/base"],
    "styles": ["styles/base", "richtext/highlights", "platform/defaults"],
    "documents/attachments": ["styles", "platform/pasteboard"],
    "richtext": ["richtext/highlights", "documents/attachments", "util", "platform/html"],
    "documents": ["documents/attachments", "richtext", "platform/rtf"],
    "enex": ["service/operations", "util", "platform/xml"],
    "conversion": ["enex", "documents", "platform/html"],
    "service": ["service/operations", "conversion", "platform/ipc"],
    "programs/export": ["documents"],
    "programs": ["programs/export", "service"],
    "programs/main": ["programs"],
}

# A library header may be included only below its folder (nothing of the libraries leaks upwards).
LIBRARY_HEADERS = [
    (re.compile(r"libxml/"), ["platform/xml"]),
    (re.compile(r"unicode/"), ["platform/foundation"]),
    (re.compile(r"(cairo|pango|fontconfig|qpdf)[/.-]?"), ["platform/graphics"]),
    (re.compile(r"(gio|glib)/|g(io|lib)(-unix)?\.h"), ["platform/ipc"]),
    (re.compile(r"plist/"), ["platform/plist"]),
    (re.compile(r"openssl/"), ["platform/foundation"]),
    (re.compile(r"nlohmann/|CLI/"), ["programs/main", "programs/export"]),
]

INCLUDE = re.compile(r'^\s*#\s*include\s*(["<])([^">]+)[">]')
APPLICATION_NAME = re.compile(r"\b(QLT|Evernote)[A-Za-z]*")


def allowed(directory):
    """All directories that one may include, itself included."""
    seen, todo = set(), [directory]
    while todo:
        current = todo.pop()
        if current not in seen:
            seen.add(current)
            todo.extend(LAYERS.get(current, []))
    return seen


def check_file(path, directory):
    may = allowed(directory)
    is_test = path.name.endswith("_test.cpp")
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        if directory.startswith("platform/") and not is_test:
            name = APPLICATION_NAME.search(line)
            if name:
                yield number, f"application name {name.group(0)} under platform/"
        match = INCLUDE.match(line)
        if not match:
            continue
        quote, target = match.groups()
        if quote == "<":
            for pattern, places in LIBRARY_HEADERS:
                if pattern.match(target) and directory not in places:
                    yield number, f"library header <{target}> belongs in {', '.join(places)}"
            continue
        folder = str(pathlib.PurePosixPath(target).parent)
        if folder == "tests/support" and is_test:
            continue
        if folder not in LAYERS:
            yield number, f'include "{target}" is not a full path from src/'
        elif folder not in may:
            yield number, f"{directory} may not include {folder}"


def check(root):
    source, problems = pathlib.Path(root) / "src", []
    for path in sorted(source.rglob("*")):
        if path.suffix not in (".h", ".cpp"):
            continue
        directory = str(path.parent.relative_to(source))
        if directory not in LAYERS:
            problems.append(f"{path}:1: directory {directory} has no row in the table of layers")
            continue
        problems += [f"{path}:{number}: {text}" for number, text in check_file(path, directory)]
    return problems


def selftest():
    """A planted wrong include, a leaked library header and a misplaced name must each be found."""
    cases = {
        "platform/base/A.h": '#include "platform/text/AttributedString.h"\n',
        "enex/B.cpp": "#include <libxml/parser.h>\n",
        "platform/text/C.h": "class QLTThing;\n",
        "util/D.cpp": '#include "D.h"\n',
    }
    for name, text in cases.items():
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "src" / name
            path.parent.mkdir(parents=True)
            path.write_text(text)
            assert len(check(folder)) == 1, name
    with tempfile.TemporaryDirectory() as folder:
        path = pathlib.Path(folder) / "src/util/E.cpp"
        path.parent.mkdir(parents=True)
        path.write_text('#include "platform/base/Result.h"\n')
        assert check(folder) == []


if __name__ == "__main__":
    if sys.argv[1:] == ["--selftest"]:
        selftest()
    else:
        found = check(sys.argv[1])
        print("\n".join(found))
        sys.exit(1 if found else 0)
