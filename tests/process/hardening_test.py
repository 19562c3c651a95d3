#!/usr/bin/env python3
"""Programs and libraries, as built and as installed, have the security properties of hardened.py and
export no symbol that nobody looks up."""

import json
import os
import pathlib
import shlex
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))
sys.path.insert(0, str(pathlib.Path(__file__).parent))

import hardened  # noqa: E402
import tap  # noqa: E402
from elf import Dynamic, Elf, Machine, SegmentType  # noqa: E402
from programs import SANITIZED, Scratch, install, run  # noqa: E402

BUILD = pathlib.Path(os.environ["BUILD_DIRECTORY"])

# The contract of the platform's libraries, and the functions of the C library that the I2C buses
# take over. A program offers nothing.
EXPORTED = {
    "libcpld.so.1": {"cpld_read_block_device", "cpld_read_device"},
    "libdlog.so.1": {"dlog_printf"},
    "libhal.so.1": {
        # HAL_cfgdata::ReadHALConfig(std::string)
        "_ZN11HAL_cfgdata13ReadHALConfigENSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE",
        # ReadIO_Str(std::string, std::vector<unsigned char>&, unsigned*)
        "_Z10ReadIO_StrNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEERSt6vectorIhSaIhEEPj",
    },
    "libsysinfo.so.1": {"free_sysinfo", "i2c_parse_sysinfo"},
    "libzolt_sim_i2c.so": {
        "open", "open64", "__open", "__open64", "__open_2", "__open64_2",
        "openat", "openat64", "__openat_2", "__openat64_2", "creat", "creat64",
        "fopen", "fopen64", "freopen", "freopen64",
        "stat", "stat64", "lstat", "lstat64", "fstat", "fstat64", "fstatat", "fstatat64", "statx",
        "access", "eaccess", "euidaccess", "faccessat", "getxattr", "lgetxattr",
        "read", "__read_chk", "write", "ioctl",
    },
}
ARCHITECTURE_FLAGS = {
    Machine.X86_64: {"-fcf-protection"},
    Machine.AARCH64: {"-mbranch-protection=standard"},
}
OPTIMISED = {"-O1", "-O2", "-O3", "-Os", "-Og"}


def is_elf(path):
    return path.is_file() and not path.is_symlink() and path.read_bytes()[:4] == b"\x7fELF"


def weaknesses(elf):
    """The properties that a file lacks. A sanitizer has functions of its own without landing pads, and
    Clang puts a mark of a sanitizer in front of each function."""
    return [
        lack for lack in hardened.weaknesses(elf)
        if not (SANITIZED and lack.startswith("control-flow protection"))
    ]


class Hardening(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.scratch = Scratch()
        cls.addClassCleanup(cls.scratch.close)
        root = install(cls.scratch)
        done = run(os.environ["MESON"], "introspect", "--installed", str(BUILD))
        built = {}
        cls.installed = {}
        for here, there in json.loads(done.stdout).items():
            if is_elf(BUILD / here):
                built[str(here)] = Elf(BUILD / here)
                there = root / pathlib.Path(there).relative_to("/")
                cls.installed[str(there)] = Elf(there)
        cls.files = {**built, **cls.installed}

    def test_every_program_and_library_is_looked_at(self):
        self.assertEqual(
            {pathlib.Path(path).name for path in self.installed},
            {"zolt_board", "zolt_capture", "zolt_sim", "zolt_test", *EXPORTED},
        )
        self.assertEqual(len(self.files), 2 * len(self.installed))

    def test_every_file_has_every_property(self):
        lacks = {path: weaknesses(elf) for path, elf in self.files.items()}
        self.assertEqual(lacks, {path: [] for path in self.files})

    def test_nothing_is_offered_that_nobody_looks_up(self):
        offers = {
            path: {symbol.name for symbol in hardened.exported(elf)}
            for path, elf in self.files.items()
            # A sanitizer's run time is part of the programs, and the libraries look it up there.
            if not SANITIZED or elf.segment(SegmentType.INTERPRETER) is None
        }
        self.assertEqual(
            offers, {path: EXPORTED.get(pathlib.Path(path).name, set()) for path in offers}
        )

    def test_no_installed_file_has_libraries_searched_for_elsewhere(self):
        for path, elf in self.installed.items():
            self.assertFalse({Dynamic.RPATH, Dynamic.RUNPATH} & elf.dynamic.keys(), path)

    # These leave no mark, or not in every file: the commands of the build tell.
    def test_every_source_is_compiled_with_every_protection(self):
        expected = {"-fstack-protector-strong", "-fstack-clash-protection"}
        expected |= ARCHITECTURE_FLAGS[Elf(BUILD / "app" / "zolt_test").machine]
        commands = json.loads((BUILD / "compile_commands.json").read_text())
        own = [command for command in commands if "tests/" not in command["file"]
               and not command["output"].startswith("tests/")
               and "sdbusplus/test/" not in command["file"]]
        self.assertTrue(own)
        for command in own:
            flags = shlex.split(command["command"])
            self.assertLessEqual(expected, set(flags), command["file"])
            # Fortified calls need optimisation, and would hide an overflow from a sanitizer.
            if OPTIMISED & set(flags) and not SANITIZED and "--coverage" not in flags:
                fortified = {"-D_FORTIFY_SOURCE=2", "-D_FORTIFY_SOURCE=3"} & set(flags)
                self.assertEqual(len(fortified), 1, command["file"])


if __name__ == "__main__":
    tap.main()
