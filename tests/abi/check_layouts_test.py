# SPDX-License-Identifier: Apache-2.0
"""check_layouts.py on a header with things that nothing asserts."""
import check_layouts
import check_common


class Layouts(check_common.TreeCase):
    def breaches(self, layouts):
        self.write("include/vekdb_pwrmgt.h", "enum {\n    ONE = 1, /**< one, OR_NOT */\n    TWO\n};\n"
                                             "typedef struct a_t {\n    uint8_t b[4], c; /**< d; e */\n} a_t;\n")
        self.write("tests/abi/layouts.c", layouts)
        return check_layouts.layout_breaches(self.root)

    def test_a_header_asserted_whole_passes(self):
        layouts = "RECORD(a_t, 5, 1); FIELD(a_t, b, 0, 4); FIELD(a_t, c, 4, 1); CONSTANT(ONE, 1); CONSTANT(TWO, 2);"

        self.assertEqual(self.breaches(layouts), (5, []))

    def test_each_missing_assertion_is_reported(self):
        for what in ("a_t ", "a_t.b", "a_t.c", "ONE", "TWO"):
            with self.subTest(what):
                self.assert_breach(self.breaches("// RECORD(a_t, 5, 1)\n")[1], what, "is not asserted")
