#!/usr/bin/env python3
"""Tests zolt_board diff as people start it: its lines, its JSON and its exit status."""

import json
import os
import pathlib
import re
import sys
import unittest

import jsonschema

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))
sys.path.insert(0, str(pathlib.Path(__file__).parent))

import tap  # noqa: E402
from programs import BOARD, CAPTURE, SIM, Scratch, run  # noqa: E402
from random_board import random_board  # noqa: E402

SCHEMA = json.loads(
    (pathlib.Path(os.environ["DOCUMENTS"]) / "board-diff.schema.json").read_text(encoding="utf-8"))

BEFORE = r"""
name = "before"
[[slot]]
id = 5
dstat = 3
dpen = true
[slot.module]
type = "riser"
object = "riser1"
device_class = 0x11
[[slot.module.end_point]]
type = 1
[[slot]]
id = 7
dstat = 3
payload = "01 02"
[riser_map]
[[riser_map.record]]
picpwr = 3
part_number = "A"
[[i2c.bus]]
number = 12
[[i2c.index_node]]
device_type = "PUCK"
name = [0x61, 0xFF]
"""
AFTER = r"""
name = "after"
faults = ["raw-read 0x1039 status 7"]
[[slot]]
id = 6
dstat = 3
[slot.module]
type = "riser"
object = "riser1"
device_class = 0x11
[[slot.module.end_point]]
type = 2
[riser_map]
[[riser_map.record]]
picpwr = 3
part_number = "B\u001B\u0007\"\\"
[service.info]
FRUreadComplete = true
SlotMappingComplete = { signature = "ad", value = [nan, 1.5] }
[[i2c.bus]]
number = 12
[[i2c.bus.device]]
address = 0x50
size = 2
[[i2c.index_node]]
device_type = "PUCK"
name = "b"
[override.named]
PICPWR_6_DBYP = "01 02"
"""
LINES = r"""slot 5: riser moved to slot 6
slot 6: dbyp (named read): false -> 01 02
slot 6: dpen true -> false
slot 6, end point 1: type 1 -> 2
slot 7: module of class 0x02 removed
riser map, slot 3: part_number "A" -> "B\u001B\u0007\"\\"
service, info (pcardInfo): SlotMappingComplete true -> { signature = "ad", value = [nan, 1.5] }
/dev/i2c-12: device 0x50 created
topology, index node PUCK 0: name "a\xFF" -> "b"
faults: 'raw-read 0x1039 status 7' added
"""


def row(kind, place, what, part=None, moved_from=None):
    return {"kind": kind, "place": place, "part": part, "moved_from": moved_from, "what": what}


def change(place, what, before, after, part=None, moved_from=None, view="all"):
    return row("changed", place, what, part, moved_from) | {
        "view": view, "before": before, "after": after}


CHANGES = [
    row("moved", "slot 6", "riser", moved_from="slot 5"),
    change("slot 6", "dbyp", False, "0102", moved_from="slot 5", view="named"),
    change("slot 6", "dpen", True, False, moved_from="slot 5"),
    change("slot 6", "type", 1, 2, part="end point 1", moved_from="slot 5"),
    row("removed", "slot 7", "module of class 0x02"),
    change("riser map", "part_number", {"text": "A", "bytes": "41"},
           {"text": "B\x1b\x07\"\\", "bytes": "421B07225C"}, part="slot 3"),
    change("service", "SlotMappingComplete", True,
           {"signature": {"text": "ad", "bytes": "6164"}, "value": ["nan", 1.5]},
           part="info (pcardInfo)"),
    row("added", "/dev/i2c-12", "device 0x50"),
    change("topology", "name", {"bytes": "61FF"}, {"text": "b", "bytes": "62"},
           part="index node PUCK 0"),
    row("added", "faults", "'raw-read 0x1039 status 7'"),
]


class Diff(unittest.TestCase):
    def setUp(self):
        self.scratch = Scratch()
        self.addCleanup(self.scratch.close)

    def diff(self, *arguments, **options):
        done = run(BOARD, "diff", *arguments, **options)
        return done.returncode, done.stdout, done.stderr

    def test_lines(self):
        before = self.scratch.file("before.toml", BEFORE)
        after = self.scratch.file("after.toml", AFTER)
        self.assertEqual(self.diff(before, after), (1, LINES, ""))
        self.assertEqual(self.diff(before, "-", input=AFTER), (1, LINES, ""))

    def test_json(self):
        before = self.scratch.file("before.toml", BEFORE)
        after = self.scratch.file("after.toml", AFTER)
        status, text, errors = self.diff("--json", before, after)
        self.assertEqual((status, errors), (1, ""))
        self.assertEqual(json.loads(text), {"report": "diff", "version": 1, "before": before,
                                            "after": after, "changes": CHANGES})

    def test_same_boards(self):
        before = self.scratch.file("before.toml", BEFORE)
        self.assertEqual(self.diff(before, before), (0, "", ""))
        self.assertEqual(
            self.diff("--json", "demo", "demo"),
            (0, '{\n  "report": "diff",\n  "version": 1,\n  "before": "demo",\n'
                '  "after": "demo",\n  "changes": []\n}\n', ""))

    def test_boards_that_cannot_be_read(self):
        file = self.scratch.file("wrong.toml", "[[slot]]\nid = 64\n")
        refusal = f"zolt_board: {file}:2: slot: 'id' must be a whole number from 1 to 63\n"
        for boards in ((file, "demo"), ("demo", file)):
            self.assertEqual(self.diff(*boards), (2, "", refusal))
        self.assertEqual(self.diff("demo"), (
            2, "", "zolt_board: diff needs one more board\nTry 'zolt_board --help'.\n"))
        self.assertEqual(self.diff("-", "-"), (
            2, "", "zolt_board: - stands for standard input, which can be read once\n"
                   "Try 'zolt_board --help'.\n"))

    def test_capture_of_a_board_lacks_only_what_no_report_reads(self):
        file = str(self.scratch.path / "captured.toml")
        self.assertEqual(run(SIM, "--", CAPTURE, "-o", file).returncode, 0)
        status, text, errors = self.diff("demo", file)
        self.assertEqual((status, errors), (1, ""))
        unread = re.compile(r"/dev/i2c-\d+: (bus|device 0x[0-9A-F]{2}) removed|"
                            r"/dev/i2c-\d+: property \d+ \S+ -> none|"
                            r"topology, index node .*: parent \d+ -> none|"
                            r"topology, index node .*: sub node \d+ added")
        self.assertEqual([line for line in text.splitlines() if not unread.fullmatch(line)], [])

    def test_json_of_random_boards_is_valid(self):
        jsonschema.Draft7Validator.check_schema(SCHEMA)
        validator = jsonschema.Draft7Validator(SCHEMA)
        boards = [self.scratch.file(f"{seed}.toml", random_board(seed)) for seed in range(1, 9)]
        for before, after in zip(boards, boards[1:] + ["hostile"]):
            status, text, errors = self.diff("--json", before, after)
            self.assertEqual((status, errors), (1, ""))
            self.assertTrue(text.isascii())
            validator.validate(json.loads(text))


if __name__ == "__main__":
    tap.main()
