#!/usr/bin/env python3
"""Runs the suites on mutants of the tool's sources, and tells which mutants no suite notices.

Each worker has a copy of the tree and a build of its own. It compiles one mutant at a time and runs
the suites that run the changed code, until one fails. Suites that are quick, and that have noticed
other mutants of the file, run first. A mutant ends as
  caught      a suite failed, or ran longer than it may,
  same code   the compiler makes the same code of it,
  invalid     it does not compile,
  equivalent  equivalent.txt has it, with the reason why no suite can notice it,
  survived    all suites passed.

The mutants run in a random order, which the seed decides. The results are kept: a further run goes on
where the last one ended. The results of lines that have changed since are dropped. The exit status is
0 only when no mutant survived without a reason.
"""

import argparse
import collections
import dataclasses
import hashlib
import json
import multiprocessing
import os
import pathlib
import resource
import shutil
import signal
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))

from compiled_tree import CompiledTree, Failed  # noqa: E402
from mutants import mutants_of  # noqa: E402
from orphans import adopt_orphans  # noqa: E402
from suites import end_with_parent, passes, read_suites  # noqa: E402

TOP = pathlib.Path(__file__).resolve().parents[2]
# The dialogues that show most of a folder.
DIALOGUES = {
    "app": ("front_end", "service"),
    "bus": ("service",),
    "console": ("front_end", "control_registers", "oem_area"),
    "cpld": ("picpwr_info", "control_registers"),
    "i2c": ("i2c_topology", "dynamic_nodes", "node_properties", "bus_recovery"),
    "payload": ("cir_payload", "oem_area", "riser_map"),
}
FOLDERS = tuple(DIALOGUES)
TOOL = "app/zolt_test"
EQUIVALENT = pathlib.Path("tests/mutation/equivalent.txt")
REPORT = pathlib.Path("docs/mutation.md")
OUTCOMES = ("caught", "same code", "invalid", "equivalent", "survived")
BASELINE_SECONDS = 600  # that a suite may take without a mutant


class Invalid(Exception):
    """The mutant does not compile."""


@dataclasses.dataclass
class Result:
    identity: str
    outcome: str
    by: str = ""
    seconds: float = 0  # of processor time

    def file(self):
        return self.identity.split(" | ")[0]


class Notices:
    """Which suites have noticed mutants of a file. A suite that will probably notice the next one, and
    is quick, comes first."""

    def __init__(self, results):
        self.counts = collections.defaultdict(collections.Counter)
        for result in results:
            self.add(result)

    def add(self, result):
        self.counts[result.file()][result.by] += 1

    def in_order(self, suites, file, quick):
        counts = self.counts[file]
        folder = file.split("/")[0]
        unit = f"unit {folder}"
        dialogues = [f"transcript {name}" for name in DIALOGUES[folder]]
        if quick:
            suites = [suite for suite in suites if suite.name in (unit, *dialogues)]

        def promise(suite):
            expected = 10 if suite.name == unit else 1 if suite.name in dialogues else 0.1
            return -(counts[suite.name] + expected) / (suite.seconds + 0.5)

        return sorted(suites, key=promise)


