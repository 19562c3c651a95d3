#!/usr/bin/env python3
"""Tests zolt_sim as a process: exit statuses, signals, refusals, and that nothing stays behind."""

import os
import pathlib
import shutil
import signal
import subprocess
import sys
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
    counted_by_others,
    counted_in_short_files,
    next_line,
    not_emulated,
    other_programs_on_buses,
    other_user,
    run,
    serves_others,
    without_loader,
)


class SimTest(unittest.TestCase):
    def setUp(self):
        self.scratch = Scratch()
        self.addCleanup(self.scratch.close)

    def sim(self, *arguments, **options):
        return run(SIM, *arguments, env=self.scratch.environment, **options)

    def start(self, *command):
        """Starts a command that prints "ready" once it runs."""
        process = subprocess.Popen(
            [SIM, "--", *command],
            env=self.scratch.environment,
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            text=True,
            start_new_session=True,
        )
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.stdin.close)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        self.assertEqual(next_line(process.stdout), "ready\n")
        return process

    def assert_nothing_left(self, patience=5.0):
        end = time.monotonic() + patience
        while self.scratch.left_behind() and time.monotonic() < end:
            time.sleep(0.01)
        self.assertEqual(self.scratch.left_behind(), [])

    def assert_refused(self, done, status, message):
        self.assertEqual(done.stderr, message)
        self.assertEqual(done.stdout, "")
        self.assertEqual(done.returncode, status)
        self.assertEqual(self.scratch.left_behind(), [])


class Status(SimTest):
    def test_is_the_commands(self):
        for status in (0, 1, 42, 255):
            self.assertEqual(self.sim("sh", "-c", f"exit {status}").returncode, status)
        self.assertEqual(self.scratch.left_behind(), [])

    def test_is_128_plus_the_signal_that_ended_the_command(self):
        for name in (signal.SIGSEGV, signal.SIGKILL, signal.SIGTERM, signal.SIGABRT):
            done = self.sim("sh", "-c", f"ulimit -c 0; kill -{name.value} $$")
            self.assertEqual(done.returncode, 128 + name.value)
            self.assertEqual(self.scratch.left_behind(), [])

    def test_is_130_in_a_shell_when_an_interrupt_ended_the_command(self):
        # zolt_sim ends by the same signal, so that a shell knows of it.
        self.assertEqual(self.sim("sh", "-c", "kill -INT $$").returncode, -signal.SIGINT)
        self.assertEqual(self.scratch.left_behind(), [])
        done = run("sh", "-c", f"{SIM} -- sh -c 'kill -INT $$'; exit $?", env=self.scratch.environment)
        self.assertEqual(done.returncode, 130)

    @not_emulated("the emulator changes which signals it ignores")
    def test_is_the_commands_for_a_caller_that_ignores_the_end_of_children(self):
        ignore = (
            "import os, signal, sys; signal.signal(signal.SIGCHLD, signal.SIG_IGN);"
            "os.execv(sys.argv[1], sys.argv[1:])"
        )
        show = ("grep", "SigIgn", "/proc/self/status")
        ours = run(sys.executable, "-c", ignore, "/usr/bin/env", *show).stdout
        self.assertTrue(int(ours.split()[1], 16) & 1 << signal.SIGCHLD - 1)
        for command, status, shown in ((("sh", "-c", "exit 42"), 42, ""), (show, 0, ours)):
            done = run(
                sys.executable, "-c", ignore, SIM, "--", *command, env=self.scratch.environment
            )
            self.assertEqual((done.returncode, done.stdout, done.stderr), (status, shown, ""))
            self.assertEqual(self.scratch.left_behind(), [])

    def test_is_127_when_there_is_no_such_command(self):
        self.assert_refused(
            self.sim("no-such-command"),
            127,
            "zolt_sim: no-such-command: No such file or directory\n",
        )

    def test_is_126_when_the_command_cannot_be_started(self):
        path = self.scratch.file("script", "#!/bin/sh\n")
        self.assert_refused(self.sim(path), 126, f"zolt_sim: {path}: Permission denied\n")

    def test_is_125_when_there_is_no_place_for_a_directory(self):
        self.scratch.environment["TMPDIR"] = str(self.scratch.path / "missing")
        self.assert_refused(
            self.sim("true"),
            125,
            f"zolt_sim: cannot make the private directory '{self.scratch.path}/missing/"
            "zolt_sim.XXXXXX': No such file or directory\n",
        )

    def test_is_125_when_the_place_is_too_deep_for_a_socket(self):
        deep = str(self.scratch.path / ("d" * 100))
        os.mkdir(deep)
        self.scratch.environment["TMPDIR"] = deep
        self.assert_refused(
            self.sim("true"),
            125,
            f"zolt_sim: TMPDIR is too long: '{deep}/zolt_sim.XXXXXX' has {len(deep) + 16} bytes, "
            "and 95 leave room for the name of a socket\n",
        )

    @counted_in_short_files
    def test_is_125_when_its_files_get_too_long(self):
        done = run("bash", "-c", f"ulimit -f 10; {SIM} true", env=self.scratch.environment)
        self.assertRegex(
            done.stderr,
            rf"^zolt_sim: {self.scratch.path}/zolt_sim\.\w{{6}}/board: File too large\n$",
        )
        self.assertEqual((done.stdout, done.returncode), ("", 125))
        self.assertEqual(self.scratch.left_behind(), [])

    def test_is_125_when_the_disk_is_full(self):
        if shutil.which("unshare") is None or run("unshare", "-rm", "true").returncode != 0:
            self.skipTest("no mounts here")
        done = run(
            "unshare", "-rm", "sh", "-c",
            f"mount -t tmpfs -o size=64k none {self.scratch.path} && exec {SIM} true",
            env=self.scratch.environment,
        )
        self.assertRegex(
            done.stderr,
            rf"^zolt_sim: {self.scratch.path}/zolt_sim\.\w{{6}}/board: No space left on device\n$",
        )
        self.assertEqual((done.stdout, done.returncode), ("", 125))

    def test_is_the_commands_in_the_deepest_place_for_a_socket(self):
        # The longest path of the bus has 99 bytes, 20 of them in "/zolt_sim.XXXXXX/bus".
        place = str(self.scratch.path).ljust(79, "d")
        os.mkdir(place)
        self.addCleanup(shutil.rmtree, place)
        self.scratch.environment["TMPDIR"] = place
        self.assertEqual(self.sim("sh", "-c", "exit 7").returncode, 7)
        self.scratch.environment["TMPDIR"] += "d"
        self.assertEqual(self.sim("true").returncode, 125)


