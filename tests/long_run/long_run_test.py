#!/usr/bin/env python3
"""Tests of the long runs: a short run with the programs, and runs with programs that do something wrong."""

import contextlib
import io
import os
import pathlib
import random
import signal
import sys
import tempfile
import unittest

TESTS = pathlib.Path(__file__).parent.parent
sys.path += [str(TESTS / "support"), str(TESTS / "process"), str(TESTS / "long_run")]

import long_run  # noqa: E402
import tap  # noqa: E402
from orphans import adopt_orphans  # noqa: E402
from programs import SANITIZED, not_emulated  # noqa: E402

# Stands in for zolt_sim: leaves out its own words and runs the command. Some lines go in front of that.
SIM = """#!/bin/sh
{}
while [ "$1" != -- ]; do shift; done
shift
"$@"
"""

# Stands in for the tool: prints a pass after each PASS, and ends with END.
TOOL = f"""#!{sys.executable}
import os, sys
if len(sys.argv) > 1:
    print("report")
    sys.exit(0)
kept = []
print("menu", end="", flush=True)
for number in range(1, 1_000_000):
    for _ in range({len(long_run.PASS.splitlines())}):
        if sys.stdin.readline() == {long_run.END.decode()!r}:
            sys.exit(0)
    {{}}
    print("pass menu", end="", flush=True)
"""


@not_emulated("the processes are the emulator's")
@unittest.skipIf(SANITIZED, "a sanitizer keeps memory that was given back")
class LongRun(unittest.TestCase):
    def setUp(self):
        adopt_orphans()
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.programs = tempfile.TemporaryDirectory()
        self.addCleanup(self.programs.cleanup)
        self.around = long_run.Surroundings(scratch.name)
        self.addCleanup(self.end_all)
        self.addCleanup(setattr, long_run, "PATIENCE", long_run.PATIENCE)

    def end_all(self):
        for pid in long_run.descendants(os.getpid()):
            os.kill(pid, signal.SIGKILL)
        self.around.leftovers()

    def program(self, name, text):
        path = pathlib.Path(self.programs.name, name)
        path.write_text(text)
        path.chmod(0o755)
        return str(path)

    def wrong(self, run, *arguments, sim="", tool="pass"):
        """What a run says about programs that do something wrong."""
        self.around.sim = self.program("sim", SIM.format(sim))
        self.around.tool = self.program("tool", TOOL.format(tool))
        long_run.PATIENCE = 2
        with contextlib.redirect_stdout(io.StringIO()), self.assertRaises(long_run.Wrong) as caught:
            run(self.around, *arguments)
        return str(caught.exception)

    def test_short_run(self):
        printed = io.StringIO()
        with contextlib.redirect_stdout(printed):
            long_run.passes(self.around, 200)
            long_run.commands(self.around, 5)
            long_run.kills(self.around, 10, random.Random(1))
        self.around.require_clean()
        for part in ("200 passes of ", "descriptors after pass 100: 3, at the end 3\n", "\n5 commands, ",
                     "\n10 kills: "):
            self.assertIn(part, printed.getvalue())

    def test_other_bytes(self):
        self.assertEqual(self.wrong(long_run.passes, 10, tool='print("PASS MENU" * (number == 7), end="")'),
                         "pass 7 prints other bytes than a fresh tool")

    def test_end_before_the_last_pass(self):
        self.assertEqual(self.wrong(long_run.passes, 10, tool="number == 7 and sys.exit(0)"),
                         "the output ends after 0 of 9 bytes")

    def test_memory_that_grows(self):
        self.assertEqual(self.wrong(long_run.passes, 100, tool="kept.append(bytearray(4096))"),
                         "the tool's memory grows")

    def test_descriptors_that_stay_open(self):
        self.assertEqual(self.wrong(long_run.passes, 100, tool="os.dup(0)"), "the tool's descriptors grow")

    def test_status(self):
        self.assertEqual(self.wrong(long_run.passes, 10, tool="number > 1 and sys.exit(3)"),
                         "the output ends after 0 of 9 bytes")

    def test_file_left_behind(self):
        left = self.wrong(long_run.commands, 2, sim="touch $TMPDIR/left", tool="pass")
        self.assertEqual(left, f"left behind: ['{self.around.scratch}/left']")

    def test_process_left_behind(self):
        left = self.wrong(long_run.commands, 2, sim="sleep 9 >&- 2>&- <&- &")
        self.assertRegex(left, r"^left behind: \['process \d+: sleep'")

    def test_start_that_fails_after_a_kill(self):
        wrong = self.wrong(long_run.kills, 3, random.Random(1),
                           sim='[ -e "$0.ran" ] && exit 1; case $* in *"-o 1") : >"$0.ran" ;; esac')
        self.assertRegex(wrong, r"^kill 1, of .*: the next start fails$")


if __name__ == "__main__":
    tap.main()
