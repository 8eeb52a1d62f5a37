#!/usr/bin/env python3
"""What a program offers is what its manual page and its completions name: check_help.py BIN_DIRECTORY DATA_DIRECTORY

The completions of bash, zsh and fish are also run where the shell is installed, and the manual pages are read by the
formatters that are.
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

BINARIES, DATA = (pathlib.Path(argument).resolve() for argument in sys.argv[1:3])
COMPLETED = ["quillet-enex-import", "quillet-note"]
PROGRAMS = [*COMPLETED, "quillet-enex-importd"]
COMMANDS = {"quillet-note": ["show", "export", "check"]}
FORMATS = ["html", "rtf", "rtfd", "markdown", "text", "json"]
OPTION = r"(?<![\w-])--?[a-z][a-z-]*"


def output(*command, **settings):
    return subprocess.run(command, capture_output=True, text=True, check=True, **settings).stdout


def options_of(program):
    """The options that the help lists, of the program and of its commands."""
    texts = [output(BINARIES / program, "--help"),
             *(output(BINARIES / program, command, "--help") for command in COMMANDS.get(program, []))]
    listed = [line for text in texts for line in text.splitlines() if re.match(r"\s+-", line)]
    return {option for line in listed for option in re.findall(OPTION, re.split(r"\s{2,}", line.strip())[0])}


def manual(program):
    """The page's text without its markup."""
    text = (DATA / f"man/{program}.1").read_text()
    return re.sub(r"\\f[A-Z]", "", text.replace("\\-", "-")).replace('"', "")


def offered_by(file):
    """The options of a completion, in any of the three languages."""
    text = file.read_text()
    if file.suffix == ".fish":
        return {f"--{name}" for name in re.findall(r" -l (\S+)", text)} | {f"-{name}" for name in re.findall(r" -s (\S+)", text)}
    if file.suffix == ".bash":
        text = " ".join(re.findall(r'compgen -W "([^"]*)"', text))
    else:
        # Without descriptions, and without the lists of options that exclude each other.
        text = re.sub(r"\[[^]]*\]|\(-[^)]*\)|_files -g|_arguments -\w+|^.*local.*$", " ", text, flags=re.MULTILINE)
        text = text.replace("{", " ").replace(",", " ").replace(")", " ").replace("'", " ")
    return set(re.findall(OPTION, text))


def completion_files(program):
    return [DATA / f"completions/{program}.bash", DATA / f"completions/_{program}", DATA / f"completions/{program}.fish"]