@other_programs_on_buses
class WithoutABus(SimTest):
    WAY_OUT = (
        "Registers and I2C work without a system bus: give zolt_sim the option "
        "--fault 'bus absent', or\nthe board description the line faults = [\"bus absent\"].\n"
    )
    # The command and the platform's answers, which need neither a daemon nor a name.
    ASK = ("/bin/sh", "-c", f"{TOOL} -o 1 -p 42; test -c /dev/i2c-0 && echo bus")
    ANSWER = "\nPICPWR 42 DSTAT              = 00b\nbus\n"

    def assert_tells_a_way_that_works(self, reason, *user):
        def sim(*arguments):
            return run(*user, SIM, *arguments, *self.ASK, env=self.scratch.environment)

        self.assert_refused(sim(), 125, f"zolt_sim: {reason}\n{self.WAY_OUT}")
        board = self.scratch.file("board.toml", 'faults = ["bus absent"]\n[[i2c.bus]]\nnumber = 0\n')
        for way in (("--fault", "bus absent"), ("--board", board)):
            done = sim(*way)
            self.assertEqual((done.stdout, done.stderr, done.returncode), (self.ANSWER, "", 0))
            self.assertEqual(self.scratch.left_behind(), [])

    def test_daemon(self):
        self.scratch.environment["PATH"] = str(self.scratch.path)
        self.assert_tells_a_way_that_works("dbus-daemon does not start: no directory of PATH has it")

    @counted_by_others
    @unittest.skipUnless(serves_others(), "no other user can run the programs here")
    def test_that_serves_a_user_without_a_name(self):
        self.scratch.path.chmod(0o777)
        self.assert_tells_a_way_that_works(
            "the bus daemon serves only users of the user database, and user 54321 is not in it",
            shutil.which("setpriv"), *other_user("54321")[1:],
        )


