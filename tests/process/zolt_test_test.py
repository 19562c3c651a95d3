#!/usr/bin/env python3
"""Tests zolt_test as a process: pipes, closed streams, end of input, other platform libraries."""

import os
import pathlib
import shutil
import signal
import subprocess
import sys
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
    run,
)

NO_BUS = "unix:path=/nonexistent/bus"


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

    def test_the_end_of_input_repeats_the_last_option_until_nobody_reads(self):
        process = subprocess.Popen(
            [TOOL], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
            env=dict(os.environ, LD_LIBRARY_PATH=OTHER_PLATFORM),
        )
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        process.stdin.write(b"16\n")
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

    def test_the_libraries_of_the_bus_are_loaded_by_the_first_option_that_needs_them(self):
        def loaded(typed):
            return run(
                SIM, "--", "env", "LD_DEBUG=files", TOOL,
                input=typed,
            ).stderr

        self.assertIn("file=libhal.so", loaded("1\n1\n100\n"))
        self.assertNotIn("file=libsystemd.so", loaded("1\n1\n4\n3\n6\n1\n100\n"))
        self.assertIn("file=libsystemd.so", loaded("11\n100\n"))

    def test_a_tool_without_its_bus_views_says_so_and_goes_on(self):
        scratch = Scratch()
        self.addCleanup(scratch.close)
        alone = shutil.copy(TOOL, scratch.path)
        done = run(
            alone, input="11\n12\n2\n100\n",
            env=dict(os.environ, LD_LIBRARY_PATH=OTHER_PLATFORM),
        )
        complaint = (
            f"Exception : {scratch.path}/zolt_bus_views.so: cannot open shared object file: "
            "No such file or directory\n"
        )
        self.assertEqual(
            done.stdout,
            MAIN_MENU + complaint + MAIN_MENU + MODULE_TYPES + complaint + MAIN_MENU,
        )

    @unittest.skipIf(SANITIZED, "a sanitizer reads its process's maps below /proc")
    def test_a_tool_that_cannot_find_its_own_path_lets_the_loader_search(self):
        without_proc = ("unshare", "--mount", "sh", "-c", 'umount -l /proc && exec "$@"', "sh")
        if run(*without_proc, "true").returncode != 0:
            self.skipTest("cannot unmount /proc")
        done = run(
            *without_proc, TOOL, input="11\n100\n",
            env=dict(os.environ, LD_LIBRARY_PATH=OTHER_PLATFORM),
        )
        complaint = (
            "Exception : zolt_bus_views.so: cannot open shared object file: "
            "No such file or directory\n"
        )
        self.assertEqual(done.stdout, MAIN_MENU + complaint + MAIN_MENU)

    def test_a_tool_with_unusable_bus_views_says_so_and_goes_on(self):
        scratch = Scratch()
        self.addCleanup(scratch.close)
        library = scratch.path / "zolt_bus_views.so"
        tool = shutil.copy(TOOL, scratch.path)
        environment = dict(os.environ, LD_LIBRARY_PATH=OTHER_PLATFORM)
        for contents, problem in (
            (b"", f"{library}: file too short"),
            (b"no library, though long enough for its head" * 100,
             f"{library}: invalid ELF header"),
            (pathlib.Path(OTHER_PLATFORM, "libdlog.so.1").read_bytes(),
             f"{library}: undefined symbol: zoltBusViews"),
            # The loader accepts a null address, so it has no text for this failure.
            (pathlib.Path(os.environ["VIEWS_OF_NOTHING"]).read_bytes(), str(library)),
        ):
            library.write_bytes(contents)
            done = run(tool, input="11\n12\n2\n100\n", env=environment)
            complaint = f"Exception : {problem}\n"
            self.assertEqual(
                done.stdout,
                MAIN_MENU + complaint + MAIN_MENU + MODULE_TYPES + complaint + MAIN_MENU,
            )

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
