#!/usr/bin/env python3
"""Holds the placeholders of each translation against those of its English text.

usage: check_placeholders.py FILE.po... | --selftest

A translation may change their order ("%2$@"), not their number or kind. Prints one line a fault, exits 1 on any.
"""
import ast
import re
import sys

PLACEHOLDER = re.compile(r"%(?:\d\$)?(@|ld|%)")


def entries(lines):
    """Pairs of English text and translation, obsolete ones too."""
    texts = {"msgid": "", "msgstr": ""}
    current = None
    for line in [*lines, ""]:
        line = line.removeprefix("#~ ").strip()
        match = re.match(r'(msgid|msgstr) (".*")$', line)
        if match:
            current = match.group(1)
            if current == "msgid":
                texts["msgstr"] = ""
            texts[current] = ast.literal_eval(match.group(2))
        elif line.startswith('"') and current:
            texts[current] += ast.literal_eval(line)
        elif current == "msgstr":
            yield texts["msgid"], texts["msgstr"]
            current = None


def faults(lines):
    for english, translation in entries(lines):
        if english and translation and sorted(PLACEHOLDER.findall(english)) != sorted(PLACEHOLDER.findall(translation)):
            yield f"“{english}” and “{translation}” differ in their placeholders"


def selftest():
    good = ['msgid "%ld of %@"', 'msgstr "%2$@: %1$ld"', "", 'msgid "left"', 'msgstr ""', ""]
    assert list(faults(good)) == []
    for translation in ("%ld", "%@", "%ld %@ %@", "none"):
        assert len(list(faults(['msgid "%ld "', '"of %@"', f'msgstr "{translation}"']))) == 1, translation
    assert len(list(faults(['#~ msgid "%ld"', '#~ msgstr "%@"']))) == 1


if __name__ == "__main__":
    if sys.argv[1:] == ["--selftest"]:
        selftest()
        sys.exit(0)
    found = [f"{name}: {fault}" for name in sys.argv[1:] for fault in faults(open(name, encoding="utf-8").read().splitlines())]
    print("\n".join(found))
    sys.exit(1 if found else 0)
