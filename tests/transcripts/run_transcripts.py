#!/usr/bin/env python3
"""Replays whole dialogues with the tool on boards of the stand-in.

transcript.py describes the files of a suite, CASE.transcript. The tool's output, the logs
and standard error have to be as the file says, and the tool's exit status 0. The result is
printed as TAP, with a difference in the notation of the file. The environment variable
ZOLT_TEST_WRAPPER may hold a command to run the tool under, such as a memory checker, which may write
to standard error.
"""

import argparse
import difflib
import fnmatch
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile

from transcript import Malformed, encoded, read_text, read_transcript

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))

import signals  # noqa: E402
from failures import Failures  # noqa: E402
from loader import without_loader  # noqa: E402

TIMEOUT_SECONDS = 60
TEXTS = pathlib.Path(__file__).parent / "texts"


def without_line_numbers(log):
    """Returns a log with * in place of the numbers of source lines."""
    return re.sub(rb"(?<=\.cpp\.)\d+(?=\.)", b"*", log)


def logged(log):
    return without_line_numbers(log.read_bytes() if log.exists() else b"")


def difference(name, expected, actual):
    if expected == actual:
        return []
    lines = difflib.unified_diff(
        encoded(expected), encoded(actual), "expected", "actual", lineterm=""
    )
    return [f"{name} differs:", *lines]


def command_of(transcript, sim, tool, scratch):
    options = list(transcript.options)
    if "board.toml" in transcript.contents:
        board = scratch / "board.toml"
        board.write_bytes(transcript.contents["board.toml"])
        options[1] = str(board)
    logs = {name: scratch / name for name in ("calls", "debug_log", "i2c_log")}
    command = [sim, *options]
    command += ["--call-log", str(logs["calls"]), "--debug-log", str(logs["debug_log"])]
    command += ["--i2c-log", str(logs["i2c_log"]), "--"]
    command += shlex.split(os.environ.get("ZOLT_TEST_WRAPPER", ""))
    return command + [tool, *transcript.arguments], logs


def problems_of_standard_error(transcript, told, tool):
    """A message starts with the path of the tool. The transcript has its name."""
    told = without_loader(told.decode("latin-1")).encode("latin-1").replace(tool.encode(), b"zolt_test")
    return difference("stderr", transcript.contents.get("stderr", b""), told)


def replay(transcript, sim, tool):
    """Returns the differences between the transcript and what the tool does."""
    contents = transcript.contents
    with tempfile.TemporaryDirectory() as scratch:
        command, logs = command_of(transcript, sim, tool, pathlib.Path(scratch))
        try:
            done = subprocess.run(
                command,
                input=contents.get("stdin", b""),
                capture_output=True,
                timeout=TIMEOUT_SECONDS,
                check=False,
            )
        except subprocess.TimeoutExpired:
            return [f"still running after {TIMEOUT_SECONDS} s"]
        problems = difference("stdout", contents["stdout"], done.stdout)
        for name, log in logs.items():
            if name in contents:
                problems += difference(name, contents[name], logged(log))
        if done.returncode != 0:
            problems.append(f"exit status {done.returncode}")
        if problems or not os.environ.get("ZOLT_TEST_WRAPPER"):
            problems += problems_of_standard_error(transcript, done.stderr, tool)
        return problems


def problems_of(case, texts, sim, tool):
    try:
        return replay(read_transcript(case, texts), sim, tool)
    except Malformed as error:
        return [str(error)]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--sim", required=True)
    parser.add_argument("--tool", required=True)
    parser.add_argument("--only", default="*", help="replay the cases that match this pattern")
    parser.add_argument("suite", type=pathlib.Path, help="directory of transcripts")
    arguments = parser.parse_args()

    texts = {path.name: read_text(path) for path in TEXTS.iterdir()}
    cases = sorted(arguments.suite.glob("*.transcript"))
    cases = [case for case in cases if fnmatch.fnmatch(case.stem, arguments.only)]
    failures = Failures()
    signals.restore()
    print(f"1..{len(cases)}")
    for number, case in enumerate(cases, 1):
        problems = problems_of(case, texts, arguments.sim, arguments.tool)
        result = "not ok" if problems else "ok"
        print(f"{result} {number} - {case.stem}", *(f"# {line}" for line in problems), sep="\n")
        sys.stdout.flush()
        if problems:
            failures.show(f"{arguments.suite.name}/{case.name}", problems)
    return 0 if cases else 1


if __name__ == "__main__":
    sys.exit(main())
