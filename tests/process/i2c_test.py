#!/usr/bin/env python3
"""Tests the I2C buses of zolt_sim: other clients, several clients at once, no way to a real bus."""

import os
import pathlib
import re
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))
sys.path.insert(0, str(pathlib.Path(__file__).parent))

import tap  # noqa: E402
from programs import (  # noqa: E402
    SIM,
    TOOL,
    Scratch,
    counted_by_others,
    not_emulated,
    other_programs_on_buses,
    other_user,
    run,
    serves_others,
)

# Debian installs the I2C tools outside the PATH of ordinary users.
PATH = os.environ.get("PATH", os.defpath) + ":/usr/sbin:/sbin"

BOARD = """
[[i2c.bus]]
number = 5
properties = { 8 = 0x11, 10 = 2 }
[[i2c.bus.device]]
address = 0x50
memory = "5A 4F 4C 54 2D 45 45 50 52 4F 4D 00 01 02 03 04"
size = 256
[[i2c.bus.device]]
address = 0x51
memory = "10 11 12 13"
size = 1024
read_only = true
"""

# Creates an index node with a device node for type PUCK.
CREATE = f'{TOOL} -o 9 -d 24 -i "$1" -n 5 -t 80'


class I2cTest(unittest.TestCase):
    def setUp(self):
        self.scratch = Scratch()
        self.addCleanup(self.scratch.close)
        self.board = self.scratch.file("board.toml", BOARD)
        self.log = self.scratch.path / "i2c_log"
        self.scratch.environment["PATH"] = PATH

    def sim(self, *command, options=(), **more):
        return run(
            SIM, "--board", self.board, "--i2c-log", str(self.log), *options, "--", *command,
            env=self.scratch.environment, **more,
        )

    def shell(self, script, **more):
        return self.sim("sh", "-c", script, **more)


@other_programs_on_buses
class OtherClients(I2cTest):
    def test_i2ctransfer_reads_the_described_memory(self):
        done = self.sim("i2ctransfer", "-y", "5", "w1@0x50", "0x00", "r12")
        self.assertEqual(done.stderr, "")
        self.assertEqual(
            done.stdout, "0x5a 0x4f 0x4c 0x54 0x2d 0x45 0x45 0x50 0x52 0x4f 0x4d 0x00\n"
        )

    def test_i2ctransfer_reads_with_two_address_bytes(self):
        done = self.sim("i2ctransfer", "-y", "5", "w2@0x51", "0x00", "0x02", "r3")
        self.assertEqual((done.stdout, done.stderr), ("0x12 0x13 0xff\n", ""))

    def test_what_one_client_writes_the_next_one_reads(self):
        done = self.shell(
            "i2ctransfer -y 5 w3@0x50 0xFE 0x77 0x88; i2ctransfer -y 5 w1@0x50 0xFD r3;"
            "i2ctransfer -y 5 w3@0x51 0x00 0x00 0x77; i2ctransfer -y 5 w2@0x51 0x00 0x00 r1"
        )
        self.assertEqual((done.stdout, done.stderr), ("0xff 0x77 0x88\n0x10\n", ""))

    def test_i2cdump_shows_the_whole_memory(self):
        erased = "ff " * 16
        lines = ["     0  1  2  3  4  5  6  7  8  9  a  b  c  d  e  f    0123456789abcdef"]
        lines.append(
            "00: 5a 4f 4c 54 2d 45 45 50 52 4f 4d 00 01 02 03 04    ZOLT-EEPROM.????"
        )
        lines += [f"{row:02x}: {erased}   ................" for row in range(0x10, 0x100, 0x10)]
        done = self.sim("i2cdump", "-y", "5", "0x50", "b")
        self.assertEqual(done.stdout, "\n".join(lines) + "\n")

    def test_i2cget_reads_what_i2cset_wrote(self):
        done = self.shell("i2cset -y 5 0x50 0x20 0x42; i2cget -y 5 0x50 0x20; i2cget -y 5 0x50 0")
        self.assertEqual(done.stdout, "0x42\n0x5a\n")

    def test_an_address_without_a_device_does_not_answer(self):
        done = self.sim("i2ctransfer", "-y", "5", "r1@0x22")
        self.assertEqual(done.stderr, "Error: Sending messages failed: No such device or address\n")
        self.assertEqual(done.stdout, "")

    def test_plain_transfers_are_logged(self):
        self.sim("i2ctransfer", "-y", "5", "w1@0x50", "0x00", "r1")
        self.assertEqual(
            self.log.read_text(),
            "/dev/i2c-5 transfer [0x0050 0x0000 1: 00] [0x0050 0x0001 1: 5A] -> 2\n",
        )

    def test_no_device_answers_while_a_failed_recovery_holds_the_clock(self):
        read = "i2ctransfer -y 5 w1@0x50 0x00 r1 2>&1;"
        done = self.shell(
            f"printf '5\\n' | {TOOL} -o 15; {read}",
            options=("--fault", "i2c-ioctl 5 recover-bus 98"),
        )
        self.assertIn("I2C_CP_MODE_TYPE_RESET_CLOCK_UNRAVEL failed. \n", done.stdout)
        self.assertTrue(
            done.stdout.endswith("Error: Sending messages failed: Connection timed out\n")
        )
        done = self.shell(f"printf '5\\n' | {TOOL} -o 15; {read}")
        self.assertTrue(done.stdout.endswith("0x5a\n"), done.stdout)


