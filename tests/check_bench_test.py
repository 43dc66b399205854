# SPDX-License-Identifier: Apache-2.0
"""bench/: what is read from callgrind's dumps, and when a figure fails the run."""
import sys
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "bench"))
import callgrind  # noqa: E402
import figures  # noqa: E402

DUMP = """# callgrind format
desc: Trigger: Client Request: day
positions: line
events: Ir

ob=(1) /usr/lib/libown.so.1
fl=(1) ???
fn=(1) walk
0 10
+3 5
cob=(2) /usr/lib/libclient.so.1
cfi=(2) ???
cfn=(2) step
calls=4 0
0 400

ob=(2)
fn=(2)
0 300
cfn=(3) deeper
calls=1 0
* 90

fn=(3)
* 90
"""


class Dumps(unittest.TestCase):
    def setUp(self):
        self.dump = callgrind.Dump(DUMP)

    def test_a_dump_has_the_name_of_its_mark(self):
        self.assertEqual(self.dump.name, "day")

    def test_what_a_callee_cost_counts_where_it_was_spent(self):
        self.assertEqual(self.dump.own("libown"), 15)
        self.assertEqual(self.dump.own("libclient"), 390)
        self.assertEqual(self.dump.total, 405)

    def test_calls_are_counted_between_libraries_only(self):
        self.assertEqual(self.dump.calls_between("libown", "libclient"), {"step": 4})
        self.assertEqual(self.dump.calls_between("libclient", "libclient"), {"deeper": 1})


class Verdicts(unittest.TestCase):
    def verdict(self, value, **how):
        rows, good = figures.table([figures.Figure("key", "text", "unit", **how)], {} if value is None else {"key": value})
        return rows[-1].split("|")[-2].strip(), good

    def test_a_bound_is_met_up_to_its_value(self):
        self.assertEqual(self.verdict(5, bound=5), ("met", True))
        self.assertEqual(self.verdict(5.01, bound=5), ("MISSED", False))

    def test_a_rate_is_met_from_its_value_on(self):
        self.assertEqual(self.verdict(5, bound=5, at_least=True), ("met", True))
        self.assertEqual(self.verdict(4.99, bound=5, at_least=True), ("MISSED", False))

    def test_a_figure_on_hold_fails_when_it_gets_worse(self):
        self.assertEqual(self.verdict(7, bound=5, held=8), ("missed, held at 8", True))
        self.assertEqual(self.verdict(8.1, bound=5, held=8), ("MISSED", False))

    def test_a_figure_without_a_bound_is_only_told(self):
        self.assertEqual(self.verdict(1e9), ("told", True))

    def test_a_figure_that_was_not_measured_fails(self):
        self.assertEqual(self.verdict(None, bound=5), ("NOT MEASURED", False))
        self.assertEqual(self.verdict(None), ("NOT MEASURED", False))

    def test_every_figure_has_a_key_of_its_own(self):
        keys = [figure.key for figure in figures.COUNTED + figures.TIMED]

        self.assertEqual(len(set(keys)), len(keys))


class Outputs(unittest.TestCase):
    def test_counters_of_a_benchmark_are_named_after_it(self):
        text = '{"benchmarks": [{"name": "day/iterations:3/manual_time", "ratio": 0.5, "cpu_time": 9}]}'

        self.assertEqual(figures.benchmarks(text), {"day.ratio": 0.5})

    def test_a_line_is_a_key_and_a_value(self):
        self.assertEqual(figures.lines("a.b\t2\nc\t0.5\n"), {"a.b": 2, "c": 0.5})


if __name__ == "__main__":
    unittest.main()
