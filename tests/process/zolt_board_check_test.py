#!/usr/bin/env python3
"""Tests zolt_board check: what it prints for people and for programs, and its exit status."""

import json
import pathlib
import re
import subprocess
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))
sys.path.insert(0, str(pathlib.Path(__file__).parent))

import tap  # noqa: E402
from programs import BOARD, CAPTURE, SANITIZED, SIM, Scratch, not_emulated, run  # noqa: E402

try:
    import jsonschema
except ImportError:
    jsonschema = None

DOCUMENTS = pathlib.Path(__file__).resolve().parents[2] / "docs"
SCHEMA = json.loads((DOCUMENTS / "board-check.schema.json").read_text())

RIGHT = "[[slot]]\nid = 7\ndstat = 2\n"
WRONG = "[[slot]]\nid = 7\ndstat = 3\n"
FINDING = ("warning", "present-slot-without-payload", "slot 7",
           "DSTAT is 3, and the 13 bytes at payload offset 0 are 0", "the header of a payload")
LINE = "{}: {}; expected {}\n".format(": ".join(FINDING[:3]), *FINDING[3:])
REFUSED = "[[slot]]\nid = 64\n"
REASON = "2: slot: 'id' must be a whole number from 1 to 63"

MISTAKES = """
[[slot]]
id = 5
dstat = 3
payload = "01 11 03 00 11 01 F1 A0 02 00 02 02 51 10 20 80 00 00 00 00 00 00 00 2D"
oem_area = "06 02 03 03 FF 00"
[[riser_map.record]]
picpwr = 5
dsl_payloads = 2
[[riser_map.record.dsl]]
type = 7
[override.named]
PICPWR_5_DPEN = 1
"""
ALL_LINES = """\
mistakes.toml: error: end-points-beyond-size: slot 5 payload: end point 2 ends with byte 24, the \
payload states 24 bytes; expected end points within the stated length
mistakes.toml: error: oem-descriptors-beyond-area: slot 5 OEM area: descriptor 2 of 2 ends with \
byte 6 of the area; expected an end before the checksum at byte 5
mistakes.toml: warning: riser-route-count-differs: riser map record 1: the record states 2 DSL \
payloads and 1 DSL; expected one payload for each DSL
mistakes.toml: error: dsl-type-out-of-range: riser map record 1: DSL 1 has type 7; expected type 1, \
2 or 3
mistakes.toml: error: views-disagree: PICPWR_5_DPEN: the name delivers 0x01, the address 0x00; \
expected the same by name and by address
"""


class CheckTest(unittest.TestCase):
    def setUp(self):
        self.scratch = Scratch()
        self.addCleanup(self.scratch.close)
        self.scratch.file("right.toml", RIGHT)
        self.scratch.file("wrong.toml", WRONG)
        self.scratch.file("refused.toml", REFUSED)

    def check(self, *arguments, **options):
        return run(BOARD, "check", *arguments, cwd=self.scratch.path, **options)

    def assert_told(self, done, shown, message, status):
        self.assertEqual((done.stdout, done.stderr, done.returncode), (shown, message, status))

    def report(self, *arguments):
        """Returns the document, its exit status, and the complaints beside it."""
        done = self.check("--json", *arguments)
        document = json.loads(done.stdout)
        if jsonschema is not None:
            jsonschema.validate(document, SCHEMA)
        # The document has the layout of one that is written as a whole.
        self.assertEqual(done.stdout, json.dumps(document, indent=2) + "\n")
        return document, done.returncode, done.stderr


class Text(CheckTest):
    def test_of_all_findings(self):
        self.scratch.file("mistakes.toml", MISTAKES)
        self.assert_told(self.check("mistakes.toml"), ALL_LINES, "", 1)

    def test_of_a_right_board_is_empty(self):
        self.assert_told(self.check("right.toml"), "", "", 0)
        self.assert_told(self.check("demo"), "", "", 0)

    def test_names_the_board_as_the_command_line_does(self):
        self.assert_told(self.check("wrong.toml"), f"wrong.toml: {LINE}", "", 1)
        self.assert_told(self.check("./wrong.toml"), f"./wrong.toml: {LINE}", "", 1)
        self.assert_told(self.check("-", input=WRONG), f"standard input: {LINE}", "", 1)

    def test_goes_on_behind_a_board_that_is_refused(self):
        self.assert_told(
            self.check("wrong.toml", "refused.toml", "right.toml", "nowhere.toml", "wrong.toml"),
            2 * f"wrong.toml: {LINE}",
            f"zolt_board: refused.toml:{REASON}\n"
            "zolt_board: nowhere.toml: No such file or directory\n", 2)

    def test_has_no_control_characters_of_the_board(self):
        self.scratch.file("a\x1b[31m.toml", '[[i2c.index_node]]\ndevice_type = "PUCK"\n'
                          'name = "\\u001B[31m\\r\\n"\nsub_node_count = 1\n')
        self.assert_told(
            self.check("./a\x1b[31m.toml"),
            "./a\\x1B[31m.toml: error: node-count-differs: node PUCK 0 '\\x1B[31m\\r\\n': the node "
            "states 1 sub node; expected the 0 of its list\n", "", 1)


