#!/usr/bin/env python3
"""What holds for every comparison, checked on random boards and on boards that differ a little."""

import os
import pathlib
import random
import re
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))

import tap  # noqa: E402
from random_board import random_board  # noqa: E402

COMPARE_BOARDS = sys.argv.pop(1)
SEEDS = range(1, int(os.environ.get("DIFF_SEEDS", "4")) + 1)
CHANGES = 8  # boards that differ a little from one random board


def changed(description, dice):
    """The description with one change. It may be no board any more."""
    lines = description.split("\n")
    at = dice.choice([i for i, line in enumerate(lines) if " = " in line])
    choice = dice.randrange(4)
    if choice == 0:  # a key has its default
        del lines[at]
    elif choice == 1:  # another number
        lines[at] = re.sub(r"= (\d+)$", lambda m: f"= {int(m[1]) ^ 1 << dice.randrange(5)}", lines[at])
    elif choice == 2:  # another truth
        words = {"true": "false", "false": "true"}
        lines[at] = re.sub(r"= (true|false)$", lambda m: f"= {words[m[1]]}", lines[at])
    else:  # a table is missing
        headers = [i for i, line in enumerate(lines) if line.startswith("[")]
        if headers:
            start = dice.choice(headers)
            end = min([i for i in headers if i > start], default=len(lines))
            del lines[start:end]
    return "\n".join(lines)


class Properties(unittest.TestCase):
    def test_random_boards(self):
        dice = random.Random(1)
        with tempfile.TemporaryDirectory() as place:
            files = []

            def add(name, description):
                files.append(pathlib.Path(place) / f"{name}.toml")
                files[-1].write_text(description, encoding="utf-8")

            for seed in SEEDS:
                description = random_board(seed)
                add(seed, description)
                for number in range(CHANGES):
                    add(f"{seed}_{number}", changed(description, dice))
            emulator = os.environ.get("EMULATOR", "").split()
            done = subprocess.run([*emulator, COMPARE_BOARDS, *files], capture_output=True, text=True,
                                  check=False, timeout=600)
            self.assertEqual(done.stderr, "")
            lines = done.stdout.replace(f"{place}/", "").splitlines()
            self.assertEqual(lines[:-1], [])
            same, different, refused = map(int, re.findall(r"\d+", lines[-1]))
            # All kinds of pairs are among them.
            boards = len(files) - refused
            self.assertEqual(same + different, 2 * boards - 1)
            self.assertGreater(same - boards, len(SEEDS) // 4)
            self.assertGreater(different, len(SEEDS) * 2)
            self.assertEqual(done.returncode, 0)


if __name__ == "__main__":
    tap.main()