class Nodes(I2cTest):
    def test_outlive_the_tool_that_created_them(self):
        done = self.shell(
            f"set -- 3; {CREATE}; {TOOL} -o 8 -d 24; printf '6\\n50\\n' | {TOOL} -o 10;"
            f"{TOOL} -o 8 -d 24"
        )
        node = """

Index Node Info
Device Type       = PUCK
Index             = 3
Discoverable Node = 0
Node Name         = PUCK_3
Physical Bus      = 6
Sub Node Count    = {}
PICPWR ID         = 0
is_sl_src         = 0
sl_src            = 0
HW_UID            = 0x00
Slot Number       = 0
Slot Type         = 0
Bay ID            = 0
"""
        sub = """
Sub Index Node Info
Sub Index         = 3
Discoverable Node = 0
Node Name         = 6-0050
Sub Node Count    = 0
"""
        self.assertEqual(
            done.stdout,
            "Index Node Status:Node Status: [0] &  Name: [/dev/i2c-6]\n"
            "Device Node Status: [0] &  Name: [/dev/i2c-6]\n"
            + node.format(1) + sub
            + "Enter Parent Node Num:Enter Target Address:"
            "Device Remove Status: [1] Under Parent Node: [/dev/i2c-6]\n" + node.format(0),
        )

    def test_end_with_their_board(self):
        self.shell(f"set -- 3; {CREATE}")
        done = self.sim(TOOL, "-o", "8", "-d", "24")
        self.assertEqual(done.stdout, "Input device type not found in sysfs\n")

    def test_of_many_tools_at_once_are_each_created_once(self):
        count = 20
        done = self.shell(
            f"for i in $(seq {count}); do set -- $i; {CREATE} & done; wait; {TOOL} -o 8 -d 24"
        )
        self.assertEqual(done.stderr, "")
        created = re.findall(r"^Device Node Status: \[0\] &  Name: \[/dev/i2c-(\d+)\]$", done.stdout, re.M)
        self.assertEqual(sorted(map(int, created)), list(range(6, 6 + count)))
        listed = re.findall(
            r"Index             = (\d+)\nDiscoverable Node = 0\nNode Name         = PUCK_(\d+)\n"
            r"Physical Bus      = (\d+)\nSub Node Count    = 1\n(?:.+\n)+\n"
            r"Sub Index Node Info\nSub Index         = (\d+)\nDiscoverable Node = 0\n"
            r"Node Name         = (\d+)-0050\n",
            done.stdout,
        )
        self.assertEqual(len(listed), count)
        for index, name, bus, sub_index, sub_bus in listed:
            self.assertEqual((index, index, bus), (name, sub_index, sub_bus))
        self.assertEqual(sorted(int(node[0]) for node in listed), list(range(1, count + 1)))
        # The log has every transaction on a line of its own: three for each of a tool's two nodes.
        lines = self.log.read_text().splitlines()
        self.assertEqual(len(lines), 6 * count)
        for line in lines:
            self.assertRegex(line, r"^/dev/i2c-\d+ (get-property|create-node) .* -> 2 \S+( \S+)?$")

    def test_that_two_tools_request_at_once_are_created_once(self):
        done = self.shell(f"set -- 3; {CREATE} & {CREATE} & wait")
        lines = sorted(done.stdout.splitlines())
        self.assertEqual(
            lines,
            [
                "Device Node Creation Failed.",
                "Device Node Status: [0] &  Name: [/dev/i2c-6]",
                "Index Node Status:Node Status: [0] &  Name: [/dev/i2c-6]",
                "Index Node Status:Node Status: [1] &  Name: [/dev/i2c-6]",
                "Status is -1 (File exists)",
            ],
        )


