#!/usr/bin/env python3
"""Runs the suites on mutants of the tool's sources, and tells which mutants no suite notices.

Each worker has a copy of the tree and a build of its own. It compiles one mutant at a time and runs
the suites, the quickest first, until one fails. A mutant ends as
  caught      a suite failed, or ran longer than it may,
  same code   the compiler makes the same code of it,
  invalid     it does not compile,
  equivalent  equivalent.txt has it, with the reason why no suite can notice it,
  survived    all suites passed.

The results are kept. A further run goes on where the last one ended, and runs the survivors again.
The results of code that has changed since are dropped. The exit status is 0 only when no mutant survived.
"""

import argparse
import concurrent.futures
import dataclasses
import hashlib
import json
import os
import pathlib
import queue
import random
import resource
import shutil
import signal
import subprocess
import sys
import threading

from mutants import mutants_of

TOP = pathlib.Path(__file__).resolve().parents[2]
EQUIVALENT = pathlib.Path(__file__).parent / "equivalent.txt"
OUTCOMES = ("caught", "same code", "invalid", "equivalent", "survived")
GIB = 1 << 30

# For each folder: its unit test programs and the dialogues that show most of it.
SUITES = {
    "app": (["app"], ["front_end", "service"]),
    "bus": (["bus"], ["service"]),
    "console": (["console"], ["front_end", "control_registers", "oem_area"]),
    "cpld": (["cpld"], ["picpwr_info", "control_registers"]),
    "i2c": (["i2c"], ["i2c_topology", "dynamic_nodes", "node_properties", "bus_recovery"]),
    "payload": (["payload"], ["cir_payload", "oem_area", "riser_map"]),
}
SECONDS = 300  # that a suite may take


class Invalid(Exception):
    """The mutant does not compile."""


@dataclasses.dataclass
class Result:
    identity: str
    outcome: str
    by: str = ""


def limit_resources():
    """A mutant may ask for any amount of memory, and write without end."""
    os.setsid()
    resource.setrlimit(resource.RLIMIT_DATA, (4 * GIB, 4 * GIB))
    resource.setrlimit(resource.RLIMIT_FSIZE, (GIB, GIB))


