#!/usr/bin/env python3
"""Holds zolt-board(5) to the reference: the page is up to date, well-formed, and has every key."""

import pathlib
import re
import shutil
import subprocess
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent / "support"))

import tap  # noqa: E402

SOURCE = pathlib.Path(__file__).resolve().parents[1]
PAGE = SOURCE / "docs" / "zolt-board.5"
REFERENCE = (SOURCE / "docs" / "board-description.md").read_text()


def output(*command):
    return subprocess.run(command, stdout=subprocess.PIPE, text=True, check=True).stdout


class Page(unittest.TestCase):
    def test_is_what_the_script_writes(self):
        written = output(sys.executable, SOURCE / "scripts" / "manual_page")
        self.assertEqual(
            PAGE.read_text(), written, "run: scripts/manual_page > docs/zolt-board.5"
        )

    @unittest.skipUnless(shutil.which("mandoc"), "there is no mandoc")
    def test_has_no_fault_that_mandoc_finds(self):
        done = subprocess.run(
            ["mandoc", "-T", "lint", "-W", "warning", PAGE], stdout=subprocess.PIPE, text=True,
            check=False,
        )
        self.assertEqual(done.stdout, "")

    @unittest.skipUnless(shutil.which("mandoc"), "there is no mandoc")
    def test_shows_all_words_and_all_code_of_the_reference(self):
        shown = output("mandoc", "-T", "utf8", "-O", "width=500", PAGE)
        shown = re.sub(r".\x08", "", shown)
        text = re.sub(r"\s+", " ", shown.replace("\N{LEFT SINGLE QUOTATION MARK}", "")
                      .replace("\N{RIGHT SINGLE QUOTATION MARK}", ""))
        for code in re.findall(r"`([^`\n]+)`", REFERENCE):
            self.assertIn(re.sub(r"\s+", " ", code), text)
        blocks = re.findall(r"```[a-z]*\n(.*?)```", REFERENCE, re.DOTALL)
        self.assertGreater(len(blocks), 3)
        for line in "".join(blocks).splitlines():
            self.assertIn(line.rstrip(), shown)
        words = set(re.findall(r"[A-Za-z]{3,}", re.sub(r"```[a-z]*|\]\([^)]*\)", "", REFERENCE)))
        missing = {
            word for word in words
            if word not in text and word.capitalize() not in text and word.lower() not in text
        }
        self.assertEqual(missing, {"Describing"})  # of the title, which the page has in other words


if __name__ == "__main__":
    tap.main()