class Worker:
    def __init__(self, top, directory, options, quick):
        self.compiled = CompiledTree(top, directory, options)
        self.quick = quick
        self.suites = [suite for suite in read_suites(self.compiled, TOOL)
                       if self.runs_a_changed_file(suite.program)
                       and not (quick and suite.name.startswith("process "))]
        self.programs = {suite.program for suite in self.suites} | {TOOL}

    def runs_a_changed_file(self, program):
        return any(made.startswith(FOLDERS) for made in self.compiled.links(program))

    def passes(self, suite, seconds):
        return passes(suite, self.compiled.build, seconds)

    def baseline(self, earlier, save):
        """Measures the suites without a mutant. Keeps those that can notice one: a suite which passes
        without the tool does not run the tool."""
        for program in self.programs:
            self.compiled.place(program)
        kept = []
        for suite in self.suites:
            if suite.name not in earlier:
                start = time.monotonic()
                if not self.passes(suite, BASELINE_SECONDS):
                    sys.exit(f"fails without a mutant: {suite.name}")
                suite.seconds = time.monotonic() - start
                if suite.program == TOOL:
                    self.compiled.place(TOOL, shutil.which("false"))
                    if self.passes(suite, BASELINE_SECONDS):
                        suite.seconds = -1
                    self.compiled.place(TOOL)
                earlier[suite.name] = suite.seconds
                save()
            suite.seconds = earlier[suite.name]
            if suite.seconds >= 0:
                kept.append(suite)
        self.suites = kept

    def compile(self, objects, changed):
        """Compiles objects into "changed", whose values say whether they differ from the original."""
        for made in objects:
            if made not in changed:
                try:
                    changed[made] = self.compiled.compile(made) != self.compiled.original(made)
                except Failed as error:
                    raise (error if made.startswith("tests/") else Invalid) from error

    def first_failure(self, affected, suites):
        """Returns the name of the suite that notices the mutant, or None."""
        changed = {}
        ready = set()
        for suite in suites:
            objects = [made for made in self.compiled.links(suite.program) if made in affected]
            if not objects:
                continue
            if suite.program not in ready:
                # The tool's objects first: they tell whether the mutant compiles at all.
                objects.sort(key=lambda made: made.startswith("tests/"))
                try:
                    self.compile(objects, changed)
                except Failed:
                    return suite.name
                if any(changed[made] for made in objects):
                    try:
                        self.compiled.link(suite.program, [made for made in objects if changed[made]])
                    except Failed as error:
                        raise Invalid from error
                ready.add(suite.program)
            if any(changed[made] for made in objects) and not self.passes(suite, 10 + 5 * suite.seconds):
                return suite.name
        return None if any(changed.values()) else "same code"

    def judge(self, mutant, notices):
        path = self.compiled.tree / mutant.file
        source = path.read_bytes()
        affected = set(self.compiled.objects_of[mutant.file])
        own = [made for made in self.compiled.links(TOOL) if made in affected]
        try:
            path.write_bytes(mutant.applied_to(source.decode()).encode())
            by = self.first_failure(affected, notices.in_order(self.suites, mutant.file, self.quick))
            if by is None:
                optimised = [self.compiled.compile(made, "-O2") for made in own]
                path.write_bytes(source)
                if optimised == [self.compiled.compile(made, "-O2") for made in own]:
                    by = "same code"
        except Invalid:
            return Result(mutant.identity(), "invalid")
        finally:
            path.write_bytes(source)
        if by is None or by == "same code":
            return Result(mutant.identity(), by or "survived")
        return Result(mutant.identity(), "caught", by)


def processor_seconds():
    used = [resource.getrusage(who) for who in (resource.RUSAGE_SELF, resource.RUSAGE_CHILDREN)]
    return sum(usage.ru_utime + usage.ru_stime for usage in used)


def work(worker, notices, waiting, done):
    adopt_orphans()
    end_with_parent()
    signal.signal(signal.SIGINT, signal.SIG_IGN)
    while (mutant := waiting.get()) is not None:
        start = processor_seconds()
        result = worker.judge(mutant, notices)
        result.seconds = round(processor_seconds() - start, 1)
        notices.add(result)
        done.put(result)


def run(mutants, results, workers):
    waiting, done = multiprocessing.Queue(), multiprocessing.Queue()
    for mutant in mutants:
        waiting.put(mutant)
    notices = Notices(results.by_identity.values())
    processes = []
    for worker in workers:
        waiting.put(None)
        processes.append(multiprocessing.Process(target=work, args=(worker, notices, waiting, done)))
        processes[-1].start()
    try:
        for number in range(1, len(mutants) + 1):
            result = done.get()
            results.add(result)
            print(f"{number}/{len(mutants)} {result.outcome}: {result.identity}"
                  f"{result.by and f' ({result.by})'}", flush=True)
    finally:
        for process in processes:
            if sys.exc_info()[0]:
                process.terminate()
            process.join()


def equivalents(path):
    """Returns the reasons by the mutant. A reason stands below its mutants, indented."""
    reasons = {}
    listed = []
    for line in path.read_text().splitlines() if path.exists() else ():
        if line.startswith("    "):
            for mutant in listed:
                reasons[mutant] = f"{reasons[mutant]} {line.strip()}".strip()
        elif not line:
            listed = []
        elif not line.startswith("#"):
            listed.append(line)
            reasons[line] = ""
    return reasons


def all_mutants(top, seed):
    mutants = [mutant for folder in FOLDERS for path in sorted((top / folder).rglob("*"))
               if path.suffix in (".cpp", ".h")
               for mutant in mutants_of(str(path.relative_to(top)), path.read_text())]
    # A change of the sources leaves the order of the other mutants as it is.
    return sorted(mutants, key=lambda mutant: hashlib.sha256(f"{seed} {mutant.identity()}".encode()).digest())


class Results:
    """The results so far, in a file of one JSON object a line."""

    def __init__(self, path, valid):
        self.path = path
        self.by_identity = {}
        if path.exists():
            for line in path.read_text().splitlines():
                result = Result(**json.loads(line))
                if result.identity in valid:
                    self.by_identity[result.identity] = result

    def add(self, result):
        self.by_identity[result.identity] = result
        with self.path.open("a") as file:
            file.write(json.dumps(dataclasses.asdict(result)) + "\n")


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
    lines = ["# Which changes of the tool's sources do the suites notice?", "",
             "`scripts/mutate --report` writes this page. [The levels of testing](testing.md) describe the run.",
             f"All {len(mutants)} mutants ran." if len(results) == len(mutants) else
             f"{len(results)} of {len(mutants)} mutants ran, chosen at random.",
             "A suite failed on each mutant that is caught. The compiler makes the same code of some mutants,",
             "and refuses the invalid ones. [equivalent.txt](../tests/mutation/equivalent.txt) says why no",
             "suite can notice the equivalent ones.", "",
             *table("folder", {identity: folders[identity] for identity in results}, results), "",
             *table("kind", {identity: kinds[identity] for identity in results}, results), ""]
    lines += ["Survivors without a reason:", "", *(f"    {line}" for line in survivors)] if survivors else \
        ["No mutant survived without a reason."]
    return lines, survivors


