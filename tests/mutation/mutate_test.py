#!/usr/bin/env python3
"""Runs mutants of a small tree whose one unit test looks at one of two functions."""

import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))

import tap  # noqa: E402

MUTATE = pathlib.Path(__file__).parent / "mutate.py"
TREE = {
    "meson.build": """
project('tiny', 'cpp')
top = include_directories('.')
subdir('app')
test('app', executable('test_app', 'test.cpp', dependencies: part), suite: 'unit', protocol: 'gtest')
test('dialogue', find_program('dialogue.py'), args: tool, suite: 'transcript', protocol: 'tap')
test('stranger', find_program('stranger.py'), args: tool, suite: 'process', protocol: 'tap')
""",
    "app/meson.build": """
part = declare_dependency(include_directories: top,
  link_with: static_library('app', 'seen.cpp', 'unseen.cpp', include_directories: top))
tool = executable('zolt_test', '../main.cpp', dependencies: part)
""",
    "app/seen.h": """int seen(int count);
inline int twice(int count) {
    return count + count;
}
""",
    "app/seen.cpp": """#include "app/seen.h"
static int endOf(const char* text) {
    int end = 0;
    while (text[end] != 0) {
        ++end;
    }
    return end;
}
int seen(int count) {
    return twice(count) + endOf("x");
}
""",
    "app/invalid.h": """template <int size> struct Whole { static_assert(size == 1); };
inline Whole<1> whole;
""",
    "app/unseen.cpp": """#include "app/invalid.h"
int unseen(int count) {
    return count > 7 ? 1 : 2;
}
int same(int count) {
    return count * 1;
}
int shown() {
    return 3;
}
""",
    "main.cpp": """#include <cstdio>
int shown();
int main() { return std::printf("%d\\n", shown()) < 0; }
""",
    "test.cpp": """#include "app/seen.h"
int main() { return seen(3) == 7 ? 0 : 1; }
""",
    "dialogue.py": """#!/usr/bin/env python3
import subprocess, sys
shown = subprocess.run([sys.argv[1]], stdout=subprocess.PIPE).stdout
print("1..2", "ok 1", "ok 2" if shown == b"3\\n" else "not ok 2", sep="\\n")
""",
    "stranger.py": """#!/usr/bin/env python3
print("1..1", "ok 1", sep="\\n")
""",
}
CHECKED = "app/seen.cpp | return twice(count) + endOf(\"x\"); | sum: + -> - | 0"
ENDLESS = "app/seen.cpp | ++end; | statement: ++end; -> ; | 0"
HEADER = "app/seen.h | return count + count; | sum: + -> - | 0"
INVALID = "app/invalid.h | inline Whole<1> whole; | constant: 1 -> 0 | 0"
SAME = "app/unseen.cpp | return count * 1; | sum: * -> / | 0"
SHOWN = "app/unseen.cpp | return 3; | constant: 3 -> 4 | 0"
UNSEEN = "app/unseen.cpp | return count > 7 ? 1 : 2; | constant: 7 -> 8 | 0"


def outcome(said, mutant):
    """Returns what the run says of a mutant."""
    told = re.findall(r"^\d+/\d+ (.*)$", said, re.MULTILINE)
    lines = [line.replace(mutant, "").replace(": ", "") for line in told if mutant in line]
    return lines[0] if len(lines) == 1 else lines


