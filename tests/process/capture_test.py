#!/usr/bin/env python3
"""Tests zolt_capture as a process: the calls that it makes, and how it writes its file."""

import os
import pathlib
import pty
import re
import signal
import subprocess
import sys
import threading
import time
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))
sys.path.insert(0, str(pathlib.Path(__file__).parent))

import tap  # noqa: E402
from programs import (  # noqa: E402
    CAPTURE,
    COUNTED,
    EMULATED,
    OTHER_PLATFORM,
    SANITIZED,
    SIM,
    TIMEOUT_SECONDS,
    TOOL,
    Scratch,
    counted_by_others,
    counted_in_short_files,
    not_emulated,
    other_user,
    run,
    serves_others,
)

STOPPING_CALLS = os.environ["STOPPING_CALLS"]
# Puts the library in front of the preload library that zolt_sim sets.
STOPPING = ("sh", "-c", 'LD_PRELOAD="$0:$LD_PRELOAD" exec "$@"', STOPPING_CALLS)

BOARDS = ("demo", "raw_only", "hostile")
DATE = "2026-11-21 14:03 UTC"
EPOCH = "1795269780"

# All reports that read the platform's libraries: options 1 to 7 with every argument.
ALL_REPORTS = """
echo 0 | "$0" -o 1
for slot in $(seq 63); do
    "$0" -o 2 -p "$slot" -f 3
    "$0" -o 3 -p "$slot" -f 3
done
"$0" -o 4 -f 3
"$0" -o 5 -m 15
echo 0 | "$0" -o 6
"$0" -o 7 -d 165
"""

# Lets every named read fail, and every read through the HAL's object. In the second row, DSTAT alone
# can be read by name: it decides whether a report goes on.
ALL_RAW = (
    ("--fault", "named-read *", "--fault", "hal-object PICPWR_PAYLOADS"),
    ("--fault", "named-read PICPWR_*_[!D]*", "--fault", "named-read PICPWR_*_D[BP]*"),
)


def calls_in(log):
    """The calls of a log, without their results."""
    return [re.sub(" = .*", "", line) for line in log.read_text().splitlines()]


class CaptureCase(unittest.TestCase):
    def setUp(self):
        self.scratch = Scratch()
        self.addCleanup(self.scratch.close)
        self.directory = self.scratch.path / "out"
        self.directory.mkdir()
        self.file = self.directory / "board.toml"
        self.log = self.scratch.path / "log"

    def names(self):
        return sorted(path.name for path in self.directory.iterdir())

    def capture(self, *arguments, board="demo", options=(), **more):
        more.setdefault("env", dict(os.environ, SOURCE_DATE_EPOCH=EPOCH))
        return run(SIM, "--board", board, *options, "--", CAPTURE, *arguments, **more)


class Calls(CaptureCase):
    def logged(self, *command, board, options=()):
        self.log.write_text("")
        done = run(SIM, "--board", board, "--call-log", str(self.log), *options, "--", *command)
        self.assertNotIn("zolt_sim:", done.stderr)
        return calls_in(self.log)

    def test_only_what_the_reports_read_is_read(self):
        # An emulator takes a minute for all, a sanitizer half a minute.
        for board in BOARDS[:1] if EMULATED or SANITIZED else BOARDS:
            with self.subTest(board):
                reports = ("sh", "-c", ALL_REPORTS, TOOL)
                by_name = self.logged(*reports, board=board)
                raw = [
                    call for options in ALL_RAW
                    for call in self.logged(*reports, board=board, options=options)
                ]
                captured = self.logged(CAPTURE, board=board)
                self.assertGreater(len(captured), 500)
                self.assertEqual(set(captured) - set(by_name) - set(raw), set())
                # All that a report reads is read. The longer read of a payload has the shorter one.
                left = set(by_name) - set(captured)
                self.assertEqual(
                    {call for call in left if not re.search(r"(PAYLOADS|block_device \S+) 247 ", call)}, set()
                )

    def test_nothing_is_read_twice(self):
        for board in BOARDS:
            with self.subTest(board):
                captured = self.logged(CAPTURE, board=board)
                twice = {call for call in captured if captured.count(call) > 1}
                # The raw_only board has no object, which is asked for twice.
                self.assertLessEqual(
                    twice,
                    {"free_sysinfo none", "free_sysinfo tree", "ReadHALConfig PICPWR_PAYLOADS"},
                )

    def test_the_reports_make_more_calls(self):
        reports = self.logged("sh", "-c", ALL_REPORTS, TOOL, board="demo")
        captured = self.logged(CAPTURE, board="demo")
        self.assertLessEqual(len(captured), len(reports))

    def test_nothing_is_sent_to_an_i2c_bus_without_being_asked(self):
        self.log.write_text("")
        done = self.capture(options=("--i2c-log", str(self.log)))
        self.assertEqual((done.stderr, self.log.read_text()), ("", ""))

    def test_a_property_is_asked_for_once(self):
        self.log.write_text("")
        done = self.capture(
            "--property", "5:0:8", "--property", "0x5:0x51:0x1",
            options=("--i2c-log", str(self.log)),
        )
        self.assertNotIn(" is not ", done.stderr)
        lines = self.log.read_text().splitlines()
        self.assertEqual(
            [line.split(" -> ")[0] for line in lines],
            ["/dev/i2c-5 get-property target=0x00 property=8",
             "/dev/i2c-5 get-property target=0x51 property=1"],
        )

    def test_no_debug_log_is_written(self):
        self.log.write_text("")
        self.capture(options=("--debug-log", str(self.log)))
        self.assertEqual(self.log.read_text(), "")


