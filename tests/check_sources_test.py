# SPDX-License-Identifier: Apache-2.0
"""check_sources.py on trees with files that nothing builds."""
import check_common
import check_sources


class Sources(check_common.TreeCase):
    def breaches(self):
        return check_sources.source_breaches(self.root)[1]

    def test_files_named_beside_them_or_further_up_pass(self):
        self.write("CMakeLists.txt", "add_subdirectory(src)\nforeach(top tests)\n")
        self.write("tests/CMakeLists.txt", "set(rooms db query)\n")
        self.write("src/CMakeLists.txt", "add_library(x\n    db/a.cpp)\n")
        self.write("src/db/a.cpp", "")
        self.write("tests/db/CMakeLists.txt", "t(${CMAKE_CURRENT_SOURCE_DIR} a_test.cpp b_test.c)\n")
        self.write("tests/db/a_test.cpp", "")
        self.write("tests/db/b_test.c", "")

        self.assertEqual(self.breaches(), [])

    def test_a_directory_that_nothing_adds_is_reported(self):
        self.write("CMakeLists.txt", "add_subdirectory(tests)\n")
        self.write("tests/CMakeLists.txt", "set(rooms db_two) # db\n")
        self.write("tests/db/CMakeLists.txt", "t(a_test.cpp)\n")
        self.write("tests/db/a_test.cpp", "")

        self.assertEqual(self.breaches(), ["tests/db: no CMakeLists.txt above it adds it"])

    def test_a_file_that_nothing_names_is_reported(self):
        self.write("CMakeLists.txt", "add_subdirectory(tests)\n")
        self.write("tests/CMakeLists.txt", "add_subdirectory(db)\n")
        self.write("tests/db/CMakeLists.txt", "t(other_a_test.cpp)\n# a_test.cpp\n")
        self.write("tests/db/a_test.cpp", "")

        self.assertEqual(self.breaches(), ["tests/db/a_test.cpp: no CMakeLists.txt names it"])
