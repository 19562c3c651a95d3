#!/usr/bin/env python3
"""Memory, page faults and instructions of the tool on a real kernel, beside other programs.

The programs run in the virtual machine of tests/kernel. The figures are of one run each: peak memory,
page faults, and instructions outside the kernel. zolt_capture captures the demo board. i2ctransfer
makes one transfer. busctl and dbus-send ask for the tree that option 12 shows.
"""

import argparse
import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "tests/kernel"))

import virtual_machine  # noqa: E402

TOOL = "/usr/bin/zolt_test"
RUNS = {
    "option 1": f"{TOOL} -o 1 -p 5",
    "option 5, class 15": f"{TOOL} -o 5 -m 15",
    "option 12": f"{TOOL} -o 12 -m 4",
    "zolt_capture": "$CAPTURE",
    "i2ctransfer": "/usr/bin/i2ctransfer -y 0 w1@0x50 0x00 r16",
    "busctl": "/usr/bin/busctl --address=$DBUS_SYSTEM_BUS_ADDRESS --no-pager call"
              " com.tesk.bmc.zolt /com/tesk/bmc/zolt/riser"
              " org.freedesktop.DBus.ObjectManager GetManagedObjects",
    "dbus-send": "/usr/bin/dbus-send --bus=$DBUS_SYSTEM_BUS_ADDRESS --print-reply"
                 " --dest=com.tesk.bmc.zolt /com/tesk/bmc/zolt/riser"
                 " org.freedesktop.DBus.ObjectManager.GetManagedObjects",
}
LONGEST_RUN = 600  # seconds


def job(command, capture):
    """A job that runs a command. The job brings zolt_capture, which the machine does not have."""
    inner = f"usage_probe {command} >output"
    script = (f"export CAPTURE=${{0%/*}}/zolt_capture\nchmod +x $CAPTURE\n"
              f"/standin/zolt_sim --kernel-buses --board demo -- sh -c '{inner}'\n")
    return {"run": script.encode(), "zolt_capture": capture}


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    for part in ("prepared", "standin", "programs"):
        parser.add_argument(f"--{part}", required=True, type=pathlib.Path)
    arguments = parser.parse_args()
    parts = virtual_machine.Parts(arguments.prepared, arguments.standin,
                                  arguments.programs / "app/zolt_test")
    capture = (arguments.programs / "capture/zolt_capture").read_bytes()
    jobs = {f"bench/{number}": job(command, capture) for number, command in enumerate(RUNS.values())}
    try:
        files = virtual_machine.run(parts, jobs, LONGEST_RUN, counts_instructions=True)
    except virtual_machine.Failure as failure:
        sys.exit(str(failure))
    print(f"{'':20}{'memory, KiB':>14}{'page faults':>14}{'instructions':>14}")
    for number, name in enumerate(RUNS):
        usage = files[f"bench/{number}/stderr"].decode().removeprefix("usage: ").split()
        if files[f"bench/{number}/status"] != b"0\n" or not files[f"bench/{number}/output"]:
            sys.exit(f"{name} failed: {usage}")
        print(f"{name:20}" + "".join(f"{int(figure):14,}" for figure in usage))


if __name__ == "__main__":
    main()
