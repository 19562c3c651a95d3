#!/usr/bin/env python3
"""The tool prints the same bytes in every setting: locales, terminals, pipes, files, limits."""

import os
import pathlib
import pty
import shlex
import shutil
import subprocess
import sys
import termios
import tty
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))
sys.path.insert(0, str(pathlib.Path(__file__).parent))

import tap  # noqa: E402
from programs import EMULATED, SANITIZED, SIM, TIMEOUT_SECONDS, TOOL, Scratch, not_emulated, run  # noqa: E402

# The module types of option 12. 5 to 11 go the way of 4: an emulator and a sanitizer, which take long,
# leave them out.
MODULE_TYPES = (1, 2, 3, 4, 12) if EMULATED or SANITIZED else range(1, 13)
# Options, and the answers to the questions of those that ask. The system's words for an error come
# from the options 9, 10, 13 and 15 on a missing bus, and from option 12 with a type that does not
# exist.
ONE_SHOTS = (
    "-o 1 -p 5", "-o 2 -p 5 -f 1", "-o 2 -p 5 -f 2", "-o 3 -p 5 -f 1", "-o 3 -p 5 -f 2",
    "-o 4 -f 1", "-o 4 -f 2", "-o 5 -m 15", "-o 6 -p 2", "-o 7 -d 165", "-o 8 -d 165",
    "-o 9 -d 24 -i 3 -n 5 -t 80", "-o 9 -d 24 -i 3 -n 77 -t 80", "-o 11",
    *(f"-o 12 -m {module_type}" for module_type in MODULE_TYPES),
)
DIALOGUES = (
    ("-o 1", "0"), ("-o 6", "0"), ("-o 14", "24 49 3 50 8 24"), ("-o 10", "49 50"),
    ("-o 10", "77 50"), ("-o 13", "77 1 0"), ("-o 15", "5"), ("-o 15", "77"),
    ("", "1 5 2 5 2 3 5 15 7 16 11 12 4 13 5 99 0 100"),
)
# Every option has text of its own. Without it, the comparison would say little.
EXPECTED = (
    "PICPWR 63 DSTAT", "END POINT 1", "OEM AREA SIZE", "NUMBER OF PICPWR SLOT DETAILS",
    "Battery Interposer 2 Battery Ready", "PICPWR ID         = 2", "Device Type       = PUCK",
    "Device Node Status: [0]", "I2C Open error (No such file or directory)",
    "SlotMappingComplete", "EndPoint15", "InvalidArgs: Invalid argument",
    "Device Remove Status: [", "Updated Property ID : 8", "Status [1] for node name: [/dev/i2c-5]",
)
SOURCES_OF_LOCALES = pathlib.Path("/usr/share/i18n/locales")
# Language, which has its own words for errors, encoding, mark in front of decimals.
LOCALES = (
    ("de_DE", "ISO-8859-1", ","),
    ("ja_JP", "EUC-JP", "."),
)
SMALLEST_LIMIT = 5  # the streams, a library or a bus, and one more


def script(wrapper, dialogues=DIALOGUES):
    """A shell script that runs every option with the words of a wrapper in front of the tool."""
    tool = f"{wrapper} {shlex.quote(TOOL)}"
    return "".join(f"{tool} {words} </dev/null\n" for words in ONE_SHOTS) + "".join(
        f"printf {shlex.quote(typed)} | {tool} {words}\n" for words, typed in dialogues
    )


def shell(setting):
    """A wrapper: a shell makes the setting, and becomes the tool."""
    return f"sh -c {shlex.quote(setting + '; exec ' + chr(34) + '$@' + chr(34))} sh"


