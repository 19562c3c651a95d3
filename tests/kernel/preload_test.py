#!/usr/bin/env python3
"""Runs the checks of a real kernel on the preload library, which must give the same output."""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))

import checks  # noqa: E402
import tap  # noqa: E402

TOOLS = shutil.which("i2ctransfer", path="/usr/sbin:/sbin:" + os.environ.get("PATH", ""))


def test_of(check):
    def test(self):
        if TOOLS is None:
            self.skipTest("i2c-tools is not installed")
        with tempfile.TemporaryDirectory() as scratch:
            script = check.script(
                [os.environ["ZOLT_SIM"], "--board", str(checks.BOARD)],
                TOOL=os.environ["ZOLT_TEST"], PROBE=os.environ["BUS_PROBE"],
                I2C=os.path.dirname(TOOLS),
            )
            done = subprocess.run(["sh"], input=script, cwd=scratch, capture_output=True,
                                  timeout=100, check=False)
        self.assertEqual(done.stdout.decode(), check.expected.decode(), done.stderr.decode())

    return test


class Preload(unittest.TestCase):
    pass


for each in checks.all_checks():
    if not each.needs_kernel:
        setattr(Preload, f"test_{each.name}", test_of(each))

if __name__ == "__main__":
    tap.main()
