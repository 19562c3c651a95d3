"""A report beside a floor program that makes the same platform calls and prints the same text.

callgrind counts instructions, without those of the platform's calls. The count stops at the entry
of a call and continues at its return, so it also leaves out all code that the platform's libraries
call. The bar: at most 1.25 times the floor's instructions.
"""

import argparse
import os
import pathlib
import re
import subprocess
import sys
import tempfile

PLATFORM_CALLS = ("ReadIO_Str*", "cpld_read_device", "cpld_read_block_device")


def occupied_slots():
    """Describes a board on which every slot is occupied, with values of every length."""
    lines = []
    for slot in range(1, 64):
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
    return lines


def control_registers():
    """Describes all instances of most module classes, with values that differ by instance."""
    lines = [
        "[[connector_1c]]",
        "card_present = true",
        "payload_offset = 54321",
        "[[connector_4c_plus]]",
        "module_class = 0x2A",
        "payload_offset = 98",
    ]
    for table, instances in (
        ("backplane", 8),
        ("cem_riser", 24),
        ("karn", 2),
        ("m2_interposer", 2),
        ("rida", 2),
        ("puck", 16),
        ("flop", 16),
        ("battery_interposer", 2),
    ):
        for number in range(1, instances + 1):
            lines += [
                f"[[{table}]]",
                f"id = {number}",
                f"pwr_policy = {number % 4}",
                f"picpwr_index = {number * 10}",
            ]
    return lines


def full_riser_map():
    """Describes a full blob: eleven records with links of each type."""
    lines = ["[riser_map]", "config_major = 1", "config_minor = 12"]
    lines += ["description = 'Eleven risers, as many as there is room for'"]
    for record in range(1, 12):
        lines += [
            "[[riser_map.record]]",
            f"picpwr = {record * 5}",
            f"location = 'RISER {record}'",
            f"part_number = 'P{10000 + record}-1'",
            f"hwuid = {record * 4000}",
            "slots = [1, 16, 2, 16, 103, 8, 4, 255]",
        ]
        for link in range(11):
            fields = (
                ("type = 1", f"sl_index = {link * 20}"),
                ("type = 2", f"ocp_index = {link}", "ocp_lane_index = 8"),
                ("type = 3", "switched_riser_index = 2", f"sl_index = {link}"),
            )
            lines += ["[[riser_map.record.dsl]]", f"id = {record * 16 + link}"]
            lines += fields[link % len(fields)]
    return lines


# For each report: the board, the tool's arguments, the typed input.
REPORTS = {
    "picpwr_info": (occupied_slots, ["-o", "1"], b"0\n"),
    "control_registers": (control_registers, ["-o", "5", "-m", "15"], b""),
    "riser_map": (full_riser_map, ["-o", "4", "-f", "2"], b""),
}


class Bench:
    def __init__(self, sim, board, typed, scratch):
        self.typed = typed
        self.scratch = scratch
        self.on_board = [sim, "--board", os.path.join(scratch, "board.toml")]
        pathlib.Path(self.on_board[-1]).write_text("\n".join(board) + "\n")

    def run(self, command, options=()):
        return subprocess.run(
            [*self.on_board, *options, "--", *command],
            input=self.typed,
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
    parser.add_argument("report", choices=REPORTS)
    arguments = parser.parse_args()
    board, tool_arguments, typed = REPORTS[arguments.report]
    tool, floor = [arguments.tool, *tool_arguments], [arguments.floor]

    with tempfile.TemporaryDirectory() as scratch:
        bench = Bench(arguments.sim, board(), typed, scratch)
        (text, calls), (floor_text, floor_calls) = map(bench.text_and_calls, (tool, floor))
        if text != floor_text or calls != floor_calls:
            sys.exit("tool and floor do not print the same text by the same calls")
        print(f"{len(text)} bytes of report by {calls.count(10)} platform calls; instructions:")
        # These options follow the toggles, because --toggle-collect starts without counting.
        whole = ("--collect-atstart=yes",)
        main_alone = ("--toggle-collect=main",)
        for title, options in (("whole process", whole), ("main() alone", main_alone)):
            own, least = (bench.instructions(command, options) for command in (tool, floor))
            print(f"  {title:14} zolt_test {own:9}  floor {least:9}  ratio {own / least:.3f}")


if __name__ == "__main__":
    main()
