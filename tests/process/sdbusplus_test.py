#!/usr/bin/env python3
"""A build with a library sdbusplus that is installed in a prefix of its own."""

import json
import os
import pathlib
import shlex
import shutil
import subprocess
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))
sys.path.insert(0, str(pathlib.Path(__file__).parent))

import tap  # noqa: E402
from programs import Scratch, run  # noqa: E402

SOURCES = pathlib.Path(__file__).parent.parent.parent
LIBRARY = SOURCES / "tests/bus/library"
CLIENT = "bus/service_client.cpp"

PACKAGE = """prefix={prefix}
Name: sdbusplus
Description: The interface alone
Version: 1.0.0
Cflags: -I${{prefix}}/include
"""

# What a compiler complains of in a header that counts as the tool's own.
NARROWING = """
inline int narrowed(long value) {
    return value;
}
"""


class LibraryInAPrefix(unittest.TestCase):
    def setUp(self):
        self.scratch = Scratch()
        self.addCleanup(self.scratch.close)
        self.prefix = self.scratch.path / "prefix"
        shutil.copytree(LIBRARY / "sdbusplus", self.prefix / "include/sdbusplus")
        shutil.copy(LIBRARY / "present/object_path.hpp", self.prefix / "include")
        with open(self.prefix / "include/sdbusplus/bus.hpp", "a", encoding="ascii") as header:
            header.write(NARROWING)
        self.scratch.file("sdbusplus.pc", PACKAGE.format(prefix=self.prefix))

    def command(self):
        """How the build that finds the library compiles the client of the bus."""
        build = self.scratch.path / "build"
        subprocess.run(
            [os.environ["MESON"], "setup", build, SOURCES, "-Dstandin=disabled",
             "-Dtests=disabled", f"-Dpkg_config_path={self.scratch.path}"],
            check=True, stdout=subprocess.DEVNULL,
        )
        (command,) = (
            each for each in json.loads((build / "compile_commands.json").read_text())
            if each["file"].endswith(CLIENT)
        )
        return shlex.split(command["command"]), command["directory"]

    def test_is_free_to_have_warnings_in_its_headers(self):
        command, directory = self.command()
        done = run(*command, cwd=directory)
        self.assertEqual((done.returncode, done.stderr), (0, ""))

        # As headers of the tool's own they would not do.
        strict = [argument.replace("-isystem", "-I") for argument in command]
        done = run(*strict, cwd=directory)
        self.assertNotEqual(done.returncode, 0)
        self.assertIn(f"{self.prefix}/include/sdbusplus/bus.hpp", done.stderr)


if __name__ == "__main__":
    tap.main()
