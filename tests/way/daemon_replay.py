#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""A measured day from its file through the daemon and the tables to what a front end shows, against slots and folds that
daemon_expected works out from the file by itself."""
import unittest

from daemon_expected import (NO_W, PERIODS, expected_rows, fold, fold_domain, fold_performance, fold_psu, fold_system,
                             read_file)
from daemon_support import DATA, WayTest

UNTIL = 1748995210  # 2025-06-04 00:00:10
DAY = DATA / "server_4socket_24h_60s.csv"
GAPS = DATA / "server_poweron_24h_60s.csv"
METER = DATA / "wall_meter_6probe_23h_15s.csv"

QUERIES = [
    (("power", "--domain", "system"), fold_system),
    (("power", "--domain", "cpu"), fold_domain(7)),
    (("power", "--domain", "memory"), fold_domain(10)),
    (("psu", "1"), fold_psu(13)),
    (("psu", "2"), fold_psu(15)),
    (("performance",), fold_performance),
]


class Replay(WayTest):
    def replay(self, file, until=UNTIL, *more):
        return self.daemon_once("--replay", str(file), "--until", str(until), *more, clock=until)

    def assert_shown(self, rows, queries, periods):
        for arguments, fold_entry in queries:
            for period in periods:
                shown = self.ctl(arguments[0], "history", *arguments[1:], "--period", period, clock=UNTIL)["entries"]
                for entry in shown:
                    del entry["time_utc"]
                self.assertEqual(shown, fold(rows, UNTIL, period, fold_entry), f"{arguments} {period}")

    def test_a_measured_day_is_stored_as_it_was_measured(self):
        expected = expected_rows(DAY, UNTIL)

        self.replay(DAY)

        self.assertEqual(len(expected), 2879)
        self.assertEqual(max(expected), 1748995170)
        self.assertEqual(self.rows("HistPowers24Hr"), expected)
        self.assertEqual(self.rows("HistPowers24HrMem"), expected)

    def test_a_measured_day_is_shown_as_it_was_measured(self):
        self.replay(DAY)

        self.assert_shown(expected_rows(DAY, UNTIL), QUERIES, PERIODS)

    def test_gaps_of_a_measured_day_are_missing_readings(self):
        expected = expected_rows(GAPS, UNTIL)

        self.replay(GAPS)

        self.assertGreater(sum(row[1] == NO_W for row in expected.values()), 2000)
        self.assertEqual(self.rows("HistPowers24Hr"), expected)
        self.assert_shown(expected, QUERIES[:1], PERIODS)

    def test_two_readings_in_a_slot_are_averaged(self):
        expected = expected_rows(METER, UNTIL)

        self.replay(METER)

        self.assertTrue(any(row[2] != row[3] for row in expected.values()))
        self.assertEqual(self.rows("HistPowers24Hr"), expected)

    def test_the_last_row_is_the_real_time_row(self):
        readings = read_file(DAY)

        self.replay(DAY)

        shown = self.ctl("power", "realtime", clock=UNTIL)
        last = readings[-1][1]
        self.assertEqual(shown["timestamp_s"], 1748995170 + readings[-1][0] % 30)
        self.assertEqual(shown["system"]["dc_w"], last["dc"])
        self.assertEqual(shown["system"]["ac_w"], last["ac"])

    def test_again_gives_the_same_tables(self):
        self.replay(DAY)
        once = self.rows("HistPowers24Hr")

        self.replay(DAY)

        self.assertEqual(self.rows("HistPowers24Hr"), once)
        self.assertEqual(self.rows("HistPowers24HrMem"), once)

    def test_later_replaces_what_it_overlaps(self):
        self.replay(DAY)

        self.replay(DAY, UNTIL + 3600 + 7)

        self.assertEqual(self.rows("HistPowers24Hr"), expected_rows(DAY, UNTIL + 3600 + 7))
        self.assertEqual(self.rows("HistPowers24HrMem"), self.rows("HistPowers24Hr"))

    def test_standard_output_is_one_summary_line(self):
        out, _ = self.replay(DAY)

        self.assertEqual(out.count("\n"), 1)
        self.assertRegex(out, r"^replayed .*server_4socket_24h_60s\.csv: 2879 rows, 2025-06-03 00:00:30Z to "
                              r"2025-06-03 23:59:30Z, database .*/state and .*/run, \d+\.\d{3} s\n$")

    def test_until_now_ends_with_the_clock(self):
        self.daemon_once("--replay", str(DAY), clock=UNTIL)

        self.assertEqual(self.rows("HistPowers24Hr"), expected_rows(DAY, UNTIL))


if __name__ == "__main__":
    unittest.main()
