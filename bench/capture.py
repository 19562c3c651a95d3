"""zolt_capture of the demo board beside the reports of zolt_test over the same data.

A report is one run of the tool. The bars: a capture makes at most as many platform calls as the
reports of all slots, takes at most 1.1 times their time, and needs less than 8 MB. The other sum
leaves out the payloads of slots without a module: these reports only say that there is none. A
capture also reads the registers that the reports read when a read by name fails.
"""

import argparse
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time
import tomllib

ROUNDS = 9
KINDS_OF_MODULES = range(1, 12)
SLOTS = range(1, 64)


def run(command, typed=""):
    done = subprocess.run(command, input=typed.encode(), stdout=subprocess.PIPE, check=True)
    if not done.stdout:
        sys.exit(f"{command} prints nothing")
    return done.stdout.decode()


def reports(tool, slots):
    """The arguments of each report, with the payloads of these slots, and what is typed."""
    words = [("-o 1", "0\n"), ("-o 4 -f 2", ""), ("-o 5 -m 15", ""), ("-o 6", "0\n"),
             ("-o 7 -d 165", ""), ("-o 11", "")]
    words += [(f"-o {option} -p {slot} -f 2", "") for slot in slots for option in (2, 3)]
    words += [(f"-o 12 -m {kind}", "") for kind in KINDS_OF_MODULES]
    return [([tool, *options.split()], typed) for options, typed in words]


def works(arguments):
    """What is measured, by title: the commands that run one after the other."""
    slots = tomllib.loads(run([arguments.capture]))["slot"]
    with_module = [slot["id"] for slot in slots if "module" in slot]
    return {
        "zolt_capture": [([arguments.capture], "")],
        "reports, all slots": reports(arguments.tool, SLOTS),
        "reports, slots with a module": reports(arguments.tool, with_module),
    }


def seconds_of(commands):
    start = time.perf_counter()
    for command, typed in commands:
        run(command, typed)
    return time.perf_counter() - start


def calls_of(commands, log):
    """The platform calls of the commands. zolt_sim appends them to the log."""
    log.write_text("")
    seconds_of(commands)
    return len(log.read_text().splitlines())


def peak_memory(command):
    """KiB from the command time, which itself needs less memory than the program."""
    shown = subprocess.run(["time", "--format=%M", *command], stdout=subprocess.DEVNULL,
                           stderr=subprocess.PIPE, check=True)
    return int(shown.stderr.split()[-1])


def measure(arguments):
    """Measures on the board that is there, and prints a line of figures for each work."""
    os.environ.pop("LD_PRELOAD", None)  # no program here uses an I2C bus
    measured = works(arguments)
    calls = {title: calls_of(commands, arguments.log) for title, commands in measured.items()}
    rounds = [{title: seconds_of(commands) for title, commands in measured.items()}
              for _ in range(ROUNDS)]
    own = next(iter(measured))
    for title in measured:
        seconds = statistics.median(figures[title] for figures in rounds)
        ratio = statistics.median(figures[own] / figures[title] for figures in rounds)
        print(f"{title:28} {len(measured[title]):4} runs; {calls[title]:6} platform calls, "
              f"ratio {calls[own] / calls[title]:.3f}; {seconds * 1e3:7.1f} ms, ratio {ratio:.3f}")
    print(f"peak memory of {own}: {peak_memory([arguments.capture])} KiB", flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    for option in ("--sim", "--capture", "--tool"):
        parser.add_argument(option, required=True)
    parser.add_argument("--log", type=pathlib.Path, help="measure on the board that is there")
    arguments = parser.parse_args()
    if arguments.log:
        measure(arguments)
        return
    with tempfile.TemporaryDirectory() as scratch:
        log = pathlib.Path(scratch, "calls")
        again = [sys.executable, *sys.argv, "--log", log]
        subprocess.run(
            [arguments.sim, "--board", "demo", "--call-log", log, "--", *again], check=True)


if __name__ == "__main__":
    main()