class Mutate(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        directory = tempfile.TemporaryDirectory()
        cls.addClassCleanup(directory.cleanup)
        cls.tree = pathlib.Path(directory.name)
        for name, text in TREE.items():
            path = cls.tree / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text)
            path.chmod(0o755)
        for command in (["init", "--quiet"], ["add", "."]):
            subprocess.run(["git", "-C", cls.tree, *command], check=True)

    def setUp(self):
        for state in ("build-mutation/results", "tests/mutation/equivalent.txt", "docs/mutation.md"):
            (self.tree / state).unlink(missing_ok=True)

    def mutate(self, *arguments):
        """Returns the exit status and all that the run says."""
        done = subprocess.run(
            [sys.executable, MUTATE, "--tree", self.tree, "--jobs", "1", "--option=-Doptimization=0",
             *arguments],
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
        return done.returncode, done.stdout

    def judged(self, mutant):
        return outcome(self.mutate("--only", mutant)[1], mutant)

    def list_as_equivalent(self, *lines):
        path = self.tree / "tests/mutation/equivalent.txt"
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text("".join(f"{line}\n" for line in lines))

    def test_a_mutant_that_a_unit_test_notices_is_caught(self):
        self.assertEqual(self.judged(CHECKED), "caught (unit app)")

    def test_a_mutant_of_a_header_is_caught(self):
        self.assertEqual(self.judged(HEADER), "caught (unit app)")

    def test_a_mutant_that_only_a_dialogue_notices_is_caught(self):
        self.assertEqual(self.judged(SHOWN), "caught (transcript dialogue)")

    def test_a_mutant_that_never_ends_is_caught(self):
        self.assertEqual(self.judged(ENDLESS), "caught (unit app)")

    def test_a_mutant_that_nothing_tests_survives(self):
        status, said = self.mutate("--only", UNSEEN)
        self.assertEqual(outcome(said, UNSEEN), "survived")
        self.assertEqual(status, 1)
        self.assertIn(f"Survivors without a reason:\n\n    {UNSEEN}\n", said)

    def test_a_mutant_with_the_same_code_is_no_survivor(self):
        status, said = self.mutate("--only", SAME)
        self.assertEqual((outcome(said, SAME), status), ("same code", 0))

    def test_a_mutant_that_does_not_compile_counts_apart(self):
        status, said = self.mutate("--only", INVALID)
        self.assertEqual((outcome(said, INVALID), status), ("invalid", 0))

    def test_a_survivor_with_a_reason_is_equivalent(self):
        self.list_as_equivalent("# remark", UNSEEN, "    Nobody calls", "    the function.")
        status, said = self.mutate("--only", UNSEEN)
        self.assertEqual(status, 0)
        self.assertIn("| app | 1 | 0 | 0 | 0 | 1 | 0 |\n", said)
        self.assertIn("No mutant survived without a reason.", said)

    def test_a_wrong_entry_of_the_list_is_told(self):
        self.list_as_equivalent("app/none.cpp | x", "    Gone.", UNSEEN, "", CHECKED, "    Wrong.")
        status, said = self.mutate("--only", CHECKED)
        self.assertEqual(status, 1)
        self.assertIn(f"equivalent.txt: no such mutant: app/none.cpp | x\n"
                      f"equivalent.txt: no reason: {UNSEEN}\n"
                      f"equivalent.txt: caught: {CHECKED}\n", said)

    def test_a_further_run_goes_on(self):
        self.mutate("--only", UNSEEN)
        self.assertEqual(self.judged(UNSEEN), [])
        said = self.mutate("--survivors")[1]
        self.assertEqual(outcome(said, UNSEEN), "survived")
        self.assertIn("\n1 of ", said)

    def test_the_seed_decides_the_sample(self):
        names = [self.mutate("--list", "--sample", "4", "--seed", seed)[1] for seed in "112"]
        self.assertEqual(len(names[0].splitlines()), 4)
        self.assertEqual(names[0], names[1])
        self.assertNotEqual(names[0], names[2])

    def test_writes_the_report(self):
        self.mutate("--only", CHECKED)
        (self.tree / "docs").mkdir(exist_ok=True)
        status, said = self.mutate("--report")
        report = (self.tree / "docs/mutation.md").read_text()
        self.assertEqual((status, said), (0, ""))
        self.assertIn("| sum | 1 | 1 | 0 | 0 | 0 | 0 |\n", report)

    def test_suites_that_fail_without_a_mutant_end_the_run(self):
        source = self.tree / "test.cpp"
        self.addCleanup(source.write_text, source.read_text())
        source.write_text("int main() { return 1; }")
        status, said = self.mutate("--only", CHECKED)
        self.assertEqual((status, said), (1, "fails without a mutant: unit app\n"))


if __name__ == "__main__":
    tap.main()
