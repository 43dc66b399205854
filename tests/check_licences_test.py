# SPDX-License-Identifier: Apache-2.0
"""check_licences.py on trees that break its rules."""
import check_common
import check_licences

LINE = "// SPDX-License-" + "Identifier: Apache-2.0\n"
FORMAT = "Format: x\n\n"


class Licences(check_common.TreeCase):
    def setUp(self):
        super().setUp()
        self.write("LICENSES/Apache-2.0.txt", "text")
        self.write("src/one.cpp", LINE)

    def breaches(self):
        return check_licences.licence_breaches(self.root)[1]

    def test_a_file_with_the_line_passes(self):
        self.assertEqual(self.breaches(), [])

    def test_a_file_without_a_licence_is_reported(self):
        self.write("src/two.cpp", "int two;\n")

        self.assert_breach(self.breaches(), "src/two.cpp", "no licence")

    def test_a_line_further_down_does_not_count(self):
        self.write("src/two.cpp", "\n" * 5 + LINE)

        self.assert_breach(self.breaches(), "src/two.cpp", "no licence")

    def test_a_file_that_a_paragraph_names_passes(self):
        self.write("data/a.csv", "1,2\n")
        self.write(".reuse/dep5", FORMAT + "Files: src/none* data/*\n *.md\nCopyright: me\nLicense: Apache-2.0\n")
        self.write("a.md", "text")
        self.write("src/none.txt", "text")

        self.assertEqual(self.breaches(), [])

    def test_of_two_paragraphs_the_last_counts(self):
        self.write("data/a.csv", "1,2\n")
        self.write(".reuse/dep5", FORMAT + "Files: data/*\nLicense: Apache-2.0\n\nFiles: data/a*\nLicense: MIT\n")

        self.assert_breach(self.breaches(), "data/a.csv", "MIT has no text")

    def test_a_paragraph_that_names_no_file_is_reported(self):
        self.write(".reuse/dep5", FORMAT + "Files: gone/*\nLicense: Apache-2.0\n")

        self.assert_breach(self.breaches(), "gone/* names no file")

    def test_a_licence_without_a_text_is_reported(self):
        self.write("src/two.cpp", LINE.replace("Apache-2.0", "MIT OR Apache-2.0"))

        self.assert_breach(self.breaches(), "src/two.cpp", "MIT has no text")

    def test_a_text_that_no_file_is_under_is_reported(self):
        self.write("LICENSES/MIT.txt", "text")

        self.assert_breach(self.breaches(), "LICENSES/MIT.txt", "no file is under it")
