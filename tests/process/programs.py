"""The programs under test, which the build names in the environment, and ways to run them."""

import functools
import io
import os
import pathlib
import select
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))

from loader import EMULATED, without_loader  # noqa: E402

SIM = os.environ["ZOLT_SIM"]
TOOL = os.environ["ZOLT_TEST"]
BOARD = os.environ.get("ZOLT_BOARD", "")
CAPTURE = os.environ.get("ZOLT_CAPTURE", "")
OTHER_PLATFORM = os.environ.get("OTHER_PLATFORM", "")

MAIN_MENU = """
------------------------------------------------
ZOLT Test Tool
------------------------------------------------
  1 : PICPWR info
  2 : CIR payloads
  3 : OEM area
  4 : Riser slot mapping blob
  5 : Control registers
  6 : PICPWR nodes info
  7 : Discoverable nodes info
  8 : All I2C nodes info
  9 : Create dynamic device node
 10 : Delete dynamic device node
 11 : DBUS Zolt Info Properties
 12 : DBUS Zolt CIR Properties
 13 : Read Node Proprty
 14 : Update Node Property
 15 : Perform Bus Recovery
100 : Exit \nEnter option :"""

ASK_ALL = "Enter the PICPWR ID: (Enter 0 for all PICPWRs)"
SLOT_42 = "\nPICPWR 42 DSTAT              = 00b\n"
MODULE_TYPES = """ 1 : Backplane
 2 : PUCK
 3 : RFC
 4 : Riser
 5 : FTULM
 6 : KARN_RAID
 7 : KARN_NON_RAID
 8 : RIDA
 9 : FLOP
10 : Battery interposer
11 : Battery
Enter the module type :
"""

INFO = """PrintZoltInfoProperties: \nProperty Name  = FRUreadComplete
Property Value = 1
Property Name  = SlotMappingComplete
Property Value = 1

"""

# Whether the build has sanitizers.
SANITIZED = os.environ["SANITIZERS"] != "none"

TIMEOUT_SECONDS = 60


def not_emulated(reason):
    """Skips a test, or each test of a class, when an emulator runs the programs."""
    return unittest.skipIf(EMULATED, f"emulated: {reason}")


# Programs that measure coverage write counters when they end.
COUNTED = os.environ.get("COVERAGE") == "true"
counted_by_others = unittest.skipIf(COUNTED, "coverage: another user cannot write the counters")
counted_in_short_files = unittest.skipIf(COUNTED, "coverage: the counters are files, too")


# For tests that reach a bus with a program of this machine, such as a shell.
other_programs_on_buses = not_emulated(
    "a program of this machine cannot load the other architecture's library"
)


def next_line(stream):
    """Returns the next line of a text stream that is not such a remark of the loader."""
    while without_loader(line := stream.readline()) != line:
        pass
    return line


def run(*command, **options):
    """Runs a command to its end, with text as its input and output."""
    options.setdefault("timeout", TIMEOUT_SECONDS)
    options.setdefault("input", "")
    done = subprocess.run(command, capture_output=True, text=True, check=False, **options)
    done.stdout, done.stderr = without_loader(done.stdout), without_loader(done.stderr)
    return done


def other_user(user, *groups):
    """Returns the words that, in front of a command, let another user run it."""
    membership = f"--groups={','.join(groups)}" if groups else "--clear-groups"
    return "setpriv", f"--reuid={user}", f"--regid={user}", membership


@functools.cache
def serves_others():
    """Returns whether this process can become another user, and that user can run the build."""
    return os.geteuid() == 0 and run(*other_user("daemon"), "test", "-x", SIM).returncode == 0


class Session:
    """A dialogue with a command. The test states every byte of the output."""

    def __init__(self, test, *command, **options):
        self._test = test
        self.process = subprocess.Popen(
            command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE, **options
        )
        self._told = io.TextIOWrapper(self.process.stderr)
        test.addCleanup(self._told.close)
        test.addCleanup(self.process.stdout.close)
        test.addCleanup(self.process.wait)
        test.addCleanup(self.process.kill)

    def told(self):
        """Returns the next line of standard error."""
        return next_line(self._told).rstrip("\n")

    def expect(self, text):
        """Waits for as many bytes as the text has, and compares them with the text."""
        got = b""
        while len(got) < len(text):
            ready, _, _ = select.select([self.process.stdout], [], [], TIMEOUT_SECONDS)
            self._test.assertTrue(ready, f"no more output after {got!r}")
            more = os.read(self.process.stdout.fileno(), len(text) - len(got))
            if not more:
                break
            got += more
        self._test.assertEqual(got.decode(), text)

    def type(self, text):
        self.process.stdin.write(text.encode())
        self.process.stdin.flush()

    def ends_with(self, text):
        """Waits for the end. The rest of the output has to be the text, and the status 0. Standard
        error has to be empty, as far as told() has not read it."""
        output, told = self.process.communicate(timeout=TIMEOUT_SECONDS)
        self._test.assertEqual(
            (output.decode(), without_loader(told.decode()), self.process.returncode), (text, "", 0)
        )


class Scratch:
    """A temporary directory in which zolt_sim makes its own, so that the test sees leftovers."""

    def __init__(self):
        self._directory = tempfile.TemporaryDirectory()
        self.path = pathlib.Path(self._directory.name)
        self.environment = dict(os.environ, TMPDIR=str(self.path))

    def file(self, name, text=""):
        path = self.path / name
        path.write_text(text)
        return str(path)

    def left_behind(self):
        return [str(path) for path in self.path.glob("zolt_sim.*")]

    def close(self):
        self._directory.cleanup()


def install(scratch):
    """Installs everything below a root in the scratch directory, and names the root."""
    root = scratch.path / "root"
    subprocess.run(
        [os.environ["MESON"], "install", "--no-rebuild", "--quiet",
         "-C", os.environ["BUILD_DIRECTORY"], "--destdir", str(root)],
        check=True, stdout=subprocess.DEVNULL,
    )
    return root
