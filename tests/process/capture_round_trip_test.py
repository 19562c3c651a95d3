#!/usr/bin/env python3
"""A captured board is the board: the reports of zolt_test on both are the same text."""

import os
import pathlib
import re
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))
sys.path.insert(0, str(pathlib.Path(__file__).parent))

import tap  # noqa: E402
from programs import CAPTURE, EMULATED, SANITIZED, SIM, TOOL, Scratch, run  # noqa: E402
from random_board import random_board  # noqa: E402

# A board takes seven times as long in the emulator, and longer under a sanitizer, too.
USUAL_SEEDS = 2 if EMULATED else 4 if SANITIZED else 12
SEEDS = range(1, int(os.environ.get("ROUND_TRIP_SEEDS", USUAL_SEEDS)) + 1)
EPOCH = "1795269780"
# A report of a slot takes longer, too: every eighth slot has one in the emulator, every fourth under a
# sanitizer.
SLOTS = range(1, 64, 8 if EMULATED else 4 if SANITIZED else 1)
ENVIRONMENT = dict(os.environ, SOURCE_DATE_EPOCH=EPOCH)


def session():
    """The answers of one interactive session that runs every option whose dialogue has a fixed
    length, with every argument."""
    answers = [(1, slot) for slot in (0, *SLOTS)]
    answers += [(5, module_class) for module_class in range(1, 16)]
    answers += [(6, node) for node in (0, *SLOTS)]
    answers += [(option, kind) for option in (7, 8) for kind in range(166)]
    answers += [(11,)]
    answers += [(12, kind) for kind in range(1, 12)]
    answers += [(100,)]
    return "".join(f"{number}\n" for answer in answers for number in answer)


# The other options ask for a display only if there is something to show. Their arguments are
# complete here. $1: slots; the session comes from standard input.
REPORTS = """
"$0"
for slot in $1; do
    for option in 2 3; do
        for format in 1 2; do
            "$0" -o "$option" -p "$slot" -f "$format"
        done
    done
done
"$0" -o 4 -f 1
"$0" -o 4 -f 2
"""

# An error of the bus names the peers by number.
PERSONAL = re.compile(r":\d+\.\d+|uid=\d+ pid=\d+")


class RoundTrip(unittest.TestCase):
    def setUp(self):
        self.scratch = Scratch()
        self.addCleanup(self.scratch.close)

    def reports(self, board, slots):
        done = run(
            SIM, "--board", board, "--", "sh", "-c", REPORTS, TOOL, " ".join(map(str, slots)),
            input=session(), encoding="latin-1",  # a text of the board may be no UTF-8
        )
        self.assertEqual((done.stderr, done.returncode), ("", 0))
        self.assertIn("ZOLT Test Tool", done.stdout)
        return PERSONAL.sub("N", done.stdout)

    def capture(self, board, name, *arguments):
        file = self.scratch.path / name
        done = run(
            SIM, "--board", board, "--", CAPTURE, "-o", str(file), "--force", *arguments,
            env=ENVIRONMENT,
        )
        self.assertIn(done.returncode, (0, 1), done.stderr)
        return str(file)

    def check(self, board, slots=SLOTS):
        captured = self.capture(board, "captured.toml")
        checked = run(SIM, "--check", captured)
        self.assertEqual((checked.stderr, checked.returncode), ("", 0))
        self.assertEqual(self.reports(captured, slots), self.reports(board, slots))
        again = self.capture(captured, "again.toml")
        self.assertEqual(pathlib.Path(again).read_bytes(), pathlib.Path(captured).read_bytes())
        return captured

    def test_demo(self):
        self.check("demo")

    def test_raw_only(self):
        self.check("raw_only")

    def test_hostile(self):
        self.check("hostile")

    def test_empty_board(self):
        self.check(self.scratch.file("empty.toml"), slots=(1, 63))

    def test_information_object_without_properties(self):
        self.check(self.scratch.file("no_information.toml", "[service.info]\n"), slots=(1,))

    def test_masked_capture_is_a_capture_of_itself(self):
        for board in ("demo", "raw_only", "hostile"):
            masked = self.capture(board, f"{board}_masked.toml", "--mask")
            again = self.capture(masked, f"{board}_again.toml", "--mask")
            self.assertEqual(pathlib.Path(again).read_text(), pathlib.Path(masked).read_text())

    def test_random_boards(self):
        for seed in SEEDS:
            with self.subTest(seed=seed):
                description = random_board(seed)
                board = self.scratch.file(f"random_{seed}.toml", description)
                described = {int(number) for number in re.findall(r"\nid = (\d+)\ndstat", description)}
                self.check(board, slots=sorted(described | {1, 63}))


if __name__ == "__main__":
    tap.main()
