#!/usr/bin/env python3
"""Tests the logs of zolt_sim: their lines, their times, and that no loss of a line goes untold."""

import os
import re
import shutil
import stat
import subprocess
import sys
import pathlib
import time
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))
sys.path.insert(0, str(pathlib.Path(__file__).parent))

import tap  # noqa: E402
from programs import (  # noqa: E402
    SIM,
    TIMEOUT_SECONDS,
    TOOL,
    Scratch,
    counted_in_short_files,
    run,
)

OPTIONS = ("--debug-log", "--call-log", "--i2c-log", "--bus-log")

# These tools write each of the logs. The board is the demo board.
EVERY_LOG = (
    f"{TOOL} -o 2 -p 18; {TOOL} -o 11; printf '5\\n8\\n0\\n' | {TOOL} -o 13; exit 0"
)
LINES = {
    "--debug-log": ["5 273 [~HAL_cfgdata]: Deleted halData for [PICPWR_PAYLOADS]"],
    "--call-log": [
        "ReadIO_Str PICPWR_18_DSTAT = 0",
        "ReadIO_Str PICPWR_18_MOD_CLASS = 0",
        "ReadIO_Str PICPWR_18_PAYLOAD_OFFSET = 0",
        "ReadHALConfig PICPWR_PAYLOADS = found",
        "HAL_cfgbase::ReadIO PICPWR_PAYLOADS 247 6529 = 0",
    ],
    "--i2c-log": ["/dev/i2c-5 get-property target=0x00 property=8 -> 2 value=0x00000006"],
    "--bus-log": [
        '/com/tesk/bmc/zolt/info org.freedesktop.DBus.Properties.GetAll '
        'interface="com.tesk.bmc.zolt.pcardInfo" -> a{sv}',
    ],
}
CALL = "ReadIO_Str PICPWR_42_DSTAT = 0\n"
SLOT = f"{TOOL} -o 1 -p 42"


class LogTest(unittest.TestCase):
    def setUp(self):
        self.scratch = Scratch()
        self.addCleanup(self.scratch.close)
        self.files = {option: self.scratch.path / option.strip("-") for option in OPTIONS}

    def sim(self, *arguments, **options):
        return run(SIM, *arguments, env=self.scratch.environment, **options)

    def every_log(self):
        return sum(((option, str(path)) for option, path in self.files.items()), ())

    def lines(self, option):
        return self.files[option].read_text().splitlines()