@unittest.skipIf(SANITIZED, "a sanitizer needs memory of its own")
@unittest.skipIf(COUNTED, "coverage: the counters need memory of their own")
@not_emulated("the emulator needs memory of its own")
class Memory(CaptureCase):
    MOST = 8000  # KiB

    def test_peak_memory(self):
        """The program waits in its last step, until the reader of its output empties a small pipe."""
        process = subprocess.Popen(
            [SIM, "--", "sh", "-c", 'echo $$ >&2; exec "$0"', CAPTURE],
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, pipesize=4096,
        )
        with process:
            pid = int(process.stderr.readline())
            start = process.stdout.read(1)
            status = pathlib.Path(f"/proc/{pid}/status").read_text()
            description = start + process.stdout.read()
        self.assertEqual((process.returncode, pathlib.Path(CAPTURE).name[:15]), (0, status.split()[1]))
        self.assertGreater(len(description), 4 * 4096)
        self.assertLess(int(re.search(r"^VmHWM:\s+(\d+) kB$", status, re.M)[1]), self.MOST)


class ExitStatus(CaptureCase):
    def test_everything_was_read(self):
        done = self.capture()
        self.assertEqual((done.stderr, done.returncode), ("", 0))
        self.assertIn(DATE, done.stdout)

    def test_something_was_refused(self):
        done = self.capture(options=("--fault", "named-read PICPWR_7_DSTAT status 9"))
        self.assertEqual(done.returncode, 1)
        self.assertIn("PICPWR_7_DSTAT", done.stdout)
        self.assertTrue(done.stderr.startswith("zolt_capture: 1 read failed:\n"), done.stderr)
        self.assertIn("PICPWR_7_DSTAT", done.stderr)

    def test_many_failures_are_counted(self):
        faults = [
            word for slot in range(1, 26)
            for word in ("--fault", f"named-read PICPWR_{slot}_DSTAT status {slot}")
        ]
        done = self.capture(options=faults)
        self.assertEqual(done.returncode, 1)
        lines = done.stderr.splitlines()
        self.assertEqual(len(lines), 22, done.stderr)
        self.assertEqual(lines[0], "zolt_capture: 25 reads failed:")
        self.assertEqual(lines[-1], "  and 5 more")

    def test_a_wrong_option_reads_nothing(self):
        for arguments, reason in (
            (("--nonsense",), "--nonsense is not an option, or has a value it does not take"),
            (("-o",), "-o needs a value"),
            (("--property", "1:2"), "--property 1:2: is not BUS:TARGET:ID, three numbers"),
        ):
            self.log.write_text("")
            done = self.capture(*arguments, options=("--call-log", str(self.log)))
            self.assertEqual(
                (done.returncode, done.stdout, done.stderr, self.log.read_text()),
                (2, "", f"zolt_capture: {reason}\nTry 'zolt_capture --help'.\n", ""),
            )

    def test_a_wrong_date_reads_nothing(self):
        done = self.capture(env=dict(os.environ, SOURCE_DATE_EPOCH="today"))
        self.assertEqual((done.returncode, done.stdout), (2, ""))
        self.assertIn("SOURCE_DATE_EPOCH is not a number of seconds", done.stderr)

    def test_help_and_version_need_no_board(self):
        environment = dict(os.environ, LD_LIBRARY_PATH=OTHER_PLATFORM)
        self.assertRegex(
            run(CAPTURE, "--version", env=environment).stdout, r"^zolt_capture \d+\.\d+\.\d+\n$"
        )
        done = run(CAPTURE, "--help", env=environment)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertTrue(done.stdout.startswith("usage: zolt_capture "))

    def test_closed_standard_output(self):
        done = run(SIM, "--", "sh", "-c", 'exec "$0" >&-', CAPTURE)
        self.assertEqual(
            (done.returncode, done.stderr), (2, "zolt_capture: standard output is closed\n")
        )

    def test_full_standard_output(self):
        done = run(SIM, "--", "sh", "-c", 'exec "$0" > /dev/full', CAPTURE)
        self.assertEqual(
            (done.returncode, done.stderr),
            (2, "zolt_capture: standard output: No space left on device\n"),
        )

    def test_standard_output_without_a_reader(self):
        reader, writer = os.pipe()
        os.close(reader)
        done = subprocess.run(
            [SIM, "--", CAPTURE], stdout=writer, stderr=subprocess.PIPE, text=True, check=False,
            timeout=TIMEOUT_SECONDS,
        )
        os.close(writer)
        self.assertEqual(
            (done.returncode, done.stderr), (2, "zolt_capture: standard output: Broken pipe\n")
        )

    def test_an_exception_of_the_platform_writes_nothing(self):
        done = run(
            CAPTURE, "-o", str(self.file), env=dict(os.environ, LD_LIBRARY_PATH=OTHER_PLATFORM)
        )
        self.assertEqual(
            (done.returncode, done.stdout, done.stderr, self.names()),
            (2, "", "zolt_capture: a library of the platform threw an exception of an unknown type\n",
             []),
        )


