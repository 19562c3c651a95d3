#!/usr/bin/env python3
"""Tests zolt_test as a process: pipes, closed streams, end of input, other platform libraries."""

import array
import fcntl
import os
import pathlib
import signal
import socket
import subprocess
import sys
import termios
import time
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))
sys.path.insert(0, str(pathlib.Path(__file__).parent))

import tap  # noqa: E402
from programs import (  # noqa: E402
    ASK_ALL,
    MAIN_MENU,
    MODULE_TYPES,
    OTHER_PLATFORM,
    SANITIZED,
    SIM,
    SLOT_42,
    Scratch,
    Session,
    TIMEOUT_SECONDS,
    TOOL,
    not_emulated,
    run,
)

NO_BUS = "unix:path=/nonexistent/bus"
UNTOUCHABLE_LIBSYSTEMD = os.environ["UNTOUCHABLE_LIBSYSTEMD"]


class Dialogue(unittest.TestCase):
    def test_prompts_come_before_the_tool_waits(self):
        session = Session(self, SIM, "--", TOOL)
        session.expect(MAIN_MENU)
        session.type("1\n")
        session.expect(ASK_ALL)
        session.type("42\n")
        session.expect(SLOT_42 + MAIN_MENU)
        session.type("100\n")
        session.ends_with("")

    def test_prompts_for_decimal_and_hexadecimal_numbers_come_before_the_tool_waits(self):
        session = Session(self, SIM, "--", TOOL, "-o", "10")
        session.expect("Enter Parent Node Num:")
        session.type("5\n")
        session.expect("Enter Target Address:")
        session.type("x\n")
        session.ends_with(
            "\nInvalid Target Address\nUnable to perform the desired operation\n"
        )

    def test_the_end_of_input_repeats_the_last_option_until_nobody_reads(self):
        self.repeats_the_menu(b"16\n")

    def test_input_that_ends_at_once_runs_no_option(self):
        self.repeats_the_menu(b"")

    def repeats_the_menu(self, typed):
        process = subprocess.Popen(
            [TOOL], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
            env=dict(os.environ, LD_LIBRARY_PATH=OTHER_PLATFORM),
        )
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        process.stdin.write(typed)
        process.stdin.close()
        expected = (MAIN_MENU * 100).encode()
        self.assertEqual(process.stdout.read(len(expected)), expected)
        process.stdout.close()
        self.assertEqual(process.wait(TIMEOUT_SECONDS), -signal.SIGPIPE)

    def test_the_answer_to_a_prompt_is_0_at_the_end_of_input(self):
        done = run(SIM, "--", TOOL, "-o", "6")
        self.assertTrue(done.stdout.startswith(ASK_ALL))
        self.assertEqual(done.returncode, 0)


