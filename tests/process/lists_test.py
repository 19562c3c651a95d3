#!/usr/bin/env python3
"""Tests the lists of zolt_sim, and the names of boards: each listed thing is there."""

import json
import os
import pathlib
import shutil
import subprocess
import sys
import unittest
import xml.etree.ElementTree

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))
sys.path.insert(0, str(pathlib.Path(__file__).parent))

import tap  # noqa: E402
from programs import SIM, Scratch, not_emulated, run  # noqa: E402

SOURCE = pathlib.Path(__file__).parents[2]
BOARDS = pathlib.Path(SIM).parents[1] / "boards"
TYPES = ("bp", "puck", "rfc", "riser", "ftulm", "karnRaid", "karnNonRaid", "rida", "flop", "bi",
         "battery")
ADVICE = "'zolt_sim --help' tells more.\n"

ELSEWHERE = not_emulated("the program that stands in for zolt_sim is not beside the boards")


class SimTest(unittest.TestCase):
    def setUp(self):
        self.scratch = Scratch()
        self.addCleanup(self.scratch.close)

    def sim(self, *arguments, **options):
        return run(SIM, *arguments, env=self.scratch.environment, **options)

    def rows(self, *lists):
        done = self.sim("--list", *lists)
        self.assertEqual((done.stderr, done.returncode), ("", 0))
        self.assertTrue(done.stdout.endswith("\n"))
        return [tuple(line.split("\t")) for line in done.stdout.splitlines()]

    def assert_refused(self, done, message, status=2):
        self.assertEqual((done.stdout, done.stderr, done.returncode), ("", message, status))


