#!/usr/bin/env python3
"""The first failures of a test program stand in the last 100 lines of its output."""

import os
import subprocess
import sys
import unittest

import tap

FAILING_TEST = os.environ.get("EMULATOR", "").split() + sys.argv[1:]


class FirstFailures(unittest.TestCase):
    def test_stand_in_standard_error(self):
        done = subprocess.run(FAILING_TEST, capture_output=True, text=True, check=False)
        self.assertEqual(done.returncode, 1)
        told = done.stderr.splitlines()
        self.assertEqual(told[0], "FAILED: Some/Failing.hasManyLines/0")
        self.assertRegex(told[1], r"failing_test\.cpp:\d+$")
        self.assertEqual(told[2:4], ["Failed", "line 1"])
        self.assertEqual(told[44:46], ["line 42", "(cut off; see testlog.txt)"])
        self.assertEqual(told[46], "FAILED: Some/Failing.hasManyLines/1")
        self.assertEqual(told[-2:], ["line 40", "(cut off; see testlog.txt)"])
        self.assertEqual(len(told), 90)

    def test_are_left_out_if_there_are_none(self):
        done = subprocess.run(
            [*FAILING_TEST, "--gtest_filter=Passing.*"], capture_output=True, text=True, check=False
        )
        self.assertEqual((done.returncode, done.stderr), (0, ""))


if __name__ == "__main__":
    tap.main()
