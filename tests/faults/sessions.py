"""The sessions of the matrix: every option, from the command line and from the menu, with the
arguments that reach each of its paths."""

import pathlib
import re

from board import Session

# The boards, and one whose HAL object has a callback: only payloads reach it.
BOARDS = ("demo", "raw_only", "hostile", "callback")
FILES = {"callback": str(pathlib.Path(__file__).parent / "callback.toml")}
SLOTS = range(1, 64)
DEVICE_TYPES = range(166)

# Of the sessions that differ by their slot or device type alone, the bounded part has these.
SOME_SLOTS = ("1", "5", "17", "63")
SOME_DEVICE_TYPES = ("0", "3", "16", "59", "68", "164", "165")

# What the operator asks next in the menu, in turn: the option after the one that failed.
NEXT = (("5", "12"), ("11",), ("6", "2"), ("1", "2"), ("2", "3", "2", "3"), ("13", "5", "99", "0"),
        ("4", "9", "3"), ("15", "5"))


def one_shots():
    """Arguments of the command line, and the lines typed."""
    yield "-o 1", ("0",)
    yield "-o 6", ("0",)
    for slot in SLOTS:
        yield f"-o 1 -p {slot}", ()
        yield f"-o 6 -p {slot}", ()
        for option in (2, 3):
            for form in (1, 2):
                yield f"-o {option} -p {slot} -f {form}", ()
    for option in (2, 3):
        yield f"-o {option} -p 5 -f 3", ()
        yield f"-o {option} -p 5 -f 9", ()
        yield f"-o {option} -p 5", ("1", "2", "7", "3")
        yield f"-o {option} -p 5", ("x",)
    for form in (1, 2, 3, 9):
        yield f"-o 4 -f {form}", ()
    for module in range(1, 17):
        yield f"-o 5 -m {module}", ()
    for device_type in DEVICE_TYPES:
        yield f"-o 7 -d {device_type}", ()
        yield f"-o 8 -d {device_type}", ()
    yield "-o 9", ()
    yield "-o 9 -d 24 -i 3 -n 5", ()
    yield "-o 9 -d 24 -i 3 -n 5 -t 80", ()
    yield "-o 10", ("5", "50")
    yield "-o 11", ()
    for module in range(1, 13):
        yield f"-o 12 -m {module}", ()
    yield "-o 13", ("5", "99", "0")
    yield "-o 14", ("24", "5", "3", "50", "7", "1")
    yield "-o 15", ("5",)


def from_menu():
    """The lines that an option reads, its number first."""
    for slot in (0, 5, 64):
        yield "1", str(slot)
    for option in ("2", "3"):
        yield option, "5", "1", "2", "7", "3"
        yield option, "1", "3"
        yield option, "64"
        yield option, "x"
    yield "4", "1", "2", "7", "3"
    for module in range(1, 16):
        yield "5", str(module)
    for slot in (0, 5, 64):
        yield "6", str(slot)
    for option in ("7", "8"):
        for device_type in ("16", "59", "-1"):
            yield option, device_type
    yield "9", "24", "3", "5", "50"
    yield "9", "24", "3", "5", "0"
    yield "9", "24", "3", "77", "50"
    yield "10", "5", "50"
    yield "10", "5", "7E"
    yield "11",
    for module in range(0, 13):
        yield "12", str(module)
    yield "13", "5", "99", "0"
    yield "13", "5", "8", "0"
    yield "14", "24", "5", "3", "50", "7", "1"
    yield "14", "24", "77", "3", "50", "7", "1"
    yield "15", "5"
    yield "15", "77"
    yield "16",


def sessions(board):
    for arguments, typed in one_shots():
        session = Session(board, arguments, typed, len(typed))
        if board != "callback" or reaches_payloads(session):
            yield session
    for i, own in enumerate(from_menu()):
        if own[-1] == "x":  # the menu ends at a word that is no number
            session = Session(board, "", own, len(own))
        else:
            session = Session(board, "", (*own, *NEXT[i % len(NEXT)], "100"), len(own))
        if board != "callback" or reaches_payloads(session):
            yield session


def option_of(session):
    """The number of the option under test."""
    return int(session.arguments.split(" ")[1] if session.arguments else session.typed[0])


def reaches_payloads(session):
    return option_of(session) in (2, 3) and (not session.arguments or "-p 5 " in session.arguments)


def in_bounded_part(session):
    slot = re.search(r"-p (\d+)", session.arguments)
    device_type = re.search(r"-d (\d+)", session.arguments)
    if slot:
        return slot[1] in SOME_SLOTS
    if device_type and option_of(session) in (7, 8):
        return device_type[1] in SOME_DEVICE_TYPES
    return True


def all_sessions():
    return [session for board in BOARDS for session in sessions(board)]
