#!/usr/bin/env python3
"""Writes the table of HTML's named character references (HTML standard, section 13.5).

usage: make_html_references.py           write src/platform/xml/HTMLReferenceTable.inc
       make_html_references.py --check   say whether the file is what would be written
"""

import html.entities
import pathlib
import sys

TARGET = pathlib.Path(__file__).parent.parent / "src/platform/xml/HTMLReferenceTable.inc"
WIDTH = 118


def table():
    names = html.entities.html5
    rows = []
    for name in sorted(name[:-1] for name in names if name.endswith(";")):
        points = [ord(character) for character in names[name + ";"]] + [0]
        bare = "true" if name in names else "false"
        rows.append(f'{{"{name}", {points[0]:#x}, {points[1]:#x}, {bare}}},')
    lines = ["// Written by tools/make_html_references.py. Sorted: name, first and second code point, whether it needs no semicolon."]
    line = ""
    for row in rows:
        if line and len(line) + 1 + len(row) > WIDTH:
            lines.append(line)
            line = ""
        line += (" " if line else "") + row
    return "\n".join(lines + [line]) + "\n"


def main():
    if sys.argv[1:] == ["--check"]:
        if TARGET.read_text() != table():
            sys.exit(f"{TARGET} is not what {sys.argv[0]} writes")
    else:
        TARGET.write_text(table())


if __name__ == "__main__":
    main()