class Streams(unittest.TestCase):
    def tool(self, redirection, *arguments):
        """Runs the tool in a shell that redirects its streams."""
        command = f'exec "$@" {redirection}'
        return run(SIM, "--", "sh", "-c", command, "sh", TOOL, *arguments)

    def test_closed_standard_output_is_no_failure(self):
        done = self.tool(">&-", "-o", "1", "-p", "42")
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))

    def test_full_standard_output_is_no_failure(self):
        done = self.tool(">/dev/full", "-o", "1", "-p", "1")
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))

    def test_closed_standard_input_counts_as_ended(self):
        done = self.tool("<&- | head -c 46", "-o", "1")
        self.assertEqual(done.stdout, ASK_ALL)

    def test_all_streams_closed(self):
        self.assertEqual(self.tool("<&- >&- 2>&-", "-o", "1").returncode, 0)

    def test_nothing_takes_the_place_of_a_closed_stream(self):
        # A library, or a bus device, that the tool opens would get the number of the closed stream.
        for closed in ((0,), (1,), (2,), (1, 2)):
            with self.subTest(closed=closed):
                tool = subprocess.Popen(
                    [TOOL], stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                    preexec_fn=lambda: [os.close(stream) for stream in closed],
                    env=dict(os.environ, LD_LIBRARY_PATH=OTHER_PLATFORM),
                )
                self.addCleanup(tool.communicate)
                self.addCleanup(tool.kill)
                if 1 in closed:
                    tool.stdin.write(b"1\n")
                    tool.stdin.flush()
                    self.wait_until_read(tool.stdin)
                else:
                    menu = MAIN_MENU.encode()
                    self.assertEqual(tool.stdout.read(len(menu)), menu)
                held = {stream: f"/proc/{tool.pid}/fd/{stream}" for stream in closed}
                self.assertEqual({stream: os.path.lexists(link) and os.readlink(link)
                                  for stream, link in held.items()},
                                 dict.fromkeys(closed, "/dev/null"))

    def wait_until_read(self, pipe):
        """Waits until the reader of a pipe has taken all."""
        end = time.monotonic() + TIMEOUT_SECONDS
        unread = array.array("i", [1])
        while unread[0] != 0:
            self.assertLess(time.monotonic(), end, "nobody reads the input")
            fcntl.ioctl(pipe, termios.FIONREAD, unread)

    def writes(self, *arguments):
        """Returns the writes of the tool one by one: the socket keeps them apart."""
        reader, writer = socket.socketpair(socket.AF_UNIX, socket.SOCK_SEQPACKET)
        self.addCleanup(reader.close)
        tool = subprocess.Popen([SIM, *arguments], stdin=subprocess.DEVNULL, stdout=writer)
        self.addCleanup(tool.wait)
        writer.close()
        return list(iter(lambda: reader.recv(1 << 20), b""))

    def test_the_listing_of_a_payload_is_one_write(self):
        # 31 end points, the most that a payload can have.
        arguments = ("--board", "hostile", "--", TOOL, "-o", "2", "-p", "5", "-f", "2")
        listing = run(SIM, *arguments).stdout.encode()
        self.assertEqual(listing.count(b"EP_TYPE"), 31)
        self.assertEqual(self.writes(*arguments), [listing])

    def test_the_report_of_a_module_and_its_empty_line_are_one_write(self):
        writes = self.writes("--", TOOL, "-o", "12", "-m", "1")
        self.assertEqual(writes[0], b"/com/tesk/bmc/zolt/bp/bp1\n")
        self.assertEqual([write.count(b"\n") for write in writes[:3]], [1, 29, 1])

    def test_a_broken_pipe_ends_the_program(self):
        reader, writer = os.pipe()
        os.close(reader)
        process = subprocess.Popen(
            [SIM, "--", TOOL, "-o", "1", "-p", "42"], stdin=subprocess.DEVNULL, stdout=writer
        )
        os.close(writer)
        self.assertEqual(process.wait(TIMEOUT_SECONDS), 128 + signal.SIGPIPE)

    def test_getopt_reports_on_standard_error(self):
        done = run(SIM, "--", TOOL, "-o", "1", "-z", "-p", "42", "-n")
        self.assertEqual(done.stdout, SLOT_42)
        self.assertEqual(
            done.stderr,
            f"{TOOL}: invalid option -- 'z'\n{TOOL}: option requires an argument -- 'n'\n",
        )
        self.assertEqual(done.returncode, 0)