class Lines(LogTest):
    def test_are_those_of_the_calls(self):
        done = self.sim(*self.every_log(), "sh", "-c", EVERY_LOG)
        self.assertEqual((done.stderr, done.returncode), ("", 0))
        self.assertEqual({option: self.lines(option) for option in OPTIONS}, LINES)

    def test_start_with_the_time_since_the_start_in_all_logs(self):
        start = time.monotonic()
        done = self.sim("--log-times", *self.every_log(), "sh", "-c", EVERY_LOG)
        longest = time.monotonic() - start
        self.assertEqual((done.stderr, done.returncode), ("", 0))
        merged = []
        for option in OPTIONS:
            split = [re.fullmatch(r"(\d{6}\.\d{6}) (.*)", line) for line in self.lines(option)]
            self.assertEqual([line[2] for line in split], LINES[option])
            merged += [(line[1], line[2]) for line in split]
        # Of the tools, each one but the first starts after its predecessor's last call.
        order = ["--call-log", "--debug-log", "--bus-log", "--i2c-log"]
        self.assertEqual(
            [line for _, line in sorted(merged)], sum((LINES[option] for option in order), [])
        )
        self.assertGreater(float(min(merged)[0]), 0)
        self.assertLess(float(max(merged)[0]), longest)

    def test_of_several_logs_go_to_one_file(self):
        log = self.scratch.path / "all"
        done = self.sim(
            *sum(((option, str(log)) for option in OPTIONS), ()), "sh", "-c", EVERY_LOG
        )
        self.assertEqual((done.stderr, done.returncode), ("", 0))
        order = ["--call-log", "--debug-log", "--bus-log", "--i2c-log"]
        self.assertEqual(log.read_text().splitlines(), sum((LINES[o] for o in order), []))

    def test_are_alone_in_a_file_and_written_from_any_directory(self):
        self.scratch.file("calls", "from an earlier run\n")
        done = run(
            SIM, "--call-log", "calls", "sh", "-c", f"cd /; {SLOT}",
            env=self.scratch.environment, cwd=self.scratch.path,
        )
        self.assertEqual(done.stderr, "")
        log = self.scratch.path / "calls"
        self.assertEqual(log.read_text(), CALL)
        self.assertFalse(log.stat().st_mode & stat.S_IXUSR)

    def test_are_in_files_with_the_callers_umask(self):
        for umask in (0o022, 0o027, 0o000):
            self.files = {option: self.scratch.path / f"{option}{umask}" for option in OPTIONS}
            self.assertEqual(self.sim(*self.every_log(), "true", umask=umask).stderr, "")
            modes = {path.stat().st_mode & 0o777 for path in self.files.values()}
            self.assertEqual(modes, {0o666 & ~umask})

    def test_of_several_tools_reach_the_reader_of_a_pipe(self):
        log = self.scratch.path / "pipe"
        os.mkfifo(log)
        reader = subprocess.Popen(["cat", log], stdout=subprocess.PIPE, text=True)
        self.addCleanup(reader.kill)
        done = self.sim("--call-log", str(log), "sh", "-c", 2 * f"{SLOT}; ")
        self.assertEqual(done.stderr, "")
        shown, _ = reader.communicate(timeout=TIMEOUT_SECONDS)
        self.assertEqual(shown, 2 * CALL)