class Base(SimTest):
    """Boards on top of other boards."""

    def show(self, board, slot=5):
        done = self.sim("--board", board, "--", TOOL, "-o", "1", "-p", str(slot))
        self.assertEqual((done.stderr, done.returncode), ("", 0))
        return done.stdout

    def test_changes_what_the_tool_shows(self):
        board = self.scratch.file("board.toml", """base = "demo"
faults = ["named-read PICPWR_5_MOD_CLASS", "raw-read 0x1039 status 7"]
[[slot]]
id = 5
astat = false
[[slot.module.end_point]]
position = 2
hot_plug = false
""")
        self.assertEqual(self.show(board), """
PICPWR 05 DSTAT              = 11b
PICPWR 05 DBYP               = 0
PICPWR 05 DPEN               = 1
PICPWR 05 APEN               = 1
PICPWR 05 ASTAT              = 0
Unable to read PICPWR 5 Module Class using CPLD raw API, status 7
""")
        self.assertEqual(self.show(board, 6), self.show("demo", 6))

    def test_may_be_a_file_beside_the_board(self):
        self.scratch.file("demo.toml", "[[slot]]\nid = 42\ndstat = 2\n[[slot]]\nid = 43\n")
        board = self.scratch.file("board.toml", "base = 'demo.toml'\n[[slot]]\nid = 43\nremove = true\n")
        self.assertTrue(self.show(board, 42).startswith("\nPICPWR 42 DSTAT              = 10b\n"))
        self.assertEqual(self.sim("--check", board).returncode, 0)

    def test_that_is_wrong_is_refused(self):
        path = self.scratch.path
        self.scratch.file("base.toml", "[[slot]]\nid = 1\ndstat = 4\n")
        board = self.scratch.file("board.toml", "base = 'base.toml'\n[[slot]]\nid = 64\n")
        first = f"zolt_sim: {path}/base.toml:3: slot: 'dstat' must be a whole number from 0 to 3\n"
        second = f"zolt_sim: {board}:3: slot: 'id' must be a whole number from 1 to 63\n"
        self.assert_refused(self.sim("--board", board, "--", "true"), 2, first)
        self.assert_refused(self.sim("--check", board), 2, first + second)
        circle = self.scratch.file("circle.toml", "base = './circle.toml'\n")
        refusal = (
            f"zolt_sim: {circle}:1: board: the base './circle.toml' leads back to '{circle}'\n"
        )
        self.assert_refused(self.sim("--board", circle, "--", "true"), 2, refusal)
        self.assert_refused(self.sim("--check", circle), 2, refusal)
        missing = self.scratch.file("missing.toml", "base = 'demmo.toml'\n")
        self.assert_refused(
            self.sim("--board", missing, "--", "true"),
            2,
            f"zolt_sim: {missing}:1: board: the base 'demmo.toml' cannot be read: "
            f"{path}/demmo.toml: No such file or directory\n",
        )


