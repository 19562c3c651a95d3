#!/usr/bin/env python3
"""Holds the loader of board descriptions and docs/board.schema.json to each other.

usage: schema_test.py BOARD_KEYS TEST_PROGRAM...

BOARD_KEYS prints the keys that the loader asks for, with their ranges. The test programs run the tests
of the loader, and record each description with its refusal.
"""

import copy
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import tomllib
import unittest

import jsonschema

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))

import tap  # noqa: E402

HERE = pathlib.Path(__file__).resolve().parent
TOP = HERE.parent.parent
SCHEMA = json.loads((TOP / "docs" / "board.schema.json").read_text())
BOARDS = sorted((TOP / "boards").glob("*.toml"))
REMOVAL = {"$ref": "#/definitions/removal"}

# The loader refuses these descriptions, and a schema cannot. Each pattern fits the messages.
CANNOT_SAY = (
    # the text is no TOML
    r"Error while parsing",
    # things that are told apart by several tables
    r"is described already",
    r"stands more than once in the base",
    r"overlap bytes of slot|runs? past",
    r"'parent' must be a bus that is described before it|another node has this bus already",
    r"room for \d+|a board has at most",
    # things of the base
    r"the base has no |a table with 'remove = true' needs|leads back to|cannot be read",
    r"is a key only where 'base' is given",
    r"over\.toml:\d+: \w+: '\w+' is a key only where",
    # keys that the base may have
    r"(dsl|karn): '(type|id)' is missing",
    r"give both 'type' and 'object', or neither",
    r"'(value|signature)' is missing beside",
    r"needs 'memory', 'size' or 'node_type'|a node with 'parent' needs 'physical_bus'",
    r"is a key only where 'device_class' is 0x2A",
    r"is a key only where 'indirect' is true",
    r"is a key only where the module has an OEM area",
    r"is a key only where 'action' is 'reply'",
    # lengths of bytes, which may be written as a text
    r"is not a byte of two hexadecimal digits",
    r"has \d+ bytes, at most|has more than 255 bytes|has more than 8 identifiers|more than 'size'",
    r"'slots' (needs two bytes|has more than 255 slots)|does not reach|at most 31 end points",
    # texts with a form of their own
    r"fault '",
    r"has a NUL character",
    r"is no (object path|interface name|error name) of D-Bus",
    r"'signature' must be one complete D-Bus type|'value' does not fit the signature",
    # numbers as keys: a pattern has no ranges
    r"is no (raw address|property number)",
)


def resolved(schema):
    """The alternatives of a value's schema, without that of the removal."""
    if "$ref" in schema and schema != REMOVAL:
        name = schema["$ref"].rsplit("/", 1)[1]
        return resolved(SCHEMA["definitions"][name])
    if "allOf" in schema and "type" not in schema:
        return [one for part in schema["allOf"] for one in resolved(part)]
    if "anyOf" in schema and "type" not in schema:
        return [one for part in schema["anyOf"] if part != REMOVAL for one in resolved(part)]
    return [schema]


def kinds_of(schema, path, keys):
    """Adds the keys below a value to `keys`, and returns the kinds of the value."""
    if schema.get("$ref") == "#/definitions/bytes":
        return {"bytes"}
    kinds = set()
    for one in resolved(schema):
        if one.get("type") == "integer":
            kinds.add(("integer", one["minimum"], one.get("maximum")))
        elif one.get("type") == "string" or "enum" in one:
            kinds.add("text")
        elif one.get("type") == "boolean":
            kinds.add("boolean")
        elif one.get("type") == "array":
            inner = resolved(one["items"])[0]
            if inner.get("type") == "object":
                kinds.add("tables")
                add_keys(inner, path, keys)
            else:
                kinds.add("texts" if inner["type"] == "string" else "bytes")
        elif "properties" in one:
            kinds.add("table")
            add_keys(one, path, keys)
        elif "additionalProperties" in one:
            kinds.add("names")
            keys[f"{path}.*"] = kinds_of(one["additionalProperties"], f"{path}.*", keys)
        else:
            kinds.add("any")
    return kinds


def add_keys(table, path, keys):
    for key, value in table["properties"].items():
        inner = f"{path}.{key}".lstrip(".")
        if set(value) == {"description", "allOf"}:
            (value,) = value["allOf"]
        keys[inner] = kinds_of(value, inner, keys)


def keys_of_schema():
    keys = {}
    add_keys(SCHEMA, "", keys)
    return keys


def output_of_board_keys():
    done = subprocess.run(
        [sys.argv[1], *BOARDS, HERE / "every_key.toml"], check=True, text=True,
        stdout=subprocess.PIPE,
    )
    return [line.split(" ") for line in done.stdout.splitlines()]


def keys_of_loader(lines):
    keys = {}
    for path, kind, lowest, highest in (line[1:] for line in lines if line[0] == "key"):
        kinds = keys.setdefault(path, set())
        kinds.add(("integer", int(lowest), int(highest)) if kind == "integer" else kind)
    for kinds in keys.values():
        if len(kinds) > 1:  # the loader looks at the value before it asks for a kind
            kinds.discard("any")
        if "names" in kinds:
            kinds.discard("table")
    return keys