class Platform(unittest.TestCase):
    def test_other_libraries_of_the_same_contract_need_no_linking(self):
        # In these libraries each DSTAT is 3, and a raw register holds the low byte of its address.
        done = run(
            TOOL, "-o", "1", "-p", "2", env=dict(os.environ, LD_LIBRARY_PATH=OTHER_PLATFORM)
        )
        self.assertEqual(
            done.stdout,
            """
PICPWR 02 DSTAT              = 11b
PICPWR 02 DBYP               = 0
PICPWR 02 DPEN               = 0
PICPWR 02 APEN               = 1
PICPWR 02 ASTAT              = 0
PICPWR 02 Module Class       = 0x0F
PICPWR 02 Module Class Index = 16
PICPWR 02 Payload Offset     = 4625
PICPWR 02 DSL1_ID            = 20
PICPWR 02 DSL2_ID            = 21
PICPWR 02 DSL3_ID            = 22
PICPWR 02 DSL4_ID            = 23
PICPWR 02 DSL5_ID            = 24
PICPWR 02 DSL6_ID            = 25
PICPWR 02 DSL7_ID            = 26
PICPWR 02 DSL8_ID            = 27
""",
        )

    def test_another_sysinfo_parser_is_found_too(self):
        done = run(
            TOOL, "-o", "6", "-p", "7", env=dict(os.environ, LD_LIBRARY_PATH=OTHER_PLATFORM)
        )
        self.assertEqual(
            done.stdout,
            """

Index Node Info
Index             = 7
Discoverable Node = 0
Node Name         = 
Physical Bus      = 0
Sub Node Count    = 0
PICPWR ID         = 0
is_sl_src         = 0
sl_src            = 0
HW_UID            = 0x00
Bay ID            = 0
""",
        )

    def test_an_exception_of_a_library_ends_the_option_only(self):
        done = run(
            TOOL,
            input="1\n63\n16\n100\n",
            env=dict(os.environ, LD_LIBRARY_PATH=OTHER_PLATFORM),
        )
        self.assertEqual(
            done.stdout,
            MAIN_MENU + ASK_ALL + "Exception : std::bad_alloc\n" + MAIN_MENU + MAIN_MENU,
        )

    def test_an_exception_in_one_shot_mode_is_printed_too(self):
        done = run(
            TOOL, "-o", "1", "-p", "63", env=dict(os.environ, LD_LIBRARY_PATH=OTHER_PLATFORM)
        )
        self.assertEqual((done.stdout, done.returncode), ("Exception : std::bad_alloc\n", 0))

    def test_an_exception_of_another_kind_ends_the_program(self):
        for arguments in (["-o", "1", "-p", "62"], []):
            done = run(
                "sh", "-c", 'ulimit -c 0; exec "$@"', "sh", TOOL, *arguments,
                input="1\n62\n100\n",
                env=dict(os.environ, LD_LIBRARY_PATH=OTHER_PLATFORM),
            )
            # Unflushed text is lost with the program. The menu and the prompt have been flushed.
            self.assertEqual(done.stdout, "" if arguments else MAIN_MENU + ASK_ALL)
            self.assertEqual(done.returncode, -signal.SIGABRT)

    def test_without_a_board_every_read_fails(self):
        done = run(SIM, "env", "-u", "ZOLT_SIM_DIR", TOOL, "-o", "1", "-p", "1")
        self.assertEqual(
            done.stdout, "Unable to read PICPWR 1 DSTAT using CPLD raw API, status -19\n"
        )

    def test_registers_need_no_bus(self):
        environment = dict(os.environ, DBUS_SYSTEM_BUS_ADDRESS=NO_BUS)
        with_bus = run(SIM, "--", TOOL, "-o", "1", input="0\n")
        without = run(
            SIM, "--", "env", f"DBUS_SYSTEM_BUS_ADDRESS={NO_BUS}", TOOL, "-o", "1", input="0\n",
            env=environment,
        )
        self.assertEqual(without.stdout, with_bus.stdout)
        self.assertIn("PICPWR 01 DSTAT              = 11b", without.stdout)

    def test_registers_call_nothing_of_libsystemd(self):
        # A library whose every function aborts takes libsystemd's place. The loader binds all
        # functions at the start, and so finds each one that the tool knows.
        instead = ("sh", "-c", 'LD_LIBRARY_PATH="$0:$LD_LIBRARY_PATH" exec "$@"',
                   UNTOUCHABLE_LIBSYSTEMD)

        def told(*arguments, **options):
            done = run(
                SIM, "--", *instead, "env", "LD_BIND_NOW=1", TOOL, *arguments, **options,
            )
            return done.stdout, done.returncode

        self.assertEqual(told("-o", "1", "-p", "42"), (SLOT_42, 0))
        self.assertEqual(
            told(input="1\n42\n100\n"), (MAIN_MENU + ASK_ALL + SLOT_42 + MAIN_MENU, 0)
        )
        self.assertEqual(told("-o", "11"), ("", 128 + signal.SIGABRT))

    @not_emulated("strace would show the calls of the emulator")
    def test_registers_open_no_socket_and_no_device(self):
        # strace shows the calls that reach the kernel. A leak checker cannot run under strace.
        done = run(
            SIM, "--",
            "strace", "-f", "-e", "trace=socket,connect,openat", "-o", "/dev/stderr",
            TOOL, "-o", "1", "-p", "42",
            env=dict(os.environ, ASAN_OPTIONS="detect_leaks=0"),
        )
        self.assertEqual(done.stdout, SLOT_42)
        self.assertNotIn("socket(", done.stderr)
        self.assertNotIn("connect(", done.stderr)
        self.assertIn("openat(", done.stderr)  # strace did trace the process
        self.assertNotIn("/dev/i2c", done.stderr)


if __name__ == "__main__":
    tap.main()
