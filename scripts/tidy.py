#!/usr/bin/env python3
"""Runs clang-tidy on every source of builds that are configured with -Dunity=on: tidy.py BUILD...

Standard input names the sources of the tree, each with a zero byte behind. The builds must have all of
them.

Such a build compiles files that include the sources of a library. clang-tidy checks less in included
files: it does not analyze their functions, nor does it look for unused declarations. This program
therefore writes the sources of libraries and programs one after the other into one file, checks that
file, and names the places of the findings in the sources. This takes half of the time of checking each
library alone, because the headers are read once for each file. When names clash in the file, the program
checks each library alone, and says so on standard error.

The exit status is 1 if there is a finding, if a source is missing, or if clang-tidy could not work.
"""

import bisect
import concurrent.futures
import functools
import json
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import tempfile

# A joined file has the includes of all its sources. clang-format removes those that stand twice in one.
NOT_IN_JOINED_FILES = "-readability-duplicate-include"
# No file is so large that a processor has to wait for another one's file at the end.
LARGEST = 150_000  # bytes
# A name in one source may hide one of another library. The builds warn of the others.
NOT_IN_JOINED_LIBRARIES = "-Wno-shadow"
# Every fuzz target defines this function. It gets a name of the same length in a joined file.
ENTRY_POINT = re.compile(r"^int LLVMFuzzerTestOneInput(?=\(.*{$)", re.MULTILINE)
# Sources that define functions of other libraries are joined with one another only.
REPLACEMENTS = ("platform/link_only", "tests/faults", "tests/fuzz/whole_tool", "tests/process/other_platform",
                "tests/process/stopping_calls", "tests/process/untouchable")
# Options of the compiler that name its outputs in the next argument.
OUTPUTS = ("-o", "-MF", "-MQ")


class Unit:
    """A file that a build compiles, and the sources that it consists of."""

    def __init__(self, command):
        self.directory = command["directory"]
        self.file = pathlib.Path(command["directory"], command["file"]).resolve()
        words = [word for word in shlex.split(command["command"]) if not word.endswith("ccache")]
        self.compiler = words[0]
        self.options = [word for last, word in zip(words, words[1:]) if last not in OUTPUTS
                        and word not in (*OUTPUTS, "-MD", "-c", command["file"])]
        self.sources = [self.file]
        if "-unity" in self.file.name:
            self.sources = [pathlib.Path(name).resolve() for name in
                            re.findall(r'^#include[<"](.*)[>"]$', self.file.read_text(), re.MULTILINE)]

    @functools.cached_property
    def size(self):
        return sum(source.stat().st_size for source in self.sources)

    @functools.cached_property
    def is_program(self):
        return any(re.search(r"^int main\(", source.read_text(), re.MULTILINE) for source in self.sources)

    def kind(self):
        """Units of one kind can be joined: they have one language, and one configuration of the checks."""
        place = self.sources[0].relative_to(pathlib.Path.cwd())
        configured = next(parent for parent in place.parents if (parent / ".clang-tidy").exists())
        replacement = next((folder for folder in REPLACEMENTS if str(place).startswith(folder)), None)
        return self.directory, self.compiler, "-ffreestanding" in self.options, configured, replacement


def units(builds):
    """Units that together have every source of the builds."""
    commands = [command for build in builds
                for command in json.loads(pathlib.Path(build, "compile_commands.json").read_text())]
    chosen, covered = [], set()
    # A large unit may have all sources of a smaller one.
    for unit in sorted(map(Unit, commands), key=lambda unit: len(unit.sources), reverse=True):
        unit.sources = [source for source in unit.sources if source not in covered]
        if unit.sources:
            covered.update(unit.sources)
            chosen.append(unit)
    return chosen


def not_in(units, names):
    """The names of sources that no unit has."""
    covered = {source for unit in units for source in unit.sources}
    return [name for name in names if pathlib.Path(name).resolve() not in covered]


