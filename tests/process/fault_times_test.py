#!/usr/bin/env python3
"""Tests faults in time: calls that take long or never come back, and rules that count calls."""

import os
import pathlib
import signal
import subprocess
import sys
import time
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))
sys.path.insert(0, str(pathlib.Path(__file__).parent))

import tap  # noqa: E402
from programs import (  # noqa: E402
    ASK_ALL,
    SIM,
    TIMEOUT_SECONDS,
    TOOL,
    Scratch,
    Session,
    other_programs_on_buses,
    run,
)

# Debian installs the I2C tools outside the PATH of ordinary users.
PATH = os.environ.get("PATH", os.defpath) + ":/usr/sbin:/sbin"

FLAGS_OF_SLOT_5 = """
PICPWR 05 DSTAT              = 11b
PICPWR 05 DBYP               = 0
PICPWR 05 DPEN               = 1
PICPWR 05 APEN               = 1
PICPWR 05 ASTAT              = 1
"""

BUSES = """
[[i2c.bus]]
number = 5
[[i2c.bus.device]]
address = 0x50
memory = "5A"
[[i2c.bus.device]]
address = 0x51
memory = "11"
[[i2c.bus]]
number = 6
[[i2c.bus.device]]
address = 0x50
memory = "66"
"""


class FaultTest(unittest.TestCase):
    def setUp(self):
        self.scratch = Scratch()
        self.addCleanup(self.scratch.close)
        self.scratch.environment["PATH"] = PATH
        self.buses = self.scratch.file("buses.toml", BUSES)
        self.calls = self.scratch.path / "calls"
        self.transactions = self.scratch.path / "transactions"

    def sim(self, rules, *command, board="demo"):
        faults = [word for rule in rules for word in ("--fault", rule)]
        return [SIM, "--board", board, *faults, "--call-log", str(self.calls),
                "--i2c-log", str(self.transactions), "--", *command]

    def session(self, rules, *command, board="demo"):
        return Session(self, *self.sim(rules, *command, board=board), env=self.scratch.environment)

    def output(self, rules, script, board="demo"):
        done = run(*self.sim(rules, "sh", "-c", script, board=board), env=self.scratch.environment)
        self.assertEqual(done.stderr, "")
        self.assertEqual(self.scratch.left_behind(), [])
        return done.stdout


