#!/usr/bin/env python3
"""Runs the commands that README.md shows, in a fresh copy of the tree.

usage: readme_test.py DIRECTORY

The copy is DIRECTORY/tree. What an earlier run of scripts/sysroot has downloaded for this tree serves
the copy too, so the commands need no network.
"""

import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent / "support"))

import hardened  # noqa: E402
import tap  # noqa: E402
from elf import Elf, Machine  # noqa: E402

TOP = pathlib.Path(__file__).resolve().parent.parent
TIMEOUT_SECONDS = 1800

CAPTURE_BYTES = 400 * 1024  # the room that zolt_capture has on a board

# What a command of the page may begin with. ./scripts/test is the script that runs this test.
KNOWN = {"./scripts/run", "./scripts/sysroot", "./scripts/test", "build/standin/zolt_sim",
         "build/zolt_board/zolt_board", "cat", "meson"}
NOT_RUN = {"./scripts/test"}

# Stands in front of Meson. The suites take minutes, and ./scripts/test has run them all: one program
# of them shows that the command configures, builds and tests.
NARROW_MESON = """#!/bin/sh
if [ "$1" = test ]; then
    exec {meson} "$@" console
fi
exec {meson} "$@"
"""


def blocks(page):
    """The indented blocks of a page, as lists of lines."""
    block = []
    for line in page.splitlines() + ["end"]:
        if line.startswith("    ") or (block and not line):
            block.append(line[4:])
        elif block:
            yield "\n".join(block).rstrip("\n").split("\n")
            block = []


def commands(block):
    """The commands of a block, each with the output that the page shows, or None where the block
    shows no output. A line with a command begins with "$ " in a block with output."""
    shows_output = block[0].startswith("$ ")
    found = []
    for line in block:
        if found and found[-1][0].endswith("\\"):
            found[-1][0] += "\n" + line
        elif not shows_output and line:
            found.append([line, None])
        elif line.startswith("$ "):
            found.append([line[2:], []])
        elif shows_output:
            found[-1][1].append(line)
    return [
        (command, None if output is None else "".join(line + "\n" for line in output))
        for command, output in found
    ]


