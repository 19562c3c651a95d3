#!/usr/bin/env python3
"""The reader of transcripts: what it understands, what it refuses, and where it sees the error."""

import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))

import tap  # noqa: E402
from transcript import Malformed, encoded, read_text, read_transcript  # noqa: E402

COMMAND = "=== command\nzolt_sim --board demo -- zolt_test -o 1\n"
MINIMUM = COMMAND + "=== stdout\n"


class ReaderTest(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.path = pathlib.Path(directory.name) / "a.transcript"

    def read(self, text, **texts):
        self.path.write_bytes(text.encode("latin-1"))
        return read_transcript(self.path, texts)

    def refused(self, text, number, reason):
        with self.assertRaises(Malformed) as caught:
            self.read(text)
        self.assertEqual(str(caught.exception), f"{self.path}:{number}: {reason}")


class UnderstoodTest(ReaderTest):
    def stdout(self, lines, **texts):
        return self.read(MINIMUM + lines, **texts).contents["stdout"]

    def test_every_section(self):
        transcript = self.read(
            "# A slot.\n"
            "#\n"
            "=== command\n"
            "zolt_sim --board board.toml --fault 'bus absent'\n"
            "    -- zolt_test\n"
            "    -o '2 3'\n"
            "=== board.toml\n"
            "[[slot]]\n"
            "# no comment of the transcript\n"
            "=== stdin\n"
            "1\n"
            "=== stdout\n"
            "\n"
            " two\n"
            "=== calls\n"
            "=== debug_log\n"
            "a\n"
            "b\n"
            "=== i2c_log\n"
            "c\n"
        )
        self.assertEqual(transcript.options, ["--board", "board.toml", "--fault", "bus absent"])
        self.assertEqual(transcript.arguments, ["-o", "2 3"])
        self.assertEqual(
            transcript.contents,
            {
                "board.toml": b"[[slot]]\n# no comment of the transcript\n",
                "stdin": b"1\n",
                "stdout": b"\n two\n",
                "calls": b"",
                "debug_log": b"a\nb\n",
                "i2c_log": b"c\n",
            },
        )

    def test_absent_section_is_not_empty(self):
        self.assertEqual(self.read(MINIMUM).contents, {"stdout": b""})

    def test_tool_without_arguments(self):
        transcript = self.read("=== command\nzolt_sim --board demo -- zolt_test\n=== stdout\n")
        self.assertEqual((transcript.options, transcript.arguments), (["--board", "demo"], []))

    def test_missing_last_newline(self):
        self.assertEqual(self.stdout("a\nb\n\\ No newline at end\n"), b"a\nb")
        self.assertEqual(self.stdout("a\n\n\\ No newline at end\n"), b"a\n")

    def test_every_section_may_lack_its_last_newline(self):
        transcript = self.read(
            COMMAND + "=== stdin\n3\n\\ No newline at end\n=== stdout\nb\n\\ No newline at end\n"
        )
        self.assertEqual(transcript.contents, {"stdin": b"3", "stdout": b"b"})

    def test_blanks_before_a_backslash_belong_to_the_line(self):
        self.assertEqual(self.stdout("a  \\\n\\\n"), b"a  \n\n")

    def test_backslashes_and_bytes(self):
        self.assertEqual(self.stdout("\\\\x41 \\x41\\xfF\\x00\\\\\n"), b"\\x41 A\xff\0\\\n")

    def test_heading_as_content(self):
        self.assertEqual(self.stdout("\\x3D== stdin\n ===\n=\n"), b"=== stdin\n ===\n=\n")

    def test_marker_as_content(self):
        self.assertEqual(self.stdout("\\\\ No newline at end\n"), b"\\ No newline at end\n")

    def test_text_stands_where_its_name_stands(self):
        self.assertEqual(self.stdout("a\\{b}c\\{b}\n", b=b"1\n\xff\\{b}"), b"a1\n\xff\\{b}c1\n\xff\\{b}\n")

    def test_text_of_a_file(self):
        self.path.write_text("=== no heading\n 1 \\\n\\x80\n\\ No newline at end\n")
        self.assertEqual(read_text(self.path), b"=== no heading\n 1 \n\x80")

    def test_what_is_written_for_bytes_is_read_as_these_bytes(self):
        for content in (
            b"", b"\n", b"a", b"a\n", b"a\n\n", b" ", b" \n \n", bytes(range(256)), b"\\", b"\\\n",
            b"=== stdin\n", b"a\n===", b"==\n", b"\\ No newline at end\n", b"\\{b}", b"\\x41",
            b"\r\n", b"\xc3\xa4\n", b"a\\ \n",
        ):
            with self.subTest(content):
                self.assertEqual(self.stdout("".join(f"{l}\n" for l in encoded(content))), content)

    def test_bytes_are_written_legibly(self):
        self.assertEqual(
            encoded(b"a b \n\\\x1b\xff\n===\n  c"),
            ["a b \\", "\\\\\\x1B\\xFF", "\\x3D==", "  c", "\\ No newline at end"],
        )


class RefusedTest(ReaderTest):
    def test_unknown_section(self):
        self.refused(MINIMUM + "=== stdour\n", 4, "no section is called '=== stdour'")

    def test_heading_out_of_shape(self):
        for heading in ("===", "===stdin", "===  stdin", "==== stdin", "=== stdin ==="):
            with self.subTest(heading):
                self.refused(MINIMUM + heading + "\n", 4, f"no section is called {heading!r}")

    def test_second_section(self):
        self.refused(MINIMUM + "a\n=== stdout\n", 5, "a second section stdout")
        self.refused(MINIMUM + COMMAND, 4, "a second section command")

    def test_missing_section(self):
        self.refused(COMMAND, 1, "no section stdout")
        self.refused("=== stdout\n", 1, "no section command")
        self.refused("# only a comment\n", 1, "no section command")

    def test_text_before_the_first_section(self):
        self.refused("# comment\ntext\n" + MINIMUM, 2, "neither a comment nor in a section")
        self.refused("\n" + MINIMUM, 1, "neither a comment nor in a section")

    def test_empty_file(self):
        self.refused("", 1, "the file does not end with a newline")

    def test_file_without_its_last_newline(self):
        self.refused(MINIMUM + "a", 4, "the file does not end with a newline")

    def test_blank_that_cannot_be_seen(self):
        self.refused(
            MINIMUM + "a\nb \n", 5, "a blank at the end of the line; put a \\ behind it"
        )

    def test_byte_that_cannot_be_seen(self):
        for byte in "\0\t\r\x1b\x7f\x80\xff":
            with self.subTest(byte):
                self.refused(MINIMUM + f"{byte}\n", 4, "a byte that is to be written as \\xHH")

    def test_unknown_escape(self):
        for escape in ("\\n", "\\x4", "\\xg0", "\\ No newline", "\\{", "\\{a", "\\{a}", "\\{}"):
            with self.subTest(escape):
                self.refused(MINIMUM + f"b\na{escape}\n", 5, f"nothing is written as {escape!r}")

    def test_marker_that_does_not_end_a_section(self):
        reason = "not behind the last line of a section"
        self.refused(MINIMUM + "a\n\\ No newline at end\nb\n", 5, reason)
        self.refused(MINIMUM + "a\n\\ No newline at end\n\\ No newline at end\n", 5, reason)
        self.refused(MINIMUM + "\\ No newline at end\n", 4, reason)

    def test_command_of_another_shape(self):
        for command in ("", "zolt_test", "zolt_sim", "zolt_sim --board demo zolt_test",
                        "zolt_sim --board demo --", "zolt_sim --board demo -- true",
                        "valgrind zolt_sim --board demo -- zolt_test"):
            with self.subTest(command):
                self.refused(
                    f"# comment\n=== command\n{command}\n=== stdout\n",
                    2,
                    "the command is no zolt_sim ... -- zolt_test ...",
                )

    def test_command_without_a_board(self):
        for options in ("", "--board", "--fault 'bus absent' --board demo"):
            with self.subTest(options):
                self.refused(
                    f"=== command\nzolt_sim {options} -- zolt_test\n=== stdout\n",
                    1,
                    "zolt_sim's first option has to be --board NAME",
                )

    def test_open_quote(self):
        self.refused(
            "=== command\nzolt_sim --board 'demo -- zolt_test\n=== stdout\n",
            1,
            "the command: No closing quotation",
        )

    def test_board_and_command_that_differ(self):
        reason = "the command names board.toml exactly if that section is there"
        self.refused(MINIMUM + "=== board.toml\n", 1, reason)
        self.refused("=== command\nzolt_sim --board board.toml -- zolt_test\n=== stdout\n", 1, reason)


if __name__ == "__main__":
    tap.main()
