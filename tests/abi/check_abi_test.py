# SPDX-License-Identifier: Apache-2.0
"""check_abi.py on a small library whose interface changes in one place after it was put on record."""
import argparse
import subprocess

import check_abi
import check_common

BEFORE = """#include <stdint.h>
typedef struct { uint32_t stamp; uint16_t avg; uint16_t max; } sample_t;
uint32_t one(const sample_t* samples, uint32_t count) { return samples[count].avg; }
uint8_t g_flag;
"""


class Interface(check_common.TreeCase):
    def arguments(self, source, write=False, *flags):
        self.write("source.c", source)
        library = self.root / "lib.so"
        subprocess.run(["gcc", "-g", "-shared", "-fPIC", self.root / "source.c", "-o", library, *flags], check=True)
        return argparse.Namespace(library=library, readelf="readelf", write=write)

    def record(self):
        (self.root / "abi").mkdir()
        check_abi.MACHINES = {name: "any" for name in ("Advanced Micro Devices X86-64", "AArch64", "ARM")}
        return check_abi.check(self.root, self.arguments(BEFORE, write=True))

    def changed(self, before, after, *pieces):
        self.record()

        breaches = check_abi.check(self.root, self.arguments(BEFORE.replace(before, after)))[1]

        self.assert_breach(breaches, *pieces)

    def test_the_interface_on_record_passes(self):
        self.assertEqual(self.record(), (1, []))

    def test_code_that_changes_behind_the_interface_passes(self):
        self.record()

        self.assertEqual(check_abi.check(self.root, self.arguments(BEFORE.replace("].avg", "].max")))[1], [])

    def test_a_field_of_another_width_is_reported(self):
        self.changed("uint16_t max;", "uint32_t max;", "sample_t", "uint16_t max")

    def test_a_field_that_moved_is_reported(self):
        self.changed("uint16_t avg; uint16_t max;", "uint16_t max; uint16_t avg;", "sample_t", "offset changed")

    def test_a_field_more_is_reported(self):
        self.changed("uint16_t max;", "uint16_t max; uint32_t more;", "sample_t", "1 data member insertion")

    def test_a_parameter_of_another_type_is_reported(self):
        self.changed("uint32_t count", "uint64_t count", "one(")

    def test_a_function_that_is_gone_breaks_programs(self):
        self.changed("uint32_t one", "static uint32_t one", "programs built before would break")

    def test_a_function_more_is_reported_as_a_change(self):
        self.changed("uint8_t g_flag;", "uint8_t g_flag;\nint two(void) { return 2; }", "the interface changed", "two")

    def test_a_global_of_another_width_is_reported(self):
        self.changed("uint8_t g_flag", "uint16_t g_flag", "g_flag")

    def test_a_library_without_debug_information_is_refused(self):
        self.record()

        self.assert_breach(check_abi.check(self.root, self.arguments(BEFORE, False, "-g0"))[1], "without debug information")
