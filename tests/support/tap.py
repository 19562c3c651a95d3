"""Runs the test cases of a program under unittest and prints the result as TAP.

Each test has exactly one line, so that the plan matches. A failure in a sub-test, in tearDown or
in a clean-up makes its test "not ok" and stands as diagnostics below that line. A test that never
runs, because setUpClass failed, is "not ok", too. Standard error shows the failures once more.

With --only PATTERN, only the tests run whose name Class.test_name matches.

Texts that differ are shown as a unified diff, which starts just above the first difference.
"""

import argparse
import difflib
import os
import signal
import sys
import unittest

import signals
from failures import Failures

# Python does not find itself without PATH.
PYTHON = sys.executable or os.readlink("/proc/self/exe")


def tests_in(suite):
    for part in suite:
        if isinstance(part, unittest.TestSuite):
            yield from tests_in(part)
        else:
            yield part


def name_of(test):
    return test.id().replace("__main__.", "")


def assert_same_text(test, first, second, msg=None):
    if first != second:
        lines = (text.splitlines() for text in (first, second))
        diff = list(difflib.unified_diff(*lines, "first", "second", lineterm=""))
        # Without the diff, the texts differ in the ends of their lines.
        test.fail("\n".join([msg or "the texts differ:", *(diff or (repr(first), repr(second)))]))


unittest.TestCase.maxDiff = None
unittest.TestCase.assertMultiLineEqual = assert_same_text


class Ended(KeyboardInterrupt):
    """A signal has ended a test. unittest lets no other exception end the whole run."""

    def __init__(self, test):
        super().__init__()
        self.test = test


class TapResult(unittest.TestResult):
    def __init__(self, suite):
        super().__init__()
        self._waiting = list(tests_in(suite))
        self._number = 0
        self._running = None
        self._failures = Failures()
        self._print(f"1..{len(self._waiting)}")

    def startTest(self, test):
        super().startTest(test)
        self._waiting.remove(test)
        self._running = test
        self._ok = True
        self._skip = ""
        self._details = []

    def stopTest(self, test):
        super().stopTest(test)
        self._running = None
        self._line(self._ok, test, self._details, self._skip)

    def addSkip(self, test, reason):
        super().addSkip(test, reason)
        if test is self._running:
            self._skip = f" # SKIP {reason}"
        else:
            self._explain(test, f"skipped: {reason}")

    def addFailure(self, test, err):
        super().addFailure(test, err)
        self._fail(test, self.failures[-1][1])

    def addError(self, test, err):
        super().addError(test, err)
        self._fail(test, self.errors[-1][1])

    def addSubTest(self, test, subtest, err):
        super().addSubTest(test, subtest, err)
        if err is not None:
            failed = self.failures if issubclass(err[0], test.failureException) else self.errors
            self._fail(subtest, failed[-1][1])

    def addUnexpectedSuccess(self, test):
        super().addUnexpectedSuccess(test)
        self._fail(test, "succeeds, although it is expected to fail")

    def end(self, number, _):
        """Handles a signal: ends the running test, which fails, and the run."""
        if self._running is None:
            sys.exit(f"ended by {signal.Signals(number).name}")
        self._fail(self._running, f"ended by {signal.Signals(number).name}")
        raise Ended(self._running)

    def finish(self):
        """Prints the lines of the tests that never ran. Returns whether every test is ok."""
        all_ran = self._number > 0 and not self._waiting
        for test in self._waiting:
            self._line(False, test, ["did not run"])
        return all_ran and self.wasSuccessful()

    def _fail(self, test, text):
        self._ok = False
        self._explain(test, text)
        if self._running is None:
            self._failures.show(name_of(test), text.splitlines())

    def _explain(self, test, text):
        lines = text.splitlines()
        if test is not self._running:  # a sub-test, or setUpClass or tearDownClass
            lines.insert(0, name_of(test))
        if self._running is None:
            self._print(*(f"# {line}" for line in lines))
        else:
            self._details += lines

    def _line(self, ok, test, details, skip=""):
        self._number += 1
        self._print(
            f"ok {self._number} - {name_of(test)}{skip}" if ok
            else f"not ok {self._number} - {name_of(test)}",
            *(f"# {line}" for line in details),
        )
        if not ok:
            self._failures.show(name_of(test), details)

    @staticmethod
    def _print(*lines):
        print(*lines, sep="\n", flush=True)


def main():
    parser = argparse.ArgumentParser(allow_abbrev=False)
    parser.add_argument("--only", default="*")
    arguments, _ = parser.parse_known_args()  # the others are the program's own
    loader = unittest.TestLoader()
    loader.testNamePatterns = [f"__main__.{arguments.only}"]
    suite = loader.loadTestsFromModule(sys.modules["__main__"])
    signals.restore()
    result = TapResult(suite)
    for number in (signal.SIGINT, signal.SIGTERM):  # Meson sends SIGTERM after a time-out
        signal.signal(number, result.end)
    try:
        suite.run(result)
    except Ended as ended:
        ended.test.doCleanups()
    sys.exit(0 if result.finish() else 1)
