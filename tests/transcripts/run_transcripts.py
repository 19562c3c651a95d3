#!/usr/bin/env python3
"""Replays whole dialogues with the tool on boards of the stand-in.

A transcript is a directory:

    args        arguments of zolt_test, split as by a shell (none: interactive mode)
    stdin       input of the tool (none: empty)
    stdout      expected output of the tool, byte for byte
    board.toml  the board; instead, a file named board may name a board that comes with the tool
    options     further options of zolt_sim, split as by a shell
    calls       expected calls of the platform's libraries, in order, one on each line
    debug_log   expected lines of the platform's debug log; * stands for the number of a source line
    i2c_log     expected control transactions of the I2C bus driver, one on each line

Only stdout and a board are required. A log is compared only when the transcript has a file for it.
The tool's exit status has to be 0. The result is printed as TAP. The environment variable
ZOLT_TEST_WRAPPER may hold a command to run the tool under, such as a memory checker.
"""

import argparse
import difflib
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile

TIMEOUT_SECONDS = 60


def words(path):
    return shlex.split(path.read_text()) if path.exists() else []


def content(path):
    return path.read_bytes() if path.exists() else b""


def board_of(case):
    if (case / "board.toml").exists():
        return str(case / "board.toml")
    return (case / "board").read_text().strip()


def logged(log):
    return re.sub(rb"(?<=\.cpp\.)\d+(?=\.)", b"*", content(log))


def difference(name, expected, actual):
    if expected == actual:
        return []
    lines = [
        text.decode("utf-8", "backslashreplace").splitlines(keepends=True)
        for text in (expected, actual)
    ]
    return [f"{name} differs:"] + [
        line.rstrip("\n") + ("" if line.endswith("\n") else "  (no newline)")
        for line in difflib.unified_diff(*lines, "expected", "actual")
    ]


def replay(case, sim, tool):
    with tempfile.TemporaryDirectory() as scratch:
        logs = {name: pathlib.Path(scratch) / name for name in ("calls", "debug_log", "i2c_log")}
        command = [sim, "--board", board_of(case)]
        command += ["--call-log", str(logs["calls"]), "--debug-log", str(logs["debug_log"])]
        command += ["--i2c-log", str(logs["i2c_log"])]
        command += words(case / "options") + ["--"]
        command += shlex.split(os.environ.get("ZOLT_TEST_WRAPPER", ""))
        command += [tool] + words(case / "args")
        try:
            done = subprocess.run(
                command,
                input=content(case / "stdin"),
                capture_output=True,
                timeout=TIMEOUT_SECONDS,
                check=False,
            )
        except subprocess.TimeoutExpired:
            return [f"still running after {TIMEOUT_SECONDS} s"]
        problems = difference("stdout", (case / "stdout").read_bytes(), done.stdout)
        for name, log in logs.items():
            if (case / name).exists():
                problems += difference(name, (case / name).read_bytes(), logged(log))
        if done.returncode != 0:
            problems.append(f"exit status {done.returncode}")
        if problems and done.stderr:
            problems += ["standard error:"] + done.stderr.decode(errors="replace").splitlines()
        return problems


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--sim", required=True)
    parser.add_argument("--tool", required=True)
    parser.add_argument("directory", type=pathlib.Path)
    arguments = parser.parse_args()

    cases = sorted(path.parent for path in arguments.directory.rglob("stdout"))
    print(f"1..{len(cases)}")
    for number, case in enumerate(cases, 1):
        problems = replay(case, arguments.sim, arguments.tool)
        result = "not ok" if problems else "ok"
        print(f"{result} {number} - {case.relative_to(arguments.directory)}")
        for line in problems:
            print(f"# {line}")
        sys.stdout.flush()
    return 0 if cases else 1


if __name__ == "__main__":
    sys.exit(main())