class Lists(SimTest):
    def test_boards_with_their_texts(self):
        self.assertEqual(
            self.rows("boards"),
            [("demo", "a full server"), ("hostile", "wrong lengths, counts and offsets"),
             ("raw_only", "registers by raw address only")],
        )

    @ELSEWHERE
    def test_boards_that_somebody_adds(self):
        build = self.scratch.path / "build"
        (build / "standin").mkdir(parents=True)
        sim = shutil.copy(SIM, build / "standin")
        boards = pathlib.Path(shutil.copytree(BOARDS, build / "boards"))
        (boards / "mine.toml").write_text('name = "two\\nlines"\n')
        (boards / "nameless.toml").write_text("")
        (boards / "wrong.toml").write_text("name = 7\n")
        (boards / "note.txt").write_text("no board\n")
        shown = run(sim, "--list", "boards").stdout.splitlines()
        self.assertEqual(shown, [
            "demo\ta full server",
            "hostile\twrong lengths, counts and offsets",
            "mine\ttwo\\nlines",
            "nameless\t",
            "raw_only\tregisters by raw address only",
            f"wrong\t{boards}/wrong.toml:1: board: 'name' must be a text",
        ])

    def test_device_types_that_a_fault_can_name(self):
        rows = self.rows("device-types")
        for row in (("0", "fSCP"), ("19", "BP"), ("24", "PUCK")):
            self.assertIn(row, rows)
        codes = [int(code) for code, _ in rows]
        self.assertEqual(codes, sorted(set(codes)))
        faults = sum((("--fault", f"sysinfo {name}") for _, name in rows), ())
        self.assertEqual(self.sim(*faults, "--fault", "bus absent", "true").stderr, "")

    def test_what_the_service_publishes(self):
        modules = "".join(
            f'[[slot]]\nid = {number}\nmodule = {{ type = "{name}", object = "m" }}\n'
            for number, name in enumerate(TYPES, 1)
        )
        board = self.scratch.file("board.toml", modules)
        paths = {"info": "info"} | {name: f"{name}/m" for name in TYPES}
        interfaces, properties = [], []
        script = "; ".join(
            "busctl --system --json=short call com.tesk.bmc.zolt "
            f"/com/tesk/bmc/zolt/{path} org.freedesktop.DBus.Introspectable Introspect"
            for path in paths.values()
        )
        done = self.sim("--board", board, "sh", "-c", script)
        self.assertEqual(done.stderr, "")
        for name, line in zip(paths, done.stdout.splitlines(), strict=True):
            (text,) = json.loads(line)["data"]
            for interface in xml.etree.ElementTree.fromstring(text).iter("interface"):
                if interface.get("name").startswith("com."):
                    interfaces.append((name, interface.get("name")))
                    properties += [
                        (interface.get("name"), each.get("name"), each.get("type"))
                        for each in interface.iter("property")
                    ]
        self.assertEqual(self.rows("interfaces"), interfaces)
        self.assertEqual(self.rows("properties"), list(dict.fromkeys(properties)))

    def test_faults_as_the_reference_has_them(self):
        reference = (SOURCE / "docs" / "board-description.md").read_text()
        rows = self.rows("faults")
        self.assertIn(("bus absent", "There is no system bus."), rows)
        for rule, meaning in rows:
            self.assertIn(f"\n| `{rule}` | ", reference)
            self.assertTrue(meaning)

    def test_registers_of_the_board(self):
        board = self.scratch.file("b.toml", "[[slot]]\nid = 7\ndstat = 2\npayload_offset = 0x1234\n"
                                  "[override.named]\nNEW = '01 0F FF'\nVOID = []\n")
        done = self.sim("--board", board, "--list", "registers")
        self.assertEqual((done.stderr, done.returncode), ("", 0))
        lines = done.stdout.splitlines()
        for line in ("PICPWR_7_DSTAT\t02", "PICPWR_63_DSTAT\t00", "NEW\t01 0F FF", "VOID\t"):
            self.assertIn(line, lines)
        self.assertIn(("PICPWR_5_DSTAT", "03"), self.rows("registers"))
        self.assert_refused(
            self.sim("--board", "none.toml", "--list", "registers"),
            "zolt_sim: none.toml: No such file or directory\n",
        )

    def test_words_of_time_as_the_reference_has_them(self):
        reference = (SOURCE / "docs" / "board-description.md").read_text()
        rows = self.rows("fault-times")
        self.assertEqual([usage for usage, _ in rows], [
            "once", "N times", "after N", "until recovery", "delay TIME", "delay forever", "fail",
        ])
        for usage, _ in rows:
            self.assertIn(f"\n| `{usage}` | ", reference)

    def test_everything_with_the_name_of_its_list(self):
        names = ("boards", "device-types", "interfaces", "properties", "faults", "fault-times",
                 "registers")
        every = [(name, *row) for name in names for row in self.rows(name)]
        self.assertEqual(self.rows(), every)
        self.assertEqual(self.rows("faults", "boards"), [
            (name, *row) for name in ("faults", "boards") for row in self.rows(name)
        ])

    def test_no_other_list(self):
        self.assert_refused(
            self.sim("--list", "boards", "fault"),
            f"zolt_sim: there is no list 'fault'; did you mean 'faults'?\n{ADVICE}",
        )
        self.assert_refused(
            self.sim("--list", "everything"),
            "zolt_sim: there is no list 'everything'; the lists are: boards, device-types, "
            f"interfaces, properties, faults, fault-times, registers\n{ADVICE}",
        )

    def test_that_cannot_be_written_are_a_failure(self):
        for option in ("--list", "--help", "--version"):
            with open("/dev/full", "w", encoding="utf-8") as full:
                done = subprocess.run(
                    [SIM, option], stdout=full, stderr=subprocess.PIPE, text=True,
                    check=False,
                )
            self.assertEqual(
                (done.stderr, done.returncode),
                ("zolt_sim: standard output: No space left on device\n", 125),
            )


class BoardNames(SimTest):
    @ELSEWHERE
    def test_similar_to_a_wrong_one_are_told(self):
        reason = f"zolt_sim: no board 'dmeo' in {BOARDS}; did you mean 'demo'?\n"
        self.assert_refused(self.sim("--board", "dmeo", "echo", "started"), reason)
        self.assert_refused(self.sim("--check", "dmeo", "demo"), reason)

    @ELSEWHERE
    def test_unlike_all_others_are_told_with_the_place(self):
        self.assert_refused(
            self.sim("--board", "no\x1bne", "true"),
            f"zolt_sim: no board 'no\\x1Bne' in {BOARDS}\n",
        )

    @ELSEWHERE
    def test_of_files_need_a_slash(self):
        self.scratch.file("mine", 'name = "mine"\n')
        self.assert_refused(
            self.sim("--board", "mine", "true", cwd=self.scratch.path),
            f"zolt_sim: no board 'mine' in {BOARDS}; the name of a file needs a slash: './mine'\n",
        )
        done = self.sim("--board", "./mine", "true", cwd=self.scratch.path)
        self.assertEqual((done.stderr, done.returncode), ("", 0))

    def test_of_missing_files_are_told(self):
        for name in ("./none", "none.toml", os.fspath(self.scratch.path / "none.toml")):
            self.assert_refused(
                self.sim("--board", name, "true"),
                f"zolt_sim: {name}: No such file or directory\n",
            )


if __name__ == "__main__":
    tap.main()
