#!/usr/bin/env python3
"""Lets the tool and the stand-in run for long, and looks for what adds up.

passes    One tool with its menu takes many passes over all options on the demo board. Each pass must
          print the same bytes as the only pass of a fresh tool. The tool's memory and its descriptors must
          not grow after pass 1000, nor its processor time for a pass.
commands  zolt_sim runs many commands, one after the other.
kills     zolt_sim, or a process that it started, is killed at a random moment, many times. The next start
          must work.

No command and no kill may leave a process, or anything in the directory for temporary files.
"""

import argparse
import contextlib
import os
import pathlib
import random
import select
import signal
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))

from orphans import adopt_orphans  # noqa: E402

# Every option, with the answers to its questions. A pass leaves the board as it was: option 10 removes the
# device of option 9, and option 14 writes the value that the demo board has.
PASS = b"".join(answer + b"\n" for option in (
    b"1 0", b"2 8 1 2 3", b"3 8 1 2 3", b"4 1 2 3", b"5 15", b"6 0", b"7 24", b"8 24", b"9 13 0 0 51",
    b"10 13 51", b"11", b"12 4", b"13 3 1 40", b"14 46 3 0 40 1 12", b"15 5",
) for answer in option.split())
END = b"100\n"
PATIENCE = 30  # seconds
WARM_UP = 1000 # passes after which nothing may grow
NOISE = 16     # KiB: a stack may get deeper once; a byte lost in each of 100,000 passes is 97 KiB
BLOCKS = 100   # of passes that are measured together


class Wrong(Exception):
    """Something is not as it has to be."""


def require(condition, text):
    if not condition:
        raise Wrong(text)


class Surroundings:
    """The programs, and the directory in which zolt_sim puts its own."""

    def __init__(self, scratch):
        self.sim, self.tool = os.environ["ZOLT_SIM"], os.environ["ZOLT_TEST"]
        self.scratch = pathlib.Path(scratch)
        self.environment = dict(os.environ, TMPDIR=scratch)

    def start(self, *command, told=subprocess.STDOUT):
        return subprocess.Popen([self.sim, "--board", "demo", "--", *command], env=self.environment,
                                stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=told)

    def run(self, *words, text=b""):
        with self.start(self.tool, *words) as process:
            output, _ = process.communicate(text, timeout=PATIENCE)
            return process.returncode, output

    def leftovers(self):
        """What is there when no command runs. Processes without a parent become ours."""
        with contextlib.suppress(ChildProcessError):
            while os.waitpid(-1, os.WNOHANG)[0] != 0:
                pass
        return [*(f"process {pid}: {name_of(pid)}" for pid in descendants(os.getpid())),
                *map(str, self.scratch.iterdir())]

    def require_clean(self):
        end = time.monotonic() + PATIENCE
        while left := self.leftovers():
            require(time.monotonic() < end, f"left behind: {left}")
            time.sleep(0.002)


def name_of(pid):
    try:
        return pathlib.Path(f"/proc/{pid}/comm").read_text().strip()
    except OSError:
        return "gone"


def descendants(pid):
    found = []
    with contextlib.suppress(OSError):
        for task in os.listdir(f"/proc/{pid}/task"):
            for child in pathlib.Path(f"/proc/{pid}/task/{task}/children").read_text().split():
                found += [int(child), *descendants(int(child))]
    return found


