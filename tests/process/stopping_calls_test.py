#!/usr/bin/env python3
"""The tool at the moment a board hangs: all that it has printed is out before every call.

A preload library stops the tool at one call of its surroundings. The text that is out by then must
be the clean run's, up to and including the text that the tool finishes right before that call.
"""

import dataclasses
import os
import pathlib
import subprocess
import sys
import time
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))
sys.path.insert(0, str(pathlib.Path(__file__).parent))

import tap  # noqa: E402
from preload import preloaded  # noqa: E402
from programs import ASK_ALL, EMULATED, SANITIZED, SIM, Scratch, TIMEOUT_SECONDS, TOOL  # noqa: E402

STOPPING_CALLS = os.environ["STOPPING_CALLS"]
PRELOADED = preloaded(STOPPING_CALLS)

LAST_SLOTS = """
[[slot]]
id = 62
dstat = 3
[[slot]]
id = 63
dstat = 3
apen = true
"""

ASK_SLOT = "Enter the PICPWR ID:"
ASK_OPTION = "Enter option :"


@dataclasses.dataclass(frozen=True)
class Stop:
    """A call, and the text that the tool finishes right before it."""

    call: str
    nth: int = 1  # of the calls of this name
    printed: str | None = ""  # None: everything that the option prints
    times: int = 1  # how often this text has been printed by then


@dataclasses.dataclass(frozen=True)
class Session:
    arguments: str
    stops: tuple[Stop, ...]  # the first, a middle and the last call
    typed: str = ""
    faults: tuple[str, ...] = ()
    board: str = ""  # the demo board when empty


