# SPDX-License-Identifier: Apache-2.0
"""What the mutation run breaks, and what it leaves alone."""
import unittest

from mutants import mutants_of


def changes(line, statuses=()):
    return {mutant.after.strip() for mutant in mutants_of("src/query/x.cpp", line, statuses)}


class Mutants(unittest.TestCase):
    def test_a_comparison_is_turned_and_shifted(self):
        self.assertEqual(changes("    if (count > limit) {"), {"if (count >= limit) {", "if (count <= limit) {"})

    def test_a_constant_is_raised_and_lowered(self):
        self.assertEqual(changes("    return 24;"), {"return 25;", "return 23;"})

    def test_a_zero_is_only_raised(self):
        self.assertEqual(changes("    return 0;"), {"return 1;"})

    def test_digits_of_names_texts_and_comments_stay(self):
        self.assertEqual(changes('    log(utf8, "at 30 s");  // 24 of them'), {""})

    def test_a_statement_is_deleted(self):
        self.assertIn("", changes("    rows.reset();"))

    def test_a_declaration_is_not_deleted(self):
        self.assertNotIn("", changes("    const Connection db{handle()};"))

    def test_two_statements_change_places(self):
        text = "    first(a);\n    second(b);"

        orders = [mutant.text for mutant in mutants_of("src/x.cpp", text) if mutant.kind == "order"]

        self.assertEqual(orders, ["    second(b);\n    first(a);"])

    def test_assignments_keep_their_order(self):
        text = "    out->a = 1;\n    out->b = 2;"

        self.assertEqual([m for m in mutants_of("src/x.cpp", text) if m.kind == "order"], [])

    def test_the_size_of_a_table_stays(self):
        self.assertEqual(changes("constexpr std::array<int, 8> kTable{{"), set())

    def test_a_status_becomes_the_next_one(self):
        self.assertEqual(changes("    return Status::ok;", ("ok", "no_data")), {"return Status::no_data;"})

    def test_comments_and_directives_stay(self):
        for line in ("// if (a < 1)", "#if VERSION > 1", "static_assert(1 + 1 == 2);"):
            with self.subTest(line):
                self.assertEqual(changes(line), set())


if __name__ == "__main__":
    unittest.main()
