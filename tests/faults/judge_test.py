#!/usr/bin/env python3
"""The judgement of the fault matrix: it accepts what the contract demands, and nothing else."""

import os
import pathlib
import signal
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))
sys.path.insert(0, str(pathlib.Path(__file__).parent))

import judge  # noqa: E402
import matrix  # noqa: E402
import tap  # noqa: E402
from board import Board, Record, Run, Session  # noqa: E402

SANITIZED = os.environ["SANITIZERS"] != "none"
SESSION = Session("demo", "-o 5 -m 12")
POLICY = "RFC Power Policy = 2\n"
INDEX = "RFC PICPWR Index = 27\n"
UNREAD = "Unable to read REMOTE_FAN_PICPWR_INDEX using CPLD raw API, status 9\n"
END = ("end", len(POLICY), "0", "0")


def named(name, result, printed):
    return "named", printed, f"REMOTE_FAN_{name}", result


FIRST = named("PWR_POLICY", "0 02", 0)
SECOND = named("PICPWR_INDEX", "0 1b", len(POLICY))
FAILING = named("PICPWR_INDEX", "7 -", len(POLICY))
RAW = ("raw", len(POLICY), "8705 1", "9 -")


def wrote(text, result, printed):
    return "write", printed, str(len(text)), result


def run_of(records, output, status=0, complaints=""):
    return Run(status, output.encode(), complaints,
               [Record(kind, printed, 0, asked, result) for kind, printed, asked, result in records])


class Transcripts(unittest.TestCase):
    """Fake runs."""

    def complaints(self, records, output, clean=(), **how):
        return judge.judge(run_of(records, output, **how), SESSION, run_of(clean, ""))

    def accepts(self, *run, **how):
        self.assertEqual(self.complaints(*run, **how), [])

    def refuses(self, complaint, *run, **how):
        self.assertIn(complaint, "\n".join(self.complaints(*run, **how)))

    def test_a_run_without_failures(self):
        self.accepts([FIRST, SECOND, END], POLICY + INDEX)

    def test_the_text_of_a_failure(self):
        self.accepts([FIRST, FAILING, RAW, END], POLICY + UNREAD)

    def test_another_text(self):
        self.refuses("output differs at byte 21: ", [FIRST, FAILING, RAW, END],
                     POLICY + UNREAD.replace("Unable", "Failed"))

    def test_another_status(self):
        self.refuses("output differs at byte 87: ", [FIRST, FAILING, RAW, END],
                     POLICY + UNREAD.replace("9", "7"))

    def test_text_that_is_missing_at_the_end(self):
        self.refuses("output differs at byte 21: ", [FIRST, SECOND, END], POLICY)

    def test_text_after_the_end(self):
        self.refuses("output differs at byte 43: ", [FIRST, SECOND, END], POLICY + INDEX + "\n")

    def test_text_that_is_kept_back_before_a_call(self):
        late = named("PICPWR_INDEX", "0 1b", 0)
        self.refuses("0 bytes instead of 21 are out before 'named REMOTE_FAN_PICPWR_INDEX'",
                     [FIRST, late, END], POLICY + INDEX)

    def test_a_call_that_is_missing(self):
        self.refuses("no call 'raw'", [FIRST, FAILING, END], POLICY + UNREAD)

    def test_a_call_too_many(self):
        self.refuses("a call 'raw' too many", [FIRST, SECOND, RAW, END], POLICY + INDEX)

    def test_another_address(self):
        self.refuses("call 'raw 8704 1' instead of 'raw 8705 1'",
                     [FIRST, FAILING, ("raw", len(POLICY), "8704 1", "9 -"), END], POLICY + UNREAD)

    def test_an_exception_that_is_shown(self):
        self.accepts([FIRST, named("PICPWR_INDEX", "throw std::bad_alloc", len(POLICY)), END],
                     POLICY + "Exception : std::bad_alloc\n")

    def test_an_exception_that_is_swallowed(self):
        self.refuses("output differs at byte 21: ",
                     [FIRST, named("PICPWR_INDEX", "throw std::bad_alloc", len(POLICY)), END],
                     POLICY)

    def test_an_allocation_that_fails_in_the_tool(self):
        self.accepts([FIRST, ("alloc", 21, "24 libstdc++.so.6", "_Znwm"), END],
                     POLICY + "Exception : std::bad_alloc\n")

    def test_a_write_that_fails_for_good_loses_its_text_alone(self):
        later = named("PICPWR_INDEX", "0 1b", 0)
        self.accepts([FIRST, wrote(POLICY, "-1 28", 0), later, END], INDEX)
        self.refuses("output differs", [FIRST, wrote(POLICY, "-1 28", 0), later, END],
                     POLICY + INDEX)

    def test_an_interrupted_write_is_repeated(self):
        self.accepts([FIRST, wrote(POLICY, "-1 4", 0), wrote(POLICY, "21 0", 0), SECOND, END],
                     POLICY + INDEX)
        self.refuses("0 bytes instead of 21", [
            FIRST, wrote(POLICY, "-1 4", 0), named("PICPWR_INDEX", "0 1b", 0), END], INDEX)

    def test_a_pipe_without_a_reader_ends_the_tool(self):
        self.accepts([FIRST, wrote(POLICY, "signal", 0)], "", status=signal.SIGPIPE)
        self.refuses("exit status 0", [FIRST, wrote(POLICY, "signal", 0), SECOND, END], INDEX)

    def test_another_signal(self):
        self.refuses("SIGSEGV", [FIRST], "", status=signal.SIGSEGV)

    def test_a_hang(self):
        self.refuses("hung", [FIRST], "", status=signal.SIGALRM)

    def test_an_exit_status(self):
        self.refuses("exit status 1", [FIRST, SECOND, END], POLICY + INDEX, status=1 << 8)

    def test_standard_error(self):
        self.refuses("complaint: oh", [FIRST, SECOND, END], POLICY + INDEX, complaints="oh\n")

    def test_a_descriptor_that_stays_open(self):
        self.refuses("descriptors left open: 8", [FIRST, SECOND, ("end", 21, "8", "0")],
                     POLICY + INDEX)

    def test_memory_that_stays(self):
        kept, more = ("left", 21, "4096", "-"), ("left", 21, "32", "-")
        self.accepts([FIRST, SECOND, kept, END], POLICY + INDEX, [kept])
        self.refuses("memory not given back: 1 of 32 bytes", [FIRST, SECOND, kept, more, END],
                     POLICY + INDEX, [kept])
        self.refuses("memory not given back: 1 of 4096 bytes", [FIRST, SECOND, kept, kept, END],
                     POLICY + INDEX, [kept])