class Several(CheckTest):
    def test_are_told_in_their_order(self):
        expected = ""
        for index in range(100):
            slot = index % 63 + 1
            self.scratch.file(f"{index}.toml", f"[[slot]]\nid = {slot}\ndstat = 3\n")
            expected += f"{index}.toml: " + LINE.replace("slot 7", f"slot {slot}")
        self.assert_told(self.check(*(f"{index}.toml" for index in range(100))), expected, "", 1)

    def test_end_when_nobody_takes_the_findings(self):
        with open("/dev/full", "w") as full:
            done = subprocess.run([BOARD, "check", *(100 * ["wrong.toml"])], stdout=full,
                                  stderr=subprocess.PIPE, text=True, check=False, timeout=60,
                                  cwd=self.scratch.path)
        self.assertEqual((done.stderr, done.returncode),
                         ("zolt_board: standard output: No space left on device\n", 2))

    @unittest.skipIf(SANITIZED, "the sanitizers need more memory than the limit")
    @not_emulated("the emulator needs more memory than the limit")
    def test_are_checked_without_threads_if_there_is_no_room_for_them(self):
        # A thread would need a stack of the first size.
        limited = 'ulimit -S -s 400000; ulimit -v 300000; exec "$@"'
        done = run("sh", "-c", limited, "sh", BOARD, "check", "wrong.toml", "wrong.toml",
                   cwd=self.scratch.path)
        self.assert_told(done, 2 * f"wrong.toml: {LINE}", "", 1)


class Report(CheckTest):
    def test_has_all_boards(self):
        self.assertEqual(
            self.report("wrong.toml", "refused.toml", "right.toml"),
            ({"report": "check", "version": 1, "boards": [
                {"board": "wrong.toml", "findings": [dict(zip(
                    ("severity", "identifier", "place", "what", "expected"), FINDING))]},
                {"board": "refused.toml", "failure": f"refused.toml:{REASON}"},
                {"board": "right.toml", "findings": []},
            ]}, 2, f"zolt_board: refused.toml:{REASON}\n"))

    def test_has_the_status_of_the_text(self):
        self.assertEqual(self.report("right.toml")[1:], (0, ""))
        self.assertEqual(self.report("wrong.toml")[1:], (1, ""))

    def test_is_one_document_without_any_board(self):
        self.assertEqual(
            self.report("nowhere.toml")[0]["boards"],
            [{"board": "nowhere.toml", "failure": "nowhere.toml: No such file or directory"}])

    def test_of_the_hostile_board_fits_the_schema(self):
        document, status, _ = self.report("hostile")
        self.assertEqual(status, 1)
        identifiers = {finding["identifier"] for finding in document["boards"][0]["findings"]}
        known = SCHEMA["definitions"]["finding"]["properties"]["identifier"]["enum"]
        self.assertEqual(identifiers, set(known))


# Faults that keep data of the demo board from a capture. The capture has zeros in their place, or
# nothing. A finding would rest on them.
HIDING = (
    (),
    ("named-read *",),
    ("hal-object PICPWR_PAYLOADS",),
    ("hal-read PICPWR_PAYLOADS", "raw-read 0x2A01-0x89FF"),
    ("hal-read PICPWR_PAYLOADS", "raw-read 0x3001-0x3010 status 7"),
    ("raw-read 0x0000-0xFFFF",),
    ("named-read PICPWR_5_*", "raw-read 0x1038-0x1045"),
    ("named-read PICPWR_*_PAYLOAD_OFFSET", "raw-read 0x1003-0x1004"),
    ("named-read RISER_SLOT_AMP_BLOB", "raw-read 0x8C00"),
    ("named-read *_PICPWR_INDEX", "raw-read 0x1400-0x2607"),
    ("bus absent",),
    ("service absent",),
    ("object riser",),
    ("object riser/riser1",),
    ("object info",),
    ("sysinfo 16",),
)


class Captures(CheckTest):
    def capture(self, board, faults=()):
        words = [word for fault in faults for word in ("--fault", fault)]
        run(SIM, "--board", board, *words, "--", CAPTURE, "-o", self.scratch.path / "capture.toml",
            "--force")
        return "capture.toml"

    def test_of_a_right_board_has_no_finding(self):
        for board in ("demo", "raw_only"):
            self.assert_told(self.check(self.capture(board)), "", "", 0)

    def test_has_no_finding_where_a_fault_hides_the_data(self):
        for faults in HIDING:
            with self.subTest(faults=faults):
                self.assert_told(self.check(self.capture("demo", faults)), "", "", 0)

    def test_of_the_hostile_board_has_findings(self):
        done = self.check(self.capture("hostile"))
        self.assertEqual((done.stderr, done.returncode), ("", 1))


class Kinds(CheckTest):
    def kinds(self):
        done = self.check("--list")
        self.assertEqual((done.stderr, done.returncode), ("", 0))
        return [line.split("\t") for line in done.stdout.splitlines()]

    def test_are_those_of_the_schema(self):
        known = SCHEMA["definitions"]["finding"]["properties"]["identifier"]["enum"]
        self.assertEqual([identifier for identifier, *_ in self.kinds()], known)

    def test_are_those_of_the_manual(self):
        page = (DOCUMENTS / "zolt-findings.7").read_text()
        rows = re.findall(r"\.It Ic (\S+) Pq (\S+)\n(.*?)\n\.Pp\n(.*?)(?=\n\.It|\n\.El)", page,
                          re.DOTALL)
        self.assertEqual([[word.replace("\n", " ") for word in row] for row in rows], self.kinds())

    def test_take_no_board(self):
        self.assert_told(self.check("--list", "demo"), "",
                         "zolt_board: --list takes no board 'demo'\n"
                         "Try 'zolt_board --help'.\n", 2)


if __name__ == "__main__":
    tap.main()