def passes(command, seconds, **options):
    process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL, preexec_fn=limit_resources, **options)
    try:
        return process.wait(seconds) == 0
    except subprocess.TimeoutExpired:
        return False
    finally:
        try:
            os.killpg(process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        process.wait()


class Worker:
    """A copy of the tree with a build."""

    def __init__(self, directory):
        self.tree, self.build = directory / "tree", directory / "build"
        self.copy_tree()
        if not (self.build / "build.ninja").exists():
            environment = dict(os.environ, CC="gcc", CXX="g++")
            subprocess.run(["meson", "setup", self.build, self.tree, "-Dstandin=enabled", "-Dtests=enabled",
                            "-Doptimization=1", "-Ddebug=false"], check=True, env=environment,
                           stdout=subprocess.DEVNULL)
        subprocess.run(["ninja", "--quiet", "-C", self.build], check=True)
        self.original = self.code()

    def copy_tree(self):
        """Copies what has changed: the build compiles only that again."""
        listed = subprocess.run(["git", "-C", TOP, "ls-files", "-z"], check=True, stdout=subprocess.PIPE)
        for name in listed.stdout.decode().rstrip("\0").split("\0"):
            source, copy = TOP / name, self.tree / name
            if not source.exists():
                copy.unlink(missing_ok=True)
            elif source.is_symlink() or not copy.exists() or copy.read_bytes() != source.read_bytes():
                copy.parent.mkdir(parents=True, exist_ok=True)
                copy.unlink(missing_ok=True)
                shutil.copy(source, copy, follow_symlinks=False)

    def code(self):
        """Stands for the machine code of the tool."""
        digest = hashlib.sha256()
        for folder in [*SUITES, "app"]:
            for compiled in sorted((self.build / folder).rglob("*.o")):
                digest.update(compiled.name.encode() + compiled.read_bytes())
        return digest.digest()

    def make(self, *targets):
        if not passes(["ninja", "-C", self.build, *targets], 3600):
            raise Invalid

    def suite_passes(self, *names):
        return passes(["meson", "test", "-C", self.build, "--no-rebuild", "--maxfail", "1",
                       "--num-processes", "1", *names], SECONDS * 10)

    def first_failure(self, folder):
        """Returns the suite that notices the mutant, or None."""
        units, dialogues = SUITES[folder]
        for unit in units:
            self.make(f"tests/test_{unit}")
            if not passes([self.build / "tests" / f"test_{unit}"], SECONDS, cwd=self.build):
                return f"unit {unit}"
        self.make("app/zolt_test")
        if self.code() == self.original:
            return "same code"
        for area in dialogues:
            if not self.suite_passes(area):
                return f"transcript {area}"
        self.make("all")
        for suite in ("unit", "transcript", "process"):
            if not self.suite_passes("--suite", suite):
                return suite
        return None

    def judge(self, mutant):
        path = self.tree / mutant.file
        source = path.read_text()
        path.write_text(mutant.applied_to(source))
        try:
            by = self.first_failure(mutant.file.split("/")[0])
        except Invalid:
            return Result(mutant.identity(), "invalid")
        finally:
            path.write_text(source)
        if by is None:
            return Result(mutant.identity(), "survived")
        if by == "same code":
            return Result(mutant.identity(), by)
        return Result(mutant.identity(), "caught", by)


def equivalents():
    """Returns the reasons of equivalent.txt by the mutant. A reason stands below its mutant, indented."""
    reasons = {}
    identity = None
    for line in EQUIVALENT.read_text().splitlines() if EQUIVALENT.exists() else ():
        if line.startswith("    ") and identity:
            reasons[identity] = f"{reasons[identity]} {line.strip()}".strip()
        elif line and not line.startswith("#"):
            identity = line
            reasons[identity] = ""
    return reasons


def all_mutants():
    for folder in SUITES:
        for path in sorted((TOP / folder).rglob("*")):
            if path.suffix in (".cpp", ".h"):
                yield from mutants_of(str(path.relative_to(TOP)), path.read_text())


class Results:
    """The results so far, in a file of one JSON object a line."""

    def __init__(self, path, valid):
        self.path = path
        self.by_identity = {}
        self.lock = threading.Lock()
        if path.exists():
            for line in path.read_text().splitlines():
                result = Result(**json.loads(line))
                if result.identity in valid:
                    self.by_identity[result.identity] = result
        path.write_text("".join(self.line(result) for result in self.by_identity.values()))

    @staticmethod
    def line(result):
        return json.dumps(dataclasses.asdict(result)) + "\n"

    def add(self, result):
        with self.lock:
            self.by_identity[result.identity] = result
            with self.path.open("a") as file:
                file.write(self.line(result))


def table(title, groups, results):
    lines = [f"| {title} | mutants | {' | '.join(OUTCOMES)} |", "| --- |" + " ---: |" * (len(OUTCOMES) + 1)]
    for group in [*sorted(set(groups.values())), "all"]:
        outcomes = [result.outcome for identity, result in results.items()
                    if group in ("all", groups[identity])]
        counts = [len(outcomes), *(outcomes.count(outcome) for outcome in OUTCOMES)]
        lines.append(f"| {group} | {' | '.join(str(count) for count in counts)} |")
    return lines


def report(results, mutants, reasons):
    results = {identity: dataclasses.replace(result, outcome="equivalent")
               if result.outcome == "survived" and reasons.get(identity) else result
               for identity, result in results.items()}
    folders = {mutant.identity(): mutant.file.split("/")[0] for mutant in mutants}
    kinds = {mutant.identity(): mutant.kind for mutant in mutants}
    survivors = sorted(identity for identity, result in results.items() if result.outcome == "survived")
    lines = [f"{len(results)} of {len(mutants)} mutants ran.", "",
             *table("folder", {identity: folders[identity] for identity in results}, results), "",
             *table("kind", {identity: kinds[identity] for identity in results}, results), ""]
    lines += ["Survivors without a reason:", "", *(f"    {line}" for line in survivors)] if survivors else []
    return lines, survivors


def run(mutants, results, workers):
    waiting = queue.SimpleQueue()
    for mutant in mutants:
        waiting.put(mutant)

    def work(worker):
        while True:
            try:
                mutant = waiting.get_nowait()
            except queue.Empty:
                return
            result = worker.judge(mutant)
            results.add(result)
            print(f"{result.outcome}: {result.identity}{result.by and f' ({result.by})'}", flush=True)

    with concurrent.futures.ThreadPoolExecutor(len(workers)) as executor:
        for done in [executor.submit(work, worker) for worker in workers]:
            done.result()


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--directory", type=pathlib.Path, default=TOP / "build-mutation",
                        help="where copies, builds and results are kept")
    parser.add_argument("--jobs", type=int, default=os.cpu_count(), help="workers, each with a build")
    parser.add_argument("--sample", type=int, help="run so many mutants, chosen at random")
    parser.add_argument("--seed", type=int, default=1, help="of the random choice")
    parser.add_argument("--only", default="", help="run the mutants whose name contains this text")
    parser.add_argument("--list", action="store_true", help="run nothing: print the mutants")
    parser.add_argument("--report", action="store_true", help="run nothing: print the tables")
    arguments = parser.parse_args()

    mutants = list(all_mutants())
    known = {mutant.identity() for mutant in mutants}
    chosen = [mutant for mutant in mutants if arguments.only in mutant.identity()]
    if arguments.sample is not None:
        chosen = random.Random(arguments.seed).sample(chosen, min(arguments.sample, len(chosen)))
    if arguments.list:
        print(*(mutant.identity() for mutant in chosen), sep="\n")
        return 0

    reasons = equivalents()
    stale = [identity for identity in reasons if identity not in known]
    unexplained = [identity for identity, reason in reasons.items() if not reason]
    for identity in stale + unexplained:
        print(f"{EQUIVALENT.name}: {'no such mutant' if identity in stale else 'no reason'}: {identity}",
              file=sys.stderr)

    arguments.directory.mkdir(exist_ok=True)
    results = Results(arguments.directory / "results", known)
    if not arguments.report:
        done = {identity for identity, result in results.by_identity.items()
                if result.outcome != "survived"}
        remaining = [mutant for mutant in chosen if mutant.identity() not in done]
        workers = [Worker(arguments.directory / f"worker_{number}") for number in range(arguments.jobs)]
        if workers and not workers[0].suite_passes():
            sys.exit("the suites fail without a mutant")
        run(remaining, results, workers)
    lines, survivors = report(results.by_identity, mutants, reasons)
    print(*lines, sep="\n")
    return 1 if survivors or stale or unexplained else 0


if __name__ == "__main__":
    sys.exit(main())