class File(CaptureCase):
    def test_the_file_has_the_text_of_standard_output(self):
        done = self.capture("-o", str(self.file))
        self.assertEqual((done.stdout, done.stderr, done.returncode), ("", "", 0))
        self.assertEqual(self.file.read_text(), self.capture().stdout)
        self.assertEqual(self.names(), ["board.toml"])

    def test_an_existing_file_is_kept_and_nothing_is_read(self):
        self.file.write_text("old")
        self.log.write_text("")
        done = self.capture("-o", str(self.file), options=("--call-log", str(self.log)))
        self.assertEqual(
            (done.returncode, done.stderr),
            (2, f"zolt_capture: {self.file}: exists already (--force overwrites it)\n"),
        )
        self.assertEqual((self.file.read_text(), self.log.read_text()), ("old", ""))

    def test_force_overwrites_an_existing_file(self):
        self.file.write_text("old")
        done = self.capture("-o", str(self.file), "--force")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertIn(DATE, self.file.read_text())
        self.assertEqual(self.names(), ["board.toml"])

    def test_a_file_that_is_refused_costs_no_reading(self):
        self.log.write_text("")
        done = self.capture(
            "-o", str(self.directory / "missing" / "board.toml"),
            options=("--call-log", str(self.log)),
        )
        self.assertEqual((done.returncode, self.log.read_text()), (2, ""))
        self.assertIn("No such file or directory", done.stderr)

    @counted_by_others
    def test_a_directory_that_cannot_be_written(self):
        if not serves_others():
            self.skipTest("needs root, to become another user")
        self.directory.chmod(0o755)
        self.scratch.path.chmod(0o755)
        done = run(
            *other_user("daemon"), CAPTURE, "-o", str(self.file),
            env=dict(os.environ, LD_LIBRARY_PATH=OTHER_PLATFORM),
        )
        self.assertEqual(
            (done.returncode, done.stderr),
            (2, f"zolt_capture: {self.file}: Permission denied\n"),
        )

    @counted_in_short_files
    def test_a_full_disk_leaves_nothing(self):
        for force in ((), ("--force",)):
            if force:
                self.file.write_text("old")
            # The limit stands for a disk with room for one block.
            done = run(
                SIM, "--", "sh", "-c", 'ulimit -f 1; exec "$0" "$@"', CAPTURE, "-o",
                str(self.file), *force,
            )
            self.assertEqual(
                (done.returncode, done.stderr),
                (2, f"zolt_capture: {self.file}: File too large\n"),
            )
            self.assertEqual(self.names(), ["board.toml"] if force else [])
        self.assertEqual(self.file.read_text(), "old")

    def stop_and_signal(self, number, *force):
        """Stops the program in a call of the platform, and sends a signal."""
        stopped = self.scratch.path / f"stopped_{number}"
        environment = dict(os.environ, STOP_AT="300", STOP_HOW="hang", STOPPED=str(stopped))
        process = subprocess.Popen(
            [SIM, "--", *STOPPING, "sh", "-c", 'echo $$; exec "$0" "$@"', CAPTURE, "-o",
             str(self.file), *force],
            env=environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
        )
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.stderr.close)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        pid = int(process.stdout.readline())
        end = time.monotonic() + TIMEOUT_SECONDS
        while not stopped.exists():
            self.assertLess(time.monotonic(), end, "no call has stopped the program")
            time.sleep(0.01)
        # The text is in a file beside the other one.
        self.assertEqual(len([name for name in self.names() if name != "board.toml"]), 1)
        os.kill(pid, number)
        # zolt_sim ends as its command does, and by SIGINT itself.
        self.assertIn(process.wait(TIMEOUT_SECONDS), (128 + number, -number))

    def test_a_signal_leaves_nothing(self):
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGQUIT):
            with self.subTest(number):
                self.stop_and_signal(number)
                self.assertEqual(self.names(), [])

    def test_a_signal_leaves_an_old_file_as_it_is(self):
        self.file.write_text("old")
        self.stop_and_signal(signal.SIGTERM, "--force")
        self.assertEqual(self.names(), ["board.toml"])
        self.assertEqual(self.file.read_text(), "old")

    def test_a_library_that_aborts_leaves_nothing(self):
        done = run(
            SIM, "--", *STOPPING, CAPTURE, "-o", str(self.file),
            env=dict(os.environ, STOP_AT="300", STOP_HOW="abort"),
        )
        self.assertEqual((done.returncode, self.names()), (128 + signal.SIGABRT, []))