def recorded_cases(programs):
    """The descriptions of the loader's tests, each with its refusal."""
    with tempfile.TemporaryDirectory() as directory:
        record = pathlib.Path(directory) / "descriptions"
        for program in programs:
            subprocess.run(
                [program, "--gtest_filter=-DescriptionText.*:DescriptionChain.bounds*:Overlay.*"],
                env=dict(os.environ, ZOLT_DESCRIPTIONS=str(record)), stdout=subprocess.DEVNULL,
                stderr=subprocess.DEVNULL, check=False,
            )
        data = record.read_bytes()
    cases = {}
    while data:
        head, data = data.split(b"\n", 1)
        description, refusal = (int(length) for length in head.split())
        text = data[:description].decode(errors="replace")
        cases[text] = data[description:description + refusal].decode()
        data = data[description + refusal + 1:]
    return cases


# The loader is the same on each architecture, and this machine cannot start a program of another one.
@unittest.skipIf(os.environ.get("EMULATOR"),
                 "emulated: this machine cannot start a program of another architecture")
class Schema(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        jsonschema.Draft7Validator.check_schema(SCHEMA)
        cls.validator = jsonschema.Draft7Validator(SCHEMA)
        cls.lines = output_of_board_keys()
        cls.cases = recorded_cases(sys.argv[2:])

    def errors(self, document):
        return [f"{list(error.path)}: {error.message[:200]}"
                for error in self.validator.iter_errors(document)]

    def test_has_the_keys_and_ranges_of_the_loader(self):
        loader = keys_of_loader(self.lines)
        schema = keys_of_schema()
        for path in list(schema):
            if path.rsplit(".", 1)[-1] in ("remove", "position"):
                del schema[path]
        # The loader takes the value of a property as it is: a plain value, or a table.
        for path in ("service.info.*", "service.object.properties.*"):
            self.assertEqual(loader.pop(path), {"table"})
            self.assertEqual(
                schema.pop(path), {"boolean", "text", "table", ("integer", 0, 65535)}
            )
        self.assertGreater(len(loader), 200)
        self.assertEqual(schema, loader)

    def test_has_the_changes_of_the_loader(self):
        layout = {line[1]: (line[2], line[3:]) for line in self.lines if line[0] == "layout"}
        asked = {
            path: kinds & {"table", "tables", "names", "texts"}
            for path, kinds in keys_of_loader(self.lines).items() if "*" not in path
        }
        # An array of texts that is no fault is replaced as a whole.
        asked.pop("service.object.without")
        self.assertEqual(
            {path: {kind} for path, (kind, _) in layout.items()},
            {path: kinds for path, kinds in asked.items() if kinds},
        )
        keys = keys_of_schema()
        for path, (kind, identity) in layout.items():
            with self.subTest(path):
                self.assertEqual(f"{path}.remove" in keys, kind in ("table", "tables"))
                self.assertEqual(f"{path}.position" in keys, kind == "tables" and not identity)
                for key in identity:
                    self.assertIn(f"{path}.{key}", keys)

    def test_names_the_device_types(self):
        names = [line[1] for line in self.lines if line[0] == "device_type"]
        listed = SCHEMA["definitions"]["deviceType"]["anyOf"][1]["enum"]
        self.assertEqual(len(names), 165)
        self.assertEqual(set(listed), set(filter(None, names)) | {"FSCP", "Backplane"})

    def test_accepts_the_boards(self):
        self.assertTrue(BOARDS)
        for board in [*BOARDS, HERE / "every_key.toml"]:
            with self.subTest(board.name):
                self.assertEqual(self.errors(tomllib.loads(board.read_text())), [])

    def test_accepts_what_the_reference_shows(self):
        page = (TOP / "docs" / "board-description.md").read_text()
        examples = re.findall(r"^```toml\n(.*?)^```", page, re.DOTALL | re.MULTILINE)
        self.assertGreater(len(examples), 4)
        for example in examples:
            if not example.startswith("payload"):  # a key of a slot
                with self.subTest(example):
                    self.assertEqual(self.errors(tomllib.loads(example)), [])

    def test_accepts_and_refuses_the_descriptions_of_the_loaders_tests(self):
        unsaid = re.compile("|".join(CANNOT_SAY))
        accepted = refused = 0
        for text, refusal in self.cases.items():
            if refusal and unsaid.search(refusal):
                continue
            try:
                document = tomllib.loads(text)
            except tomllib.TOMLDecodeError as error:
                self.fail(f"{error}\n{text}")
            with self.subTest(text[:300], refusal=refusal):
                if "= 1.0" in text:
                    continue  # is a whole number, to a schema
                errors = self.errors(document)
                if refusal:
                    refused += 1
                    self.assertTrue(errors, "the schema accepts this")
                else:
                    accepted += 1
                    self.assertEqual(errors, [])
        self.assertGreater(accepted, 50)
        self.assertGreater(refused, 100)

    def test_cannot_say_no_more_than_the_list(self):
        messages = "\n".join(self.cases.values())
        idle = [pattern for pattern in CANNOT_SAY if not re.search(pattern, messages)]
        self.assertEqual(idle, [])

    def test_comparison_finds_differences(self):
        """Proves the comparison of the keys: a changed schema does not pass."""
        original = copy.deepcopy(SCHEMA)
        self.addCleanup(SCHEMA.update, original)
        loader = keys_of_loader(self.lines)
        slot = SCHEMA["properties"]["slot"]["anyOf"][0]["items"]["properties"]
        slot["dstat"] = {"$ref": "#/definitions/from0To255"}
        del slot["dbyp"]
        changed = keys_of_schema()
        self.assertNotEqual(changed["slot.dstat"], loader["slot.dstat"])
        self.assertNotIn("slot.dbyp", changed)


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__.splitlines()[2])
    tap.main()
