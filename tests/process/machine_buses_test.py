#!/usr/bin/env python3
"""Tests zolt_sim on a machine with I2C buses of its own. No command on a board may reach them.

The machine is this one with another /dev, in a private mount namespace. Its I2C nodes have no
device: an open that reaches the kernel's drivers fails with "No such device or address". No other
refusal has that text, so the text tells that an open has reached a bus.
"""

import os
import pathlib
import shutil
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))
sys.path.insert(0, str(pathlib.Path(__file__).parent))

import tap  # noqa: E402
from programs import (  # noqa: E402
    INFO,
    SIM,
    TOOL,
    Scratch,
    counted_by_others,
    not_emulated,
    other_user,
    run,
    serves_others,
)

MACHINE = """
mount -t tmpfs none /dev
mkdir -p /dev/shm /dev/bus
mknod -m 666 /dev/null c 1 3
mknod -m 666 /dev/zero c 1 5
mknod -m 444 /dev/urandom c 1 9
mknod -m 660 /dev/i2c-77 c 89 77
mknod -m 660 /dev/bus/other c 89 78
chgrp 4321 /dev/i2c-77
exec "$@"
"""
ON_MACHINE = ("unshare", "--mount", "sh", "-ec", MACHINE, "sh")
MEMBER = other_user("daemon", "4321")
STRANGER = other_user("daemon")

# A program without the preload library, like one that is linked statically.
CAT = "env -u LD_PRELOAD cat"
REACHED = "cat: {}: No such device or address\n"
REFUSED = "cat: {}: Permission denied\n"

# Opens a bus by the file handle of its node, which bypasses mounts over its path.
BY_HANDLE = r"""
import ctypes, os
libc = ctypes.CDLL(None, use_errno=True)
handle, mount = ctypes.create_string_buffer(b"\x80\0\0\0", 136), ctypes.c_int()
named = libc.name_to_handle_at(-1, b"/dev/i2c-77", handle, ctypes.byref(mount), 0)
devices = os.open("/dev", os.O_RDONLY)
print(named, libc.open_by_handle_at(devices, handle, os.O_RDONLY), os.strerror(ctypes.get_errno()))
"""


def quoted(paths):
    """Returns paths as cat writes them into its messages."""
    return [f"'{path}'" if " " in path else path for path in paths]


HAS_MACHINE = os.geteuid() == 0 and run(*ON_MACHINE, "true").returncode == 0


