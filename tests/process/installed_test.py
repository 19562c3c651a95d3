#!/usr/bin/env python3
"""Tests the installed programs: they find their libraries and boards wherever the tree stands."""

import os
import pathlib
import re
import shutil
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))
sys.path.insert(0, str(pathlib.Path(__file__).parent))

import tap  # noqa: E402
from programs import INFO, Scratch, install, not_emulated, run  # noqa: E402

STARTS = not_emulated("this machine cannot start an installed program of another architecture")


class Installed(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.scratch = Scratch()
        cls.addClassCleanup(cls.scratch.close)
        cls.root = install(cls.scratch)
        cls.sim = cls.only("zolt_sim")
        cls.tool = cls.sim.with_name("zolt_test")

    @classmethod
    def only(cls, name):
        (path,) = (
            path for path in cls.root.rglob(name) if path.is_file() and os.access(path, os.X_OK)
        )
        return path

    def environment(self, **more):
        environment = dict(os.environ, **more)
        environment.pop("LD_LIBRARY_PATH", None)  # it would find the build's libraries
        return environment

    @STARTS
    def test_tool_asks_the_bus_of_the_installed_board(self):
        done = run(self.sim, "--", self.tool, "-o", "11", env=self.environment())
        self.assertEqual((done.stdout, done.stderr, done.returncode), (INFO, "", 0))

    @STARTS
    def test_tool_reads_the_registers_of_the_installed_board(self):
        done = run(self.sim, "--", self.tool, "-o", "1", "-p", "42", env=self.environment())
        self.assertEqual(
            (done.stdout, done.stderr), ("\nPICPWR 42 DSTAT              = 00b\n", "")
        )

    @STARTS
    def test_tree_needs_nothing_of_the_build(self):
        done = run(
            self.sim, "--", self.tool, "-o", "11", env=self.environment(LD_DEBUG="files")
        )
        loaded = set(re.findall(r"calling init: (/.*/(?:lib)?(hal|cpld|dlog|sysinfo|"
                                r"zolt_sim_i2c)\.so.*)", done.stderr))
        self.assertEqual(
            {name for _, name in loaded},
            {"hal", "cpld", "dlog", "sysinfo", "zolt_sim_i2c"},
        )
        for path, _ in loaded:
            self.assertTrue(pathlib.Path(path).is_relative_to(self.root), path)

    @STARTS
    def test_tool_is_one_file(self):
        # A copy of the program alone, the only file of the tool on a controller.
        alone = self.scratch.path / "alone" / "zolt_test"
        alone.parent.mkdir()
        shutil.copy(self.tool, alone)
        done = run(self.sim, "--", alone, "-o", "11", env=self.environment())
        self.assertEqual((done.stdout, done.stderr, done.returncode), (INFO, "", 0))

    def test_programs_pages_completions_and_licence_are_all_of_the_tool(self):
        # Boards, libraries and the programs for descriptions are the stand-in's.
        files = {path for path in self.root.rglob("*") if not path.is_dir()}
        prefix = self.sim.parent.parent
        of_the_stand_in = {
            path for path in files
            if any(name in path.relative_to(prefix).as_posix() for name in ("zolt_sim", "zolt_board"))
            or path.suffix == ".toml" or path.name in ("zolt-board.5", "zolt-findings.7")
            or path.name.endswith(".schema.json")
        }
        self.assertEqual(
            {path.relative_to(prefix).as_posix() for path in files - of_the_stand_in},
            {"share/doc/zolt_test/LICENSE"} |
            {f"{place}{program}{suffix}" for program in ("zolt_test", "zolt_capture")
             for place, suffix in (("bin/", ""), ("share/man/man1/", ".1"),
                                   ("share/bash-completion/completions/", ""))},
        )
        self.assertIn("share/man/man5/zolt-board.5",
                      {path.relative_to(prefix).as_posix() for path in of_the_stand_in})
        self.assertFalse(self.tool.is_symlink())


if __name__ == "__main__":
    tap.main()
