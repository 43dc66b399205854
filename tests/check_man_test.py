# SPDX-License-Identifier: Apache-2.0
"""check_man.py on small trees with pages that are in order and pages that are not."""
import shutil
from pathlib import Path

import check_common
import check_man

TREE = Path(__file__).resolve().parent.parent
MANDOC = shutil.which("mandoc")

HEADER = """\
/* %s
 * Records
 * %s */

typedef struct a_t { int b; } a_t;

/* %s
 * Readings
 *
 * All of them are `good`.
 * %s */

/**
 * The reading. Another sentence.
 *
 * @param out  [out] watts; 65535 = none
 * @retval 0  read
 * @return otherwise a code of pwrmgt_second()
 *
 * Closes what it opens.
 */
PWRMGT_API uint32_t pwrmgt_first(uint32_t* out);

/** As pwrmgt_first(). */
PWRMGT_API uint32_t pwrmgt_second(void);
""" % (("-" * 72,) * 4)

OVERVIEW = """\
.Dd November 21, 2026
.Dt LIBVEKDB_PWRMGT 3
.Os
.Sh NAME
.Nm libvekdb_pwrmgt
.Nd all of it
.Sh DESCRIPTION
.\\" FUNCTIONS
"""

PAGE = """\
.Dd November 21, 2026
.Dt VEKDB_PWRMGT 7
.Os
.Sh NAME
.Nm vekdb_pwrmgt
.Nd markers
.Sh DESCRIPTION
Words.
"""


class Man(check_common.TreeCase):
    def setUp(self):
        super().setUp()
        self.write("include/vekdb_pwrmgt.h", HEADER)
        self.write("man/libvekdb_pwrmgt.3.in", OVERVIEW)
        self.write("man/vekdb_pwrmgt.7", PAGE)
        for script in ("write_pages.py", "public_header.py"):
            shutil.copy(TREE / "man" / script, self.root / "man" / script)

    def breaches(self):
        return check_man.man_breaches(self.root, MANDOC)

    def test_pages_in_order_pass(self):
        looked_at, breaches = self.breaches()

        self.assertEqual(breaches, [])
        self.assertEqual(looked_at, 5)

    def test_mistake_in_a_page_is_told(self):
        self.write("man/vekdb_pwrmgt.7", PAGE + ".Nonsense\n")

        self.assert_breach(self.breaches()[1], "vekdb_pwrmgt.7", "unknown macro")

    def test_reference_to_a_page_that_is_not_there_is_told(self):
        self.write("man/vekdb_pwrmgt.7", PAGE + ".Sh SEE ALSO\n.Xr pwrmgt_third 3\n")

        self.assert_breach(self.breaches()[1], "vekdb_pwrmgt.7", "pwrmgt_third(3)")

    def test_references_to_pages_of_others_are_not_looked_at(self):
        self.write("man/vekdb_pwrmgt.7", PAGE + ".Sh SEE ALSO\n.Xr gnuplot 1\n")

        self.assertEqual(self.breaches()[1], [])

    def test_exported_function_without_a_comment_has_no_page(self):
        self.write("include/vekdb_pwrmgt.h", HEADER + "\nPWRMGT_API uint32_t pwrmgt_third(void);\n")

        self.assert_breach(self.breaches()[1], "pwrmgt_third", "no page")

    def test_overview_without_a_place_for_its_functions_is_told(self):
        self.write("man/libvekdb_pwrmgt.3.in", OVERVIEW.replace("FUNCTIONS", "WORDS"))

        self.assert_breach(self.breaches()[1], "write_pages.py", "FUNCTIONS")

    def test_missing_mandoc_is_a_breach_and_not_a_pass(self):
        looked_at, breaches = check_man.man_breaches(self.root, None)

        self.assertEqual(looked_at, 0)
        self.assert_breach(breaches, "mandoc is not installed")
