"""The fault matrix: one clean run of each session, then one run for each failure of each call."""

import collections
import dataclasses

import judge
import sessions
import ways
from board import Cell, Session


@dataclasses.dataclass(frozen=True)
class Failure:
    """One failure of one call in a session."""

    session: Session
    kind: str
    way: str
    cell: Cell


@dataclasses.dataclass
class Result:
    """What a part of the matrix has shown."""

    runs: collections.Counter = dataclasses.field(default_factory=collections.Counter)
    complaints: list = dataclasses.field(default_factory=list)

    def add(self, other):
        self.runs += other.runs
        self.complaints += other.complaints

    def count(self):
        return self.runs.total()

    def table(self):
        """One line for each kind of call: how many cells it has, and how many in each way."""
        kinds = collections.defaultdict(list)
        for (kind, way), count in sorted(self.runs.items()):
            kinds[kind].append((way, count))
        return "".join(
            f"{kind}: {sum(count for _, count in found)} "
            f"({', '.join(f'{way} {count}' for way, count in found)})\n"
            for kind, found in kinds.items()
        )


def own_part(session, clean):
    """The calls of the option under test with their numbers, and how many allocations it makes.
    The options that follow it in the menu do not count."""
    found = []
    reads = number = allocations = 0
    for record in clean.records:
        allocations = max(allocations, record.allocations)
        if record.kind in ("alloc", "left", "end", "cut"):
            continue
        number += 1
        reads += record.kind == "read"
        if session.arguments == "" and record.kind == "read" and reads > session.own_lines:
            return found, record.allocations
        found.append((number, record))
    return found, allocations


def failures(session, clean):
    """Every failure of every call of a session, from its clean run."""
    found, allocations = own_part(session, clean)
    for number, record in found:
        for way, cell in ways.cells_of(number, record):
            yield Failure(session, record.kind, way, cell)
    for number in range(1, allocations + 1):
        yield Failure(session, "allocation", "null", Cell(allocation=number))


def selected(all_failures, places):
    """A part: of the failures that differ by their place alone, those at some places. A place is a
    number from 0, the first one, to 1, the last one."""
    groups = collections.defaultdict(list)
    for failure in all_failures:
        from_menu = failure.session.arguments == ""
        groups[from_menu, failure.kind, failure.way].append(failure)
    for group in groups.values():
        for i in sorted({int(place * (len(group) - 1)) for place in places}):
            yield group[i]


def again(session, cell=None):
    """The options that repeat one cell."""
    text = f"--session '{session.board}|{session.arguments}|{','.join(session.typed)}'"
    return text + (f" --cell '{cell}'" if cell else "")


class Matrix:
    """Runs sessions on the boards that they name."""

    def __init__(self, board, command="scripts/fault_matrix"):
        self._board = board  # a function: the board of a name
        self._command = command
        self._clean = {}
        self.result = Result()

    def clean_run(self, session):
        """Runs a session without a failure. Returns its failures; none when it is not right."""
        clean = self._board(session.board).run(session)
        self._clean[session] = clean
        self.result.runs["clean run", "none"] += 1
        complaints = judge.judge(clean, session, clean)
        self._complain(session, "clean run", None, complaints)
        return [] if complaints else failures(session, clean)

    def run(self, failure):
        run = self._board(failure.session.board).run(failure.session, failure.cell)
        complaints = judge.judge(run, failure.session, self._clean[failure.session])
        way = failure.way
        if run.failures == 0:
            # sd-bus needs more memory when an answer arrives in pieces.
            way = "not reached"
            if failure.kind != "allocation":
                complaints.append("nothing failed")
        self.result.runs[failure.kind, way] += 1
        self._complain(failure.session, f"{failure.kind}, {failure.way}", failure.cell, complaints)

    def forget(self, session):
        del self._clean[session]

    def _complain(self, session, what, cell, complaints):
        if complaints:
            self.result.complaints.append(
                f"{session}: {what}: {'; '.join(complaints)}\n"
                f"    {self._command} {again(session, cell)}"
            )


def session_from(text):
    """The session of again()."""
    board, arguments, typed = text.split("|")
    lines = tuple(typed.split(",")) if typed else ()
    known = [s for s in sessions.all_sessions()
             if (s.board, s.arguments, s.typed) == (board, arguments, lines)]
    return known[0] if known else Session(board, arguments, lines, len(lines))


def cell_from(text):
    """The cell of again()."""
    call, calls, way, amount, allocation = text.split(" ")
    return Cell(int(call), "" if way == "-" else way, int(amount), int(calls), int(allocation))