SESSIONS = (
    Session("-o 1 -p 5", (
        Stop("ReadIO_Str PICPWR_5_DSTAT"),
        Stop("ReadIO_Str PICPWR_5_PAYLOAD_OFFSET", 1, "PICPWR 05 Module Class Index = 1\n"),
        Stop("cpld_read_device", 8, "PICPWR 05 DSL7_ID            = 0\n"),
    )),
    Session("-o 1", (
        Stop("ReadIO_Str PICPWR_1_DSTAT", 1, ASK_ALL),
        Stop("ReadIO_Str PICPWR_63_DSTAT", 1, "PICPWR 62 DSL8_ID            = 0\n"),
        Stop("ReadIO_Str PICPWR_63_ASTAT", 1, "PICPWR 63 APEN               = 1\n"),
    ), typed="0\n", board=LAST_SLOTS),
    # Each payload view twice: its text is out before it asks the platform again.
    Session("", (
        Stop("ReadIO_Str PICPWR_5_DSTAT", 1, ASK_SLOT),
        Stop("ReadHALConfig PICPWR_PAYLOADS", 2, ASK_SLOT, 2),
        Stop("dlog_printf", 2, ASK_SLOT, 2),
    ), typed="2\n5\n1\n3\n2\n5\n2\n3\n100\n"),
    Session("", (
        Stop("ReadIO_Str PICPWR_5_DSTAT", 1, ASK_SLOT),
        Stop("HAL_cfgbase::ReadIO", 2, ASK_SLOT, 2),
        Stop("dlog_printf", 2, ASK_SLOT, 2),
    ), typed="3\n5\n1\n3\n3\n5\n2\n3\n100\n"),
    Session("", (
        Stop("ReadIO_Str RISER_SLOT_AMP_BLOB", 1, ASK_OPTION),
        Stop("cpld_read_device", 512, ASK_OPTION),
        Stop("cpld_read_device", 2048, ASK_OPTION, 2),
    ), typed="4\n1\n3\n4\n2\n3\n100\n", faults=("named-read RISER_SLOT_AMP_BLOB",)),
    Session("-o 5 -m 15", (
        Stop("ReadIO_Str 1C_CARD_PRES"),
        Stop("ReadIO_Str M.2_INTERPOSER_2_FRU_WP", 1, "M.2 Interposer 2 Power Policy      = 2\n"),
        Stop("ReadIO_Str BAT_INTRPSR_2_PICPWR_INDEX", 1,
             "Battery Interposer 2 Battery Ready    = 0\n"),
    )),
    # Registers whose names fail: the raw read that follows is a call of its own.
    Session("-o 5 -m 3", (
        Stop("ReadIO_Str DOWNSTREAM_KARN_1_FLOP_IDX"),
        Stop("ReadIO_Str DOWNSTREAM_KARN_2_FLOP_IDX", 1,
             "Unable to read DOWNSTREAM_KARN_1_FRU_WP using CPLD raw API, status 9\n\n"),
        Stop("cpld_read_device", 4,
             "Unable to read DOWNSTREAM_KARN_2_PAYLOAD_OFFSET using CPLD raw API, status 9\n"),
    ), faults=("named-read DOWNSTREAM_KARN_*", "raw-read 0x13CA-0x13D5 status 9")),
    Session("-o 6", (
        Stop("i2c_parse_sysinfo 16", 1, ASK_ALL),
        Stop("free_sysinfo", 1, None),
    ), typed="0\n"),
    Session("-o 7 -d 165", (
        Stop("i2c_parse_sysinfo 0"),
        Stop("i2c_parse_sysinfo 4", 1, "Node Name         = pmic\nSub Node Count    = 0\n", 4),
        Stop("free_sysinfo", 165, None),
    )),
    Session("-o 8 -d 165", (
        Stop("i2c_parse_sysinfo 0"),
        Stop("i2c_parse_sysinfo 3", 1, "Node Name         = vio\nSub Node Count    = 0\n", 2),
        Stop("free_sysinfo", 165, None),
    )),
    Session("-o 8 -d 164", (
        Stop("i2c_parse_sysinfo 164"),
        Stop("free_sysinfo", 1, "Input device type not found in sysfs\n"),
    )),
    Session("-o 9 -d 24 -i 3 -n 5 -t 80", (
        Stop("open /dev/i2c-5"),
        Stop("open /dev/i2c-49", 1, "Index Node Status:Node Status: [0] &  Name: [/dev/i2c-49]\n"),
        Stop("close", 2, "Index Node Status:Node Status: [0] &  Name: [/dev/i2c-49]\n"),
    )),
    Session("-o 10", (
        Stop("open /dev/i2c-5", 1, "Enter Target Address:"),
        Stop("ioctl", 1, "Enter Target Address:"),
        Stop("close", 1, "Status is -1 (No such device)\n"),
    ), typed="5\n7E\n"),
    Session("-o 11", (
        Stop("sd_bus_default_system"),
        Stop("sd_bus_call"),
        Stop("sd_bus_flush_close_unref", 1, None),
    )),
    Session("-o 12 -m 4", (
        Stop("sd_bus_default_system"),
        Stop("sd_bus_call", 3, "/com/tesk/bmc/zolt/riser/riser2\n"),
        Stop("sd_bus_flush_close_unref", 1, None),
    )),
    # The last object's view ends with its catch line, which nothing follows but the connection's end.
    Session("-o 12 -m 4", (
        Stop("sd_bus_flush_close_unref", 1, None),
    ), faults=("object /com/tesk/bmc/zolt/riser/riser8",)),
    Session("-o 13", (
        Stop("open /dev/i2c-5", 1, "Enter Target Address:"),
        Stop("ioctl", 1, "Enter Target Address:"),
        Stop("close", 1, "Status is -1 (No such file or directory)\nProperty Read Failed.\n"),
    ), typed="5\n99\n0\n"),
    Session("-o 14", (
        Stop("open /dev/i2c-5", 1, "Enter Property Value:"),
        Stop("ioctl", 1, "Enter Property Value:"),
        Stop("close", 1, "IOCTL failed with status -1\n"),
    ), typed="24\n5\n0\n7E\n7\n1\n"),
    Session("-o 15", (
        Stop("open /dev/i2c-5", 1, "Enter Node Num:"),
        Stop("open /dev/i2c-5", 2, "Status [1] for node name: [/dev/i2c-5]\n", 1),
        Stop("close", 3, "Status [1] for node name: [/dev/i2c-5]\n", 3),
    ), typed="5\n"),
)

