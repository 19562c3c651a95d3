#!/usr/bin/env python3
"""Tests zolt_board as people start it: its help, and the boards that it takes and refuses."""

import copy
import json
import os
import pathlib
import pty
import resource
import shutil
import socket
import subprocess
import sys
import unicodedata
import unittest

import jsonschema

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))
sys.path.insert(0, str(pathlib.Path(__file__).parent))

import random_board  # noqa: E402
import tap  # noqa: E402
from programs import BOARD, EMULATED, SANITIZED, Scratch, not_emulated, run  # noqa: E402

SOURCE = pathlib.Path(__file__).parents[2]
HELP = """\
usage: zolt_board show [--tree | --json] [--color WHEN] BOARD
       zolt_board check [--json | --list] BOARD...
       zolt_board diff [--json] BOARD BOARD

Works on board descriptions alone:

  show     what a board has
  check    what is wrong with boards
  diff     what changed from one board to another

'zolt_board VERB --help' tells the options of a verb.

BOARD is a file, - for standard input, or the name of a board that comes with
the tools: demo, hostile, raw_only.

  --help        print this and exit
  --version     print the version and exit

Exit status: 2 for a wrong option or board; each verb says what 0 and 1 mean.
"""
ADVICE = "Try 'zolt_board --help'.\n"
ONE_SLOT = "[[slot]]\nid = 7\ndstat = 2\n"
SHOWN = """\
slots      62 empty, 0 with dstat 1, 1 with dstat 2, 0 with dstat 3
modules    1 of class 0x00
missing    the payload of slot 7
           the riser slot mapping
           all I2C nodes

slot  dstat  flags  class  index  offset  payload  oem  end points  object
   7      2  -      0x00       0  0x0000        -    -           -  -
"""
MOST_BYTES = 16 * 1024 * 1024


class BoardTest(unittest.TestCase):
    def setUp(self):
        self.scratch = Scratch()
        self.addCleanup(self.scratch.close)

    def board(self, *arguments, **options):
        options.setdefault("env", self.scratch.environment)
        return run(BOARD, *arguments, **options)

    def assert_told(self, done, message, shown="", status=2):
        self.assertEqual((done.stdout, done.stderr, done.returncode), (shown, message, status))

    def assert_shown(self, done, shown):
        self.assert_told(done, "", shown, 0)


class Help(BoardTest):
    def test_of_the_program(self):
        self.assert_shown(self.board("--help"), HELP)

    def test_of_a_verb(self):
        self.assert_shown(self.board("show", "--help"), SHOW_HELP)

    @not_emulated("the program that stands in for zolt_board is no copy of it")
    def test_of_the_program_alone_names_no_boards(self):
        alone = shutil.copy(BOARD, self.scratch.path)
        self.assertIn("of a board that comes with\nthe tools.\n", run(alone, "--help").stdout)
        self.assert_shown(run(alone, "show", "-", input=ONE_SLOT), SHOWN)

    def test_wrong_words_get_the_nearest_ones(self):
        self.assert_told(self.board("shwo", "demo"),
                         f"zolt_board: there is no verb 'shwo'; did you mean 'show'?\n{ADVICE}")
        self.assert_told(self.board("show", "--colour=x", "demo"),
                         "zolt_board: --colour is not an option; did you mean '--color'?\n"
                         + ADVICE)
        self.assert_told(self.board(), f"zolt_board: there is no verb\n{ADVICE}")

    def test_standard_output_must_take_the_text(self):
        with open("/dev/full", "w") as full:
            done = subprocess.run([BOARD, "show", "demo"], stdout=full, stderr=subprocess.PIPE,
                                  text=True, check=False, timeout=60)
        self.assertEqual(
            (done.stderr, done.returncode),
            ("zolt_board: standard output: No space left on device\n", 2))
        for command in (["show", "demo"], ["--help"]):
            done = run("sh", "-c", '"$@" >&-', "sh", BOARD, *command)
            self.assert_told(done, "zolt_board: standard output is closed\n")


