#!/usr/bin/env python3
"""The judgement of the virtual machine's log and results."""

import io
import pathlib
import sys
import tarfile
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))

import tap  # noqa: E402
from virtual_machine import Failure, check_log, unpacked  # noqa: E402

GOOD = """[    2.252675] zolt_bus: loading out-of-tree module taints kernel.
[    2.253580] zolt_bus: module verification failed: signature and/or required key missing - tainting kernel
[    2.256000] ledtrig-cpu: registered to indicate activity on CPUs
[   68.649994] RESULT: all jobs ran
[   68.676202] reboot: Power down
"""


class Log(unittest.TestCase):
    def refused(self, log, reason):
        with self.assertRaises(Failure) as caught:
            check_log(log)
        self.assertEqual(str(caught.exception).splitlines()[:2], reason)

    def test_without_a_complaint_passes(self):
        check_log(GOOD)

    def test_with_a_complaint_fails(self):
        for line in (
            "[    1.0] WARNING: CPU: 0 PID: 1 at lib/refcount.c:28 refcount_warn_saturate+0x1/0x2",
            "[    1.0] refcount_t: underflow; use-after-free.",
            "[    1.0] BUG: sleeping function called from invalid context at mm/slab.h:1",
            "[    1.0] BUG kmalloc-128 (Tainted: G    B      OE     ): Redzone overwritten",
            "[    1.0] Unable to handle kernel NULL pointer dereference at virtual address 0",
            "[    1.0] Internal error: Oops: 0000000096000004 [#1] SMP",
            "[    1.0] Kernel panic - not syncing: Attempted to kill init!",
            "[    1.0] WARNING: possible circular locking dependency detected",
            "[    1.0] INFO: task zolt_test:123 blocked for more than 120 seconds.",
        ):
            with self.subTest(line):
                self.refused(line + "\n" + GOOD, ["the kernel complains:", line])

    def test_without_its_result_line_fails(self):
        reason = "the result line is missing; the log ends:"
        lines = GOOD.splitlines()
        self.refused("\n".join(lines[:3]), [reason, lines[0]])
        self.refused(GOOD + lines[3] + "\n", [reason, lines[0]])  # a second one
        self.refused(GOOD.replace("ran", "ran out"), [reason, lines[0]])
        self.refused("", [reason])


class Results(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.path = pathlib.Path(directory.name) / "results"

    def test_are_files_by_their_names(self):
        with tarfile.open(self.path, "w") as archive:
            for name, content in (("./a/b/stdout", b"1\n"), ("./left", b"")):
                member = tarfile.TarInfo(name)
                member.size = len(content)
                archive.addfile(member, io.BytesIO(content))
        self.assertEqual(unpacked(self.path), {"a/b/stdout": b"1\n", "left": b""})

    def test_that_are_missing_or_cut_off_fail(self):
        with self.assertRaises(Failure):
            unpacked(self.path)
        for content in (b"", b"x" * 600):
            self.path.write_bytes(content)
            with self.assertRaises(Failure):
                unpacked(self.path)


if __name__ == "__main__":
    tap.main()