class Command(SimTest):
    def test_keeps_its_arguments_as_they_are(self):
        done = self.sim("--", "printf", "%s|", "--board", "a b", "", "--", "-x")
        self.assertEqual(done.stdout, "--board|a b||--|-x|")

    def test_reads_the_callers_standard_input(self):
        self.assertEqual(self.sim("cat", input="typed\n").stdout, "typed\n")

    def test_runs_with_the_callers_signal_mask(self):
        def mask(status):
            lines = status.splitlines()
            return [line for line in lines if line.startswith(("SigBlk", "SigIgn", "SigCgt"))]

        ours = run("cat", "/proc/self/status").stdout
        theirs = self.sim("cat", "/proc/self/status").stdout
        self.assertEqual(mask(theirs), mask(ours))

    def test_finds_a_private_directory_that_is_gone_afterwards(self):
        done = self.sim("sh", "-c", 'echo "$ZOLT_SIM_DIR"; stat -c %a "$ZOLT_SIM_DIR"')
        path, mode = done.stdout.split()
        self.assertEqual(mode, "700")
        self.assertEqual(os.path.dirname(path), str(self.scratch.path))
        self.assertFalse(os.path.exists(path))

    def test_finds_its_directory_below_a_relative_tmpdir_from_anywhere(self):
        self.scratch.environment["TMPDIR"] = "."
        done = run(
            SIM, "--", "sh", "-c", f"cd /; {TOOL} -o 1 -p 42",
            env=self.scratch.environment, cwd=self.scratch.path,
        )
        self.assertEqual(done.stdout, "\nPICPWR 42 DSTAT              = 00b\n")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertEqual(self.scratch.left_behind(), [])

    def test_runs_with_the_callers_umask_however_strict(self):
        for umask in ("0022", "0077", "0777"):
            done = run(
                "sh", "-c", f'umask {umask}; exec "$@"', "sh", SIM, "--",
                "sh", "-c", f"umask; {TOOL} -o 1 -p 42", env=self.scratch.environment,
            )
            self.assertEqual(
                done.stdout, f"{umask}\n\nPICPWR 42 DSTAT              = 00b\n"
            )
            self.assertEqual(done.stderr, "")
            self.assertEqual(self.scratch.left_behind(), [])

    def test_leaves_nothing_open_for_the_command(self):
        # 0, 1, 2, and the directory that ls lists.
        self.assertEqual(self.sim("ls", "/proc/self/fd").stdout.split(), ["0", "1", "2", "3"])

    def test_has_the_streams_closed_that_the_caller_closed(self):
        # Descriptor 4 leads to the test even if descriptor 1 is closed.
        script = f"{TOOL} -o 1 -p 42; for n in 0 1 2 3; do test -e /proc/$$/fd/$n || echo $n >&4; done"
        slot = "\nPICPWR 42 DSTAT              = 00b\n"
        for closed, shown in (
            ("", slot + "3\n"),
            ("0>&-", slot + "0\n3\n"),
            ("1>&-", "1\n3\n"),
            ("2>&-", slot + "2\n3\n"),
            ("0>&- 1>&- 2>&-", "0\n1\n2\n3\n"),
        ):
            with self.subTest(closed):
                done = run(
                    "sh", "-c", f'exec "$@" 4>&1 {closed}', "sh", SIM, "--", "sh", "-c", script,
                    env=self.scratch.environment,
                )
                self.assertEqual((done.returncode, done.stdout, done.stderr), (0, shown, ""))
                self.assertEqual(self.scratch.left_behind(), [])

    def test_keeps_the_callers_library_path_behind_the_stand_ins(self):
        self.scratch.environment["LD_LIBRARY_PATH"] = "/callers"
        path = self.sim("sh", "-c", 'echo "$LD_LIBRARY_PATH"').stdout.strip().split(":")
        self.assertEqual(path[1:], ["/callers"])
        self.assertTrue(os.path.exists(path[0] + "/libhal.so.1"))

    def test_shares_a_fault_that_happens_once_among_its_tools(self):
        # Only the first of three runs meets the fault.
        done = self.sim(
            "--fault", "named-read PICPWR_42_DSTAT once", "--fault", "raw-read 0x123E status 3",
            "sh", "-c", f"for i in 1 2 3; do {TOOL} -o 1 -p 42; done",
        )
        self.assertEqual(
            done.stdout,
            "Unable to read PICPWR 42 DSTAT using CPLD raw API, status 3\n"
            + 2 * "\nPICPWR 42 DSTAT              = 00b\n",
        )