SHOW_HELP = """\
usage: zolt_board show [--tree | --json] [--color WHEN] BOARD

Shows what a board has: a summary, and a line for each occupied slot.

BOARD is a file, - for standard input, or the name of a board that comes with
the tools: demo, hostile, raw_only.

  --tree        draw slots, end points, I2C nodes and objects as a tree
  --json        print one JSON document
  --color WHEN  auto (on a terminal, unless NO_COLOR is set), always,
                or never
  --help        print this and exit
  --version     print the version and exit

Exit status: 0 if the board is shown, 2 if it could not be.
"""


class Boards(BoardTest):
    def test_are_files_names_or_standard_input(self):
        file = self.scratch.file("board.toml", ONE_SLOT)
        self.assert_shown(self.board("show", file), SHOWN)
        self.assert_shown(self.board("show", "board.toml", cwd=self.scratch.path), SHOWN)
        self.assert_shown(self.board("show", "-", input=ONE_SLOT), SHOWN)
        with open(file) as given:
            self.assert_shown(run(BOARD, "show", "-", input=None, stdin=given), SHOWN)
        self.assertEqual(self.board("show", "demo").returncode, 0)

    def test_bases_are_found(self):
        self.scratch.file("board.toml", ONE_SLOT)
        self.assert_shown(
            self.board("show", "-", input='base = "board.toml"\n', cwd=self.scratch.path), SHOWN)
        self.assertEqual(
            self.board("show", "-", input='base = "demo"\n').stdout,
            self.board("show", "demo").stdout)

    def test_standard_input_may_come_late_and_in_pieces(self):
        self.assert_shown(
            run("sh", "-c", '(sleep 0.3; echo "[[slot]]"; sleep 0.3; echo "id = 7\ndstat = 2") | '
                '"$0" show -', BOARD), SHOWN)


class WrongBoards(BoardTest):
    """Each wrong board is refused with one line, in little time and memory."""

    def limited(self, *arguments, **options):
        """Runs the program with bounds for its time and memory."""
        def limit():
            if not SANITIZED and not EMULATED:
                resource.setrlimit(resource.RLIMIT_AS, (256 << 20, 256 << 20))
            resource.setrlimit(resource.RLIMIT_CPU, (20, 20))
        return self.board("show", *arguments, preexec_fn=limit, **options)

    def test_names(self):
        boards = pathlib.Path(BOARD).parents[1] / "boards"
        if not EMULATED:
            self.assert_told(self.limited("dmeo"), f"zolt_board: no board 'dmeo' in {boards}; "
                             "did you mean 'demo'?\n")
            self.assert_told(self.limited("x" * 5000),
                             f"zolt_board: no board '{'x' * 200}...' in {boards}\n")
        self.assert_told(self.limited("no/board"),
                         "zolt_board: no/board: No such file or directory\n")
        self.assert_told(self.limited("a\x1b[31m/\nb"),
                         "zolt_board: a\\x1B[31m/\\nb: No such file or directory\n")

    def test_files_that_are_no_text(self):
        place = self.scratch.path
        os.mkfifo(place / "fifo.toml")
        listening = socket.socket(socket.AF_UNIX)
        self.addCleanup(listening.close)
        listening.bind(str(place / "socket.toml"))
        (place / "loop.toml").symlink_to(place / "loop.toml")
        cases = {
            place: "Is a directory",
            place / "fifo.toml": "is not a regular file",
            place / "socket.toml": "is not a regular file",
            place / "loop.toml": "Too many levels of symbolic links",
            "/dev/zero": "is not a regular file",
            "/dev/tty": "is not a regular file",
        }
        for file, reason in cases.items():
            # A path without a slash is a name.
            self.assert_told(self.limited(f"{file}"), f"zolt_board: {file}: {reason}\n")

    def test_too_much_text(self):
        sparse = pathlib.Path(self.scratch.file("sparse.toml"))
        with open(sparse, "r+b") as file:
            file.truncate(1 << 30)
        reason = f"has more than {MOST_BYTES} bytes\n"
        self.assert_told(self.limited(str(sparse)), f"zolt_board: {sparse}: {reason}")
        done = run("sh", "-c", 'yes "# text" | "$0" show -', BOARD)
        self.assert_told(done, f"zolt_board: standard input: {reason}")

    def test_texts(self):
        cases = {
            "": "is empty\n",
            "a = \0\n": "1: Error while parsing value: unexpected control character\n",
            "x = 1\n": "1: board: 'x' is not a key here\n",
            "[[slot]]\nid = 64\n": "2: slot: 'id' must be a whole number from 1 to 63\n",
            "a = " + "[" * 100_000: "1: brackets are nested more than 64 deep\n",
            "a." * 10_000 + "b = 1": "1: a key has more than 16 parts\n",
            'base = "fifo"': "1: board: no board 'fifo' in ",
        }
        for text, reason in cases.items():
            done = self.limited("-", input=text)
            self.assertEqual((done.stdout, done.returncode), ("", 2), reason)
            separator = " " if text == "" else ""
            told = f"zolt_board: standard input:{separator}{reason}"
            self.assertEqual(done.stderr[:len(told)], told)
            self.assertEqual(done.stderr.count("\n"), 1)

    def test_standard_input_that_cannot_be_read(self):
        self.assert_told(run("sh", "-c", '"$0" show - <&-', BOARD),
                         "zolt_board: standard input: is empty\n")
        self.assert_told(run("sh", "-c", '"$0" show - </', BOARD),
                         "zolt_board: standard input: Is a directory\n")


