#!/usr/bin/env python3
"""Types at an interactive bash on a terminal, and reads the lines that completion makes."""

import os
import pathlib
import re
import shutil
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))
sys.path.insert(0, str(pathlib.Path(__file__).parent))

import tap  # noqa: E402
from programs import Scratch, install, not_emulated  # noqa: E402
from terminal import Terminal  # noqa: E402

PACKAGE = pathlib.Path("/usr/share/bash-completion/bash_completion")

# Control-G shows the line, and Control-U empties it. Meta-* inserts all possible words.
START = r"""
PS1='' PS2=''
bind 'set bell-style none'
bind 'set enable-bracketed-paste off'
bind 'set completion-query-items 0'
bind 'set page-completions off'
bind -x '"\C-g": printf "\nline<%s>end\n" "$READLINE_LINE"'
"""


@unittest.skipUnless(shutil.which("bash"), "there is no bash")
@not_emulated("this machine cannot start an installed program of another architecture")
class Completion(unittest.TestCase):
    package = False
    programs = ("~/a\\ prefix/bin/zolt_sim", "../a\\ prefix/bin/zolt_sim")

    @classmethod
    def setUpClass(cls):
        cls.scratch = Scratch()
        cls.addClassCleanup(cls.scratch.close)
        root = install(cls.scratch)
        (sim,) = (path for path in root.rglob("zolt_sim") if path.parent.name == "bin")
        # The prefix of the build means nothing here: this tree has one of its own.
        cls.prefix = cls.scratch.path / "a prefix"
        shutil.move(sim.parents[1], cls.prefix)
        (cls.scratch.path / "plain").symlink_to(cls.prefix)
        cls.work = cls.scratch.path / "work"
        cls.work.mkdir()
        for name in ("demonstration.toml", "mine.toml", "notes.txt"):
            (cls.work / name).write_text("")
        (cls.work / "logs here").mkdir()

    def setUp(self):
        environment = dict(
            os.environ, PATH=f"{self.prefix}/bin:{os.environ['PATH']}", INPUTRC="/dev/null",
            TERM="dumb", LC_ALL="C.UTF-8", HOME=str(self.scratch.path), HISTFILE="",
            XDG_DATA_DIRS=f"{self.prefix}/share",
        )
        environment.pop("LD_LIBRARY_PATH", None)
        self.shell = Terminal(
            self, "bash", "--norc", "--noprofile", "-i", env=environment, cwd=self.work
        )
        completions = self.prefix / "share/bash-completion/completions"
        start = self.scratch.file("start", START + (
            f". {PACKAGE}\n" if self.package else
            "".join(f". '{completions}/{name}'\n"
                    for name in ("zolt_board", "zolt_sim", "zolt_test"))
        ) + "printf 'rea%s\\n' dy\n")
        self.shell.type(f". {start}\n")
        self.shell.shown_until("ready\n")

    def completed(self, line, keys="\t"):
        """Types a line and keys. Returns the line that is there then."""
        self.shell.type(line + keys + "\x07")
        shown = self.shell.shown_until(">end\n")
        self.shell.type("\x15")
        return re.findall("line<(.*)>end", shown)[-1]

    def assert_words(self, line, *words):
        """Checks all words that can stand in place of the last word of a line."""
        start = line[:line.rindex(" ") + 1]
        self.assertEqual(self.completed(line, "\x1b*"), start + " ".join(words) + " ")

    def test_names_boards_of_the_installed_tree(self):
        for typed, line in (
            ("zolt_sim --board h", "zolt_sim --board hostile "),
            ("zolt_sim --board raw", "zolt_sim --board raw_only "),
            ("zolt_sim --board mi", "zolt_sim --board mine.toml "),
            ("zolt_sim --board=h", "zolt_sim --board=hostile "),
            ("zolt_sim --board no", "zolt_sim --board no"),
            ("zolt_sim --check demo h", "zolt_sim --check demo hostile "),
        ):
            with self.subTest(typed):
                self.assertEqual(self.completed(typed), line)
        self.assert_words("zolt_sim --board de", "demo", "demonstration.toml")

    def test_follows_a_path_to_the_program(self):
        # bash loads a completion at the first word, but uses it for a path from the second word on.
        self.completed("zolt_sim --v")
        for sim in self.programs:
            with self.subTest(sim):
                self.assertEqual(self.completed(f"{sim} --board h"), f"{sim} --board hostile ")

    def test_names_boards_that_somebody_adds(self):
        (boards,) = self.prefix.rglob("boards")
        added = boards / "brandnew.toml"
        added.write_text("")
        self.addCleanup(added.unlink)
        self.assertEqual(self.completed("zolt_sim --board br"), "zolt_sim --board brandnew ")

    def test_writes_fault_rules_in_quotes(self):
        for typed, line in (
            ("zolt_sim --fault sys", "zolt_sim --fault 'sysinfo "),
            ("zolt_sim --fault 'na", "zolt_sim --fault 'named-read "),
            ('zolt_sim --fault "na', 'zolt_sim --fault "named-read '),
            ("zolt_sim --fault='na", "zolt_sim --fault='named-read "),
            # A rule that is whole gets its quote; one that can go on stays open.
            ("zolt_sim --fault 'bus ", "zolt_sim --fault 'bus absent' "),
            ("zolt_sim --fault 'named-read PICPWR_63_DS",
             "zolt_sim --fault 'named-read PICPWR_63_DSTAT"),
            ("zolt_sim --fault 'named-read PICPWR_63_DSTAT o",
             "zolt_sim --fault 'named-read PICPWR_63_DSTAT once"),
            ("zolt_sim --fault 'raw-read 0x1000 st",
             "zolt_sim --fault 'raw-read 0x1000 status "),
            ("zolt_sim --fault 'raw-read 0x1000 status ",
             "zolt_sim --fault 'raw-read 0x1000 status "),
            ("zolt_sim --fault 'raw-read 0x1000 status 3 on",
             "zolt_sim --fault 'raw-read 0x1000 status 3 once"),
            ("zolt_sim --fault 'raw-read 0x1000 de", "zolt_sim --fault 'raw-read 0x1000 delay "),
            ("zolt_sim --fault 'raw-read 0x1000 un", "zolt_sim --fault 'raw-read 0x1000 un"),
            ("zolt_sim --fault 'i2c-open 5 un", "zolt_sim --fault 'i2c-open 5 until "),
            ("zolt_sim --fault 'sysinfo PUC", "zolt_sim --fault 'sysinfo PUCK"),
            ("zolt_sim --fault 'bus absent' --fault 'service ",
             "zolt_sim --fault 'bus absent' --fault 'service absent' "),
            ("zolt_sim --fault 'nonsense x", "zolt_sim --fault 'nonsense x"),
            ("zolt_sim --fault '* x", "zolt_sim --fault '* x"),
        ):
            with self.subTest(typed):
                self.assertEqual(self.completed(typed), line)

    def test_knows_the_registers_of_the_board(self):
        board = self.work / "mine.toml"
        board.write_text("[override.named]\nFRESH_REGISTER = 1\n")
        self.addCleanup(board.write_text, "")
        self.assertEqual(
            self.completed("zolt_sim --board mine.toml --fault 'named-read FR"),
            "zolt_sim --board mine.toml --fault 'named-read FRESH_REGISTER",
        )

    def test_has_every_option_and_list(self):
        self.assert_words(
            "zolt_sim --", "--", "--board", "--bus-log", "--call-log", "--check", "--debug-log",
            "--fault", "--help", "--i2c-log", "--kernel-buses", "--list", "--log-times", "--version",
        )
        self.assertEqual(self.completed("zolt_sim --log"), "zolt_sim --log-times ")
        self.assert_words(
            "zolt_sim --list ", "boards", "device-types", "fault-times", "faults",
            "interfaces", "properties",
            "registers",
        )
        self.assertEqual(self.completed("zolt_sim --list boards dev"),
                         "zolt_sim --list boards device-types ")

    def test_takes_any_file_for_a_log(self):
        for option in ("--debug-log", "--call-log", "--i2c-log", "--bus-log"):
            self.assertEqual(self.completed(f"zolt_sim {option} no"),
                             f"zolt_sim {option} notes.txt ")
        self.assertEqual(self.completed("zolt_sim --call-log lo"),
                         "zolt_sim --call-log logs\\ here/")

    def test_knows_the_options_of_the_tool(self):
        self.assertEqual(self.completed("zolt_test -o 1 -p 6"), "zolt_test -o 1 -p 6")
        self.assert_words("zolt_test -f ", "1", "2", "3")
        self.assert_words("zolt_test -", "-d", "-f", "-i", "-m", "-n", "-o", "-p", "-t")

    def test_knows_verbs_options_and_boards_of_zolt_board(self):
        for typed, line in (
            ("zolt_board sh", "zolt_board show "),
            ("zolt_board --v", "zolt_board --version "),
            ("zolt_board show --t", "zolt_board show --tree "),
            ("zolt_board show --color al", "zolt_board show --color always "),
            ("zolt_board show --color=ne", "zolt_board show --color=never "),
            ("zolt_board show --tree h", "zolt_board show --tree hostile "),
            ("zolt_board show raw", "zolt_board show raw_only "),
            ("zolt_board show mi", "zolt_board show mine.toml "),
            ("zolt_board show logs", "zolt_board show logs\\ here/"),
        ):
            with self.subTest(typed):
                self.assertEqual(self.completed(typed), line)
        self.assert_words("zolt_board show --", "--color", "--help", "--json", "--tree",
                          "--version")
        self.assert_words("zolt_board show de", "demo", "demonstration.toml")


@unittest.skipUnless(PACKAGE.exists(), "bash-completion is not installed")
@not_emulated("this machine cannot start an installed program of another architecture")
class CompletionPackage(Completion):
    """The same with Debian's package, which finds the completions by itself."""

    package = True
    programs = ("../plain/bin/zolt_sim",)  # the package takes no backslash and no tilde

    def test_completes_the_command_behind_the_options(self):
        for typed, line in (
            ("zolt_sim --board demo -- zolt_test -f ", "-f 1 2 3 "),
            ("zolt_sim --board=demo zolt_test -f ", "-f 1 2 3 "),
            ("zolt_sim --fault 'bus absent' --log-times zolt_test -f ", "-f 1 2 3 "),
        ):
            with self.subTest(typed):
                self.assertTrue(self.completed(typed, "\x1b*").endswith(line))


if __name__ == "__main__":
    tap.main()
