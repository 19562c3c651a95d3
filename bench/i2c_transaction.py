"""One control transaction of the tool beside a bare open, ioctl and close on the same stand-in.

Counted are instructions, by callgrind, the preload library's included: what a run of many
transactions takes beyond a run of one, divided by their number. The bar: at most 1.05 times the
floor's.
"""

import argparse
import os
import pathlib
import re
import subprocess
import tempfile

BUS = "5"
BOARD = f"[[i2c.bus]]\nnumber = {BUS}\nproperties = {{ 8 = 0x11 }}\n"


def instructions(sim, driver, kind, count, scratch):
    board = os.path.join(scratch, "board.toml")
    out = os.path.join(scratch, "callgrind.out")
    pathlib.Path(board).write_text(BOARD)
    callgrind = ["valgrind", "--tool=callgrind", f"--callgrind-out-file={out}"]
    subprocess.run(
        [sim, "--board", board, "--", *callgrind, driver, kind, BUS, str(count)],
        capture_output=True,
        check=True,
    )
    return int(re.search(r"^totals: (\d+)", pathlib.Path(out).read_text(), re.M).group(1))


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    for option in ("--sim", "--driver"):
        parser.add_argument(option, required=True)
    parser.add_argument("--count", type=int, default=1000)
    arguments = parser.parse_args()

    with tempfile.TemporaryDirectory() as scratch:
        def each(kind):
            none, all_of_them = (
                instructions(arguments.sim, arguments.driver, kind, count, scratch)
                for count in (1, 1 + arguments.count)  # the first one resolves the symbols
            )
            return (all_of_them - none) / arguments.count

        own, floor = each("tool"), each("bare")
        print(f"instructions of a transaction: zolt_test {own:.0f}  floor {floor:.0f}  "
              f"ratio {own / floor:.3f}")


if __name__ == "__main__":
    main()
