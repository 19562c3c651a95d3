"""One control transaction of the tool beside a bare open, ioctl and close on the same stand-in.

callgrind counts instructions in the client with its preload library, and in zolt_sim, which
answers. The cost of a transaction is a run of many transactions minus a run of one, divided by the
number of transactions between the two. The work of the kernel between client and zolt_sim is the
same for tool and floor and does not count. The bar: the whole transaction takes at most 1.05 times
the floor's instructions.
"""

import argparse
import os
import pathlib
import re
import subprocess
import sys
import tempfile

BUS = "5"
BOARD = f"[[i2c.bus]]\nnumber = {BUS}\nproperties = {{ 8 = 0x11 }}\n"


def callgrind(out):
    return ["valgrind", "--tool=callgrind", f"--callgrind-out-file={out}"]


def total(file):
    return int(re.search(r"^totals: (\d+)", pathlib.Path(file).read_text(), re.M).group(1))


def instructions(arguments, kind, count, scratch):
    """Returns the instructions of the client and of zolt_sim."""
    board, client, server = (os.path.join(scratch, name) for name in ("b.toml", "client", "sim"))
    pathlib.Path(board).write_text(BOARD)
    command = [*callgrind(server + ".%p"), arguments.sim, "--board", board, "--"]
    command += [*callgrind(client), arguments.driver, kind, BUS, str(count)]
    with subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL) as process:
        if process.wait() != 0:
            sys.exit(f"{arguments.driver} {kind} failed")
    return total(client), total(f"{server}.{process.pid}")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    for option in ("--sim", "--driver"):
        parser.add_argument(option, required=True)
    parser.add_argument("--count", type=int, default=1000)
    arguments = parser.parse_args()

    with tempfile.TemporaryDirectory() as scratch:

        def each(kind):
            # The first transaction also resolves symbols, so it does not count.
            one = instructions(arguments, kind, 1, scratch)
            many = instructions(arguments, kind, 1 + arguments.count, scratch)
            return [(last - first) / arguments.count for first, last in zip(one, many)]

        own, floor = each("tool"), each("bare")
        print("instructions of one transaction:")
        for title, a, b in (("client alone", own[0], floor[0]), ("whole", sum(own), sum(floor))):
            print(f"  {title:14} zolt_test {a:6.0f}  floor {b:6.0f}  ratio {a / b:.3f}")


if __name__ == "__main__":
    main()