class Readme(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        directory = pathlib.Path(sys.argv[1]).resolve()
        cls.tree = directory / "tree"
        cls.page = (TOP / "README.md").read_text()
        cls.commands = [pair for block in blocks(cls.page) for pair in commands(block)]
        shutil.rmtree(directory, ignore_errors=True)
        cls.copy_tree()
        narrow = directory / "bin" / "meson"
        narrow.parent.mkdir()
        narrow.write_text(NARROW_MESON.format(meson=shlex.quote(shutil.which("meson"))))
        narrow.chmod(0o755)
        cls.environment = dict(os.environ, PATH=f"{narrow.parent}:{os.environ['PATH']}")
        cls.done = [cls.run_command(*pair) for pair in cls.commands]

    @classmethod
    def copy_tree(cls):
        listed = subprocess.run(["git", "-C", TOP, "ls-files", "-z"], check=True, stdout=subprocess.PIPE)
        for name in listed.stdout.decode().rstrip("\0").split("\0"):
            if (TOP / name).exists():
                (cls.tree / name).parent.mkdir(parents=True, exist_ok=True)
                shutil.copy2(TOP / name, cls.tree / name, follow_symlinks=False)
        (cls.tree / "build-sysroot").symlink_to(TOP / "build-sysroot")

    @classmethod
    def run_command(cls, command, shown):
        """The exit status of a command and what it printed; None for one that does not run here."""
        words = shlex.split(command)
        if words[0] not in KNOWN - NOT_RUN:
            return None
        if words[0] == "cat":  # the page shows a file for the reader to write
            (cls.tree / words[1]).write_text(shown)
        done = subprocess.run(
            ["bash", "-c", command], cwd=cls.tree, env=cls.environment, check=False, text=True,
            input="100\n",  # leaves the tool's menu
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=TIMEOUT_SECONDS,
        )
        return done.returncode, done.stdout

    def result_of(self, start):
        """What the one command printed that begins like this."""
        (output,) = (
            done[1] for (command, _), done in zip(self.commands, self.done)
            if command.startswith(start)
        )
        return output

    def test_every_command_is_one_that_this_test_can_run(self):
        self.assertNotIn("```", self.page, "a block that is not indented")
        unknown = [command for command, _ in self.commands if shlex.split(command)[0] not in KNOWN]
        self.assertEqual(unknown, [])
        for script in NOT_RUN:
            self.assertTrue(os.access(self.tree / script, os.X_OK), script)

    def test_every_command_succeeds(self):
        for (command, _), done in zip(self.commands, self.done):
            if done is not None:
                self.assertEqual(done[0], 0, f"{command}\n{done[1]}")

    def test_commands_print_what_the_page_shows(self):
        shown = [(command, output) for command, output in self.commands if output is not None]
        self.assertTrue(shown)
        printed = [
            (command, done and done[1]) for (command, output), done
            in zip(self.commands, self.done) if output is not None
        ]
        self.assertEqual(printed, shown)

    def test_run_without_options_shows_the_menu(self):
        (output,) = (
            done[1] for (command, _), done in zip(self.commands, self.done)
            if command == "./scripts/run"
        )
        self.assertIn("\nZOLT Test Tool\n", output)
        self.assertTrue(output.endswith("100 : Exit \nEnter option :"), output[-200:])

    def test_meson_alone_runs_the_suites(self):
        self.assertRegex(self.result_of("meson setup build &&"), r"\nOk: +1 *\n")

    def test_image_of_a_board_holds_programs_pages_completions_and_the_licence(self):
        image = self.tree / "build-board" / "image"
        self.assertEqual(
            {str(path.relative_to(image)) for path in image.rglob("*") if not path.is_dir()},
            {"usr/share/doc/zolt_test/LICENSE"} |
            {f"usr/{place}{program}{suffix}" for program in ("zolt_capture", "zolt_test")
             for place, suffix in (("bin/", ""), ("share/man/man1/", ".1"),
                                   ("share/bash-completion/completions/", ""))},
        )

    def test_programs_of_a_board_are_hardened(self):
        built = self.tree / "build-board"
        installed = built / "image" / "usr" / "bin"
        for path in (built / "app" / "zolt_test", installed / "zolt_test",
                     built / "capture" / "zolt_capture", installed / "zolt_capture"):
            program = Elf(path)
            self.assertEqual(program.machine, Machine.AARCH64)
            self.assertEqual(hardened.weaknesses(program), [])
            self.assertEqual(hardened.exported(program), [])

    def test_program_that_captures_a_board_is_small(self):
        program = self.tree / "build-board" / "image" / "usr" / "bin" / "zolt_capture"
        self.assertLess(program.stat().st_size, CAPTURE_BYTES)

    def test_build_for_a_board_names_the_libraries_that_the_program_will_need(self):
        self.assertIn(
            "WARNING: The option platform_libs names no libraries. zolt_test will need libhal.so.1, "
            "libcpld.so.1, libsysinfo.so.1 and libdlog.so.1 where it runs.",
            self.result_of("meson setup build-board"),
        )

    def test_build_for_a_board_has_nothing_of_the_stand_in(self):
        built = {path.name for path in (self.tree / "build-board").rglob("*")}
        self.assertIn("libhal.so.1", built)  # to link with
        self.assertEqual(built & {"zolt_sim", "standin", "boards", "libzolt_sim_i2c.so"}, set())

    def test_page_names_the_packages_of_the_build_for_a_board(self):
        script = 'source scripts/lib.sh; printf "%s\\n" "${board_packages[@]}"'
        listed = subprocess.run(
            ["bash", "-c", script], cwd=self.tree, check=True, text=True, stdout=subprocess.PIPE
        ).stdout.split()
        named = self.page.split("`scripts/sysroot` installs the packages", 1)[1].split("Debian", 1)[0]
        self.assertEqual(re.findall(r"`([^`]+)`", named), listed)

    def test_every_file_that_the_page_names_is_there(self):
        named = set(re.findall(r"\]\(([^)]+)\)", self.page))
        named |= set(re.findall(r"`((?:bench|cross|docs|scripts)/[^` ]*)`", self.page))
        missing = {name for name in named if not self.is_there(*name.partition("#")[::2])}
        self.assertEqual(missing, set())

    def is_there(self, name, heading):
        """Whether the tree has a file, and the file has the heading that a link leads to."""
        path = self.tree / name
        return path.exists() and (
            not heading or f"\n## {heading.replace('-', ' ')}\n" in path.read_text().lower()
        )


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__.splitlines()[2])
    tap.main()
