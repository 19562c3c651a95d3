"""The report of all 63 PICPWRs, every slot occupied, beside a floor that makes the same calls.

Both must make the same platform calls and print the same text. Counted are instructions, by
callgrind, without those that the platform's calls take: counting stops at a call's entry and goes
on at its return, so that whatever the libraries have others do for them is left out as well. The
bar: at most 1.25 times the floor's, the process as a whole.
"""

import argparse
import os
import pathlib
import re
import subprocess
import sys
import tempfile

SLOTS = 63
ANSWER = b"0\n"
PLATFORM_CALLS = ("ReadIO_Str*", "cpld_read_device", "cpld_read_block_device")


def full_board():
    """A board whose every slot is occupied and shows values of every length."""
    lines = ['name = "every slot occupied"']
    for slot in range(1, SLOTS + 1):
        links = ", ".join(str(slot * link * 7 % 256) for link in range(1, 9))
        lines += [
            "[[slot]]",
            f"id = {slot}",
            f"dstat = {1 + slot % 3}",
            f"dbyp = {'true' if slot % 2 else 'false'}",
            "dpen = true",
            f"apen = {'true' if slot % 5 else 'false'}",
            "astat = true",
            f"module_class = {1 + slot % 14}",
            f"module_class_index = {slot * 4}",
            f"payload_offset = {slot * 200}",
            f"dsl_ids = [{links}]",
        ]
    return "\n".join(lines) + "\n"


class Bench:
    def __init__(self, sim, scratch):
        self.scratch = scratch
        self.on_board = [sim, "--board", os.path.join(scratch, "full_63.toml")]
        pathlib.Path(self.on_board[-1]).write_text(full_board())

    def run(self, command, options=()):
        return subprocess.run(
            [*self.on_board, *options, "--", *command],
            input=ANSWER,
            capture_output=True,
            check=True,
        ).stdout

    def text_and_calls(self, command):
        log = os.path.join(self.scratch, "calls")
        text = self.run(command, ["--call-log", log])
        return text, pathlib.Path(log).read_bytes()

    def instructions(self, command, options=()):
        out = os.path.join(self.scratch, "callgrind.out")
        toggles = [f"--toggle-collect={call}" for call in PLATFORM_CALLS]
        callgrind = ["valgrind", "--tool=callgrind", f"--callgrind-out-file={out}"]
        self.run([*callgrind, *toggles, *options, *command])
        return int(re.search(r"^totals: (\d+)", pathlib.Path(out).read_text(), re.M).group(1))


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    for option in ("--sim", "--tool", "--floor"):
        parser.add_argument(option, required=True)
    arguments = parser.parse_args()
    tool, floor = [arguments.tool, "-o", "1"], [arguments.floor]

    with tempfile.TemporaryDirectory() as scratch:
        bench = Bench(arguments.sim, scratch)
        (text, calls), (floor_text, floor_calls) = map(bench.text_and_calls, (tool, floor))
        if text != floor_text or calls != floor_calls:
            sys.exit("tool and floor do not print the same text by the same calls")
        print(f"{len(text)} bytes of report by {calls.count(10)} platform calls; instructions:")
        # Behind the others: an option to toggle at a call starts without counting.
        whole = ("--collect-atstart=yes",)
        main_alone = ("--toggle-collect=main",)
        for title, options in (("whole process", whole), ("main() alone", main_alone)):
            own, least = (bench.instructions(command, options) for command in (tool, floor))
            print(f"  {title:14} zolt_test {own:9}  floor {least:9}  ratio {own / least:.3f}")


if __name__ == "__main__":
    main()