@unittest.skipUnless(HAS_MACHINE, "cannot make mounts and device nodes")
@not_emulated("the emulator lacks the calls for mounts")
class MachineBuses(unittest.TestCase):
    def setUp(self):
        self.scratch = Scratch()
        self.addCleanup(self.scratch.close)
        self.scratch.path.chmod(0o777)

    def machine(self, *command, script="exec", **options):
        """Runs a command on that machine, or a shell script with the command as its arguments."""
        return run(
            *ON_MACHINE, "sh", "-c", script + ' "$@"', "sh", *command,
            env=self.scratch.environment, **options,
        )

    def board(self, user, script, **options):
        """Runs a shell script on a board that a user starts on that machine."""
        if user and not serves_others():
            self.skipTest("no other user can run the programs here")
        return self.machine(*user, SIM, "--", "sh", "-c", script, **options)

    def assert_refuses(self, done, *nodes):
        self.assertEqual(
            (done.stdout, done.stderr), ("", "".join(REFUSED.format(node) for node in nodes))
        )

    def test_answer_without_a_board(self):
        for user in ((), MEMBER):
            done = self.machine(*user, "cat", "/dev/i2c-77")
            self.assertEqual((done.stdout, done.stderr), ("", REACHED.format("/dev/i2c-77")))

    @counted_by_others
    def test_are_closed_to_programs_without_the_preload_library(self):
        for user in ((), MEMBER, STRANGER):
            done = self.board(user, f"{CAT} /dev/i2c-77; {CAT} /dev/bus/other")
            self.assert_refuses(done, "/dev/i2c-77", "/dev/bus/other")

    @counted_by_others
    def test_are_closed_below_every_mount_of_a_dev(self):
        place = self.scratch.path / "a \\ place"
        place.mkdir()
        more = f"""mkdir -p '{place}/own' '{place}/same'; : > '{place}/one'
            mount -t tmpfs none '{place}/own'
            mknod -m 666 '{place}/own/bus' c 89 5
            mount --bind /dev '{place}/same'
            mount --bind /dev/i2c-77 '{place}/one'
            exec"""
        nodes = [f"{place}/{name}" for name in ("own/bus", "same/i2c-77", "same/bus/other", "one")]
        for user in ((), MEMBER):
            if user and not serves_others():
                continue
            # Once the machine has lost its own nodes, two of the others are left.
            for shown, removed in (nodes, ""), ([nodes[0], nodes[3]], "rm -r /dev/i2c-77 /dev/bus;"):
                script = more.replace("exec", removed + "exec")
                reached = self.machine("cat", *shown, script=script)
                self.assertEqual(reached.stderr, "".join(REACHED.format(n) for n in quoted(shown)))
                command = ("env", "-u", "LD_PRELOAD", "cat", *shown)
                done = self.machine(*user, SIM, "--", *command, script=script)
                self.assert_refuses(done, *quoted(shown))

    def test_do_not_hide_what_else_is_mounted(self):
        place = self.scratch.path / "place"
        place.mkdir()
        more = f"""mount -t tmpfs none '{place}'
            mknod -m 666 '{place}/bus' c 89 5
            echo kept > '{place}/file'
            exec"""
        done = self.machine(SIM, "--", "cat", f"{place}/file", script=more)
        self.assertEqual((done.stdout, done.stderr), ("kept\n", ""))

    @counted_by_others
    def test_are_closed_to_writers(self):
        for user in ((), MEMBER):
            done = self.board(user, "env -u LD_PRELOAD dd if=/dev/zero of=/dev/i2c-77 status=none")
            self.assertEqual(
                done.stderr, "dd: failed to open '/dev/i2c-77': Permission denied\n"
            )

    def test_are_closed_to_relative_paths_from_dev(self):
        done = self.machine(
            SIM, "--", "sh", "-c", f"{CAT} i2c-77", script="cd /dev; exec"
        )
        self.assert_refuses(done, "i2c-77")

    def test_stay_closed_whatever_root_tries(self):
        done = self.board(
            (),
            f"""umount /dev/i2c-77 2>/dev/null && echo uncovered
            mknod /dev/mine c 89 77 2>/dev/null && echo made
            nsenter --target $PPID --mount true 2>/dev/null && echo joined
            {CAT} /proc/$PPID/root/dev/i2c-77""",
        )
        self.assertRegex(
            done.stderr, r"^cat: /proc/\d+/root/dev/i2c-77: Permission denied\n$"
        )
        self.assertEqual(done.stdout, "")

    def test_stay_closed_to_root_with_a_handle(self):
        done = self.machine("python3", "-c", BY_HANDLE)
        self.assertEqual(done.stdout, "0 -1 No such device or address\n")
        done = self.machine(SIM, "--", "env", "-u", "LD_PRELOAD", "python3", "-c", BY_HANDLE)
        self.assertEqual(done.stdout, "0 -1 Operation not permitted\n")

    @counted_by_others
    def test_stay_closed_in_a_namespace_of_the_commands_own(self):
        for user in ((), MEMBER):
            done = self.board(
                user,
                f"""unshare --user --map-root-user --mount sh -c '
                umount /dev/i2c-77 2>/dev/null && echo uncovered
                {CAT} /dev/i2c-77'""",
            )
            self.assert_refuses(done, "/dev/i2c-77")

    @counted_by_others
    def test_stay_closed_to_a_program_that_becomes_root(self):
        program = shutil.copy(shutil.which("cat"), self.scratch.path)
        os.chmod(program, 0o4755)
        done = self.machine(*STRANGER, program, "/dev/bus/other")
        self.assertEqual(done.stderr, f"{program}: /dev/bus/other: No such device or address\n")
        for user in (MEMBER, STRANGER):
            done = self.board(user, f"env -u LD_PRELOAD {program} /dev/bus/other")
            self.assertEqual(done.stderr, f"{program}: /dev/bus/other: Permission denied\n")

    def test_are_not_handed_on_open(self):
        # O_PATH opens the node without its driver.
        opener = (
            "import os, sys; bus = os.open('/dev/i2c-77', os.O_PATH);"
            "os.dup2(bus, 0); os.dup2(bus, 7); os.dup2(os.open('/dev', os.O_RDONLY), 8);"
            "os.dup2(os.open('/dev/zero', os.O_RDONLY), 9); os.execvp(sys.argv[1], sys.argv[1:])"
        )
        listing = "for i in 0 7 8 9; do readlink /proc/$$/fd/$i || echo $i is closed; done"
        done = self.machine("python3", "-c", opener, SIM, "--", "sh", "-c", listing)
        self.assertEqual(
            (done.stdout, done.stderr), ("0 is closed\n7 is closed\n8 is closed\n/dev/zero\n", "")
        )

    @counted_by_others
    def test_are_closed_without_changing_the_rest_of_the_machine(self):
        for user, who in (((), "root"), (MEMBER, "daemon"), (STRANGER, "daemon")):
            done = self.board(
                user,
                f"""echo $(id -un) $(id -gn)
                head -c 3 /dev/zero | tr '\\0' z
                echo > /dev/null && touch {self.scratch.path}/made.{who} && echo""",
            )
            self.assertEqual((done.stdout, done.stderr), (f"{who} {who}\nzzz\n", ""))

    @counted_by_others
    def test_are_closed_without_changing_the_board(self):
        for user in ((), MEMBER, STRANGER):
            done = self.board(
                user,
                f"""{TOOL} -o 11
                test -c /dev/i2c-0 && echo bus
                test -e /dev/i2c-77 || echo no other""",
            )
            self.assertEqual((done.stdout, done.stderr), (INFO + "bus\nno other\n", ""))

    def test_stay_reachable_outside_the_board(self):
        board = f"{SIM} -- sh -c 'echo started; read end'"
        done = self.machine(
            script=f"""mount --make-rshared /
            mkfifo {self.scratch.path}/end
            exec 3<> {self.scratch.path}/end
            {board} <&3 | (read line; cat /dev/i2c-77; grep i2c-77 /proc/self/mountinfo
            echo > {self.scratch.path}/end)
            exec true""",
        )
        self.assertEqual((done.stdout, done.stderr), ("", REACHED.format("/dev/i2c-77")))

    @counted_by_others
    @unittest.skipUnless(serves_others(), "no other user can run the programs here")
    def test_stop_a_command_that_cannot_be_kept_from_them(self):
        # The kernel refuses a user namespace to a process below another root directory.
        root = self.scratch.path / "root"
        root.mkdir()
        below = f"mount --rbind / {root}; exec chroot --userspec=daemon:daemon"
        member = self.machine("--groups=4321", root, SIM, "--", "echo", "started", script=below)
        self.assertEqual(
            (member.returncode, member.stdout, member.stderr),
            (
                125,
                "",
                "zolt_sim: cannot keep the command away from the machine's I2C buses: "
                "cannot get mounts of its own: Operation not permitted\n",
            ),
        )
        # The modes of the nodes keep this user out anyway.
        stranger = self.machine("--groups=1234", root, SIM, "--", "echo", "started", script=below)
        self.assertEqual((stranger.returncode, stranger.stdout), (0, "started\n"))

    def test_cost_the_command_no_rights_when_there_are_none(self):
        show = ("grep", "-E", "^(Cap|NoNewPrivs)", "/proc/self/status")
        without = "rm /dev/i2c-77 /dev/bus/other; exec"
        ours = self.machine(*show, script=without).stdout
        self.assertIn("NoNewPrivs", ours)
        self.assertEqual(self.machine(SIM, "--", *show, script=without).stdout, ours)


if __name__ == "__main__":
    tap.main()
