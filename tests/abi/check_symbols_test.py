# SPDX-License-Identifier: Apache-2.0
"""check_symbols.py on small libraries, each built to break one rule."""
import argparse
import subprocess

import check_symbols
import check_common

HEADER = "PWRMGT_API uint32_t pwrmgt_one(void);\nextern PWRMGT_API uint8_t g_flag;\n"
GOOD = "#include <time.h>\nint vek_db_one(int);\nunsigned char g_flag;\nint pwrmgt_one(void) { return vek_db_one((int)time(0)); }\n"


class Symbols(check_common.TreeCase):
    def library(self, source=GOOD, *flags, exported="g_flag\npwrmgt_one\n", language="c"):
        self.write("abi/exports.txt", exported)
        self.write("include/vekdb_pwrmgt.h", HEADER)
        self.write("platform/include/client.h", "/* not_this(1) */ int vek_db_one(int a);\n")
        self.write("source", source)
        library = str(self.root / "libvekdb_pwrmgt.so")
        subprocess.run(["g++", "-shared", "-fPIC", "-Wl,-soname,libvekdb_pwrmgt.so.1", "-x", language, str(self.root / "source"),
                        "-x", "none", "-o", library, *flags], check=True)
        return argparse.Namespace(root=self.root, library=library, sanitized=False, nm="nm", readelf="readelf", cxxfilt="c++filt")

    def test_a_library_that_keeps_the_rules_passes_all_four(self):
        arguments = self.library()

        for name, check in check_symbols.CHECKS.items():
            with self.subTest(name):
                self.assertEqual(check(arguments)[1], [])

    def test_a_symbol_too_many_is_reported(self):
        arguments = self.library(GOOD + "int stray(void) { return 0; }\n")

        self.assertEqual(len(check_symbols.exports(arguments)[1]), 1)
        self.assert_breach(check_symbols.exports(arguments)[1], "exports stray")

    def test_a_symbol_too_few_is_reported(self):
        arguments = self.library(exported="g_flag\npwrmgt_one\npwrmgt_two\n")

        self.assert_breach(check_symbols.exports(arguments)[1], "pwrmgt_two is not exported")
        self.assert_breach(check_symbols.declared(arguments)[1], "pwrmgt_two is not declared")

    def test_a_list_out_of_order_is_reported(self):
        arguments = self.library(exported="pwrmgt_one\ng_flag\n")

        self.assert_breach(check_symbols.exports(arguments)[1], "not sorted")

    def test_a_declaration_that_is_not_listed_is_reported(self):
        arguments = self.library(exported="pwrmgt_one\n")

        self.assert_breach(check_symbols.declared(arguments)[1], "g_flag is not listed")

    def test_a_function_of_nobody_is_reported(self):
        arguments = self.library(GOOD + "int sqlite3_open(int); int other(void) { return sqlite3_open(1); }\n")

        self.assert_breach(check_symbols.undefined(arguments)[1], "asks for sqlite3_open")

    def test_a_library_of_others_is_reported(self):
        arguments = self.library(GOOD, "-Wl,--no-as-needed", "-lresolv")

        self.assert_breach(check_symbols.undefined(arguments)[1], "needs libresolv")

    def test_an_executable_stack_is_reported(self):
        self.assert_breach(check_symbols.loading(self.library(GOOD, "-z", "execstack"))[1], "executable stack")

    def test_globals_bound_to_the_library_are_reported(self):
        self.assert_breach(check_symbols.loading(self.library(GOOD, "-Wl,-Bsymbolic"))[1], "could not share")

    def test_another_name_to_load_it_by_is_reported(self):
        self.assert_breach(check_symbols.loading(self.library(GOOD, "-Wl,-soname,libother.so"))[1], "libvekdb_pwrmgt.so.1")

    def test_a_constructor_is_reported(self):
        source = "int one(); static int a = one(); int one() { return a + 1; }\n"

        self.assert_breach(check_symbols.loading(self.library(source, language="c++"))[1], "constructors")