class Measured:
    """Figures of a process."""

    def __init__(self, pid):
        proc = pathlib.Path(f"/proc/{pid}")
        fields = proc.joinpath("stat").read_text().rpartition(")")[2].split()
        self.seconds = (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")
        # The counts of statm may lack some pages. Pages of files come and go with the machine's memory.
        rollup = dict(line.split()[:2] for line in proc.joinpath("smaps_rollup").read_text().splitlines()[1:])
        self.kilobytes = int(rollup["Anonymous:"])
        self.descriptors = len(os.listdir(proc / "fd"))


def read_exactly(stream, size):
    got = bytearray()
    while len(got) < size:
        ready, _, _ = select.select([stream], [], [], PATIENCE)
        require(ready, f"no more output after {len(got)} of {size} bytes")
        more = os.read(stream.fileno(), size - len(got))
        require(more, f"the output ends after {len(got)} of {size} bytes")
        got += more
    return bytes(got)


def passes(around, count):
    status, fresh = around.run(text=PASS + END)
    require(status == 0, f"a fresh tool ends with status {status}")
    status, menu = around.run(text=END)
    require(status == 0 and fresh.startswith(menu) and fresh.endswith(menu),
            "a fresh tool does not begin and end with its menu")
    expected = fresh[len(menu):]

    warm = min(WARM_UP, count // 2)
    block = max(1, (count - warm) // BLOCKS)
    with around.start(around.tool) as session:
        read_exactly(session.stdout, len(menu))
        tool = next(pid for pid in descendants(session.pid) if name_of(pid) == os.path.basename(around.tool)[:15])
        figures = []
        for number in range(1, count + 1):
            session.stdin.write(PASS)
            session.stdin.flush()
            got = read_exactly(session.stdout, len(expected))
            require(got == expected, f"pass {number} prints other bytes than a fresh tool")
            if number >= warm and (number - warm) % block == 0:
                figures.append(Measured(tool))
        output, _ = session.communicate(END, timeout=PATIENCE)
        require((session.returncode, output) == (0, b""), f"the tool ends with {session.returncode}, {output!r}")
    first, last = figures[0], figures[-1]
    print(f"{count} passes of {len(expected)} bytes")
    print(f"    memory after pass {warm}: {first.kilobytes} KiB, at most {max(f.kilobytes for f in figures)} KiB")
    print(f"    descriptors after pass {warm}: {first.descriptors}, at the end {last.descriptors}")
    require(max(f.kilobytes for f in figures) <= first.kilobytes + NOISE, "the tool's memory grows")
    require({f.descriptors for f in figures} == {first.descriptors}, "the tool's descriptors grow")
    tenth = len(figures) // 10
    if tenth > 0:
        early = figures[tenth].seconds - first.seconds
        late = last.seconds - figures[-1 - tenth].seconds
        print(f"    processor time of a pass: {1e6 * early / (tenth * block):.0f} us at the beginning, "
              f"{1e6 * late / (tenth * block):.0f} us at the end")
        # The clock of processor time is too coarse for less.
        require(early < 1 or late <= 1.25 * early, "a pass takes ever longer")


def commands(around, count):
    begin = time.monotonic()
    expected = around.run("-o", "1")
    require(expected[0] == 0 and expected[1], f"the first command fails: {expected}")
    for number in range(1, count + 1):
        require(around.run("-o", "1") == expected, f"command {number} prints other bytes than the first")
        around.require_clean()
    print(f"{count} commands, {(time.monotonic() - begin) / count * 1000:.1f} ms each")


def kills(around, count, chance):
    expected = around.run("-o", "1")
    killed = {}
    for number in range(1, count + 1):
        with around.start(around.tool, told=subprocess.DEVNULL) as session:
            # At the end of its input, the tool would show its menu for ever.
            with contextlib.suppress(BrokenPipeError):  # a command that has failed reads nothing
                os.write(session.stdin.fileno(), PASS * 20 + END)
            # A pipe that nobody reads would stop the tool in the same place every time.
            os.set_blocking(session.stdout.fileno(), False)
            end = time.monotonic() + chance.uniform(0, 0.15)
            while time.monotonic() < end:
                session.stdout.read()
                time.sleep(0.001)
            victim = chance.choice([session.pid, *descendants(session.pid)])
            name = name_of(victim)
            with contextlib.suppress(ProcessLookupError):
                os.kill(victim, signal.SIGKILL)
                killed[name] = killed.get(name, 0) + 1
            os.set_blocking(session.stdout.fileno(), True)
            ready = True
            while ready:
                ready, _, _ = select.select([session.stdout], [], [], PATIENCE)
                require(ready, f"kill {number} of {name}: the command goes on")
                if not os.read(session.stdout.fileno(), 1 << 16):
                    break
            session.wait(PATIENCE)
        try:
            around.require_clean()
            require(around.run("-o", "1") == expected, "the next start fails")
        except Wrong as wrong:
            raise Wrong(f"kill {number}, of {name}: {wrong}") from wrong
    print(f"{count} kills: " + ", ".join(f"{name} {times}" for name, times in sorted(killed.items())))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--passes", type=int, default=100_000)
    parser.add_argument("--commands", type=int, default=10_000)
    parser.add_argument("--kills", type=int, default=1_000)
    parser.add_argument("--seed", type=int, default=1, help="decides which process is killed when")
    arguments = parser.parse_args()
    adopt_orphans()
    runs = ((passes, arguments.passes), (commands, arguments.commands),
            (lambda around, count: kills(around, count, random.Random(arguments.seed)), arguments.kills))
    with tempfile.TemporaryDirectory() as scratch:
        around = Surroundings(scratch)
        for run, count in runs:
            if count == 0:
                continue
            try:
                run(around, count)
                around.require_clean()
            except Wrong as wrong:
                sys.exit(f"long_run: {wrong}")
            sys.stdout.flush()


if __name__ == "__main__":
    main()
