# SPDX-License-Identifier: Apache-2.0
"""check_words.py on files with words that do not belong there. The words are put together from pieces here too."""
import check_common
import check_words

LICENCE = "// " + check_words.LICENCE_LINE + "\n"


class Words(check_common.TreeCase):
    def breaches(self):
        return check_words.word_breaches(self.root)[1]

    def test_ordinary_words_pass(self):
        self.write("src/db/a.cpp", LICENCE + "// A special part of 1.1 W; mktemp a." + "X" * 6 + "; src/wo" + "rk/ is free.\n")
        self.write("tests/a_test.cpp", LICENCE + "// Nothing sle" + "eps here: asleep(1), no_sleeping.\n")
        self.write("tools/d.cpp", LICENCE + "nanosle" + "ep(&a, &b);\n")
        self.write("LICENSE", "a specifi" + "cation\n")

        self.assertEqual(self.breaches(), [])

    def test_each_forbidden_word_is_reported_with_its_line(self):
        for text in ("spec" + ".md", "as the sp" + "ec says", "Per Sp" + "ec", "P" + "art 3.1", "TO" + "DO later",
                     "FIX" + "ME", "X" + "XX", "<" * 7 + " HEAD", "see /wo" + "rk/main", "/tmp/bash_" + "jobs.0",
                     "/ho" + "me/someone/x", "the Specifi" + "cation"):
            with self.subTest(text):
                self.write("docs/a.md", "fine\n" + text + "\n")

                self.assert_breach(self.breaches(), "docs/a.md:2")

    def test_waiting_a_fixed_time_is_reported_in_tests_and_scripts(self):
        for name, text in (("tests/a.py", "time.sle" + "ep(1)"), ("tests/b.py", "std::this_thread::sle" + "ep_for (1ms)"),
                           ("scripts/run", "  sle" + "ep 1"), (".ci/run", "a; usle" + "ep(5)"),
                           ("scripts/loop", "while x; do sle" + "ep $n; done")):
            with self.subTest(name):
                self.write(name, "# " + check_words.LICENCE_LINE + "\n" + text + "\n")

                self.assert_breach(self.breaches(), f"{name}:2", "wait for a condition")

    def test_a_source_without_the_licence_line_is_reported(self):
        self.write("src/a.cpp", "int a;\n" + LICENCE)
        self.write("scripts/b", "#!/bin/sh\ntrue\n")
        self.write("tests/CMakeLists.txt", "\n")
        self.write("scripts/c", "#!/bin/sh\n# " + check_words.LICENCE_LINE + "\n")

        self.assert_breach(self.breaches(), "src/a.cpp:1")
        self.assert_breach(self.breaches(), "scripts/b:1")
        self.assert_breach(self.breaches(), "tests/CMakeLists.txt:1")
        self.assertEqual(len(self.breaches()), 3)
