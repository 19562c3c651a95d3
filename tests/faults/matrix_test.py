#!/usr/bin/env python3
"""The bounded part of the fault matrix: for each option, each kind of call fails in each way. On the
demo board it fails at its first, a middle and its last place, on the other boards at a middle one.
scripts/fault_matrix runs the whole matrix."""

import os
import pathlib
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))
sys.path.insert(0, str(pathlib.Path(__file__).parent))

import matrix  # noqa: E402
import sessions  # noqa: E402
import tap  # noqa: E402
import ways  # noqa: E402
from board import Board  # noqa: E402

SANITIZED = os.environ["SANITIZERS"] != "none"
# Sessions that together make each kind of call.
EACH_KIND = ("callback|-o 2 -p 5 -f 1|", "raw_only|-o 3 -p 1 -f 2|", "demo|-o 6 -p 2|",
             "demo|-o 13|5,99,0", "demo|-o 11|", "hostile|-o 12 -m 4|", "demo|-o 12 -m 4|")
# A cell takes longer under an emulator or a sanitizer: there, each failure has one place. Sanitizers watch
# every second one of these cells. An emulator runs an eighth, on the demo board.
EMULATED = os.environ.get("EMULATOR", "") != ""
ONE_PLACE = (0.5,)
PLACES = {"demo": ONE_PLACE if EMULATED or SANITIZED else (0, 0.5, 1)}
STRIDE = 8 if EMULATED else 2 if SANITIZED else 1
BOARDS = ("demo",) if EMULATED else sessions.BOARDS


class FaultMatrix(unittest.TestCase):
    boards = {}

    @classmethod
    def tearDownClass(cls):
        for board in cls.boards.values():
            board.close()

    @classmethod
    def board(cls, name):
        if name not in cls.boards:
            cls.boards[name] = Board(sessions.FILES.get(name, name))
        return cls.boards[name]

    def check(self, board, option):
        part = matrix.Matrix(self.board)
        found = [
            failure for session in sessions.sessions(board)
            if sessions.option_of(session) == option and sessions.in_bounded_part(session)
            for failure in part.clean_run(session)
        ]
        for failure in list(matrix.selected(found, PLACES.get(board, ONE_PLACE)))[::STRIDE]:
            part.run(failure)
        self.assertEqual(part.result.complaints, [])

    def test_the_sessions_make_each_kind_of_call(self):
        part = matrix.Matrix(self.board)
        kinds = {failure.kind for text in EACH_KIND
                 for failure in part.clean_run(matrix.session_from(text))}
        cannot_fail = {"destroy", "free", "sd_bus_flush_close_unref"}
        # A sanitizer has an allocator of its own.
        expected = set(ways.WAYS) - cannot_fail | (set() if SANITIZED else {"allocation"})
        self.assertEqual(kinds, expected)
        self.assertEqual(part.result.complaints, [])

    def test_every_allocation_of_a_listing_fails_once(self):
        part = matrix.Matrix(self.board)
        session = matrix.session_from("demo|-o 6 -p 2|")
        for failure in part.clean_run(session):
            if failure.kind == "allocation":
                part.run(failure)
        self.assertEqual(part.result.complaints, [])


def add_test(board, option):
    name = f"test_{board}_option_{option:02}_fails_as_its_contract_demands"
    setattr(FaultMatrix, name, lambda self: self.check(board, option))


for each in BOARDS:
    for number in sorted({sessions.option_of(session) for session in sessions.sessions(each)}):
        add_test(each, number)


if __name__ == "__main__":
    tap.main()
