#!/usr/bin/env python3
"""Tests zolt_sim in places whose names the dynamic loader cannot take as they are."""

import os
import pathlib
import shutil
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))
sys.path.insert(0, str(pathlib.Path(__file__).parent))

import tap  # noqa: E402
from programs import INFO, SIM, SLOT_42, TOOL, Scratch, not_emulated, run  # noqa: E402

NAMES = ("a place", "a:place", "a;place", "$ORIGIN", "a 'place' with \"all\": ;$LIB%")

# Asks each side of the board: registers, bus and I2C.
ASK = """
"$1" -o 1 -p 42
"$1" -o 11
test -c /dev/i2c-0 && echo bus
"""
ANSWER = SLOT_42 + INFO + "bus\n"


@not_emulated("the program that stands in for zolt_sim starts it in its build directory")
class Places(unittest.TestCase):
    def setUp(self):
        self.scratch = Scratch()
        self.addCleanup(self.scratch.close)
        # The tool away from its build finds the platform's libraries only where zolt_sim says.
        self.tool = shutil.copy(TOOL, self.scratch.path / "tool")
        self.scratch.environment.pop("LD_LIBRARY_PATH", None)

    def build_in(self, name):
        """Puts the build of zolt_sim into a directory below the temporary one."""
        build = pathlib.Path(SIM).parent
        place = self.scratch.path / name / "standin"
        place.mkdir(parents=True)
        for part in ("lib", "i2c_bus"):
            (place / part).symlink_to(build / part)
        (place.parent / "boards").symlink_to(build.parent / "boards")
        return shutil.copy(SIM, place / "zolt_sim")

    def ask(self, sim):
        done = run(sim, "--", "sh", "-c", ASK, "sh", self.tool, env=self.scratch.environment)
        return done.stdout, done.stderr, done.returncode

    def test_of_the_build_may_have_any_name(self):
        for name in NAMES:
            with self.subTest(name):
                self.assertEqual(self.ask(self.build_in(name)), (ANSWER, "", 0))
                self.assertEqual(self.scratch.left_behind(), [])

    def test_of_the_run_may_have_any_name(self):
        for name in NAMES:
            with self.subTest(name):
                place = self.scratch.path / name
                place.mkdir()
                self.scratch.environment["TMPDIR"] = str(place)
                self.assertEqual(self.ask(SIM), (ANSWER, "", 0))
                self.assertEqual(os.listdir(place), [])

    def test_cannot_both_have_such_a_name(self):
        sim = self.build_in("a place")
        library = pathlib.Path(sim).parent / "i2c_bus" / "libzolt_sim_i2c.so"
        self.scratch.environment["TMPDIR"] = str(self.scratch.path / "a place")
        shown, told, status = self.ask(sim)
        self.assertEqual((shown, status), ("", 125))
        self.assertRegex(
            told,
            f"^zolt_sim: the dynamic loader cannot find '{library}' or a link in "
            f"'{self.scratch.path}/a place/zolt_sim\\.\\w+', because both paths have a space, a "
            "colon, a semicolon or a dollar sign; set TMPDIR to a directory without them\n$",
        )
        self.assertEqual(sorted(os.listdir(self.scratch.path / "a place")), ["boards", "standin"])


if __name__ == "__main__":
    tap.main()
