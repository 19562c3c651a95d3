#!/usr/bin/env python3
"""Runs the tool on a real kernel, whose I2C buses are those of the kernel module.

All dialogues of tests/transcripts run in a virtual machine and must have the same bytes as on the
preload library. So must the checks of checks.py. The unit tests of I2C run there, too. The result is
printed as TAP.
"""

import argparse
import concurrent.futures
import fnmatch
import os
import pathlib
import re
import shlex
import sys

import checks
import virtual_machine

TESTS = pathlib.Path(__file__).parent.parent
sys.path += [str(TESTS / "support"), str(TESTS / "transcripts")]

from failures import Failures  # noqa: E402
from run_transcripts import TEXTS, difference, without_line_numbers  # noqa: E402
from transcript import read_text, read_transcript  # noqa: E402

SIM = "/standin/zolt_sim"
TOOL = "/usr/bin/zolt_test"
LOGS = {"calls": "--call-log", "debug_log": "--debug-log", "i2c_log": "--i2c-log"}
UNIT_TESTS = ("i2c", "standin_i2c_bus")
LONGEST_RUN = 900  # seconds
DELAYED_OPEN = re.compile(r"\bi2c-open\b.*\bdelay\b")
SHARES = 2  # of the dialogues, in machines side by side: a kernel holds one board at a time


class Dialogue:
    """A transcript as a job of the machine."""

    def __init__(self, path, texts):
        self.name = f"{path.parent.name}/{path.stem}"
        self._transcript = read_transcript(path, texts)

    def delays_an_open(self):
        board = self._transcript.contents.get("board.toml", b"").decode()
        rules = [*self._transcript.options, *board.splitlines()]
        return any(DELAYED_OPEN.search(rule) for rule in rules)

    def files(self):
        contents = self._transcript.contents
        words = [SIM, "--kernel-buses", *self._transcript.options]
        if "board.toml" in contents:
            words[words.index("--board") + 1] = f"/jobs/{self.name}/board.toml"
        for name, option in LOGS.items():
            words += [option, name]
        words += ["--", TOOL, *self._transcript.arguments]
        script = f"exec {shlex.join(words)} <${{0%/*}}/stdin\n"
        files = {"run": script.encode(), "stdin": contents.get("stdin", b"")}
        if "board.toml" in contents:
            files["board.toml"] = contents["board.toml"]
        return files

    def problems(self, results):
        contents = self._transcript.contents
        found = difference("stdout", contents["stdout"], results.get("stdout", b""))
        for name in LOGS:
            if name in contents:
                actual = without_line_numbers(results.get(name, b""))
                found += difference(name, contents[name], actual)
        return found


class CheckJob:
    """A check as a job of the machine."""

    def __init__(self, check):
        self.name = f"checks/{check.name}"
        self._check = check

    def delays_an_open(self):
        return False

    def files(self):
        sim = [SIM, "--kernel-buses", "--board", f"/jobs/{self.name}/board.toml"]
        script = self._check.script(sim, TOOL=TOOL, PROBE="/usr/bin/bus_probe", I2C="/usr/bin")
        return {"run": script, "board.toml": checks.BOARD.read_bytes()}

    def problems(self, results):
        return difference("stdout", self._check.expected, results.get("stdout", b""))


class UnitTests:
    """The unit tests of a subsystem as a job of the machine."""

    def __init__(self, subsystem, build):
        self.name = f"units/{subsystem}"
        self._program = build / f"tests/test_{subsystem}"

    def delays_an_open(self):
        return False

    def files(self):
        # Each job has its own directory of results. The tests write none.
        script = b"chmod +x ${0%/*}/tests\nexec ${0%/*}/tests --gtest_brief=1\n"
        return {"run": script, "tests": self._program.read_bytes()}

    def problems(self, results):
        printed = results.get("stdout", b"").decode(errors="replace")
        passed = re.search(r"^\[  PASSED  \] [1-9][0-9]* tests?\.$", printed, re.MULTILINE)
        return [] if passed and "[  FAILED  ]" not in printed else printed.splitlines() or ["no test ran"]