class Command(I2cTest):
    NOT_THERE = "Error: Could not open file `/dev/i2c-{0}' or `/dev/i2c/{0}': No such file or directory\n"

    @other_programs_on_buses
    def test_finds_no_bus_that_is_not_described(self):
        for bus in (0, 4, 6, 255):
            done = self.sim("i2ctransfer", "-y", str(bus), "r1@0x50")
            self.assertEqual((done.stdout, done.stderr), ("", self.NOT_THERE.format(bus)))

    @not_emulated("strace would show the calls of the emulator")
    def test_never_asks_the_kernel_for_a_bus(self):
        # strace shows the calls that reach the kernel. A leak checker cannot run under strace.
        self.scratch.environment["ASAN_OPTIONS"] = "detect_leaks=0"
        for bus, answer in (("5", "No such device"), ("77", "No such file or directory")):
            done = self.sim(
                "strace", "-f", "-e", "trace=/open,/socket,/ioctl", "-o", "/dev/stderr",
                TOOL, "-o", "10", input=f"{bus}\n22\n",
            )
            self.assertIn(f"({answer})\n", done.stdout)
            self.assertNotIn("/dev/i2c", done.stderr)
            self.assertNotIn("I2C_RDWR", done.stderr)
            self.assertIn("socket(AF_UNIX", done.stderr)  # strace did trace the process

    def test_keeps_the_callers_own_preload_and_sanitizer_options(self):
        self.scratch.environment["LD_PRELOAD"] = "libdl.so.2"
        own = "verify_asan_link_order=0:verbosity=0"  # so that zolt_sim starts with this preload
        self.scratch.environment["ASAN_OPTIONS"] = own
        done = self.shell('echo "$LD_PRELOAD"; echo "$ASAN_OPTIONS"')
        preload, options = done.stdout.splitlines()
        self.assertRegex(preload, r"^/.*/libzolt_sim_i2c\.so:libdl\.so\.2$")
        self.assertEqual(options, own + ":verify_asan_link_order=0")

    @unittest.skipIf(os.path.exists("/dev/zolt_bus"), "the kernel module is loaded")
    def test_needs_the_kernel_module_for_buses_of_the_kernel(self):
        done = self.sim(TOOL, "-o", "1", options=("--kernel-buses",))
        self.assertEqual(
            (done.returncode, done.stdout, done.stderr),
            (125, "", "zolt_sim: the kernel module zolt_bus is not loaded or not free: "
                      "/dev/zolt_bus: No such file or directory\n"),
        )

    def test_cannot_delay_the_opening_of_a_bus_of_the_kernel(self):
        options = ("--kernel-buses", "--fault", "i2c-open 7 delay 1s")
        done = self.sim(TOOL, "-o", "1", options=options)
        self.assertEqual(
            (done.returncode, done.stdout, done.stderr),
            (125, "", "zolt_sim: buses in the kernel cannot delay an open: a rule i2c-open 7 has a delay\n"),
        )

    def test_closes_its_bus_with_the_descriptor(self):
        # The limit of 40 descriptors would be reached if the tool left its buses open.
        done = self.shell(
            f"ulimit -n 40; for i in $(seq 100); do echo 15; echo 5; done > script; echo 100 >> script;"
            f"{TOOL} < script | grep -c 'Status .1. for node name'",
            cwd=self.scratch.path,
        )
        self.assertEqual(done.stdout, "300\n")

    def test_reaches_the_buses_with_its_streams_closed(self):
        done = self.shell(f"{TOOL} -o 9 -d 24 -i 3 -n 5 -t 80 <&- >&- 2>&-")
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))
        self.assertEqual(len(self.log.read_text().splitlines()), 6)

    @counted_by_others
    @unittest.skipUnless(serves_others(), "no other user can run the programs here")
    def test_may_be_an_ordinary_user(self):
        self.scratch.path.chmod(0o777)
        done = run(
            *other_user("daemon"), SIM, "--board", self.board, "--",
            TOOL, "-o", "9", "-d", "24", "-i", "3", "-n", "5", "-t", "80",
            env=self.scratch.environment,
        )
        self.assertEqual(
            (done.stdout, done.stderr),
            (
                "Index Node Status:Node Status: [0] &  Name: [/dev/i2c-6]\n"
                "Device Node Status: [0] &  Name: [/dev/i2c-6]\n",
                "",
            ),
        )


if __name__ == "__main__":
    tap.main()
