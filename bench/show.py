"""zolt_board show --json of boards that grow: its instructions for each slot and for each object.

callgrind counts the instructions. The figures of a slot and of an object leave out those of an empty
board. The ratio is that to the figure of the smallest board: it stays at most 1 when the work grows
no faster than the board.
"""

import argparse
import json
import pathlib
import re
import subprocess
import sys
import tempfile

NUMBERS_OF_SLOTS = (1, 2, 4, 8, 16, 32, 63)
NUMBERS_OF_OBJECTS = (10, 100, 1000, 10000)


def slots(number):
    """Describes slots with a module."""
    lines = []
    for slot in range(1, number + 1):
        lines += [
            "[[slot]]",
            f"id = {slot}",
            "dstat = 2",
            "module_class = 6",
            f"payload_offset = {slot * 380}",
            "[slot.module]",
            "type = 'riser'",
            f"object = 'module_{slot}'",
        ]
    return lines


def objects(number):
    """Describes objects that the service publishes."""
    lines = []
    for index in range(number):
        lines += [
            "[[service.object]]",
            f"path = '/com/tesk/bmc/zolt/riser/object_{index}'",
            "interface = 'com.tesk.bmc.zolt.riser'",
            f"properties = {{ PartNumber = 'P{index}', HWUID = {index} }}",
        ]
    return lines


def instructions(program, board, lines):
    """The instructions that show a board of these lines."""
    board.write_text("".join(f"{line}\n" for line in lines))
    callgrind = ["valgrind", "--tool=callgrind", f"--callgrind-out-file={board}.out"]
    done = subprocess.run([*callgrind, program, "show", "--json", board], stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, text=True, check=False)
    if done.returncode != 0:
        sys.exit(f"{program} failed: {done.stderr}")
    json.loads(done.stdout)
    return int(re.search(r"Collected : (\d+)", done.stderr)[1])


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--program", required=True)
    program = parser.parse_args().program
    with tempfile.TemporaryDirectory() as scratch:
        board = pathlib.Path(scratch, "board.toml")
        empty = instructions(program, board, [])
        print(f"an empty board: {empty} instructions")
        for part, describe, sizes in (("slot", slots, NUMBERS_OF_SLOTS),
                                      ("object", objects, NUMBERS_OF_OBJECTS)):
            smallest = None
            for size in sizes:
                of_one = (instructions(program, board, describe(size)) - empty) / size
                smallest = smallest or of_one
                print(f"a board of {size:5} {part}(s): {of_one:8.0f} instructions each, "
                      f"ratio {of_one / smallest:.3f}", flush=True)


if __name__ == "__main__":
    main()