def definitions(unit):
    return dict(option.partition("=")[::2] for option in unit.options if option.startswith("-D"))


def fit(unit, others):
    """Whether the unit can be in one file with the others: a file has one function main(), and a macro has
    one value."""
    if sum(other.size for other in others) + unit.size > LARGEST:
        return False
    mine = definitions(unit)
    return not any(
        (unit.is_program and other.is_program)
        or any(mine.get(name, value) != value for name, value in definitions(other).items())
        for other in others)


def joined(units):
    """Groups of units, each of which clang-tidy checks as one file. Neighbours in the tree need the same
    headers. The groups that take longest come first, so that no processor waits for one at the end."""
    groups = []
    for unit in sorted(units, key=lambda unit: (unit.directory, unit.sources[0])):
        for group in groups:
            if group[0].kind() == unit.kind() and fit(unit, group):
                group.append(unit)
                break
        else:
            groups.append([unit])
    return sorted(groups, key=lambda group: sum(unit.size for unit in group), reverse=True)


def write_joined(sources, file):
    """Writes the sources one after the other, and returns the number of each one's first line."""
    first_lines, line = [], 1
    with file.open("w") as whole:
        for number, source in enumerate(sources):
            text = ENTRY_POINT.sub(f"int entryPoint{number:012}", source.read_text())
            text = text.removesuffix("\n") + "\n"
            first_lines.append(line)
            line += text.count("\n")
            whole.write(text)
    return first_lines


def in_sources(sources, file, first_lines, report):
    """A report on the joined file, with the places in the sources."""

    def place(match):
        line = int(match[1])
        source = bisect.bisect_right(first_lines, line) - 1
        return f"{os.path.relpath(sources[source])}:{line - first_lines[source] + 1}:"

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


def check(group, directory):
    """clang-tidy's findings, empty if there are none."""
    directory.mkdir()
    sources = [source for unit in group for source in unit.sources]
    file, arguments, first_lines = sources[0], [], [1]
    if len(sources) > 1:
        file = place_like(file, directory) / f"joined{file.suffix}"
        first_lines = write_joined(sources, file)
        arguments = ["--checks=" + NOT_IN_JOINED_FILES]
    options = dict.fromkeys(option for unit in group for option in unit.options)
    if len(group) > 1:
        options[NOT_IN_JOINED_LIBRARIES] = None
    (directory / "compile_commands.json").write_text(json.dumps([{
        "directory": group[0].directory, "file": str(file),
        "arguments": [group[0].compiler, *options, "-c", str(file)]}]))
    run = subprocess.run(["clang-tidy", "--quiet", "-p", directory, *arguments, file],
                         capture_output=True, text=True, check=False)
    if run.returncode == 0:
        return ""
    names = ", ".join(os.path.relpath(unit.file) for unit in group)
    if len(group) > 1 and "[clang-diagnostic-error]" in run.stdout:
        print(f"tidy.py: names clash in {names}", file=sys.stderr, flush=True)
        return "".join(check([unit], directory / str(number)) for number, unit in enumerate(group))
    report = in_sources(sources, file, first_lines, run.stdout)
    return report or f"{names}: clang-tidy failed\n{run.stderr}"


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    os.chdir(pathlib.Path(__file__).resolve().parent.parent)
    chosen = units(sys.argv[1:])
    missing = not_in(chosen, sys.stdin.read().rstrip("\0").split("\0"))
    for name in missing:
        print(f"{name}: no build has this source")
    groups = joined(chosen)
    failed = bool(missing)
    with tempfile.TemporaryDirectory() as scratch, \
            concurrent.futures.ThreadPoolExecutor(len(os.sched_getaffinity(0))) as workers:
        directories = [pathlib.Path(scratch, str(number)) for number in range(len(groups))]
        for report in workers.map(check, groups, directories):
            if report:
                failed = True
                print(report, end="", flush=True)
    sys.exit(failed)


if __name__ == "__main__":
    main()
