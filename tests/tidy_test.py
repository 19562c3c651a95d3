#!/usr/bin/env python3
"""Tests scripts/tidy.py on a tree whose build joins two sources and compiles a third one alone."""

import contextlib
import importlib.util
import json
import pathlib
import sys
import tempfile
import unittest

TESTS = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(TESTS / "support"))

import tap  # noqa: E402

LOADED = importlib.util.spec_from_file_location("tidy", TESTS.parent / "scripts/tidy.py")
tidy = importlib.util.module_from_spec(LOADED)
LOADED.loader.exec_module(tidy)

CONFIGURATION = """Checks: '-*,clang-analyzer-core.*,readability-duplicate-include,readability-else-after-return'
WarningsAsErrors: '*'
"""
CLEAN = """#include <cstddef>

int {name}(int number) {{
    return number;
}}
"""
LATE_ELSE = """#include <cstddef>

int lateElse(int number) {
    if (number > 0) {
        return 1;
    } else {
        return 2;
    }
}
"""
NULL = """int null() {
    int* pointer = nullptr;
    return *pointer;
}
"""


class Tidy(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.top = pathlib.Path(scratch.name).resolve()
        self.enterContext(contextlib.chdir(self.top))
        self.write(".clang-tidy", CONFIGURATION)

    def write(self, name, text):
        file = self.top / name
        file.parent.mkdir(exist_ok=True)
        file.write_text(text)
        return file

    def findings(self, first, second, alone):
        """The lines with the findings of a unit that joins two sources, and of one that is a source."""
        sources = [self.write("part/first.cpp", first), self.write("part/second.cpp", second)]
        unity = self.write("build/part-unity0.cpp", "".join(f"#include<{source}>\n" for source in sources))
        commands = [{"directory": str(self.top / "build"), "file": str(file), "command": f"clang++ -c {file}"}
                    for file in (self.write("part/alone.cpp", alone), unity, sources[0])]
        self.write("build/compile_commands.json", json.dumps(commands))
        units = tidy.units(["build"])
        self.assertEqual([len(unit.sources) for unit in units], [2, 1])
        reports = [tidy.check(unit, self.top / f"scratch{number}") for number, unit in enumerate(units)]
        return [line for line in "".join(reports).splitlines() if " error: " in line]

    def test_clean(self):
        found = self.findings(CLEAN.format(name="first"), CLEAN.format(name="second"), CLEAN.format(name="alone"))
        self.assertEqual(found, [])

    def test_places_are_those_in_the_sources(self):
        found = self.findings(CLEAN.format(name="first"), LATE_ELSE, LATE_ELSE)
        late = ":6:7: error: do not use 'else' after 'return' [readability-else-after-return,-warnings-as-errors]"
        self.assertEqual(found, ["part/second.cpp" + late, "part/alone.cpp" + late])

    def test_joined_functions_are_analyzed(self):
        self.assertEqual(
            self.findings(CLEAN.format(name="first"), NULL, CLEAN.format(name="alone")),
            ["part/second.cpp:3:12: error: Dereference of null pointer (loaded from variable 'pointer')"
             " [clang-analyzer-core.NullDereference,-warnings-as-errors]"])

    def test_a_directory_has_its_own_configuration(self):
        self.write("part/.clang-tidy", "InheritParentConfig: true\nChecks: '-readability-else-after-return'\n")
        self.assertEqual(self.findings(LATE_ELSE, CLEAN.format(name="second"), LATE_ELSE), [])

    def test_source_that_no_build_has(self):
        self.findings(CLEAN.format(name="first"), CLEAN.format(name="second"), CLEAN.format(name="alone"))
        names = ["part/first.cpp", "part/forgotten.cpp", "part/alone.cpp"]
        self.assertEqual(tidy.not_in(tidy.units(["build"]), names), ["part/forgotten.cpp"])

    def test_source_that_does_not_compile(self):
        found = self.findings("no C++", CLEAN.format(name="second"), CLEAN.format(name="alone"))
        self.assertEqual(found[0], "part/first.cpp:1:1: error: unknown type name 'no' [clang-diagnostic-error]")


if __name__ == "__main__":
    tap.main()
