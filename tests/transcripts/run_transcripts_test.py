#!/usr/bin/env python3
"""The runner of transcripts, with small programs in the place of zolt_sim and zolt_test."""

import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))

import tap  # noqa: E402

RUNNER = str(pathlib.Path(__file__).parent / "run_transcripts.py")

# Shows its board and its faults, writes one log, and runs the tool.
SIM = """#!/bin/sh
[ "$1" = --board ] || exit 90
case $2 in /*) cat "$2" ;; *) echo "board $2" ;; esac
shift 2
while [ "$1" != -- ]; do
    case $1 in
        --fault) echo "fault $2" ;;
        --debug-log) echo "5 [a.cpp.17.b]" >"$2" ;;
    esac
    shift 2
done
shift
exec "$@"
"""

# Shows its arguments and its input. Its status is its last argument.
TOOL = """#!/bin/sh
echo "$# arguments"
for last; do :; done
cat
[ "${last:-0}" = 0 ] || echo "said on the side" >&2
exit "${last:-0}"
"""


class RunnerTest(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.directory = pathlib.Path(directory.name)
        self.program("sim", SIM)
        self.program("tool", TOOL)
        self.suite = self.directory / "suite"
        self.suite.mkdir()

    def program(self, name, text):
        path = self.directory / name
        path.write_text(text)
        path.chmod(0o755)
        return str(path)

    def case(self, name, text):
        (self.suite / f"{name}.transcript").write_text(text)

    def run_suite(self, options=(), wrapper=""):
        return subprocess.run(
            [tap.PYTHON, RUNNER, "--sim", self.directory / "sim", "--tool",
             self.directory / "tool", *options, self.suite],
            env=dict(os.environ, ZOLT_TEST_WRAPPER=wrapper),
            capture_output=True, text=True, check=False,
        )

    def check(self, status, *lines, **options):
        """Compares the runner's lines. Returns the lines of its standard error."""
        done = self.run_suite(**options)
        self.assertEqual(done.stdout.splitlines(), list(lines))
        self.assertEqual(done.returncode, status)
        return done.stderr.splitlines()

    def test_dialogues_as_expected(self):
        self.case("b", "=== command\nzolt_sim --board demo -- zolt_test\n"
                  "=== stdout\nboard demo\n0 arguments\n")
        self.case("a", "=== command\nzolt_sim --board board.toml --fault 'a b' -- zolt_test x 0\n"
                  "=== board.toml\n[[slot]]\n"
                  "=== stdin\n1\n2\n\\ No newline at end\n"
                  "=== stdout\n[[slot]]\nfault a b\n2 arguments\n1\n2\n\\ No newline at end\n"
                  "=== calls\n"
                  "=== debug_log\n5 [a.cpp.*.b]\n")
        self.check(0, "1..2", "ok 1 - a", "ok 2 - b")

    def test_differences(self):
        self.case("a", "=== command\nzolt_sim --board demo -- zolt_test 3\n"
                  "=== stdout\nboard demo\n1 argument \\\n"
                  "=== calls\nReadIO\n"
                  "=== debug_log\n5 [a.cpp.*.b]\n")
        problems = [
            "stdout differs:",
            "--- expected",
            "+++ actual",
            "@@ -1,2 +1,2 @@",
            " board demo",
            "-1 argument \\",
            "+1 arguments",
            "calls differs:",
            "--- expected",
            "+++ actual",
            "@@ -1 +0,0 @@",
            "-ReadIO",
            "exit status 3",
            "stderr differs:",
            "--- expected",
            "+++ actual",
            "@@ -0,0 +1 @@",
            "+said on the side",
        ]
        told = self.check(0, "1..1", "not ok 1 - a", *(f"# {line}" for line in problems))
        self.assertEqual(told, ["FAILED: suite/a.transcript", *problems])

    def test_standard_error_begins_with_the_first_difference_and_is_short(self):
        for name in "abcd":
            self.case(name, "=== command\nzolt_sim --board demo -- zolt_test 0\n"
                      "=== stdin\n" + "typed\n" * 100
                      + "=== stdout\nboard demo\n1 arguments\n" + "expected\n" * 100)
        done = self.run_suite()
        told = done.stderr.splitlines()
        self.assertEqual(done.stdout.count("\n# -expected"), 400)
        self.assertEqual(
            told[:8],
            ["FAILED: suite/a.transcript", "stdout differs:", "--- expected", "+++ actual",
             "@@ -1,102 +1,102 @@", " board demo", " 1 arguments", "-expected"],
        )
        self.assertEqual([line for line in told if line.startswith("FAILED")],
                         ["FAILED: suite/a.transcript", "FAILED: suite/b.transcript"])
        self.assertEqual(told[-1], "(no further failures are shown; see testlog.txt)")
        self.assertLess(len(told), 95)

    def test_newline_alone_is_a_difference(self):
        self.case("a", "=== command\nzolt_sim --board demo -- zolt_test\n"
                  "=== stdout\nboard demo\n0 arguments\n\\ No newline at end\n")
        self.check(
            0,
            "1..1",
            "not ok 1 - a",
            "# stdout differs:",
            "# --- expected",
            "# +++ actual",
            "# @@ -1,3 +1,2 @@",
            "#  board demo",
            "#  0 arguments",
            "# -\\ No newline at end",
        )

    def test_standard_error_is_empty_unless_the_file_has_it(self):
        self.program("tool", '#!/bin/sh\necho "said on the side" >&2\n')
        self.case("a", "=== command\nzolt_sim --board demo -- zolt_test\n=== stdout\nboard demo\n")
        self.check(0, "1..1", "not ok 1 - a", "# stderr differs:", "# --- expected", "# +++ actual",
                   "# @@ -0,0 +1 @@", "# +said on the side")

    def test_standard_error_names_the_tool_without_its_directory(self):
        self.program("tool", '#!/bin/sh\necho "$0: no" >&2\n')
        self.case("a", "=== command\nzolt_sim --board demo -- zolt_test\n=== stdout\nboard demo\n"
                  "=== stderr\nzolt_test: no\n")
        self.check(0, "1..1", "ok 1 - a")

    def test_a_wrapper_may_write_to_standard_error(self):
        wrapper = self.program("checker", '#!/bin/sh\necho "no leaks" >&2\nexec "$@"\n')
        self.case("a", "=== command\nzolt_sim --board demo -- zolt_test\n"
                  "=== stdout\nboard demo\n0 arguments\n")
        self.check(0, "1..1", "ok 1 - a", wrapper=wrapper)

    def test_malformed_case_fails_and_the_next_one_runs(self):
        self.case("a", "=== stdout\n=== stdout\n")
        self.case("b", "=== command\nzolt_sim --board demo -- zolt_test\n"
                  "=== stdout\nboard demo\n0 arguments\n")
        self.check(
            0,
            "1..2",
            "not ok 1 - a",
            f"# {self.suite}/a.transcript:2: a second section stdout",
            "ok 2 - b",
        )

    def test_shared_texts(self):
        self.case("a", "=== command\nzolt_sim --board demo -- zolt_test\n"
                  "=== stdin\n\\{main_menu}\n"
                  "=== stdout\nboard demo\n0 arguments\n\\{main_menu}\n")
        self.check(0, "1..1", "ok 1 - a")

    def test_wrapper_stands_in_front_of_the_tool(self):
        wrapper = self.program("a wrapper", '#!/bin/sh\necho "wrapped $1"\nshift\nexec "$@"\n')
        self.case("a", "=== command\nzolt_sim --board demo -- zolt_test\n"
                  "=== stdout\nboard demo\nwrapped up\n0 arguments\n")
        self.check(0, "1..1", "ok 1 - a", wrapper=f"'{wrapper}' up")

    def test_cases_that_match(self):
        for name in ("slot_1", "slot_2", "other"):
            self.case(name, "=== command\nzolt_sim --board demo -- zolt_test\n"
                      "=== stdout\nboard demo\n0 arguments\n")
        self.check(0, "1..1", "ok 1 - slot_2", options=("--only", "slot_2"))
        self.check(0, "1..2", "ok 1 - slot_1", "ok 2 - slot_2", options=("--only", "slot_*"))

    def test_no_case_is_a_failure(self):
        self.check(1, "1..0")
        self.case("a", "=== stdout\n")
        self.check(1, "1..0", options=("--only", "b"))


if __name__ == "__main__":
    tap.main()
