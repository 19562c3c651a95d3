"""Runs a suite until its first failure."""

import ctypes
import dataclasses
import json
import os
import pathlib
import re
import resource
import select
import shutil
import signal
import subprocess
import sys
import tempfile
import time

GIB = 1 << 30
PROCESSOR_SECONDS = 60  # of one process: an endless one ends then
FAILED = re.compile(rb"^not ok\b", re.MULTILINE)
PR_SET_PDEATHSIG = 1


@dataclasses.dataclass
class Suite:
    name: str
    command: list
    environment: dict
    protocol: str
    program: str  # the one that it tests
    seconds: float = 0  # that it took without a mutant


def end_with_parent():
    """Ends this process, with its clean-up, when its parent ends."""
    signal.signal(signal.SIGTERM, lambda number, frame: sys.exit(128 + number))
    ctypes.CDLL(None).prctl(PR_SET_PDEATHSIG, signal.SIGTERM, 0, 0, 0)


def prepare():
    """Makes a suite independent of the caller. A mutant may compute without end, and ask for any amount
    of memory."""
    os.setsid()
    for name in (signal.SIGHUP, signal.SIGINT, signal.SIGQUIT):
        # nohup, or a background shell, ignores them.
        signal.signal(name, signal.SIG_DFL)
    for limit, most in ((resource.RLIMIT_CPU, PROCESSOR_SECONDS), (resource.RLIMIT_DATA, 4 * GIB),
                        (resource.RLIMIT_CORE, 0)):
        resource.setrlimit(limit, (most, most))


def end_children():
    """Ends all that a suite has left running."""
    own = pathlib.Path("/proc/self/task")
    while True:
        children = [int(child) for task in own.iterdir()
                    for child in (task / "children").read_text().split()]
        if not children:
            return
        for child in children:
            try:
                os.kill(child, signal.SIGKILL)
                os.waitpid(child, 0)
            except (ProcessLookupError, ChildProcessError):
                pass


def read_until_failure(process, protocol, seconds):
    """Returns whether the process reported no failure in its time."""
    end = time.monotonic() + seconds
    output = b""
    while True:
        ready, _, _ = select.select([process.stdout], [], [], max(0, end - time.monotonic()))
        if not ready:
            return False
        more = os.read(process.stdout.fileno(), 1 << 16)
        if not more:
            break
        if protocol == "tap":
            output += more
            if FAILED.search(output):
                return False
            output = output[output.rfind(b"\n") + 1:]
    try:
        return process.wait(max(0, end - time.monotonic())) == 0
    except subprocess.TimeoutExpired:
        return False


def passes(suite, directory, seconds):
    """Runs a suite. It ends at its first failure, and fails when it takes longer than it may."""
    scratch = tempfile.mkdtemp(prefix="mutant.")
    os.chmod(scratch, 0o1777)
    environment = dict(os.environ, **suite.environment, TMPDIR=scratch, GTEST_FAIL_FAST="1")
    process = subprocess.Popen(suite.command, cwd=directory, env=environment, stdin=subprocess.DEVNULL,
                               stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                               preexec_fn=prepare)
    try:
        return read_until_failure(process, suite.protocol, seconds)
    finally:
        process.kill()
        process.wait()
        process.stdout.close()
        end_children()
        shutil.rmtree(scratch, ignore_errors=True)


def read_suites(compiled, tool):
    """Returns the suites of units, dialogues and processes that run a program which can be a mutant."""
    suites = []
    build = str(compiled.build)
    for test in json.loads((compiled.build / "meson-info" / "intro-tests.json").read_text()):
        kinds = [kind.split(":")[1] for kind in test["suite"]]
        command = [word.removeprefix(f"{build}/") for word in test["cmd"]]
        if test["protocol"] == "gtest" and "unit" in kinds:
            program = command[0]
        elif "transcript" in kinds or "process" in kinds:
            program = tool
        else:
            continue
        placed = str(compiled.placed(program))

        def in_place(text):
            return placed if text in (program, f"{build}/{program}") else text

        suites.append(Suite(name=f"{kinds[0]} {test['name']}",
                            command=[in_place(word) for word in test["cmd"]],
                            environment={name: in_place(value) for name, value in test["env"].items()},
                            protocol=test["protocol"], program=program))
    return suites