def jobs_of(pattern, build):
    texts = {path.name: read_text(path) for path in TEXTS.iterdir()}
    jobs = [Dialogue(path, texts) for path in sorted(TEXTS.parent.glob("*/*.transcript"))]
    jobs += [CheckJob(check) for check in checks.all_checks()]
    jobs += [UnitTests(subsystem, build) for subsystem in UNIT_TESTS]
    return [job for job in jobs if fnmatch.fnmatch(job.name, pattern)]


def problems_of(job, files):
    results = {name.removeprefix(f"{job.name}/"): content for name, content in files.items()
               if name.startswith(f"{job.name}/")}
    problems = job.problems(results)
    status = results.get("status", b"none\n").decode().strip()
    if status != "0":
        problems.append(f"exit status {status}")
    if problems and results.get("stderr"):
        problems += ["standard error:"]
        problems += results["stderr"].decode(errors="replace").splitlines()
    return problems


def report(name, problems, number, failures):
    print(f"{'not ok' if problems else 'ok'} {number} - {name}", *(f"# {line}" for line in problems),
          sep="\n", flush=True)
    if problems:
        failures.show(name, problems)


class Machine:
    """A virtual machine and its jobs."""

    def __init__(self, jobs, processors):
        self.jobs = jobs
        self._processors = processors
        self.files = {}
        self.problems = []

    def run(self, parts, log):
        files = {job.name: job.files() for job in self.jobs}
        try:
            self.files = virtual_machine.run(parts, files, LONGEST_RUN, pathlib.Path(log), self._processors)
        except virtual_machine.Failure as failure:
            self.problems = str(failure).splitlines()
        self.problems += self.files.get("left", b"").decode().splitlines()


def machines_for(jobs):
    """The checks are about programs that run at the same time. In a dialogue one program waits for another."""
    dialogues = [job for job in jobs if isinstance(job, Dialogue)]
    machines = [Machine([job for job in jobs if job not in dialogues], processors=2)]
    machines += [Machine(dialogues[first::SHARES], processors=1) for first in range(SHARES)]
    return [machine for machine in machines if machine.jobs]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--prepared", required=True, type=pathlib.Path,
                        help="the directory of scripts/kernel")
    parser.add_argument("--standin", required=True, type=pathlib.Path,
                        help="build of the stand-in and the tests for AArch64")
    parser.add_argument("--tool", required=True, type=pathlib.Path,
                        help="the program for an AArch64 board")
    parser.add_argument("--log", required=True,
                        help="files for the logs of the machines; each gets a number behind it")
    parser.add_argument("--only", default="*", help="run the jobs that match GROUP/NAME")
    arguments = parser.parse_args()

    parts = virtual_machine.Parts(arguments.prepared, arguments.standin, arguments.tool)
    wanted = jobs_of(arguments.only, arguments.standin)
    jobs = [job for job in wanted if not job.delays_an_open()]
    failures = Failures()
    machines = machines_for(jobs)
    print(f"1..{len(wanted) + len(machines)}", flush=True)
    workers = len(os.sched_getaffinity(0)) + 1 # some machines wait
    with concurrent.futures.ThreadPoolExecutor(workers) as executor:
        logs = [f"{arguments.log}.{number}" for number in range(1, len(machines) + 1)]
        list(executor.map(lambda machine, log: machine.run(parts, log), machines, logs)) # passes errors on
    number = 0
    for machine in machines:
        number += 1
        report("the machine", machine.problems, number, failures)
        print(f"# {float(machine.files.get('seconds', b'nan'))} s in the machine")
        for job in machine.jobs:
            number += 1
            report(job.name, problems_of(job, machine.files), number, failures)
    for job in wanted:
        if job.delays_an_open():
            number += 1
            print(f"ok {number} - {job.name} # SKIP the kernel cannot delay an open")
    return 0 if jobs else 1


if __name__ == "__main__":
    sys.exit(main())
