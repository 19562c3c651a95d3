#!/usr/bin/env python3
"""Runs clang-tidy on every source of builds that are configured with -Dunity=on: tidy.py BUILD...

Standard input names the sources of the tree, each with a zero byte behind. The builds must have all of
them.

Such a build compiles files that include the sources of a library. clang-tidy checks less in included
files: it does not analyze their functions, nor does it look for unused declarations. This program
therefore writes the sources of a library one after the other into one file, checks that file, and names
the places of the findings in the sources. This takes a third of the time of checking each source alone,
because the headers are read once for each library.

The exit status is 1 if there is a finding, if a source is missing, or if clang-tidy could not work.
"""

import bisect
import concurrent.futures
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

# A joined file has the includes of all its sources. clang-format removes those that stand twice in one.
NOT_IN_JOINED_FILES = "-readability-duplicate-include"


class Unit:
    """A file that a build compiles, and the sources that it consists of."""

    def __init__(self, command):
        self.command = command
        self.file = pathlib.Path(command["directory"], command["file"]).resolve()
        self.sources = [self.file]
        if "-unity" in self.file.name:
            self.sources = [pathlib.Path(name).resolve() for name in
                            re.findall(r'^#include[<"](.*)[>"]$', self.file.read_text(), re.MULTILINE)]

    def joined(self):
        return self.sources != [self.file]


def units(builds):
    """Units that together have every source of the builds."""
    commands = [command for build in builds
                for command in json.loads(pathlib.Path(build, "compile_commands.json").read_text())]
    chosen, covered = [], set()
    # A large unit may have all sources of a smaller one.
    for unit in sorted(map(Unit, commands), key=lambda unit: len(unit.sources), reverse=True):
        if not covered.issuperset(unit.sources):
            covered.update(unit.sources)
            chosen.append(unit)
    return chosen


def not_in(units, names):
    """The names of sources that no unit has."""
    covered = {source for unit in units for source in unit.sources}
    return [name for name in names if pathlib.Path(name).resolve() not in covered]


def write_joined(unit, file):
    """Writes the sources one after the other, and returns the number of each one's first line."""
    first_lines, line = [], 1
    with file.open("w") as joined:
        for source in unit.sources:
            text = source.read_text().removesuffix("\n") + "\n"
            first_lines.append(line)
            line += text.count("\n")
            joined.write(text)
    return first_lines


def in_sources(unit, file, first_lines, report):
    """A report on the joined file, with the places in the sources."""

    def place(match):
        line = int(match[1])
        source = bisect.bisect_right(first_lines, line) - 1
        return f"{os.path.relpath(unit.sources[source])}:{line - first_lines[source] + 1}:"

    return re.sub(re.escape(str(file)) + r":(\d+):", place, report)


def place_like(source, directory):
    """A place below the directory that has the same configurations as the source."""
    place = source.parent.relative_to(pathlib.Path.cwd())
    (directory / place).mkdir(parents=True, exist_ok=True)
    for part in (place, *place.parents):
        configuration = part / ".clang-tidy"
        if configuration.exists():
            shutil.copy(configuration, directory / configuration)
    return directory / place


def check(unit, directory):
    """clang-tidy's findings, empty if there are none."""
    directory.mkdir()
    file, arguments, first_lines = unit.file, [], [1]
    if unit.joined():
        file = place_like(unit.sources[0], directory) / unit.file.name
        first_lines = write_joined(unit, file)
        arguments = ["--checks=" + NOT_IN_JOINED_FILES]
    command = unit.command["command"].replace(unit.command["file"], str(file))
    (directory / "compile_commands.json").write_text(
        json.dumps([unit.command | {"command": command, "file": str(file)}]))
    run = subprocess.run(["clang-tidy", "--quiet", "-p", directory, *arguments, file],
                         capture_output=True, text=True, check=False)
    if run.returncode == 0:
        return ""
    report = in_sources(unit, file, first_lines, run.stdout)
    return report or f"{os.path.relpath(unit.file)}: clang-tidy failed\n{run.stderr}"


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    os.chdir(pathlib.Path(__file__).resolve().parent.parent)
    chosen = units(sys.argv[1:])
    missing = not_in(chosen, sys.stdin.read().rstrip("\0").split("\0"))
    for name in missing:
        print(f"{name}: no build has this source")
    # The units that take longest come first, so that no processor waits for one at the end.
    chosen.sort(key=lambda unit: sum(source.stat().st_size for source in unit.sources), reverse=True)
    failed = bool(missing)
    with tempfile.TemporaryDirectory() as scratch, \
            concurrent.futures.ThreadPoolExecutor(len(os.sched_getaffinity(0))) as workers:
        directories = [pathlib.Path(scratch, str(number)) for number in range(len(chosen))]
        for report in workers.map(check, chosen, directories):
            if report:
                failed = True
                print(report, end="", flush=True)
    sys.exit(failed)


if __name__ == "__main__":
    main()
