#!/usr/bin/env python3
"""Tests zolt_sim at a terminal: what the keyboard and the end of the terminal do to the command."""

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
from programs import MAIN_MENU, SIM, TIMEOUT_SECONDS, TOOL, Scratch  # noqa: E402
from terminal import Terminal  # noqa: E402


class TerminalTest(unittest.TestCase):
    def setUp(self):
        self.scratch = Scratch()
        self.addCleanup(self.scratch.close)

    def terminal(self, *command):
        return Terminal(self, *command, env=self.scratch.environment)

    def assert_nothing_left(self):
        end = time.monotonic() + TIMEOUT_SECONDS
        while self.scratch.left_behind() and time.monotonic() < end:
            time.sleep(0.01)
        self.assertEqual(self.scratch.left_behind(), [])


class HangUp(TerminalTest):
    def test_ends_the_tool(self):
        terminal = self.terminal(SIM, "--", TOOL)
        terminal.shown_until(MAIN_MENU)
        terminal.hang_up()
        self.assertEqual(terminal.process.wait(TIMEOUT_SECONDS), 128 + signal.SIGHUP)
        self.assert_nothing_left()

    def test_reaches_the_command_once(self):
        heard = self.scratch.path / "heard"
        terminal = self.terminal(
            SIM, "--", "bash", "-c",
            f"trap 'echo hangup >> {heard}' HUP; echo ready; for i in 1 2 3 4 5; do sleep 0.1; done",
        )
        terminal.shown_until("ready\n")
        terminal.hang_up()
        self.assertEqual(terminal.process.wait(TIMEOUT_SECONDS), 0)
        self.assertEqual(heard.read_text(), "hangup\n")

    def test_ends_a_command_that_is_stopped(self):
        terminal = self.terminal(SIM, "--", "sh", "-c", "echo ready; kill -STOP $$; sleep 60")
        terminal.shown_until("ready\n")
        terminal.hang_up()
        self.assertEqual(terminal.process.wait(TIMEOUT_SECONDS), 128 + signal.SIGHUP)

    def test_of_the_callers_terminal_reaches_the_command_once(self):
        # The shell that leads the session sends the hangup to its jobs when it ends.
        heard = self.scratch.path / "heard"
        script = f"trap 'echo hangup >> {heard}' HUP; echo ready; for i in 1 2 3 4; do sleep 0.1; done"
        terminal = self.terminal("sh", "-c", f'{SIM} -- bash -c "{script}"; :')
        terminal.shown_until("ready\n")
        terminal.hang_up()
        self.assertEqual(terminal.process.wait(TIMEOUT_SECONDS), -signal.SIGHUP)
        self.assert_nothing_left()
        self.assertEqual(heard.read_text(), "hangup\n")


class Interrupt(TerminalTest):
    def slow_daemon(self):
        """Puts a bus daemon that never answers into the path. Returns a file that it makes."""
        started = self.scratch.path / "started"
        programs = self.scratch.path / "bin"
        programs.mkdir()
        daemon = programs / "dbus-daemon"
        daemon.write_text(f"#!/bin/sh\n: > {started}\nexec sleep 60\n")
        daemon.chmod(0o755)
        self.scratch.environment["PATH"] = f"{programs}:{os.defpath}"
        return started

    def wait_for(self, path):
        end = time.monotonic() + TIMEOUT_SECONDS
        while not path.exists():
            self.assertLess(time.monotonic(), end, f"there is no {path}")
            time.sleep(0.01)

    def test_ends_a_start_that_waits_for_the_bus_daemon(self):
        started = self.slow_daemon()
        terminal = self.terminal(SIM, "--", "echo", "begun")
        self.wait_for(started)
        terminal.type("\x03")
        self.assertEqual(terminal.process.wait(TIMEOUT_SECONDS / 4), -signal.SIGINT)
        self.assert_nothing_left()

    def test_ends_a_loop_while_zolt_sim_starts(self):
        started = self.slow_daemon()
        terminal = self.terminal("bash", "-c", f"while :; do {SIM} -- true; done")
        self.wait_for(started)
        terminal.type("\x03")
        self.assertEqual(terminal.process.wait(TIMEOUT_SECONDS / 4), -signal.SIGINT)
        self.assert_nothing_left()

    def test_ends_a_loop_while_the_command_runs(self):
        terminal = self.terminal(
            "bash", "-c", f"while :; do {SIM} -- sh -c 'echo ready; exec sleep 60'; done"
        )
        terminal.shown_until("ready\n")
        terminal.type("\x03")
        self.assertEqual(terminal.process.wait(TIMEOUT_SECONDS / 4), -signal.SIGINT)
        self.assert_nothing_left()

    def test_is_the_commands_to_handle_as_its_last_act(self):
        # Both end with the status that the command gives: an interrupt that it handled ends no loop.
        for _ in range(20):
            terminal = self.terminal(
                SIM, "--", "bash", "-c", "trap 'exit 7' INT; echo ready; while :; do :; done"
            )
            terminal.shown_until("ready\n")
            terminal.type("\x03")
            self.assertEqual(terminal.process.wait(TIMEOUT_SECONDS), 7)

    def test_that_the_caller_ignores_ends_no_start(self):
        started = self.slow_daemon()
        terminal = self.terminal("sh", "-c", f"trap '' INT; exec {SIM} -- true")
        self.wait_for(started)
        terminal.type("\x03")
        with self.assertRaises(subprocess.TimeoutExpired):
            terminal.process.wait(0.5)


if __name__ == "__main__":
    tap.main()
