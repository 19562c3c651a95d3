"""zolt_board check over 1,000 captures, on one processor and on all.

zolt_capture makes 40 captures of random boards; the 1,000 boards are copies of them. The figures are
the boards that are checked in a second, the share of the processors, which other load of the machine
lowers, and the peak memory with 100 and with 1,000 boards: the program keeps no board, so that both
are the same.
"""

import argparse
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "tests" / "support"))

from random_board import random_board  # noqa: E402

CAPTURES = 40
SIZES = (100, 1000)


def captures(arguments, directory):
    """Captures random boards into files of a directory."""
    files = []
    for seed in range(CAPTURES):
        board = directory / "board.toml"
        board.write_text(random_board(seed))
        files.append(directory / f"capture_{seed}.toml")
        done = subprocess.run(
            [arguments.sim, "--board", board, "--", arguments.capture, "-o", files[-1]],
            stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True, check=False)
        if not files[-1].exists():
            sys.exit(f"no capture of random board {seed}: {done.stderr}")
    return files


def measure(program, boards, processors):
    """Checks the boards once. Returns the seconds, and the peak memory in KiB and the share of the
    processors from the command time, which itself needs less memory than the program."""
    start = time.perf_counter()
    done = subprocess.run(
        ["time", "--format=%M %P", "taskset", "--cpu-list", processors, program, "check", *boards],
        stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True, check=False)
    seconds = time.perf_counter() - start
    *complaints, memory = done.stderr.splitlines()
    if done.returncode not in (0, 1) or any("status 1" not in line for line in complaints):
        sys.exit(f"{program} failed: {done.stderr}")
    return seconds, *memory.split()


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    for option in ("--sim", "--capture", "--program"):
        parser.add_argument(option, required=True)
    arguments = parser.parse_args()
    usable = sorted(os.sched_getaffinity(0))
    everywhere = ",".join(map(str, usable))
    with tempfile.TemporaryDirectory() as scratch:
        directory = pathlib.Path(scratch)
        made = captures(arguments, directory)
        boards = []
        for index in range(max(SIZES)):
            boards.append(directory / f"{index}.toml")
            shutil.copy(made[index % CAPTURES], boards[-1])
        for title, processors in (("one processor", str(usable[0])),
                                  (f"{len(usable)} processors", everywhere)):
            for size in SIZES:
                seconds, memory, share = measure(arguments.program, boards[:size], processors)
                print(f"{size:4} boards, {title}: {size / seconds:6.0f} boards a second; "
                      f"processors used {share}; memory {memory} KiB", flush=True)


if __name__ == "__main__":
    main()
