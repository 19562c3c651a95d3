#!/usr/bin/env python3
"""scripts/count_results.py, on logs in the form of Meson's."""

import json
import pathlib
import subprocess
import tempfile
import unittest

import tap

SCRIPT = pathlib.Path(__file__).parent.parent.parent / "scripts" / "count_results.py"

CASES = '<testsuite name="z.z:{program}">{cases}</testsuite>'
PASSED = '<testcase name="a"/>'
FAILED = '<testcase name="b"><failure/></testcase>'
# Meson writes the reason of a case in TAP apart. GoogleTest writes the place in the source, too.
SKIPPED = '<testcase name="3 - c"><skipped/><system-out>no bus</system-out></testcase>'
SKIPPED_GTEST = '<testcase name="d"><skipped message="d.cpp:7&#x0A;no root"/></testcase>'


class Count(unittest.TestCase):
    def check(self, count, programs, suites, *skipped):
        """Counts a run of programs, with their results, whose cases are in the suites."""
        with tempfile.TemporaryDirectory() as directory:
            logs = pathlib.Path(directory)
            (logs / "testlog.json").write_text("".join(
                json.dumps({"name": f"z:{name}", "result": result}) + "\n"
                for name, result in programs.items()
            ))
            (logs / "testlog.junit.xml").write_text(f"<testsuites>{suites}</testsuites>")
            done = subprocess.run(
                [tap.PYTHON, SCRIPT, directory], capture_output=True, text=True, check=True
            )
        self.assertEqual(done.stdout.splitlines(), [count, *skipped])

    def test_each_case_counts(self):
        self.check(
            "4 0 2",
            {"unit / gtest": "OK", "transcript / tap": "OK", "process / alone": "OK"},
            CASES.format(program="unit / gtest.Suite", cases=PASSED + SKIPPED_GTEST)
            + CASES.format(program="transcript / tap", cases=PASSED + PASSED + SKIPPED)
            + '<testsuite name="z"><testcase name="z:process / alone"/></testsuite>',
            "gtest.Suite d: no root",
            "tap c: no bus",
        )

    def test_program_that_is_skipped_as_a_whole_and_says_nothing(self):
        self.check(
            "0 0 1",
            {"process / alone": "SKIP"},
            '<testsuite name="z"><testcase name="z:process / alone"><skipped/></testcase></testsuite>',
            "z:process / alone: no reason",
        )

    def test_program_with_a_failed_case_counts_no_further_failure(self):
        for result in ("FAIL", "ERROR"):
            with self.subTest(result):
                self.check(
                    "3 3 0",
                    {"unit / gtest": result, "transcript / tap": result},
                    CASES.format(program="unit / gtest.One", cases=PASSED)
                    + CASES.format(program="unit / gtest.Two", cases=PASSED + FAILED)
                    + CASES.format(program="transcript / tap", cases=PASSED + FAILED + FAILED),
                )

    def test_program_that_ends_after_its_last_case_counts_as_failed(self):
        self.check(
            "1 1 0",
            {"transcript / tap": "TIMEOUT"},
            CASES.format(program="transcript / tap", cases=PASSED),
        )

    def test_same_name_in_another_suite_is_another_program(self):
        self.check(
            "1 2 0",
            {"transcript / tap": "FAIL", "process / tap": "ERROR"},
            CASES.format(program="transcript / tap", cases=FAILED)
            + CASES.format(program="process / tap", cases=PASSED),
        )

    def test_program_without_cases(self):
        self.check(
            "0 2 0",
            {"unit / failed": "FAIL", "unit / slow": "TIMEOUT"},
            '<testsuite name="z"><testcase name="z:unit / failed"><failure/></testcase>'
            '<testcase name="z:unit / slow"/></testsuite>',
        )


if __name__ == "__main__":
    tap.main()