class Settings(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.scratch = Scratch()
        cls.expected = cls.output("")
        cls.without_dialogues = cls.output("", ())

    @classmethod
    def tearDownClass(cls):
        cls.scratch.close()

    @classmethod
    def output(cls, wrapper, dialogues=DIALOGUES, environment=None, stdout=subprocess.PIPE):
        """What all options print, on a board of their own."""
        done = subprocess.run(
            [SIM, "--", "/bin/sh", "-c", script(wrapper, dialogues)],
            stdout=stdout, stderr=subprocess.DEVNULL, timeout=TIMEOUT_SECONDS, check=False,
            env=dict(os.environ) if environment is None else environment,
        )
        return done.stdout

    def check(self, output, expected=None):
        """Compares bytes. A difference shows its place, and not all of the output."""
        expected = self.expected if expected is None else expected
        at = next((i for i, (a, b) in enumerate(zip(output, expected)) if a != b),
                  min(len(output), len(expected)))
        self.assertEqual((at, output[at:at + 80]), (at, expected[at:at + 80]))

    def test_the_usual_output_has_text_of_every_option(self):
        for text in EXPECTED:
            with self.subTest(text):
                self.assertTrue(text.encode() in self.expected)  # assertIn() would show all

    def test_variables_of_a_terminal(self):
        for setting in ("COLUMNS=20 LINES=5 TERM=dumb", "COLUMNS=400 TERM=xterm-256color",
                        "TERM=", "POSIXLY_CORRECT=1"):
            with self.subTest(setting):
                self.check(self.output(f"env {setting}"))

    def test_an_empty_environment(self):
        self.check(self.output("", environment={}))

    def test_a_mask_that_forbids_everything(self):
        self.check(self.output(shell("umask 0777")))

    @not_emulated("the emulator needs descriptors of its own")
    @unittest.skipIf(SANITIZED, "sanitizers: they need descriptors of their own")
    def test_few_descriptors(self):
        self.check(self.output(shell(f"ulimit -n {SMALLEST_LIMIT}")))

    def test_closed_standard_error(self):
        self.check(self.output(shell("exec 2>&-")))

    def test_closed_standard_input(self):
        self.check(self.output(shell("exec <&-"), ()), self.without_dialogues)

    def test_a_file(self):
        path = self.scratch.path / "output"
        with path.open("wb") as file:
            self.output("", stdout=file)
        self.check(path.read_bytes())

    def test_a_terminal(self):
        # The terminal passes the bytes on as they are.
        for columns in (40, 160):
            with self.subTest(columns=columns):
                master, slave = pty.openpty()
                tty.setraw(slave)
                termios.tcsetwinsize(slave, (24, columns))
                path = self.scratch.path / "shown"
                with path.open("wb") as file:
                    reader = subprocess.Popen(["cat"], stdin=master, stdout=file,
                                              stderr=subprocess.DEVNULL)
                os.close(master)
                self.addCleanup(reader.kill)
                self.output("", stdout=slave)
                os.close(slave)
                reader.wait(TIMEOUT_SECONDS)  # ends with the terminal
                self.check(path.read_bytes())

    def test_locales(self):
        if shutil.which("localedef") is None or not SOURCES_OF_LOCALES.is_dir():
            self.skipTest("there are no sources of locales (package locales)")
        for language, charset, point in LOCALES:
            with self.subTest(language):
                variables = self.made_locale(language, charset, point)
                self.check(self.output("", environment=dict(os.environ, **variables)))
        self.check(self.output("env LC_ALL=C.UTF-8"))

    def made_locale(self, language, charset, point):
        """Makes a locale in the scratch directory. Returns the variables that choose it."""
        name = f"{language}.{charset}"
        made = run("localedef", "-i", language, "-f", charset, str(self.scratch.path / name))
        self.assertEqual((made.returncode, made.stderr), (0, ""))
        variables = {"LOCPATH": str(self.scratch.path), "LC_ALL": name, "LANG": name}
        shown = run("locale", "decimal_point", env=dict(os.environ, **variables))
        self.assertEqual((shown.stdout, shown.stderr), (point + "\n", ""))
        return variables


if __name__ == "__main__":
    tap.main()
