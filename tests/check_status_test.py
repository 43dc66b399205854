# SPDX-License-Identifier: Apache-2.0
"""check_status.py on headers of a few functions, and on documents that no longer match."""
import check_common
import check_status

HEADER = """\
/**
 * First.
 *
 * @param a  [out] the value;
 *           untouched on failure
 * @retval 0   filled
 * @retval 31  no window, or
 *             the clock failed
 * @return otherwise the client's own result
 *
 * Says more, @b here too.
 */
PWRMGT_API uint32_t pwrmgt_first(uint32_t* a,
                                 uint32_t b);

/** As pwrmgt_first(), of disks. */
PWRMGT_API uint32_t pwrmgt_second(uint32_t* a);

/**
 * Third.
 *
 * @return 1 when found | else 0
 */
PWRMGT_API uint32_t pwrmgt_third(void);

/** Seconds of a day. */
PWRMGT_API uint32_t pwrmgt_fourth(void);

/** A record, no function. */
typedef struct record { int a; } record;
"""


class Status(check_common.TreeCase):
    def breaches(self):
        return check_status.status_breaches(self.root, False)[1]

    def lines(self):
        return check_status.document(HEADER).split("\n")

    def test_each_number_lists_its_functions_with_their_causes(self):
        lines = self.lines()

        self.assertEqual(lines[lines.index("## 31") + 4], "| `pwrmgt_first` | no window, or the clock failed |")
        self.assertEqual(lines[lines.index("## 0") + 4], "| `pwrmgt_first` | filled |")

    def test_results_handed_on_stand_apart(self):
        lines = self.lines()

        self.assertEqual(lines[lines.index("## Handed on from another function") + 6],
                         "| `pwrmgt_first` | otherwise the client's own result |")

    def test_results_that_are_no_status_stand_apart(self):
        lines = self.lines()
        place = lines.index("## Results that are no status")

        self.assertEqual(lines[place + 4:place + 6], ["| `pwrmgt_third` | 1 when found \\| else 0 |",
                                                      "| `pwrmgt_fourth` | Seconds of a day |"])

    def test_a_function_like_another_names_it_and_what_differs(self):
        self.assertIn("| `pwrmgt_second` | `pwrmgt_first` | of disks |", self.lines())

    def test_every_function_is_counted_and_no_record(self):
        self.assertEqual([name for name, _, _ in check_status.functions(HEADER)],
                         ["pwrmgt_first", "pwrmgt_second", "pwrmgt_third", "pwrmgt_fourth"])

    def test_a_document_that_was_just_written_passes(self):
        self.write("include/vekdb_pwrmgt.h", HEADER)
        self.write("docs/status.md", "")

        check_status.status_breaches(self.root, True)

        self.assertEqual(self.breaches(), [])

    def test_a_missing_document_is_reported(self):
        self.write("include/vekdb_pwrmgt.h", HEADER)

        self.assert_breach(self.breaches(), "docs/status.md lacks", "no window, or the clock failed")

    def test_a_cause_that_changed_is_reported_on_both_sides(self):
        self.write("include/vekdb_pwrmgt.h", HEADER)
        self.write("docs/status.md", check_status.document(HEADER.replace("filled", "done")))

        self.assert_breach(self.breaches(), "lacks", "filled")
        self.assert_breach(self.breaches(), "should not say", "done")

    def test_lines_in_another_order_are_reported(self):
        self.write("include/vekdb_pwrmgt.h", HEADER)
        self.write("docs/status.md", "\n".join(reversed(check_status.document(HEADER).split("\n"))))

        self.assert_breach(self.breaches(), "another order")