class Terminal(CaptureCase):
    def shown(self, *arguments, options=()):
        """What a terminal as standard error receives."""
        master, slave = pty.openpty()
        received = []

        def receive():
            try:
                while more := os.read(master, 4096):
                    received.append(more)
            except OSError:
                pass  # the other end is closed

        reader = threading.Thread(target=receive)
        reader.start()
        try:
            self.returncode = subprocess.run(
                [SIM, *options, "--", CAPTURE, *arguments], stdin=subprocess.DEVNULL,
                stdout=subprocess.DEVNULL, stderr=slave, check=False, timeout=TIMEOUT_SECONDS,
            ).returncode
        finally:
            os.close(slave)
            reader.join()
            os.close(master)
        return b"".join(received).decode().replace("\r\n", "\n")

    def test_progress_shows_on_one_line_that_vanishes(self):
        shown = self.shown()
        steps = shown.split("\r\x1b[K")
        self.assertEqual(steps[0], "")
        self.assertEqual(steps[-1], "")
        self.assertEqual(steps[1], "reading slots: 0 of 63")
        parts = []
        for step in steps[1:-1]:
            part = re.fullmatch(r"reading ([a-zA-Z0-9 ]+): \d+ of \d+", step)[1]
            if part not in parts:
                parts.append(part)
        self.assertEqual(parts, [
            "slots", "payloads", "control registers", "riser slot mapping", "I2C topology",
            "service",
        ])

    def test_failures_follow_the_progress(self):
        shown = self.shown(options=("--fault", "raw-read 0x1000 status 3"))
        self.assertEqual(self.returncode, 1)
        self.assertRegex(shown, r"\r\x1b\[Kzolt_capture: 1 read failed:\n  [^\n]*0x1000[^\n]*\n$")


if __name__ == "__main__":
    tap.main()