class BusLog(LogTest):
    INFO = "/com/tesk/bmc/zolt/info"
    DBUS = "org.freedesktop.DBus"
    GET_ALL = f"{DBUS}.Properties.GetAll"

    def logged(self, board, script):
        path = self.scratch.file("board.toml", board)
        log = self.files["--bus-log"]
        done = self.sim("--board", path, "--bus-log", str(log), "sh", "-c", script + ":")
        self.assertEqual(done.returncode, 0, done.stderr)
        return self.lines("--bus-log")

    def call(self, path, interface, member, *arguments):
        words = " ".join(f"'{argument}'" for argument in arguments)
        return (f"busctl --system --timeout=5 call com.tesk.bmc.zolt {path} {interface} {member} "
                f"{words} >/dev/null 2>&1; ")

    def test_has_each_call_with_its_answer(self):
        module = "/com/tesk/bmc/zolt/puck/p1"
        interface = "com.tesk.bmc.zolt.puckCIR"
        properties = f"{self.DBUS}.Properties"
        script = (
            self.call(module, properties, "Get", "ss", interface, "DeviceId")
            + self.call(module, properties, "GetAll", "s", interface)
            + self.call(module, properties, "GetAll", "s", "")
            + self.call(module, properties, "Get", "ss", interface, "No \"such")
            + self.call(module, properties, "GetAll", "s", 300 * "i")
            + self.call(module, properties, "Get", "s", interface)
            + self.call(module, properties, "GetAll", "i", "7")
            + self.call(module, properties, "Set", "ssv", interface, "DeviceId", "q", "1")
            + self.call("/com/tesk/bmc/zolt/puck", f"{self.DBUS}.ObjectManager",
                        "GetManagedObjects")
            + self.call("/nowhere", f"{self.DBUS}.ObjectManager", "GetManagedObjects")
            + self.call(module, f"{self.DBUS}.Introspectable", "Introspect")
            + self.call(module, f"{self.DBUS}.Peer", "Ping")
            + self.call(module, f"{self.DBUS}.Peer", "Pong")
            + self.call(module, interface, "Eject")
        )
        self.assertEqual(
            self.logged('[[slot]]\nid = 1\nmodule = { type = "puck", object = "p1" }\n', script),
            [
                f'{module} {properties}.Get interface="{interface}" property="DeviceId" -> v q',
                f'{module} {properties}.GetAll interface="{interface}" -> a{{sv}}',
                f'{module} {properties}.GetAll interface="" -> a{{sv}}',
                f'{module} {properties}.Get interface="{interface}" property="No \\x22such" '
                f"-> {self.DBUS}.Error.UnknownProperty",
                f'{module} {properties}.GetAll interface="{255 * "i"}"... '
                f"-> {self.DBUS}.Error.UnknownInterface",
                f'{module} {properties}.Get interface="{interface}" -> System.Error.ENXIO',
                f"{module} {properties}.GetAll -> System.Error.ENXIO",
                f'{module} {properties}.Set interface="{interface}" property="DeviceId" '
                f"-> {self.DBUS}.Error.UnknownProperty",
                f"/com/tesk/bmc/zolt/puck {self.DBUS}.ObjectManager.GetManagedObjects "
                "-> a{oa{sa{sv}}}",
                f"/nowhere {self.DBUS}.ObjectManager.GetManagedObjects "
                f"-> {self.DBUS}.Error.UnknownObject",
                f"{module} {self.DBUS}.Introspectable.Introspect -> s",
                f"{module} {self.DBUS}.Peer.Ping -> empty",
                f"{module} {self.DBUS}.Peer.Pong -> {self.DBUS}.Error.UnknownMethod",
                f"{module} {interface}.Eject -> {self.DBUS}.Error.UnknownMethod",
            ],
        )

    def test_has_the_answers_that_the_description_orders(self):
        board = """
            [[service.order]]
            action = "error"
            error = "com.example.Broken"
            after = 1
            path = "info"
            [[service.order]]
            action = "reply"
            signature = "as"
            value = ["a"]
            delay_ms = 50
        """
        script = 2 * self.call(self.INFO, f"{self.DBUS}.Properties", "GetAll", "s", "x")
        self.assertEqual(
            self.logged(board, script),
            [f'{self.INFO} {self.GET_ALL} interface="x" -> as',
             f'{self.INFO} {self.GET_ALL} interface="x" -> com.example.Broken'],
        )

    def test_has_the_calls_that_get_no_answer(self):
        board = """
            [[service.order]]
            path = "info"
            delay_ms = 600000
            [[service.order]]
            action = "leave"
        """
        slow = self.call(self.INFO, f"{self.DBUS}.Properties", "GetAll", "s", "x")
        leave = self.call("/a", f"{self.DBUS}.Properties", "GetAll", "s", "y")
        none = "-> no answer"
        # The second call waits until the service has got the first one.
        wait = self.call(self.INFO, f"{self.DBUS}.Peer", "Ping")
        first = slow.replace("--timeout=5", "--expect-reply=no")
        self.assertEqual(
            self.logged(board, first + wait + leave),
            [f"{self.INFO} {self.DBUS}.Peer.Ping -> empty",
             f'/a {self.GET_ALL} interface="y" {none}',
             f'{self.INFO} {self.GET_ALL} interface="x" {none}'],
        )
        self.assertEqual(
            self.logged(board, first + wait),
            [f"{self.INFO} {self.DBUS}.Peer.Ping -> empty",
             f'{self.INFO} {self.GET_ALL} interface="x" {none}'],
        )