def faults_of_the_list(reasons, results, known):
    """Returns what is wrong with equivalent.txt."""
    for identity, reason in reasons.items():
        result = results.get(identity)
        if identity not in known:
            yield f"no such mutant: {identity}"
        elif not reason:
            yield f"no reason: {identity}"
        elif result and result.outcome != "survived":
            yield f"{result.outcome}: {identity}"


def digest_of(tree):
    """Stands for the files of a tree."""
    digest = hashlib.sha256()
    for path in sorted(path for path in tree.rglob("*") if path.is_file()):
        if path.parent.name == "mutation":
            continue
        digest.update(str(path.relative_to(tree)).encode() + b"\0" + path.read_bytes())
    return digest.hexdigest()


def made_workers(arguments):
    workers = [Worker(arguments.tree, arguments.directory / f"worker_{number}", arguments.option,
                      arguments.quick)
               for number in range(arguments.jobs)]
    state = arguments.directory / "baseline"
    digest = digest_of(workers[0].compiled.tree)
    earlier = json.loads(state.read_text()) if state.exists() else {}
    suites = earlier.get("suites", {}) if earlier.get("digest") == digest else {}

    def save():
        state.write_text(json.dumps({"digest": digest, "suites": suites}))

    for worker in workers:
        worker.baseline(suites, save)
    return workers


def chosen(arguments, mutants, results, reasons):
    """Returns the mutants of this run."""
    mutants = [mutant for mutant in mutants if arguments.only in mutant.identity()]
    if arguments.list:
        return mutants[:arguments.sample]
    if arguments.survivors:
        waiting = [mutant for mutant in mutants if mutant.identity() in results
                   and results[mutant.identity()].outcome == "survived"
                   and mutant.identity() not in reasons]
    else:
        waiting = [mutant for mutant in mutants if mutant.identity() not in results]
    return waiting[:arguments.sample]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--tree", type=pathlib.Path, default=TOP, help="the tree whose suites run")
    parser.add_argument("--directory", type=pathlib.Path, help="where copies, builds and results are kept")
    parser.add_argument("--option", action="append", help="of Meson, for the builds")
    parser.add_argument("--jobs", type=int, default=os.cpu_count(), help="workers, each with a build")
    parser.add_argument("--sample", type=int, help="run so many mutants more")
    parser.add_argument("--seed", type=int, default=1, help="of the random order")
    parser.add_argument("--only", default="", help="run the mutants whose name contains this text")
    parser.add_argument("--quick", action="store_true", help="run only the suites of the mutant's folder")
    parser.add_argument("--survivors", action="store_true", help="run only the survivors again")
    parser.add_argument("--list", action="store_true", help="run nothing: print the mutants")
    parser.add_argument("--report", action="store_true", help=f"run nothing: write {REPORT}")
    arguments = parser.parse_args()
    arguments.directory = (arguments.directory or arguments.tree / "build-mutation").resolve()
    arguments.option = arguments.option or ["-Dstandin=enabled", "-Dtests=enabled", "-Doptimization=1",
                                            "-Dwerror=false"]

    mutants = all_mutants(arguments.tree, arguments.seed)
    known = {mutant.identity() for mutant in mutants}
    reasons = equivalents(arguments.tree / EQUIVALENT)
    arguments.directory.mkdir(exist_ok=True)
    results = Results(arguments.directory / "results", known)
    selected = chosen(arguments, mutants, results.by_identity, reasons)
    if arguments.list:
        print(*(mutant.identity() for mutant in selected), sep="\n")
        return 0
    if not arguments.report and selected:
        adopt_orphans()
        run(selected, results, made_workers(arguments))
    lines, survivors = report(results.by_identity, mutants, reasons)
    if arguments.report:
        (arguments.tree / REPORT).write_text("\n".join(lines) + "\n")
    else:
        print(*lines, sep="\n")
    faults = [f"{EQUIVALENT.name}: {fault}"
              for fault in faults_of_the_list(reasons, results.by_identity, known)]
    print(*faults, sep="\n", end="\n" if faults else "", file=sys.stderr)
    return 1 if survivors or faults else 0


if __name__ == "__main__":
    sys.exit(main())