class Signals(SimTest):
    def test_reach_the_command(self):
        for name in ("HUP", "INT", "QUIT", "TERM", "USR1", "USR2"):
            with self.subTest(name):
                process = self.start(
                    "sh", "-c", f"trap 'echo got {name}; exit 7' {name}; echo ready; "
                    "while :; do sleep 0.02; done",
                )
                process.send_signal(getattr(signal, "SIG" + name))
                output, _ = process.communicate(timeout=TIMEOUT_SECONDS)
                self.assertEqual(
                    (without_loader(output), process.returncode), (f"got {name}\n", 7)
                )
                self.assertEqual(self.scratch.left_behind(), [])

    def test_end_the_command_that_does_not_catch_them(self):
        process = self.start("sh", "-c", "echo ready; exec sleep 60")
        process.terminate()
        self.assertEqual(process.wait(TIMEOUT_SECONDS), 128 + signal.SIGTERM)
        self.assertEqual(self.scratch.left_behind(), [])

    def test_end_zolt_sim_before_the_command_starts(self):
        started = self.scratch.path / "started"
        daemon = pathlib.Path(self.scratch.file("dbus-daemon"))
        daemon.write_text(f"#!/bin/sh\n: > {started}\nexec sleep 60\n")
        daemon.chmod(0o755)
        self.scratch.environment["PATH"] = f"{self.scratch.path}:{os.defpath}"
        for name in ("HUP", "INT", "QUIT", "TERM", "USR1", "USR2"):
            with self.subTest(name):
                process = subprocess.Popen(
                    ["sh", "-c", 'ulimit -c 0; exec "$@"', "sh", SIM, "--", "echo", "begun"],
                    env=self.scratch.environment,
                    preexec_fn=lambda: [
                        signal.signal(number, signal.SIG_DFL)
                        for number in (signal.SIGHUP, signal.SIGINT, signal.SIGQUIT)
                    ],
                )
                self.addCleanup(process.wait)
                self.addCleanup(process.kill)
                while not started.exists():
                    time.sleep(0.01)
                process.send_signal(getattr(signal, "SIG" + name))
                self.assertEqual(
                    process.wait(TIMEOUT_SECONDS / 4), -getattr(signal, "SIG" + name)
                )
                started.unlink()
                self.assert_nothing_left()

    def test_of_the_terminal_reach_the_command_once(self):
        # The test types ^C on a terminal of its own.
        master, slave = os.openpty()
        script = "trap 'echo caught' INT; echo ready; sleep 1; echo over"
        process = subprocess.Popen(
            ["setsid", "--ctty", "--wait", SIM, "--", "bash", "-c", script],
            env=self.scratch.environment, stdin=slave, stdout=slave, stderr=slave,
        )
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        os.close(slave)
        output = b""
        typed = False
        try:
            while chunk := os.read(master, 1024):
                output += chunk
                if b"ready" in output and not typed:
                    os.write(master, b"\x03")
                    typed = True
        except OSError:  # the terminal closes with its last process
            pass
        os.close(master)
        self.assertEqual(output.count(b"caught"), 1)
        self.assertEqual(process.wait(TIMEOUT_SECONDS), 0)
        self.assertEqual(self.scratch.left_behind(), [])

    def test_that_kill_zolt_sim_end_the_command_and_remove_the_directory(self):
        process = self.start("sh", "-c", "echo ready; exec sleep 60")
        process.kill()
        self.assertEqual(without_loader(process.stdout.read()), "")  # the command has ended, too
        self.assert_nothing_left()

    def test_that_kill_the_keeper_of_the_directory_leave_the_directory_to_zolt_sim(self):
        process = self.start("sh", "-c", "echo ready; read end; exit 7")
        keeper = self.keeper_of(process.pid)
        os.kill(keeper, signal.SIGKILL)
        self.assertEqual(len(self.scratch.left_behind()), 1)
        process.stdin.write("\n")
        process.stdin.flush()
        self.assertEqual(process.wait(TIMEOUT_SECONDS), 7)
        self.assertEqual(self.scratch.left_behind(), [])

    def keeper_of(self, sim):
        """Returns the process of zolt_sim that leads a session of its own."""
        found = []
        for stat_file in pathlib.Path("/proc").glob("[0-9]*/stat"):
            try:
                pid, _, fields = stat_file.read_text().partition(" (")
            except OSError:  # the process has ended
                continue
            _, parent, _, session = fields.rpartition(") ")[2].split()[:4]
            if int(parent) == sim and session == pid:
                found.append(int(pid))
        self.assertEqual(len(found), 1)
        return found[0]


