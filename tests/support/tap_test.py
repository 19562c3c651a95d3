#!/usr/bin/env python3
"""tap.py, run on small programs that fail in every place where unittest allows a failure."""

import pathlib
import signal
import subprocess
import unittest

import tap

PROGRAM = """
import sys, unittest
sys.path.insert(0, {support!r})
import tap
{classes}
tap.main()
"""


def command(classes):
    program = PROGRAM.format(support=str(pathlib.Path(__file__).parent), classes=classes)
    return [tap.PYTHON, "-c", program]


class Tap(unittest.TestCase):
    def check(self, classes, status, *lines, explained=(), unexplained=(), arguments=()):
        """Runs a program of these test classes. Expects its lines without the diagnostics, and some
        lines of the diagnostics, which a failed program repeats on standard error. Neither has
        lines that begin like the unexplained ones. Returns the lines of standard error."""
        done = subprocess.run(
            [*command(classes), *arguments], capture_output=True, text=True, check=False
        )
        printed = done.stdout.splitlines()
        told = done.stderr.splitlines()
        self.assertEqual([line for line in printed if not line.startswith("#")], list(lines))
        for line in explained:
            self.assertIn("# " + line, printed)
        for line in unexplained:
            self.assertEqual([other for other in printed + told if line in other], [])
        failed = [line.split(" - ")[1] for line in lines if line.startswith("not ok")]
        for name in failed:
            self.assertIn(f"FAILED: {name}", told)
        if status == 0:
            self.assertEqual(told, [])
        self.assertLess(len(told), 95)
        self.assertEqual(done.returncode, status)
        return told

    def test_passed_and_skipped_tests_are_ok(self):
        self.check(
            """
class A(unittest.TestCase):
    def test_1(self): pass
    @unittest.skip("no room")
    def test_2(self): self.fail()
    def test_3(self): self.skipTest("no time")
    @unittest.expectedFailure
    def test_4(self): self.fail()
@unittest.skip("no need")
class B(unittest.TestCase):
    def test_5(self): self.fail()
""",
            0,
            "1..5",
            "ok 1 - A.test_1",
            "ok 2 - A.test_2 # SKIP no room",
            "ok 3 - A.test_3 # SKIP no time",
            "ok 4 - A.test_4",
            "ok 5 - B.test_5 # SKIP no need",
        )

    def test_failed_test_is_not_ok_and_explained(self):
        self.check(
            """
class A(unittest.TestCase):
    def test_1(self): self.assertEqual(1, 2)
    def test_2(self): raise ValueError("wrong value")
    @unittest.expectedFailure
    def test_3(self): pass
    def test_4(self): pass
""",
            1,
            "1..4",
            "not ok 1 - A.test_1",
            "not ok 2 - A.test_2",
            "not ok 3 - A.test_3",
            "ok 4 - A.test_4",
            explained=(
                "AssertionError: 1 != 2",
                "ValueError: wrong value",
                "succeeds, although it is expected to fail",
            ),
        )

    def test_test_with_failed_sub_tests_has_one_line(self):
        self.check(
            """
class A(unittest.TestCase):
    def test_1(self):
        for i in range(4):
            with self.subTest(i=i):
                self.assertEqual(i % 2, 0, "odd")
    def test_2(self):
        with self.subTest("one"): raise ValueError("wrong value")
        self.fail("the end")
    def test_3(self):
        with self.subTest("one"): pass
        with self.subTest("two"): self.skipTest("no time")
""",
            1,
            "1..3",
            "not ok 1 - A.test_1",
            "not ok 2 - A.test_2",
            "ok 3 - A.test_3",
            explained=(
                "A.test_1 (i=1)",
                "AssertionError: 1 != 0 : odd",
                "A.test_1 (i=3)",
                "A.test_2 [one]",
                "ValueError: wrong value",
                "AssertionError: the end",
                "A.test_3 [two]",
                "skipped: no time",
            ),
        )

    def test_test_that_fails_several_times_has_one_line(self):
        self.check(
            """
class A(unittest.TestCase):
    def tearDown(self): raise ValueError("torn")
    def test_1(self):
        self.addCleanup(self.fail, "unclean")
        self.fail("wrong")
    def test_2(self): self.skipTest("no time")
""",
            1,
            "1..2",
            "not ok 1 - A.test_1",
            "not ok 2 - A.test_2",
            explained=("AssertionError: wrong", "ValueError: torn", "AssertionError: unclean"),
        )

    def test_tests_of_a_class_that_cannot_be_set_up_are_not_ok(self):
        self.check(
            """
class A(unittest.TestCase):
    @classmethod
    def setUpClass(cls): raise ValueError("no class")
    def test_1(self): pass
    def test_2(self): pass
class B(unittest.TestCase):
    def test_3(self): pass
""",
            1,
            "1..3",
            "ok 1 - B.test_3",
            "not ok 2 - A.test_1",
            "not ok 3 - A.test_2",
            explained=("setUpClass (A)", "ValueError: no class", "did not run"),
        )

    def test_class_that_cannot_be_torn_down_fails_the_program(self):
        told = self.check(
            """
class A(unittest.TestCase):
    @classmethod
    def tearDownClass(cls): raise ValueError("torn")
    def test_1(self): pass
""",
            1,
            "1..1",
            "ok 1 - A.test_1",
            explained=("tearDownClass (A)", "ValueError: torn"),
        )
        self.assertEqual(told[0], "FAILED: tearDownClass (A)")
        self.assertEqual(told[-1], "ValueError: torn")

    def test_program_without_tests_fails(self):
        self.check("", 1, "1..0")

    def test_tests_that_match(self):
        classes = """
class A(unittest.TestCase):
    def test_1(self): self.assertEqual(sys.argv[-1], "other")
    def test_2(self): pass
class B(unittest.TestCase):
    def test_1(self): pass
"""
        self.check(classes, 0, "1..1", "ok 1 - A.test_1", arguments=("--only", "A.test_1", "other"))
        self.check(classes, 0, "1..1", "ok 1 - B.test_1", arguments=("--only", "B*"))
        self.check(classes, 1, "1..0", arguments=("--only", "test_1"))


