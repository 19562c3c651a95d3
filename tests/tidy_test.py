#!/usr/bin/env python3
"""Tests scripts/tidy.py on a tree whose build joins two sources and compiles others alone."""

import contextlib
import importlib.util
import io
import itertools
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

CONFIGURATION = """Checks: >
  -*,
  clang-analyzer-core.*,
  clang-diagnostic-*,
  readability-duplicate-include,
  readability-else-after-return
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
MAIN = """int main() {
    return 0;
}
"""
TARGET = """int LLVMFuzzerTestOneInput(const unsigned char* data, unsigned long size) {
    return size == 0 ? 0 : data[0];
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
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text)
        return file

    def write_build(self, *files, options=()):
        """A build that compiles the files, each with its options if there are any."""
        commands = [{"directory": str(self.top / "build"), "file": str(file),
                     "command": " ".join(["clang++", *own, "-o", "object", "-c", str(file)])}
                    for file, own in itertools.zip_longest(files, options, fillvalue=())]
        self.write("build/compile_commands.json", json.dumps(commands))

    def reported(self, groups):
        """The lines with the findings in the groups of units."""
        reports = [tidy.check(group, self.top / f"scratch{number}") for number, group in enumerate(groups)]
        return [line for line in "".join(reports).splitlines() if " error: " in line]

    def findings(self, first, second, alone):
        """The lines with the findings of a unit that joins two sources, and of one that is a source."""
        sources = [self.write("part/first.cpp", first), self.write("part/second.cpp", second)]
        unity = self.write("build/part-unity0.cpp", "".join(f"#include<{source}>\n" for source in sources))
        self.write_build(self.write("part/alone.cpp", alone), unity, sources[0])
        units = tidy.units(["build"])
        self.assertEqual([len(unit.sources) for unit in units], [2, 1])
        return self.reported([unit] for unit in units)

    def groups(self, options=(), told="", **texts):
        """The names of the sources in each group that is checked as one file, and what is found there. Each
        source is a unit of the build. `told` is what standard error gets."""
        self.write_build(*(self.write(f"part/{name}.cpp", text) for name, text in texts.items()),
                         options=options)
        joined = tidy.joined(tidy.units(["build"]))
        names = [[source.stem for unit in group for source in unit.sources] for group in joined]
        with contextlib.redirect_stderr(io.StringIO()) as actually_told:
            found = self.reported(joined)
        self.assertEqual(actually_told.getvalue(), told)
        return sorted(names), found

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

    def test_units_are_joined(self):
        late = ":6:7: error: do not use 'else' after 'return' [readability-else-after-return,-warnings-as-errors]"
        self.assertEqual(self.groups(first=CLEAN.format(name="first"), second=LATE_ELSE),
                         ([["first", "second"]], ["part/second.cpp" + late]))

    def test_names_that_clash(self):
        self.assertEqual(
            self.groups(first=CLEAN.format(name="same"), second=CLEAN.format(name="same") + NULL,
                        told="tidy.py: names clash in part/first.cpp, part/second.cpp\n"),
            ([["first", "second"]], [
                "part/second.cpp:8:12: error: Dereference of null pointer (loaded from variable 'pointer')"
                " [clang-analyzer-core.NullDereference,-warnings-as-errors]"]))

    def test_a_name_may_hide_one_of_another_library(self):
        self.assertEqual(
            self.groups([["-Wshadow", "-Werror"]], first="int number = 1;\n", second=CLEAN.format(name="second")),
            ([["first", "second"]], []))

    def test_replacements_are_apart(self):
        self.write("tests/.clang-tidy", "InheritParentConfig: true\n")
        self.write_build(self.write("tests/faults/first.cpp", "int one;\n"),
                         self.write("tests/faults/second.cpp", "int two;\n"),
                         self.write("tests/third.cpp", "int three;\n"))
        self.assertEqual([[unit.file.stem for unit in group] for group in tidy.joined(tidy.units(["build"]))],
                         [["first", "second"], ["third"]])

    def test_each_source_is_checked_once(self):
        sources = [self.write(f"part/{name}.cpp", CLEAN.format(name=name)) for name in ("one", "both", "two")]
        unities = [self.write(f"build/{number}-unity0.cpp", "".join(f"#include<{name}>\n" for name in names))
                   for number, names in enumerate((sources[:2], sources[1:]))]
        self.write_build(*unities)
        self.assertEqual([[source.stem for source in unit.sources] for unit in tidy.units(["build"])],
                         [["one", "both"], ["two"]])

    def test_programs_are_apart(self):
        self.assertEqual(self.groups(first=MAIN, second=MAIN, third=NULL.replace("*pointer", "0")),
                         ([["first", "third"], ["second"]], []))

    def test_a_macro_has_one_value(self):
        options = ["-DNAME=1", "-DNUMBER=1"], ["-DNAME=2"], ["-DNUMBER=1"]
        self.assertEqual(self.groups(options, first="int first = NAME;\n", second="int second = NAME;\n",
                                     third="int third = NUMBER;\n"),
                         ([["first", "third"], ["second"]], []))

    def test_fuzz_targets_are_joined(self):
        self.assertEqual(self.groups(first=TARGET, second=TARGET), ([["first", "second"]], []))

    def test_files_have_a_bound(self):
        text = "// A comment.\n" * (tidy.LARGEST // 28)
        self.assertEqual(self.groups(first=text, second=text, third=text), ([["first", "second"], ["third"]], []))

    def test_configurations_are_apart(self):
        self.write("other/.clang-tidy", "InheritParentConfig: true\nChecks: '-readability-else-after-return'\n")
        self.write_build(self.write("part/first.cpp", LATE_ELSE),
                         self.write("other/second.cpp", LATE_ELSE.replace("late", "second")))
        found = self.reported(tidy.joined(tidy.units(["build"])))
        self.assertEqual([line.split(":")[0] for line in found], ["part/first.cpp"])


if __name__ == "__main__":
    tap.main()
