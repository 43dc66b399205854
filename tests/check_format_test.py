# SPDX-License-Identifier: Apache-2.0
"""check_format.py on a file that clang-format would write differently."""
import check_common
import check_format


class Format(check_common.TreeCase):
    def breaches(self):
        return check_format.format_breaches(self.root, "clang-format")[1]

    def test_a_file_as_clang_format_writes_it_passes(self):
        self.write(".clang-format", "BasedOnStyle: Google\nIndentWidth: 4\n")
        self.write("src/a.c", "struct a {\n    int b;\n};\n")

        self.assertEqual(self.breaches(), [])

    def test_a_wrong_indent_is_reported_with_its_place(self):
        self.write(".clang-format", "BasedOnStyle: Google\nIndentWidth: 4\n")
        self.write("src/a.c", "struct a {\n  int b;\n};\n")

        self.assert_breach(self.breaches(), "src/a.c:1:11")