class StandardError(Tap):
    def test_difference_of_texts_starts_above_its_first_line(self):
        told = self.check(
            """
class A(unittest.TestCase):
    def test_1(self):
        lines = [f"{number}\\n" for number in range(2000)]
        text = "".join(lines)
        lines[1500] = "other\\n"
        self.assertEqual("".join(lines), text)
""",
            1,
            "1..1",
            "not ok 1 - A.test_1",
            explained=("-other", "+1500"),
            unexplained=("1400", "1600"),
        )
        self.assertEqual(
            told[-12:],
            ["AssertionError: the texts differ:", "--- first", "+++ second", "@@ -1498,7 +1498,7 @@",
             " 1497", " 1498", " 1499", "-other", "+1500", " 1501", " 1502", " 1503"],
        )

    def test_texts_that_differ_in_the_end_of_a_line(self):
        self.check(
            """
class A(unittest.TestCase):
    def test_1(self): self.assertEqual("a\\n", "a")
""",
            1,
            "1..1",
            "not ok 1 - A.test_1",
            explained=("AssertionError: the texts differ:", "'a\\n'", "'a'"),
        )

    def test_lines_that_meson_shows_begin_with_the_first_failure(self):
        names = [f"A.test_{number}" for number in range(10, 40)]
        done = subprocess.run(
            command("""
class A(unittest.TestCase): pass
for number in range(10, 40):
    def test(self): self.fail("\\n".join(f"{self.id()} {line}" for line in range(60)))
    setattr(A, f"test_{number}", test)
"""), capture_output=True, text=True, check=False,
        )
        told = done.stderr.splitlines()
        self.assertEqual(done.stdout.count("\nnot ok"), len(names))
        self.assertEqual(told[0], "FAILED: A.test_10")
        self.assertIn("AssertionError: __main__.A.test_10 0", told)
        self.assertIn("(cut off; see testlog.txt)", told)
        self.assertIn("FAILED: A.test_11", told)
        self.assertEqual(told[-1], "(no further failures are shown; see testlog.txt)")
        self.assertTrue(80 < len(told) < 95, len(told))


class Signals(unittest.TestCase):
    # What nohup and a shell's "&" ignore, and what a careless caller blocks.
    IGNORED = (signal.SIGHUP, signal.SIGINT, signal.SIGQUIT, signal.SIGTERM, signal.SIGCHLD)

    def start(self, classes):
        def ignore():
            for number in self.IGNORED:
                signal.signal(number, signal.SIG_IGN)
            signal.pthread_sigmask(signal.SIG_BLOCK, [signal.SIGUSR1])

        return subprocess.Popen(
            command(classes), stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
            preexec_fn=ignore,
        )

    def test_programs_of_a_test_can_trap_them(self):
        process = self.start("""
import subprocess
class A(unittest.TestCase):
    def test_1(self):
        for name in ("HUP", "INT", "QUIT", "TERM", "USR1"):
            done = subprocess.run(
                ["sh", "-c", f"trap 'exit 7' {name}; kill -{name} $$"], check=False)
            self.assertEqual(done.returncode, 7, name)
""")
        output = process.communicate(timeout=60)
        self.assertEqual(output, ("1..1\nok 1 - A.test_1\n", ""))

    def test_termination_fails_the_test_and_cleans_up(self):
        for number in (signal.SIGTERM, signal.SIGINT):
            with self.subTest(number):
                process = self.start("""
import time
class A(unittest.TestCase):
    def test_1(self):
        self.addCleanup(print, "# clean", flush=True)
        with self.subTest():
            print("# waiting", flush=True)
            time.sleep(60)
    def test_2(self): pass
""")
                self.assertEqual(process.stdout.readline(), "1..2\n")
                self.assertEqual(process.stdout.readline(), "# waiting\n")
                process.send_signal(number)
                output, _ = process.communicate(timeout=60)
                self.assertEqual(
                    output.splitlines(),
                    ["not ok 1 - A.test_1", f"# ended by {number.name}", "# clean",
                     "not ok 2 - A.test_2", "# did not run"],
                )
                self.assertEqual(process.returncode, 1)


if __name__ == "__main__":
    unittest.main()
