"""Shows the failures of a test program on standard error, in addition to its TAP diagnostics.

On a failure, `meson test --print-errorlogs` shows nothing of a TAP program but the last 100 lines
of its standard error. A program therefore writes fewer lines than that: the first failures, each
from its first line on. Everything stands in the diagnostics, which Meson writes to testlog.txt.
"""

import sys

MOST_LINES = 90
MOST_LINES_OF_ONE = 45


class Failures:
    """Counts the lines written so far."""

    def __init__(self):
        self._left = MOST_LINES

    def show(self, name, lines):
        """Shows the failure of one test, as far as there is room."""
        if self._left == 0:
            return
        room = min(self._left - 1, MOST_LINES_OF_ONE)
        shown = [f"FAILED: {name}", *lines]
        if len(shown) > room:
            shown[room:] = ["(cut off; see testlog.txt)"]
        self._left -= len(shown)
        if self._left < 3:
            shown += ["(no further failures are shown; see testlog.txt)"]
            self._left = 0
        print(*shown, sep="\n", file=sys.stderr, flush=True)
