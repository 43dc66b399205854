# SPDX-License-Identifier: Apache-2.0
"""sizes.py on small libraries that keep or break a bound, and on figures that grew."""
import contextlib
import io
import subprocess

import check_common
import sizes

GOOD = "int pwrmgt_one(int a) { volatile char text[300]; text[a] = 1; return text[a / 2]; }\n"


class Sizes(check_common.TreeCase):
    def figures(self, source=GOOD):
        self.write("build/src/one.cpp", source)
        directory = self.root / "build/src"
        subprocess.run(["g++", "-O1", "-shared", "-fPIC", "-fstack-usage", directory / "one.cpp", "-o", directory / "libvekdb_pwrmgt.so"],
                       check=True, cwd=directory)
        return sizes.figures(self.root / "build", "")

    def breaches(self, source=GOOD, build="arm", before=None):
        return list(sizes.breaches_of(build, self.figures(source)[0], before))

    def test_a_small_library_keeps_the_bounds(self):
        self.assertEqual(self.breaches(), [])

    def test_the_largest_frame_is_found_with_its_function(self):
        now, function = self.figures()

        self.assertGreaterEqual(now["largest frame"], 150)
        self.assertLess(now["largest frame"], 500)
        self.assertIn("pwrmgt_one", function)

    def test_a_large_frame_is_reported(self):
        self.assert_breach(self.breaches(GOOD.replace("300", "3000")), "largest frame", "above 2048")

    def test_a_frame_of_unknown_size_is_reported(self):
        source = "int f(int n) { char* text = (char*)__builtin_alloca(n); __builtin_memset(text, 1, n); return text[n / 2]; }\n"

        self.assert_breach(self.breaches(source), "largest frame")

    def test_use_of_the_heap_is_reported(self):
        for call in ("__builtin_malloc(a)", "new char[a]"):
            self.assert_breach(self.breaches(f"void* f(unsigned a) {{ return {call}; }}\n"), "heap functions is 1")

    def test_a_constructor_is_reported(self):
        self.assert_breach(self.breaches("int y; __attribute__((constructor)) void c() { y = 1; }\n"), "constructors is 1, above 0")

    def test_text_above_the_target_is_reported_on_arm_only(self):
        now = self.figures()[0] | {"text": 40961}

        self.assert_breach(list(sizes.breaches_of("arm", now, None)), "text is 40961, above 40960")
        self.assertEqual(list(sizes.breaches_of("release", now, None)), [])

    def test_growth_beyond_the_record_is_reported(self):
        now = self.figures()[0]

        self.assertEqual(list(sizes.breaches_of("arm", now, now | {"text": now["text"] - 256})), [])
        self.assert_breach(list(sizes.breaches_of("arm", now, now | {"text": now["text"] - 257})), "text grew")
        self.assert_breach(list(sizes.breaches_of("arm", now, now | {"relocations": now["relocations"] - 9})), "relocations grew")

    def test_the_table_shows_the_change_since_the_record(self):
        now = self.figures()
        table = io.StringIO()

        with contextlib.redirect_stdout(table):
            sizes.show({"arm": now}, {"arm": now[0] | {"text": now[0]["text"] - 7}})

        self.assertRegex(table.getvalue(), rf"text +{now[0]['text']} +\+7\n")
