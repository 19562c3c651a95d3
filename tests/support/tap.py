"""Runs the test cases of a program under unittest and prints the result as TAP."""

import sys
import unittest


class TapResult(unittest.TestResult):
    def __init__(self):
        super().__init__()
        self.number = 0

    def _line(self, result, test, details=""):
        self.number += 1
        print(f"{result} {self.number} - {test.id().removeprefix('__main__.')}")
        for line in details.splitlines():
            print(f"# {line}")
        sys.stdout.flush()

    def addSuccess(self, test):
        self._line("ok", test)

    def addSkip(self, test, reason):
        super().addSkip(test, reason)
        self.number += 1
        print(f"ok {self.number} - {test.id().removeprefix('__main__.')} # SKIP {reason}")

    def addFailure(self, test, err):
        super().addFailure(test, err)
        self._line("not ok", test, self.failures[-1][1])

    def addError(self, test, err):
        super().addError(test, err)
        self._line("not ok", test, self.errors[-1][1])

    def addSubTest(self, test, subtest, err):
        super().addSubTest(test, subtest, err)
        if err is not None:
            failed = self.failures if issubclass(err[0], test.failureException) else self.errors
            self._line("not ok", subtest, failed[-1][1])


def main():
    suite = unittest.defaultTestLoader.loadTestsFromModule(sys.modules["__main__"])
    result = TapResult()
    print(f"1..{suite.countTestCases()}")
    suite.run(result)
    complete = result.number == suite.countTestCases() and result.number > 0
    sys.exit(0 if complete and result.wasSuccessful() else 1)
