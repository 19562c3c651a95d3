"""A terminal for tests, with a command that leads the session on it."""

import os
import select
import signal
import subprocess

from programs import TIMEOUT_SECONDS


def take_signals():
    """Lets a process that nohup or a background shell has started take the terminal's signals."""
    for name in (signal.SIGHUP, signal.SIGINT, signal.SIGQUIT):
        signal.signal(name, signal.SIG_DFL)


class Terminal:
    """A terminal, and a command that leads the session on it."""

    def __init__(self, test, *command, **options):
        self._test = test
        self._master, slave = os.openpty()
        test.addCleanup(self.hang_up)
        self.process = subprocess.Popen(
            ["setsid", "--ctty", *command],  # becomes the command, with the same process ID
            stdin=slave, stdout=slave, stderr=slave, preexec_fn=take_signals, **options,
        )
        os.close(slave)
        test.addCleanup(self.process.wait)
        test.addCleanup(self.process.kill)

    def shown_until(self, text):
        """Waits for a text, and returns what the terminal has shown so far, without returns."""
        shown = b""
        while text not in (lines := shown.decode().replace("\r", "")):
            ready, _, _ = select.select([self._master], [], [], TIMEOUT_SECONDS)
            self._test.assertTrue(ready, f"nothing more after {shown!r}")
            shown += os.read(self._master, 4096)
        return lines

    def type(self, text):
        os.write(self._master, text.encode())

    def hang_up(self):
        if self._master >= 0:
            os.close(self._master)
            self._master = -1