class CallsThatNeverComeBack(FaultTest):
    # The rules, the tool's arguments, its input, and its output before the call.
    KINDS = {
        "named-read": (("named-read PICPWR_5_MOD_CLASS delay forever",), "-o 1 -p 5", "",
                       FLAGS_OF_SLOT_5),
        "raw-read": (("named-read PICPWR_5_MOD_CLASS", "raw-read 0x1039 delay forever"),
                     "-o 1 -p 5", "", FLAGS_OF_SLOT_5),
        "hal-object": (("hal-object PICPWR_PAYLOADS delay forever",), "-o 2 -p 27 -f 2", "", ""),
        "hal-read": (("hal-read PICPWR_PAYLOADS delay forever",), "-o 2 -p 27 -f 2", "", ""),
        "sysinfo": (("sysinfo PICPWR delay forever",), "-o 6", "0\n", ASK_ALL),
        "object": (("object riser/riser1 delay forever",), "-o 12 -m 4", "",
                   "/com/tesk/bmc/zolt/riser/riser1\n"),
        "i2c-open": (("i2c-open 5 delay forever",), "-o 15", "5\n", "Enter Node Num:"),
        "i2c-ioctl": (("i2c-ioctl 5 recover-bus 96 delay forever",), "-o 15", "5\n",
                      "Enter Node Num:"),
    }

    def hung(self, kind):
        """Starts a tool that hangs. Returns its session and its process number."""
        rules, arguments, typed, shown = self.KINDS[kind]
        session = self.session(
            rules, "sh", "-c", 'echo $$ >&2; exec "$@"', "sh", TOOL, *arguments.split(),
            board=self.buses if kind.startswith("i2c") else "demo",
        )
        tool = int(session.told())
        session.type(typed)
        session.expect(shown)
        with self.assertRaises(subprocess.TimeoutExpired, msg=kind):
            session.process.wait(0.3)
        return session, tool

    def assert_ended(self, session, status):
        rest, errors = session.process.communicate(timeout=TIMEOUT_SECONDS)
        self.assertEqual((rest, errors, session.process.returncode), (b"", b"", status))
        self.assertEqual(self.scratch.left_behind(), [])

    def test_show_all_text_before_them_and_end_by_an_interrupt(self):
        for kind in self.KINDS:
            with self.subTest(kind):
                session, _ = self.hung(kind)
                session.process.send_signal(signal.SIGINT)
                self.assert_ended(session, -signal.SIGINT)

    def test_end_by_a_termination(self):
        for kind in ("named-read", "i2c-ioctl"):
            with self.subTest(kind):
                session, _ = self.hung(kind)
                session.process.terminate()
                self.assert_ended(session, 128 + signal.SIGTERM)

    def test_end_when_the_tool_is_killed(self):
        for kind in ("raw-read", "object", "i2c-open"):
            with self.subTest(kind):
                session, tool = self.hung(kind)
                os.kill(tool, signal.SIGKILL)
                self.assert_ended(session, 128 + signal.SIGKILL)

    def test_are_not_logged(self):
        session, _ = self.hung("raw-read")
        session.process.send_signal(signal.SIGINT)
        self.assert_ended(session, -signal.SIGINT)
        self.assertEqual(self.calls.read_text().splitlines()[-1], "ReadIO_Str PICPWR_5_MOD_CLASS = -1")
        session, _ = self.hung("i2c-ioctl")
        session.process.send_signal(signal.SIGINT)
        self.assert_ended(session, -signal.SIGINT)
        self.assertEqual(self.transactions.read_text(), "")

    @other_programs_on_buses
    def test_stop_no_other_client_and_no_other_bus(self):
        read = "i2ctransfer -y {} r1@{}"
        shown = self.output(
            ("i2c-ioctl 5 plain 0x50 delay forever once", "i2c-open 6 delay forever once"),
            f"{read.format(5, '0x50')} & stuck=$!; {read.format(6, '0x50')} & closed=$!;"
            "sleep 0.3;"
            f"{read.format(6, '0x50')}; {read.format(5, '0x51')}; {read.format(5, '0x50')};"
            "kill $stuck; kill $closed; wait",
            board=self.buses,
        )
        self.assertEqual(shown, "0x66\n0x11\n0x5a\n")
        self.assertEqual(
            self.transactions.read_text(),
            "/dev/i2c-6 transfer [0x0050 0x0001 1: 66] -> 1\n"
            "/dev/i2c-5 transfer [0x0051 0x0001 1: 11] -> 1\n"
            "/dev/i2c-5 transfer [0x0050 0x0001 1: 5A] -> 1\n",
        )

    def test_stop_no_other_call_of_the_service(self):
        ask = "busctl --system --timeout={} get-property com.tesk.bmc.zolt /com/tesk/bmc/zolt/info"
        ask += " com.tesk.bmc.zolt.pcardInfo FRUreadComplete 2>&1"
        shown = self.output(
            ("object info delay forever once",),
            f"{ask.format(60)} & sleep 0.3; {ask.format(10)}; kill $!; wait",
        )
        self.assertEqual(shown, "b true\n")

    @other_programs_on_buses
    def test_end_with_the_command_that_left_them_behind(self):
        started = time.monotonic()
        self.output(
            ("i2c-ioctl 5 plain 0x50 delay 3600s",),
            "i2ctransfer -y 5 r1@0x50 >/dev/null 2>&1 & sleep 0.2; kill $!",
            board=self.buses,
        )
        self.assertLess(time.monotonic() - started, TIMEOUT_SECONDS / 2)