@not_emulated("the program that stands in for zolt_board links nothing")
class Libraries(unittest.TestCase):
    def test_of_the_platform_are_not_needed(self):
        needed = run("readelf", "-dW", BOARD).stdout
        self.assertIn("libstdc++.so.6", needed)
        for library in ("libhal", "libcpld", "libsysinfo", "libdlog", "libsystemd"):
            self.assertNotIn(library, needed)


class Terminal(BoardTest):
    """Colours and characters fit the terminal, whatever the texts of the board are."""

    HOSTILE = (
        'name = "\\u001B[2J \\u009B31m \\u202E \\u2066 \\u007F\\n\\tü"\n'
        '[riser_map]\ndescription = "\\u0000\\u001B]0;x\\u0007"\n'
        '[[riser_map.record]]\nlocation = "\\u001B[H"\npart_number = "\\r"\n'
        '[[i2c.index_node]]\ndevice_type = 1\nname = [0x1B, 0x63, 0xC2, 0x9B, 0xFF]\n'
        '[[i2c.index_node.sub]]\nname = "\\u001B"\n'
        '[service.info]\nText = "\\u001B"\n'
        '[override.named]\n"\\u001B" = 1\n'
    )

    def on_terminal(self, *arguments, **environment):
        """Returns what the program shows on a terminal."""
        main, other = pty.openpty()
        with os.fdopen(main, "rb", 0) as shown:
            environment = {**self.scratch.environment, "TERM": "xterm", "LC_ALL": "C.UTF-8",
                           **environment}
            try:
                done = subprocess.run([BOARD, *arguments], stdin=subprocess.DEVNULL, stdout=other,
                                      stderr=other, env=environment, check=False, timeout=60)
                self.assertEqual(done.returncode, 0)
            finally:
                os.close(other)
            text = b""
            try:
                while piece := shown.read(65536):
                    text += piece
            except OSError:  # the end of a terminal
                pass
        return text.decode().replace("\r\n", "\n")

    def setUp(self):
        super().setUp()
        self.scratch.environment.pop("NO_COLOR", None)
        self.file = self.scratch.file("board.toml", ONE_SLOT)

    def test_colours_are_for_terminals(self):
        self.assertIn("\x1b[1mslots\x1b[0m      62 empty", self.on_terminal("show", self.file))
        self.assert_shown(self.board("show", self.file), SHOWN)

    def test_colours_can_be_ordered_and_forbidden(self):
        for arguments, environment in (
            (["--color=never"], {}), ([], {"NO_COLOR": "1"}), (["--color=auto"], {"NO_COLOR": "x"}),
            ([], {"TERM": "dumb"}),
        ):
            self.assertEqual(self.on_terminal("show", *arguments, self.file, **environment), SHOWN)
        coloured = self.on_terminal("show", self.file)
        for arguments, environment in ((["--color=always"], {"NO_COLOR": "1"}),
                                       ([], {"NO_COLOR": ""})):
            self.assertEqual(self.on_terminal("show", *arguments, self.file, **environment),
                             coloured)
        self.assert_shown(self.board("show", "--color=always", self.file), coloured)

    def test_the_locale_decides_on_box_characters(self):
        for name, tree in (
            ("C", "board\n|- slots\n|  `- slot 7: dstat 2, class 0x00, index 0\n"
                  "`- service\n   `- info: pcardInfo, 2 properties\n"),
            ("C.UTF-8", "board\n├─ slots\n│  └─ slot 7: dstat 2, class 0x00, index 0\n"
                        "└─ service\n   └─ info: pcardInfo, 2 properties\n"),
        ):
            self.scratch.environment["LC_ALL"] = name
            self.assert_shown(self.board("show", "--tree", self.file), tree)

    def test_texts_of_the_board_are_no_orders_to_the_terminal(self):
        for form in ((), ("--tree",), ("--json",)):
            for name in ("C", "C.UTF-8"):
                self.scratch.environment["LC_ALL"] = name
                done = self.board("show", *form, "-", input=self.HOSTILE)
                self.assertEqual((done.stderr, done.returncode), ("", 0))
                wrong = {letter for letter in done.stdout if unicodedata.category(letter)[0] == "C"}
                self.assertEqual(wrong, {"\n"}, form)
        self.assertEqual(self.board("show", "-", input=self.HOSTILE).stdout.splitlines()[0],
                         r"board      \x1B[2J \xC2\x9B31m \xE2\x80\xAE \xE2\x81\xA6 \x7F\n\tü")


