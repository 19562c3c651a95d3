#!/usr/bin/env python3
"""Counts the test cases of the `meson test` run whose logs are in a directory.

usage: count_results.py LOG_DIRECTORY

Prints "PASSED FAILED SKIPPED" and then a line for each skipped case: its program, its name and the
reason. A program that reports its test cases counts once for each case; any other program counts
once.
"""

import json
import sys
import xml.etree.ElementTree as xml
from pathlib import Path

BAD_RESULTS = {"FAIL", "ERROR", "TIMEOUT", "INTERRUPT", "UNEXPECTEDPASS"}


def outcome(case):
    if case.find("failure") is not None or case.find("error") is not None:
        return "failed"
    if case.find("skipped") is not None or case.get("status") == "notrun":
        return "skipped"
    return "passed"


def cases_of(junit_root):
    """Yields (name of the program, outcome, whether the program reports cases) for each case."""
    for suite in junit_root.iter("testsuite"):
        _, _, program = suite.get("name").partition(".")
        for case in suite.iter("testcase"):
            yield program or case.get("name"), outcome(case), program != ""


def reason(case):
    """Why a case was skipped. GoogleTest writes the place in the source first, Meson a text apart."""
    message = case.find("skipped").get("message", "") if case.find("skipped") is not None else ""
    return message.partition("\n")[2].strip() or case.findtext("system-out", "").strip() or "no reason"


def skipped_cases(junit_root):
    """Yields a line for each skipped case."""
    for suite in junit_root.iter("testsuite"):
        program = suite.get("name").partition(" / ")[2]
        for case in suite.iter("testcase"):
            if outcome(case) == "skipped":
                name = case.get("name").rpartition("- ")[2] if program else case.get("name")
                yield f"{program} {name}: {reason(case)}".strip()


def bad_programs(json_file):
    """Yields the programs that Meson reports as bad, whatever their cases say."""
    for line in json_file.read_text().splitlines():
        result = json.loads(line)
        if result["result"] in BAD_RESULTS:
            yield result["name"]


def is_of(program, case_program):
    return case_program == program or case_program.startswith(program + ".")


def main():
    count = {"passed": 0, "failed": 0, "skipped": 0}
    skipped = []
    for json_file in Path(sys.argv[1]).glob("*.json"):
        junit_root = xml.parse(json_file.with_suffix(".junit.xml")).getroot()
        cases = list(cases_of(junit_root))
        skipped += skipped_cases(junit_root)
        for program in bad_programs(json_file):
            own = [case for case in cases if is_of(program, case[0])]
            # The program crashed, timed out or failed after its last case.
            if all(case[1] != "failed" for case in own):
                count["failed"] += 1
                # Meson lists a program without cases as one case, which passes even when the
                # program timed out. Count such a program only once, as failed.
                if (program, "passed", False) in own:
                    cases.remove((program, "passed", False))
        for _, result, _ in cases:
            count[result] += 1
    print(count["passed"], count["failed"], count["skipped"])
    print(*skipped, sep="\n", end="\n" if skipped else "")


if __name__ == "__main__":
    main()
