#!/usr/bin/env python3
"""Runs the fault matrix, all of it or a part, and prints how many cells it ran.

ZOLT_TEST, ZOLT_SIM and FAILING_CALLS name the tool, the stand-in and the library that makes calls
fail.
"""

import argparse
import multiprocessing
import multiprocessing.util
import pathlib
import random
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))

import judge  # noqa: E402
import matrix  # noqa: E402
import sessions  # noqa: E402
from board import CLEAN, Board  # noqa: E402

COMPLAINTS_SHOWN = 20
boards = {}  # of this process


def board_of(name):
    if name not in boards:
        boards[name] = Board(sessions.FILES.get(name, name))
        multiprocessing.util.Finalize(None, boards[name].close, exitpriority=10)
    return boards[name]


def run_session(task):
    """Runs one session with its failures, or with a share of them."""
    session, share, seed = task
    part = matrix.Matrix(board_of)
    chance = random.Random(f"{seed} {session}")
    for failure in part.clean_run(session):
        if share >= 1 or chance.random() < share:
            part.run(failure)
    return part.result


def run_all(arguments):
    tasks = [(session, arguments.sample, arguments.seed) for session in sessions.all_sessions()
             if arguments.only in str(session)]
    # The sessions with most calls come last in many groups: mixed, they keep all jobs busy.
    random.Random(arguments.seed).shuffle(tasks)
    total = matrix.Result()
    start = shown = time.monotonic()
    with multiprocessing.Pool(arguments.jobs) as pool:
        for done, result in enumerate(pool.imap_unordered(run_session, tasks), 1):
            for complaint in result.complaints[:COMPLAINTS_SHOWN - len(total.complaints)]:
                print(complaint, flush=True)
            total.add(result)
            if time.monotonic() - shown > 60:
                shown = time.monotonic()
                print(f"{done} of {len(tasks)} sessions, {total.count()} cells", file=sys.stderr)
        pool.close()
        pool.join()
    print(total.table(), end="")
    print(f"{total.count()} cells, {len(total.complaints)} failed "
          f"({time.monotonic() - start:.0f} s)")
    return total.count() > 0 and not total.complaints


def run_one(arguments):
    """Repeats one cell, and shows all of it."""
    session = matrix.session_from(arguments.session)
    board = board_of(session.board)
    clean = board.run(session)
    run = board.run(session, matrix.cell_from(arguments.cell) if arguments.cell else CLEAN)
    for record in run.records:
        print(f"{record.kind} {record.asked} = {record.result}"
              f" (after {record.printed} bytes, {record.allocations} allocations)")
    print(run.output.decode("latin-1"))
    complaints = judge.judge(run, session, clean)
    print("\n".join(complaints) or "as the contract demands")
    return not complaints


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0],
                                     prog="fault_matrix")
    parser.add_argument("--jobs", type=int, default=1, help="how many cells run at a time")
    parser.add_argument("--only", default="", metavar="TEXT",
                        help="the sessions with this text: a board, options, answers")
    parser.add_argument("--sample", type=float, default=1, metavar="SHARE",
                        help="a random share of the cells, such as 0.1")
    parser.add_argument("--seed", type=int, default=1, help="another seed: another sample")
    parser.add_argument("--session", help="repeat one session: BOARD|OPTIONS|ANSWERS")
    parser.add_argument("--cell", help="with --session: what fails in it")
    arguments = parser.parse_args()
    try:
        right = run_one(arguments) if arguments.session else run_all(arguments)
    finally:
        for board in boards.values():
            board.close()
    sys.exit(0 if right else 1)


if __name__ == "__main__":
    main()