class SlowCalls(FaultTest):
    def test_let_the_text_before_them_out_and_succeed(self):
        session = self.session(("named-read PICPWR_5_MOD_CLASS delay 1500ms",), TOOL, "-o", "1", "-p", "5")
        session.expect(FLAGS_OF_SLOT_5)
        self.assertNotIn("MOD_CLASS", self.calls.read_text())  # logged when it ends
        shown = time.monotonic()
        session.expect("PICPWR 05 Module Class       = 0x11\n")
        self.assertGreater(time.monotonic() - shown, 0.75)
        self.assertIn("ReadIO_Str PICPWR_5_MOD_CLASS = 0\n", self.calls.read_text())

    def test_may_fail_in_the_end(self):
        started = time.monotonic()
        self.assertEqual(
            self.output(
                ("named-read PICPWR_42_DSTAT delay 250ms fail", "raw-read 0x123E delay 250ms status 3"),
                f"{TOOL} -o 1 -p 42",
            ),
            "Unable to read PICPWR 42 DSTAT using CPLD raw API, status 3\n",
        )
        self.assertGreaterEqual(time.monotonic() - started, 0.5)
        self.assertEqual(
            self.calls.read_text(),
            "ReadIO_Str PICPWR_42_DSTAT = -1\ncpld_read_device 0x123E 1 = 3\n",
        )


class Counts(FaultTest):
    def test_are_shared_by_tools_that_run_at_once(self):
        good = "\nPICPWR 42 DSTAT              = 00b\n"
        bad = "Unable to read PICPWR 42 DSTAT using CPLD raw API, status 3\n"
        shown = self.output(
            ("named-read PICPWR_42_DSTAT after 5 4 times", "raw-read 0x123E status 3"),
            'for i in 1 2 3 4; do for j in 1 2 3; do "$0"; done > "$TMPDIR/$i" & done; wait;'
            'cat "$TMPDIR"/[1-4]'.replace('"$0"', f"{TOOL} -o 1 -p 42"),
        )
        self.assertEqual((shown.count(good), shown.count(bad)), (8, 4))
        self.assertEqual(len(shown), 8 * len(good) + 4 * len(bad))

    def test_of_a_rule_for_a_device_type(self):
        # The parser fails for the second tool only.
        shown = self.output(
            ("sysinfo PICPWR after 1 once status 7",),
            f"for i in 1 2 3; do echo 0 | {TOOL} -o 6 >/dev/null; done",
        )
        self.assertEqual(shown, "")
        self.assertEqual(
            [line for line in self.calls.read_text().splitlines() if line.startswith("i2c_parse")],
            ["i2c_parse_sysinfo 16 = 0 tree", "i2c_parse_sysinfo 16 = 7 none",
             "i2c_parse_sysinfo 16 = 0 tree"],
        )

    @other_programs_on_buses
    def test_do_not_include_looks_at_a_bus(self):
        shown = self.output(
            ("i2c-open 5 once error ENOENT",),
            "test -e /dev/i2c-5 || echo absent; test -e /dev/i2c-5 || echo absent;"
            "i2ctransfer -y 5 r1@0x50 >/dev/null 2>&1 || echo failed;"
            "test -e /dev/i2c-5 && i2ctransfer -y 5 r1@0x50",
            board=self.buses,
        )
        self.assertEqual(shown, "absent\nabsent\nfailed\n0x5a\n")

    def test_of_orders_begin_when_the_fault_is_used_up(self):
        board = self.scratch.file("board.toml", """
faults = ["object info after 1 once"]
[[service.order]]
path = "info"
action = "error"
text = "an order"
after = 1
""")
        ask = "busctl --system get-property com.tesk.bmc.zolt /com/tesk/bmc/zolt/info"
        ask += " com.tesk.bmc.zolt.pcardInfo FRUreadComplete 2>&1;"
        # The first call passes the fault and the order. The fault keeps the second one from the order.
        self.assertEqual(
            self.output((), 3 * ask, board=board),
            "b true\nFailed to get property FRUreadComplete on interface com.tesk.bmc.zolt.pcardInfo: "
            "ordered by a fault\nFailed to get property FRUreadComplete on interface "
            "com.tesk.bmc.zolt.pcardInfo: an order\n",
        )


if __name__ == "__main__":
    tap.main()