class Help(unittest.TestCase):
    def test_the_help_lists_options(self):
        self.assertEqual({"-h", "--help", "--debug", "--web-clippings-as-notes", "--json", "--service", "-v", "--verbose", "-q",
                          "--quiet", "--version"}, options_of("quillet-enex-import"))
        self.assertEqual({"-h", "--help", "--version", "--to", "-o", "--output"}, options_of("quillet-note"))

    def test_manual_pages_name_every_option_and_no_other(self):
        for program in PROGRAMS:
            with self.subTest(program):
                page = manual(program)
                section = page[page.index(".SH OPTIONS"):]
                section = section[:section.index(".SH", 4)]
                named = set(re.findall(OPTION, " ".join(re.findall(r"^\.BR? .*|^\.BI .*", section, re.MULTILINE))))
                self.assertEqual(options_of(program), named)

    def test_completions_offer_every_option_and_no_other(self):
        for program in COMPLETED:
            for file in completion_files(program):
                with self.subTest(file.name):
                    self.assertEqual(options_of(program), offered_by(file))

    def test_commands_and_formats_are_named_everywhere(self):
        for file in [DATA / "man/quillet-note.1", *completion_files("quillet-note")]:
            words = set(re.findall(r"\w+", file.read_text()))
            self.assertLessEqual({*COMMANDS["quillet-note"], *FORMATS}, words, file.name)
        help_text = output(BINARIES / "quillet-note", "--help")
        self.assertEqual(COMMANDS["quillet-note"], re.findall(r"^  (\w+) ", help_text[help_text.index("Subcommands"):], re.MULTILINE))

    def test_manual_pages_name_every_exit_status(self):
        for program in COMPLETED:
            with self.subTest(program):
                footer = output(BINARIES / program, "--help").split("Exit status:")[1]
                page = manual(program)
                section = page[page.index(".SH EXIT STATUS"):]
                section = section[:section.index(".SH", 4)]
                in_page = re.findall(r"\d+", " ".join(re.findall(r"^\.BR? .*", section, re.MULTILINE)))
                self.assertEqual(sorted(re.findall(r"\d+", footer)), sorted(in_page))

    def test_manual_pages_have_no_errors(self):
        tools = [(["mandoc", "-T", "lint", "-W", "warning"], "mandoc"),
                 (["man", "--warnings", "-E", "UTF-8", "-l", "-Tutf8", "-Z"], "man")]
        tools = [command for command, name in tools if shutil.which(name)]
        if not tools:
            self.skipTest("neither mandoc nor man")
        for command in tools:
            for program in PROGRAMS:
                with self.subTest(program=program, tool=command[0]):
                    done = subprocess.run([*command, DATA / f"man/{program}.1"], capture_output=True, text=True, check=False,
                                          env=dict(os.environ, MANWIDTH="80"))
                    complaints = done.stderr + (done.stdout if command[0] == "mandoc" else "")
                    self.assertEqual((0, ""), (done.returncode, complaints))


class Shells(unittest.TestCase):
    """What the shells make of the completions: a command line with the cursor at its end, and what they offer."""

    NOTE_CASES = [(["quillet-note", "e"], {"export"}),
                  (["quillet-note", "export", "--to", "rt"], {"rtf", "rtfd"}),
                  (["quillet-note", "export", "--o"], {"--output"}),
                  (["quillet-enex-import", "--j"], {"--json"}),
                  (["quillet-enex-import", "Ex"], {"Export.enex", "Exports"}),
                  (["quillet-note", "show", "N"], {"Note.qltnote"})]

    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.place = pathlib.Path(scratch.name)
        for name in ("Export.enex", "Extra.txt"):
            (self.place / name).write_text("")
        for name in ("Exports", "Note.qltnote"):
            (self.place / name).mkdir()

    def check(self, offered, what):
        for words, expected in self.NOTE_CASES:
            with self.subTest(words):
                self.assertEqual(expected, {word.rstrip("/") for word in offered(words)}, what)

    def test_bash(self):
        def offered(words):
            script = ('source "$1"; COMP_WORDS=("${@:2}"); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); '
                      '_${COMP_WORDS[0]//-/_}; printf "%s\\n" "${COMPREPLY[@]}"')
            return output("bash", "-c", script, "bash", DATA / f"completions/{words[0]}.bash", *words, cwd=self.place).split()
        self.check(offered, "bash")

    def test_fish(self):
        if not shutil.which("fish"):
            self.skipTest("no fish")

        def offered(words):
            script = f"source {DATA}/completions/{words[0]}.fish; complete -C '{' '.join(words)}'"
            lines = output("fish", "-N", "-c", script, cwd=self.place, env=dict(os.environ, HOME=str(self.place))).splitlines()
            return {line.split("\t")[0] for line in lines} - {"Extra.txt"}  # fish offers every file
        self.NOTE_CASES = self.NOTE_CASES[:4]
        self.check(offered, "fish")

    def test_zsh(self):
        if not shutil.which("zsh"):
            self.skipTest("no zsh")
        for program in COMPLETED:
            script = f"fpath=({DATA}/completions $fpath); autoload -Uz compinit; compinit -u -D; print -r -- $_comps[{program}]"
            self.assertEqual(f"_{program}\n", output("zsh", "-f", "-c", script, cwd=self.place))
            output("zsh", "-f", "-n", DATA / f"completions/_{program}")


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]])
