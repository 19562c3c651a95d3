"""The hexadecimal dump of 64 MiB beside xxd and hexdump -vC. Each time includes reading the file.

All three programs dump the same file, in turns, to /dev/null and into a pipe. The bar: zolt_test is
faster than both others.
"""

import argparse
import os
import pathlib
import random
import statistics
import subprocess
import sys
import tempfile
import time

MIB = 1 << 20
HEADER = (
    b"\n+             0  1  2  3  4  5  6  7 :  8  9  A  B  C  D  E  F\n"
    b"--------------------------------------------------------------\n"
)
# The format that makes hexdump print the tool's layout, for input of whole lines. hexdump drops the
# blank of the last repetition, so the eighth byte of each half has a format of its own.
HALF = '7/1 "%02x " " " 1/1 "%02x "'
LAYOUT = f'"0x%08_ax = " {HALF} ": " {HALF} "\\n"'


def check_layout(driver, file):
    lines = subprocess.run(["hexdump", "-v", "-e", LAYOUT, file], capture_output=True, check=True)
    dump = subprocess.run([driver, file], capture_output=True, check=True)
    if dump.stdout != HEADER + lines.stdout + b"\n\n":
        sys.exit(f"the dump of {file} differs from what it should be")


def seconds(command, through_pipe):
    start = time.perf_counter()
    if through_pipe:
        with subprocess.Popen(command, stdout=subprocess.PIPE) as dump:
            subprocess.run(["cat"], stdin=dump.stdout, stdout=subprocess.DEVNULL, check=True)
        status = dump.returncode
    else:
        status = subprocess.run(command, stdout=subprocess.DEVNULL, check=False).returncode
    if status != 0:
        sys.exit(f"{command[0]} failed")
    return time.perf_counter() - start


def compare(title, commands, rounds, through_pipe):
    times = {name: [] for name in commands}
    for _ in range(rounds):
        for name, command in commands.items():
            times[name].append(seconds(command, through_pipe))
    own = statistics.median(times["zolt_test"])
    print(title)
    for name, measured in times.items():
        median = statistics.median(measured)
        print(
            f"  {name:12} {median:7.3f} s (best {min(measured):.3f}), "
            f"{median / own:6.2f} times zolt_test's"
        )
    sys.stdout.flush()


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--driver", required=True)
    parser.add_argument("--mib", type=int, default=64)
    parser.add_argument("--rounds", type=int, default=3)
    arguments = parser.parse_args()

    with tempfile.TemporaryDirectory() as scratch:
        sample = os.path.join(scratch, "sample")
        pathlib.Path(sample).write_bytes(random.Random(1).randbytes(MIB))
        check_layout(arguments.driver, sample)

        size = arguments.mib * MIB
        for kind, content in (("zeros", bytes(size)), ("random", random.Random(2).randbytes(size))):
            file = os.path.join(scratch, kind)
            pathlib.Path(file).write_bytes(content)
            commands = {
                "zolt_test": [arguments.driver, file],
                "xxd": ["xxd", file],
                "hexdump -vC": ["hexdump", "-vC", file],
            }
            for through_pipe, sink in ((False, "/dev/null"), (True, "a pipe")):
                title = f"{arguments.mib} MiB of {kind} to {sink}, median of {arguments.rounds}:"
                compare(title, commands, arguments.rounds, through_pipe)


if __name__ == "__main__":
    main()
