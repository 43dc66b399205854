# SPDX-License-Identifier: Apache-2.0
"""check_kept.py on trees with kept behaviours that nothing proves."""
import check_common
import check_kept


class Kept(check_common.TreeCase):
    def breaches(self):
        return check_kept.kept_breaches(self.root)[1]

    def test_a_behaviour_with_its_test_and_its_line_passes(self):
        self.write("src/db/prune.cpp", "int x;\n// Kept: a row stamped `now` stays;\n// its neighbour goes. [RowStays]\n")
        self.write("tests/db/prune_test.cpp", "TEST(Prune, RowStays) {}\n")
        self.write("docs/kept.md", "| stays | `RowStays` |\n")

        self.assertEqual(check_kept.kept_breaches(self.root), (1, []))

    def test_a_comment_without_brackets_is_reported(self):
        self.write("src/db/prune.cpp", "int x;\n    // Kept: a row stays.\nint a[N];\n")
        self.write("docs/kept.md", "")

        self.assert_breach(self.breaches(), "src/db/prune.cpp:2", "names no test")

    def test_a_name_without_a_test_is_reported(self):
        self.write("src/db/prune.cpp", "// Kept: a row stays. [RowStays]\n")
        self.write("tests/db/prune_test.cpp", "TEST(Prune, RowGoes) {}\n")
        self.write("docs/kept.md", "RowStays\n")

        self.assert_breach(self.breaches(), "src/db/prune.cpp:1", "no TEST is called RowStays")

    def test_a_name_that_the_document_does_not_list_is_reported(self):
        self.write("src/db/prune.cpp", "// Kept: a row stays. [RowStays]\n")
        self.write("tests/db/prune_test.cpp", "TEST_F(Prune, RowStays) {}\n")
        self.write("docs/kept.md", "RowStaysLonger\n")

        self.assertEqual(self.breaches(), ["src/db/prune.cpp:1: docs/kept.md does not list RowStays"])

    def test_a_missing_document_lists_nothing(self):
        self.write("src/db/prune.cpp", "// Kept: a row stays. [RowStays]\n")
        self.write("tests/db/prune_test.cpp", "TEST(Prune, RowStays) {}\n")

        self.assert_breach(self.breaches(), "docs/kept.md does not list RowStays")

    def test_each_of_several_names_is_looked_for(self):
        self.write("src/db/prune.cpp", "/* Kept: both. [Prune.RowStays, RowGoes]\n */\n")
        self.write("tests/db/prune_test.cpp", "TEST(Prune, RowStays) {}\n")
        self.write("docs/kept.md", "Prune.RowStays RowGoes\n")

        self.assertEqual(self.breaches(), ["src/db/prune.cpp:1: no TEST is called RowGoes"])

    def test_two_comments_in_a_row_are_two(self):
        self.write("src/db/prune.cpp", "// Kept: one. [RowStays]\n// Kept: two.\n")
        self.write("tests/db/prune_test.cpp", "TEST(Prune, RowStays) {}\n")
        self.write("docs/kept.md", "RowStays\n")

        self.assert_breach(self.breaches(), "src/db/prune.cpp:1", "names no test")

    def test_a_stale_name_in_the_document_is_reported(self):
        self.write("src/db/prune.cpp", "\n")
        self.write("docs/kept.md", "A row stays. [RowStays]\n")

        self.assertEqual(self.breaches(), ["docs/kept.md: no TEST is called RowStays"])