# An emulator and a sanitizer take long, and change nothing in the ways out of the tool.
SLOW = EMULATED or SANITIZED
WAYS = ("hang", "throw") if SLOW else ("hang", "abort", "throw")

# Calls of the C library and of libsystemd do not throw.
CANNOT_THROW = ("open ", "ioctl", "close", "sd_bus_")


def printed_before(stop, everything):
    """The clean run's text up to the stop."""
    if stop.printed is None:
        return everything
    end = 0
    if stop.printed:
        for _ in range(stop.times):
            end = everything.index(stop.printed, end) + len(stop.printed)
    return everything[:end]


class StoppingCalls(unittest.TestCase):
    def setUp(self):
        self.scratch = Scratch()
        self.addCleanup(self.scratch.close)
        self.calls = self.scratch.path / "calls"
        self.stopped = self.scratch.path / "stopped"

    def command(self, session):
        board = self.scratch.file("board.toml", session.board) if session.board else "demo"
        faults = [word for fault in session.faults for word in ("--fault", fault)]
        return [SIM, "--board", board, *faults, "--", *PRELOADED, TOOL, *session.arguments.split()]

    def environment(self, **more):
        self.stopped.unlink(missing_ok=True)
        return dict(self.scratch.environment, STOPPED=str(self.stopped), **more)

    def clean_run(self, session):
        self.calls.unlink(missing_ok=True)
        done = subprocess.run(
            self.command(session), input=session.typed.encode(), capture_output=True,
            env=self.environment(CALL_LIST=str(self.calls)), timeout=TIMEOUT_SECONDS, check=True,
        )
        return done.stdout.decode(), self.calls.read_text().splitlines()

    def stopped_run(self, session, number, how, output):
        """Returns when the tool has ended, or hangs; it is gone then."""
        process = subprocess.Popen(
            self.command(session), stdin=subprocess.PIPE, stdout=output, stderr=subprocess.DEVNULL,
            env=self.environment(STOP_AT=str(number), STOP_HOW=how), start_new_session=True,
        )
        try:
            process.stdin.write(session.typed.encode())
            process.stdin.flush()
            deadline = time.monotonic() + TIMEOUT_SECONDS
            while process.poll() is None and not self.stopped.exists():
                self.assertLess(time.monotonic(), deadline, "neither an end nor the stop")
                time.sleep(0.001)
            self.assertEqual(self.stopped.exists(), how == "hang")
        finally:
            process.terminate()
            process.stdin.close()
            process.wait(TIMEOUT_SECONDS)

    def into_a_file(self, *run):
        path = self.scratch.path / "output"
        with path.open("wb") as file:
            self.stopped_run(*run, file)
        return path.read_text()

    def over_a_pipe(self, *run):
        reading, writing = os.pipe()
        with os.fdopen(reading, "rb") as reader:
            with os.fdopen(writing, "wb") as writer:
                self.stopped_run(*run, writer)
            return reader.read().decode()

    def other_ways_out(self):
        return () if SLOW else (self.over_a_pipe,)

    def check(self, session):
        everything, calls = self.clean_run(session)
        for stop in session.stops:
            of_this_name = [i for i, call in enumerate(calls, 1) if call == stop.call]
            number = of_this_name[stop.nth - 1]
            expected = printed_before(stop, everything)
            for how in WAYS:
                if how == "throw" and stop.call.startswith(CANNOT_THROW):
                    continue
                for run in (self.into_a_file, *self.other_ways_out()):
                    with self.subTest(stop.call, nth=stop.nth, how=how, run=run.__name__):
                        self.assertEqual(run(session, number, how), expected)


def add_test(number, session):
    option = (session.arguments or "-o " + session.typed).split()[1]
    name = f"test_{number:02}_option_{option}_has_printed_everything_before_a_call_that_stops"
    setattr(StoppingCalls, name, lambda self: self.check(session))


for place, each in enumerate(SESSIONS, 1):
    add_test(place, each)


if __name__ == "__main__":
    tap.main()