class Json(BoardTest):
    """A report in JSON fits its schema, and so does the schema the report."""

    SCHEMA = json.loads((SOURCE / "docs" / "board-report.schema.json").read_text())

    def report(self, *arguments, **options):
        done = self.board("show", "--json", *arguments, **options)
        self.assertEqual((done.stderr, done.returncode), ("", 0))
        done.stdout.encode("ascii")
        report = json.loads(done.stdout, parse_constant=self.fail)
        jsonschema.Draft7Validator(self.SCHEMA).validate(report)
        self.assertEqual(report["report"], "show")
        return report

    def test_schema_is_a_schema(self):
        jsonschema.Draft7Validator.check_schema(self.SCHEMA)

    def test_schema_refuses_what_is_not_in_it(self):
        report = self.report("demo")
        for change in (lambda: report.pop("faults"), lambda: report.update(more=1),
                       lambda: report["slots"][0].pop("payload"),
                       lambda: report["slots"][0]["registers"].update(bytes="0")):
            before = copy.deepcopy(report)
            change()
            self.assertFalse(jsonschema.Draft7Validator(self.SCHEMA).is_valid(report))
            report = before

    def test_boards_of_the_tools(self):
        for name in ("demo", "hostile", "raw_only"):
            self.assertEqual(self.report(name)["board"]["source"]["text"], name)

    def test_demo(self):
        report = self.report("demo")
        self.assertEqual(report["summary"]["slots_by_dstat"], [31, 1, 1, 30])
        slot = report["slots"][4]
        self.assertEqual((slot["id"], slot["object"]), (5, {"type": "riser", "object": "riser1"}))
        self.assertEqual(slot["payload"]["fields"]["device_id"], 7)
        self.assertEqual([point["type"] for point in slot["payload"]["fields"]["end_points"]],
                         [1, 2])
        self.assertEqual(report["riser_map"]["fields"]["records"][0]["location"]["text"], "RISER 1")

    def test_random_boards(self):
        for seed in range(12):
            with self.subTest(seed):
                file = self.scratch.file("random.toml", random_board.random_board(seed))
                self.report(file)

    def test_texts_that_are_no_utf8(self):
        report = self.report("-", input=Terminal.HOSTILE)
        self.assertEqual(report["i2c"]["index_nodes"][0]["name"], {"bytes": "1B63C29BFF"})
        name = os.fsdecode(b"\xff.toml")
        self.scratch.file(name, ONE_SLOT)
        report = self.report(name, cwd=self.scratch.path)
        self.assertEqual(report["board"]["source"], {"bytes": "FF2E746F6D6C"})


if __name__ == "__main__":
    tap.main()