class Refuses(SimTest):
    ADVICE = "'zolt_sim --help' tells more.\n"

    def test_wrong_command_lines(self):
        kinds = "a fault begins with one of: named-read, raw-read, hal-object, hal-read, bus, service, object, i2c-open, i2c-ioctl, sysinfo"
        for arguments, reason in (
            ([], "there is no command to run"),
            (["--"], "there is no command to run"),
            (["--bored", "x", "true"], "--bored is not an option"),
            (["-z", "true"], "-z is not an option"),
            (["--board"], "--board needs a value"),
            (["--fault", "", "true"], f"--fault '': {kinds}"),
            (["--fault", "cosmic-ray", "true"], f"--fault 'cosmic-ray': {kinds}"),
            (
                ["--fault", "raw-read 5 once more", "true"],
                "--fault 'raw-read 5 once more': 'more' is not understood here",
            ),
            (
                ["--fault", "bus \x1b[31m", "true"],
                "--fault 'bus \\x1B[31m': '\\x1B[31m' is not understood here, only 'absent' is",
            ),
            (
                ["--fault", "hal-object NOPE", "true"],
                "--fault 'hal-object NOPE': the HAL has no object 'NOPE'",
            ),
            (
                ["--fault", "named-read PICPWR_X_DSTAT", "true"],
                "--fault 'named-read PICPWR_X_DSTAT': "
                "no register has a name like 'PICPWR_X_DSTAT'; did you mean 'PICPWR_1_DSTAT' or "
                "'PICPWR_2_DSTAT' or 'PICPWR_3_DSTAT'?",
            ),
        ):
            with self.subTest(arguments):
                self.assert_refused(
                    self.sim(*arguments), 2, f"zolt_sim: {reason}\n{self.ADVICE}"
                )

    def test_a_board_that_is_not_there(self):
        path = str(self.scratch.path / "none.toml")
        self.assert_refused(
            self.sim("--board", path, "true"), 2, f"zolt_sim: {path}: No such file or directory\n"
        )

    def test_a_board_that_is_a_directory(self):
        path = str(self.scratch.path) + "/"
        self.assert_refused(
            self.sim("--board", path, "true"), 2, f"zolt_sim: {path}: Is a directory\n"
        )

    def test_a_board_that_is_no_regular_file(self):
        fifo = str(self.scratch.path / "fifo")
        os.mkfifo(fifo)
        for path in ("/dev/zero", fifo):
            self.assert_refused(
                self.sim("--board", path, "true"),
                2,
                f"zolt_sim: {path}: is not a regular file\n",
            )

    def test_a_board_that_is_nested_too_deeply(self):
        path = self.scratch.file("deep.toml", "a." * 40000 + "a = 1\n")
        self.assert_refused(
            self.sim("--board", path, "true"),
            2,
            f"zolt_sim: {path}:1: a key has more than 16 parts\n",
        )

    def test_all_errors_of_the_boards_to_check(self):
        one = self.scratch.file("one.toml", "[[slot]]\nid = 64\n[[slot]]\nid = 1\ndstat = 4\n")
        none = str(self.scratch.path / "none.toml")
        two = self.scratch.file("two.toml", "name = 7\n")
        self.assert_refused(
            self.sim("--check", one, "demo", none, two),
            2,
            f"zolt_sim: {one}:2: slot: 'id' must be a whole number from 1 to 63\n"
            f"zolt_sim: {one}:5: slot: 'dstat' must be a whole number from 0 to 3\n"
            f"zolt_sim: {none}: No such file or directory\n"
            f"zolt_sim: {two}:1: board: 'name' must be a text\n",
        )
        self.assert_refused(self.sim("--check", "demo", "hostile", "raw_only"), 0, "")

    def test_a_board_with_too_many_buses(self):
        buses = "".join(f"[[i2c.bus]]\nnumber = {number}\n" for number in range(257))
        path = self.scratch.file("buses.toml", buses)
        self.assert_refused(
            self.sim("--board", path, "sh", "-c", "echo started"),
            2,
            f"zolt_sim: {path}:514: i2c: the bus driver has room for 256 buses\n",
        )

    def test_a_wrong_board_before_the_command_starts(self):
        path = self.scratch.file("wrong.toml", "# two slots\n[[slot]]\nid = 1\ndstat = 4\n")
        self.assert_refused(
            self.sim("--board", path, "sh", "-c", "echo started"),
            2,
            f"zolt_sim: {path}:4: slot: 'dstat' must be a whole number from 0 to 3\n",
        )


class Tells(SimTest):
    def test_its_options(self):
        done = self.sim("--help")
        self.assertEqual(done.returncode, 0)
        self.assertEqual(done.stderr, "")
        for option in ("--board", "--fault", "--debug-log", "--call-log", "--i2c-log", "--bus-log",
                       "--log-times", "--check", "--version"):
            self.assertIn(option, done.stdout)

    def test_its_version(self):
        self.assertRegex(self.sim("--version").stdout, r"^zolt_sim \d+\.\d+\.\d+\n$")

    def test_in_its_manual_page_every_variable_that_it_sets(self):
        options = ("--debug-log", "--call-log", "--i2c-log", "--bus-log")
        logs = sum(((option, str(self.scratch.path / option)) for option in options), ())
        shown = self.sim(*logs, "--log-times", "env", "-0").stdout.split("\0")
        theirs = dict(line.split("=", 1) for line in shown if line)
        changed = {
            name for name, value in theirs.items() if self.scratch.environment.get(name) != value
        }
        page = pathlib.Path(__file__).parents[2] / "docs" / "zolt_sim.1"
        told = {
            name
            for line in page.read_text().splitlines() if line.startswith(".It Ev ")
            for name in line.removeprefix(".It Ev ").replace(",", " ").split()
        }
        self.assertEqual(changed - told, set())
        self.assertEqual(told - changed, {"PATH", "TMPDIR"})


if __name__ == "__main__":
    tap.main()
