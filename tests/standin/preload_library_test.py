#!/usr/bin/env python3
"""Checks which libraries the preload library loads and which functions it replaces.

The preload library enters every process of a command. Each library that it needs enters with it,
and each name that it exports replaces a function of the program.
"""

import os
import pathlib
import re
import subprocess
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))

import tap  # noqa: E402

REPLACED = """
    open open64 __open __open64 openat openat64
    __open_2 __open64_2 __openat_2 __openat64_2 creat creat64
    fopen fopen64 freopen freopen64
    stat stat64 lstat lstat64 fstat fstat64 fstatat fstatat64 statx
    access eaccess euidaccess faccessat getxattr lgetxattr
    read __read_chk write ioctl
""".split()


def readelf(option):
    command = [os.environ["READELF"], "--wide", option, os.environ["I2C_PRELOAD"]]
    return subprocess.run(command, check=True, capture_output=True, text=True,
                          env={**os.environ, "LC_ALL": "C"}).stdout


class PreloadLibrary(unittest.TestCase):
    maxDiff = None

    def test_needs_the_c_library_alone(self):
        needed = re.findall(r"\(NEEDED\).*\[(.*)\]", readelf("--dynamic"))
        # On AArch64 the loader, which is in each process, holds a variable of the stack protector.
        self.assertEqual(set(needed) - {"ld-linux-aarch64.so.1"}, {"libc.so.6"})

    def test_exports_the_functions_that_it_replaces(self):
        exported = []
        for line in readelf("--dyn-syms").splitlines():
            fields = line.split()  # number, value, size, type, binding, visibility, section, name
            if len(fields) >= 8 and fields[0] != "Num:" and fields[3] != "SECTION" and fields[6] != "UND":
                exported.append(fields[7])
        self.assertEqual(sorted(exported), sorted(REPLACED))


if __name__ == "__main__":
    tap.main()