class Loss(LogTest):
    def loss(self, path, reason):
        return f"zolt_sim: {path}: {reason}; this log has lost lines\n"

    def test_before_the_start_is_refused(self):
        path = str(self.scratch.path / "missing" / "log")
        for option in OPTIONS:
            done = self.sim(option, path, "echo", "started")
            self.assertEqual(
                (done.stdout, done.stderr, done.returncode),
                ("", f"zolt_sim: {path}: No such file or directory\n", 125),
            )

    def test_is_told_once_for_each_file(self):
        for option in OPTIONS:
            done = self.sim(option, "/dev/full", "sh", "-c", EVERY_LOG)
            self.assertEqual(
                (done.stderr, done.returncode),
                (self.loss("/dev/full", "No space left on device"), 125), option,
            )
        full = [self.scratch.path / str(number) for number in range(2)]
        for path in full:
            path.symlink_to("/dev/full")
        done = self.sim("--call-log", str(full[0]), "--debug-log", str(full[0]),
                        "--bus-log", str(full[1]), "sh", "-c", EVERY_LOG)
        self.assertEqual(
            done.stderr, "".join(self.loss(path, "No space left on device") for path in full)
        )

    def test_hides_no_failure_of_the_command(self):
        for status in (1, 7, 255):
            done = self.sim("--call-log", "/dev/full", "sh", "-c", f"{SLOT}; exit {status}")
            self.assertEqual(
                (done.stderr, done.returncode),
                (self.loss("/dev/full", "No space left on device"), status),
            )
        done = self.sim("--call-log", "/dev/full", "sh", "-c", f"{SLOT}; kill -TERM $$")
        self.assertEqual(done.returncode, 128 + 15)

    def test_is_none_without_a_line(self):
        done = self.sim("--bus-log", "/dev/full", "sh", "-c", SLOT)
        self.assertEqual((done.stderr, done.returncode), ("", 0))

    @counted_in_short_files
    @unittest.skipUnless(shutil.which("prlimit"), "there is no prlimit")
    def test_ends_no_process_when_a_file_gets_too_long(self):
        # The parent of the shell is zolt_sim.
        limits = "ulimit -f 0; prlimit --fsize=0 --pid=$PPID; "
        for option in OPTIONS:
            log = self.files[option]
            done = self.sim(option, str(log), "sh", "-c", limits + EVERY_LOG)
            self.assertEqual(
                (done.stderr, done.returncode), (self.loss(log, "File too large"), 125)
            )

    def test_ends_no_process_when_a_reader_goes(self):
        for option in OPTIONS:
            with self.subTest(option):
                log = self.files[option]
                os.mkfifo(log)
                reader = subprocess.Popen(["sh", "-c", f": < {log}"])
                self.addCleanup(reader.kill)
                done = self.sim(
                    option, str(log), "sh", "-c", f"sleep 0.3; {EVERY_LOG}",
                )
                reader.wait(TIMEOUT_SECONDS)
                self.assertEqual(
                    (done.stderr, done.returncode), (self.loss(log, "Broken pipe"), 125)
                )

    @unittest.skipUnless(shutil.which("unshare") and
                         run("unshare", "-rm", "true").returncode == 0, "no mounts here")
    def test_on_a_full_disk_keeps_the_lines_before_it(self):
        disk = self.scratch.path / "disk"
        disk.mkdir()
        # Four KiB are one block. The first lines fit, and all later ones are lost.
        fill = f"i=0; while [ $i -lt 100 ]; do {TOOL} -o 1 -p 1 >/dev/null; i=$((i+1)); done"
        script = (
            f"mount -t tmpfs -o size=4k none {disk} && "
            f"{SIM} --call-log {disk}/log -- sh -c '{fill}; exit 0'; echo $?; cat {disk}/log"
        )
        done = run("unshare", "-rm", "sh", "-c", script, env=self.scratch.environment)
        self.assertEqual(done.stderr, self.loss(f"{disk}/log", "No space left on device"))
        status, _, log = done.stdout.partition("\n")
        self.assertEqual(status, "125")
        self.assertEqual(len(log), 4096)
        lines = log.splitlines(keepends=True)
        first = "".join(lines[:16])
        self.assertEqual(lines[0], "ReadIO_Str PICPWR_1_DSTAT = 0\n")
        self.assertTrue((100 * first).startswith(log))


if __name__ == "__main__":
    tap.main()