# Defect of the tool, and what the matrix says about it.
DEFECTS = (
    ("crash", "SIGABRT"),
    ("hang", "hung"),
    ("memory", "memory not given back: 1 of 77 bytes"),
    ("descriptor", "descriptors left open: "),
    ("complaint", "complaint: something went wrong"),
    ("status", "exit status 1"),
    ("gives up", "write, errno EINTR: "),
    ("late", "0 bytes instead of 21 are out before 'named REMOTE_FAN_PICPWR_INDEX'"),
    ("one call more", "call 'named REMOTE_FAN_PWR_POLICY' instead of "
                      "'named REMOTE_FAN_PICPWR_INDEX'"),
    ("wrong text", "'Cannot read REMOTE_FAN_PWR_POLICY using"),
    ("wrong status", "raw API, status 1\\n"),
    ("swallows", "named, bad_alloc: output differs"),
)


class BrokenTools(unittest.TestCase):
    """Tools with one defect each, in the real matrix."""

    def first_complaint(self, defect):
        """What the matrix says first; nothing when it runs to its end."""
        os.environ["BROKEN"] = defect
        self.addCleanup(os.environ.pop, "BROKEN")
        seconds = 1 if defect == "hang" else 10
        with Board("demo", os.environ["BROKEN_TOOL"], seconds) as board:
            part = matrix.Matrix(lambda _: board)
            for failure in part.clean_run(SESSION):
                part.run(failure)
                if part.result.complaints:
                    break
        return "".join(part.result.complaints), part.result

    def test_no_defect(self):
        complaint, result = self.first_complaint("none")
        self.assertEqual(complaint, "")
        kinds = {kind for kind, _ in result.runs}
        self.assertEqual(kinds - {"allocation"}, {"clean run", "named", "write"})


def add_test(defect, complaint):
    def test(self):
        if defect == "memory" and SANITIZED:
            self.skipTest("a sanitizer has an allocator of its own")
        self.assertIn(complaint, self.first_complaint(defect)[0])
    setattr(BrokenTools, f"test_defect_{defect.replace(' ', '_')}", test)


for each in DEFECTS:
    add_test(*each)


class Selection(unittest.TestCase):
    def test_each_way_of_each_kind_has_its_places(self):
        every = list(matrix.failures(SESSION, run_of([FIRST, RAW, SECOND, RAW, FIRST, END], "")))
        chosen = list(matrix.selected(every, (0, 0.5, 1)))
        self.assertEqual({(f.kind, f.way) for f in chosen}, {(f.kind, f.way) for f in every})
        self.assertEqual([f.cell.call for f in chosen if (f.kind, f.way) == ("named", "empty")],
                         [1, 3, 5])
        self.assertEqual([f.cell.call for f in chosen if (f.kind, f.way) == ("raw", "status")],
                         [2, 2, 4])

    def test_a_way_that_did_not_take_place_is_noticed(self):
        class Unfailing:
            @staticmethod
            def run(*_):
                return run_of([FIRST, SECOND, END], POLICY + INDEX)
        part = matrix.Matrix(lambda _: Unfailing)
        for failure in part.clean_run(SESSION):
            part.run(failure)
            self.assertIn("nothing failed", part.result.complaints.pop())
        self.assertGreater(part.result.count(), 10)


class Commands(unittest.TestCase):
    def test_the_options_that_repeat_a_cell_name_it(self):
        session = Session("demo", "", ("2", "5", "1", "3", "5", "12", "100"), 4)
        for failure in matrix.failures(SESSION, run_of([FIRST, SECOND, END], "")):
            self.assertEqual(matrix.cell_from(str(failure.cell)), failure.cell)
        self.assertEqual(matrix.again(session, matrix.cell_from("3 1 status 7 0")),
                         "--session 'demo||2,5,1,3,5,12,100' --cell '3 1 status 7 0'")


if __name__ == "__main__":
    tap.main()
