#!/usr/bin/env python3
"""The mutants of small sources."""

import pathlib
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))

import tap  # noqa: E402
from mutants import mutants_of  # noqa: E402


class Mutants(unittest.TestCase):
    def check(self, source, *expected):
        changes = [f"{mutant.kind}: {mutant.before} -> {mutant.replacement}"
                   for mutant in mutants_of("a.cpp", source)]
        self.assertEqual(changes, list(expected))

    def test_change_numbers_in_both_directions(self):
        self.check("x = 0x1F;", "constant: 0x1F -> 0x1e", "constant: 0x1F -> 0x20")
        self.check("x = 10U;", "constant: 10U -> 11U", "constant: 10U -> 9U")
        self.check("x = 0;", "constant: 0 -> 1")
        self.check("x = 1'000;", "constant: 1'000 -> 1001", "constant: 1'000 -> 999")

    def test_change_truth_values(self):
        self.check("return true;", "constant: true -> false")

    def test_leave_template_arguments_and_references_alone(self):
        self.check("std::vector<Byte> f(const Line& line, Byte* b);")

    def test_compare_otherwise(self):
        self.check("return a < b;", "comparison: < -> <=", "comparison: < -> >=")
        self.check("return a >= b;", "comparison: >= -> <", "comparison: >= -> >")
        self.check("return a == b;", "comparison: == -> !=")

    def test_invert_conditions(self):
        self.check("if (a && f(b)) {", "condition: a && f(b) -> !(a && f(b))", "condition: && -> ||")

    def test_keep_conditions_that_declare(self):
        self.check("if (const auto a = f(); a) {")

    def test_change_masks_shifts_and_sums(self):
        self.check("return a & b;", "mask: & -> |")
        self.check("return a << b;", "shift: << -> >>")
        self.check("return a - b;", "sum: - -> +")
        self.check("return ++a;", "sum: ++ -> --")

    def test_delete_statements(self):
        self.check("    flush();\n", "statement: flush(); -> ;")
        self.check("    value = other;\n", "statement: value = other; -> ;")
        self.check("    Type value;\n    return value;\n")

    def test_delete_rows_of_tables(self):
        self.check("    {a, b},\n", "row: {a, b}, -> ")

    def test_exchange_arguments(self):
        self.check("f(a, b);", "arguments: a, b -> b, a")
        self.check("f(a, a);")

    def test_change_a_letter_of_a_text_but_not_its_format(self):
        self.check(r'f("%02d\n");', r'text: "%02d\n" -> "%02d\nX"')
        self.check(r'f("\tAB %d");', r'text: "\tAB %d" -> "\tXB %d"')

    def test_leave_comments_directives_and_assertions_alone(self):
        self.check('#include "a.h"\n// 1 == 2\n/* 3 */\nstatic_assert(sizeof(a) == 4, "x");\n')

    def test_tell_equal_changes_of_equal_lines_apart(self):
        identities = [mutant.identity() for mutant in mutants_of("a.cpp", "x = 0;\nx = 0;\n")]
        self.assertEqual(identities, ["a.cpp | x = 0; | constant: 0 -> 1 | 0",
                                      "a.cpp | x = 0; | constant: 0 -> 1 | 1"])

    def test_apply_one_change(self):
        source = "a == 1;"
        self.assertEqual([mutant.applied_to(source) for mutant in mutants_of("a.cpp", source)],
                         ["a != 1;", "a == 0;", "a == 2;"])


if __name__ == "__main__":
    tap.main()
