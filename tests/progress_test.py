#!/usr/bin/env python3
"""Tests the progress that scripts/run shows, with programs in place of Meson and Ninja."""

import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent / "support"))

import tap  # noqa: E402

LIBRARY = pathlib.Path(__file__).resolve().parents[1] / "scripts" / "lib.sh"

# The standard input and output of the script belong to the tool that it starts.
SCRIPT = """
set -euo pipefail
source "$1"
top=$2
progress=$3
build "$2/build" all
cat
"""
MESON = "mkdir -p \"$2\"; : > \"$2/build.ninja\"; echo 'Build targets: 3'"
STEPS = "echo \"ninja: Entering directory 'x'\"; echo '[1/3] Compiling a'; echo '[2/3] Compiling b'"
BUILDS = f"{STEPS}; echo '[3/3] Linking c'"
IDLE = "echo \"ninja: Entering directory 'x'\"; echo 'ninja: no work to do.'"
FAILS = f"{STEPS}; echo 'FAILED: b.o'; echo 'c++ b.cpp'; echo 'b.cpp:1: error'; exit 1"


class Progress(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.top = pathlib.Path(directory.name)
        self.program("meson", MESON)

    def program(self, name, script):
        path = self.top / "bin" / name
        path.parent.mkdir(exist_ok=True)
        path.write_text(f"#!/bin/sh\n{script}\n")
        path.chmod(0o755)

    def build(self, ninja, progress="10", **options):
        self.program("ninja", ninja)
        return subprocess.run(
            ["bash", "-c", SCRIPT, "run", LIBRARY, self.top, progress], text=True, check=False,
            stdout=subprocess.PIPE, input="typed\n",
            env=dict(os.environ, PATH=f"{self.top}/bin:{os.environ['PATH']}"),
            **({"stderr": subprocess.PIPE} | options),
        )

    def on_a_terminal(self, ninja):
        terminal, ours = os.openpty()
        try:
            done = self.build(ninja, stderr=ours)
            os.close(ours)
            shown = b""
            while piece := self.more(terminal):
                shown += piece
        finally:
            os.close(terminal)
        return done, shown.decode().replace("\r\n", "\n")

    def more(self, terminal):
        try:
            return os.read(terminal, 4096)
        except OSError:  # the last process has closed the terminal
            return b""

    def test_is_told_in_lines(self):
        done = self.build(BUILDS)
        self.assertEqual(
            (done.stdout, done.stderr, done.returncode),
            ("typed\n",
             "run: building in build\nrun: configuring the build\nrun: building 1 of 3\n", 0),
        )

    def test_is_told_again_after_a_while(self):
        done = self.build(f"{STEPS}; sleep 2; echo '[3/3] Linking c'", progress="1")
        self.assertTrue(
            done.stderr.endswith("\nrun: building 3 of 3\n"), done.stderr
        )

    def test_changes_one_line_of_a_terminal(self):
        done, shown = self.on_a_terminal(BUILDS)
        self.assertEqual((done.stdout, done.returncode), ("typed\n", 0))
        self.assertEqual(
            shown,
            "run: building in build\nrun: configuring the build\n"
            "\rrun: building 1 of 3\rrun: building 2 of 3\rrun: building 3 of 3"
            f"\r{20 * ' '}\r",
        )

    def test_is_silent_when_there_is_nothing_to_build(self):
        self.assertEqual(self.build(BUILDS).returncode, 0)
        done = self.build(IDLE)
        self.assertEqual((done.stdout, done.stderr, done.returncode), ("typed\n", "", 0))
        done, shown = self.on_a_terminal(IDLE)
        self.assertEqual((done.stdout, shown, done.returncode), ("typed\n", "", 0))

    def test_leaves_the_messages_of_a_failure(self):
        self.assertEqual(self.build(BUILDS).returncode, 0)
        failure = "FAILED: b.o\nc++ b.cpp\nb.cpp:1: error\n"
        done = self.build(FAILS)
        self.assertEqual(
            (done.stdout, done.stderr, done.returncode),
            ("", f"run: building 1 of 3\n{failure}", 1),
        )
        done, shown = self.on_a_terminal(FAILS)
        self.assertEqual(done.returncode, 1)
        self.assertTrue(shown.endswith(f"\r{20 * ' '}\r{failure}"), shown)

    def test_is_for_the_scripts_that_ask_for_it(self):
        done = self.build(BUILDS, progress="")
        self.assertEqual((done.stdout, done.stderr), ("typed\n", "run: building in build\n"))


if __name__ == "__main__":
    tap.main()
