"""Option 12 over 10 to 10,000 objects, beside a floor program in C on bare sd-bus.

Both programs make the same calls and write the same text at the same points. They run in turns on
the same bus. The bars: at most 1.05 times the floor's wall time, and time in proportion to the
number of objects. The benchmark also shows the processor time, which other load of the machine
disturbs less, and the peak memory beside that of a busctl that asks for the same tree.
"""

import argparse
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

SIZES = (10, 100, 1000, 10000)
LISTED = 60000  # objects listed per size, but more at the largest and fewer at the smallest
MEMBER = "GetManagedObjects"

PROPERTIES = """
[[service.object]]
path = "riser/slot_{name}"
interface = "cemCIR"
[service.object.properties]
PayloadFrmtVer = {{ signature = "y", value = 2 }}
DeviceClass = {{ signature = "y", value = 11 }}
StaticPaylodSize = {{ signature = "y", value = 64 }}
DeviceId = {number}
VendorId = 0x1234
DeviceVer = {{ signature = "y", value = {low_byte} }}
NumWires = {{ signature = "y", value = 0x5F }}
TargetI2cDevType = {{ signature = "y", value = 0xE3 }}
TargetI2cDevAddr = {{ signature = "y", value = 0xD0 }}
checksum = {{ signature = "y", value = 0xA5 }}
EndPoint0 = {{ signature = "(yyyyyy)", value = [0x35, 0x42, 0x67, 0x21, 0x13, 0x45] }}
EndPoint1 = {{ signature = "(yyyyyy)", value = [1, 2, 3, 4, 5, {low_byte}] }}
EndPoint2 = {{ signature = "(yyyyyy)", value = [16, 32, 48, 64, 80, 96] }}
EndPoint3 = {{ signature = "(yyyyyy)", value = [255, 254, 253, 252, 251, 250] }}
"""


def board(size):
    """Describes a board that publishes its objects in another order than that of their paths."""
    objects = (
        PROPERTIES.format(name=number * 7919 % size, number=number, low_byte=number % 256)
        for number in range(size)
    )
    return f'name = "{size} risers"\n' + "".join(objects)


class Program:
    def __init__(self, *command):
        self.command = command
        self.wall, self.processor = [], []

    def run(self):
        """Lists the objects once and returns the printed text."""
        with tempfile.TemporaryFile() as output:
            start = time.perf_counter()
            process = subprocess.Popen(self.command, stdout=output)
            _, status, usage = os.wait4(process.pid, 0)
            self.wall.append(time.perf_counter() - start)
            self.processor.append(usage.ru_utime + usage.ru_stime)
            process.returncode = status
            if status != 0:
                sys.exit(f"{self.command[0]} failed")
            output.seek(0)
            return output.read()

    def peak_memory(self):
        """Returns KiB from the command time, which itself needs less memory than the program."""
        shown = subprocess.run(
            ["time", "--format=%M", *self.command],
            stdout=subprocess.DEVNULL,
            stderr=subprocess.PIPE,
            check=True,
        )
        return int(shown.stderr.split()[-1])


def measure(arguments):
    """Measures on the board of one size, which zolt_sim runs, and prints a line of figures."""
    tool = Program(arguments.tool, "-o", "12", "-m", "4")
    floor = Program(arguments.floor)
    manager = ("/com/tesk/bmc/zolt/riser", "org.freedesktop.DBus.ObjectManager")
    busctl = Program("busctl", "--system", "call", "com.tesk.bmc.zolt", *manager, MEMBER)
    for _ in range(min(600, max(15, LISTED // arguments.size))):
        if tool.run() != floor.run():
            sys.exit("tool and floor do not print the same text")
    figures = [f"{arguments.size:5} objects"]
    for title in ("wall", "processor"):
        own, least = (statistics.median(getattr(program, title)) for program in (tool, floor))
        figures.append(
            f"{title} {own * 1e3:8.2f} ms, floor {least * 1e3:8.2f} ms, ratio {own / least:.3f}"
        )
    memory = [program.peak_memory() for program in (tool, floor, busctl)]
    figures.append("memory {} KiB, floor {} KiB, busctl {} KiB".format(*memory))
    print("; ".join(figures), flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    for option in ("--sim", "--tool", "--floor"):
        parser.add_argument(option, required=True)
    parser.add_argument("--size", type=int, help="measure on the board that is there")
    arguments = parser.parse_args()
    if arguments.size is not None:
        os.environ.pop("LD_PRELOAD", None)  # no program here uses an I2C bus
        measure(arguments)
        return
    with tempfile.TemporaryDirectory() as scratch:
        for size in SIZES:
            path = pathlib.Path(scratch, f"{size}.toml")
            path.write_text(board(size))
            again = [sys.executable, *sys.argv, "--size", str(size)]
            subprocess.run([arguments.sim, "--board", path, "--", *again], check=True)


if __name__ == "__main__":
    main()
