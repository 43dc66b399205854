#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Windows that the caller places, gaps, twelve supplies and the processor history, from a file through the daemon and the
tables to what a front end shows."""
import csv
import subprocess
import unittest

from daemon_expected import (expected_extra_rows, expected_rows, fold_domain, fold_performance, fold_psu, fold_system,
                             fold_window)
from daemon_support import CTL, DATA, WayTest

UNTIL = 1748995210  # 2025-06-04 00:00:10
DAY = DATA / "server_4socket_24h_60s.csv"
GAPS = DATA / "server_poweron_24h_60s.csv"
EXTRA_COLUMNS = [f"Ps{n}Avg{side}" for n in range(5, 13) for side in ("Ac", "Dc")]
CPU_COLUMNS = [f"Cpu{n}AvgPwr" for n in range(1, 9)]


class Windows(WayTest):
    def replay(self, file, until=UNTIL):
        self.daemon_once("--replay", str(file), "--until", str(until), clock=until)

    def window(self, *arguments, end, minutes, samples, clock=UNTIL):
        noun, *rest = arguments
        shown = self.ctl(noun, "history", *rest, "--end", str(end), "--minutes", str(minutes), "--samples-per-entry",
                         str(samples), clock=clock)["entries"]
        for entry in shown:
            del entry["time_utc"]
        return shown

    def file_with_twelve_supplies(self):
        """The measured day with its two supplies standing in for six each, a few watts apart."""
        path = self.place / "twelve.csv"
        with open(DAY, newline="", encoding="utf-8") as source, open(path, "w", newline="", encoding="utf-8") as target:
            reader = csv.DictReader(source)
            supplies = [f"psu{n}_{side}" for n in range(1, 13) for side in ("ac_in_W", "dc_out_W")]
            writer = csv.DictWriter(target, ["epoch_s", "sdr_rows", "sys_power_W", *supplies])
            writer.writeheader()
            for row in reader:
                line = {name: row[name] for name in ("epoch_s", "sdr_rows", "sys_power_W")}
                for n in range(1, 13):
                    for side in ("ac_in_W", "dc_out_W"):
                        line[f"psu{n}_{side}"] = int(row[f"psu{2 - n % 2}_{side}"]) + n
                writer.writerow(line)
        return path

    def test_a_placed_window_equals_what_the_file_says(self):
        rows = expected_rows(DAY, UNTIL)

        self.replay(DAY)

        for arguments, fold_entry in ((("power",), fold_system), (("power", "--domain", "memory"), fold_domain(10)),
                                      (("psu", "2"), fold_psu(15)), (("performance",), fold_performance)):
            for end, minutes, samples in ((UNTIL, 1440, 24), (UNTIL - 40000, 61, 7), (UNTIL - 1234, 5, 1)):
                self.assertEqual(self.window(*arguments, end=end, minutes=minutes, samples=samples),
                                 fold_window(rows, end, minutes, samples, fold_entry), (arguments, end))

    def test_a_whole_day_of_single_slots_is_shown(self):
        self.replay(DAY)

        shown = self.window("power", end=UNTIL, minutes=1440, samples=1)

        self.assertEqual(len(shown), 2879)
        self.assertEqual(shown, fold_window(expected_rows(DAY, UNTIL), UNTIL, 1440, 1, fold_system))

    def test_nineteen_hours_without_an_answer_are_shown_as_missing(self):
        self.replay(GAPS)

        entries = self.window("power", end=UNTIL, minutes=1440, samples=24)
        table = subprocess.run([CTL, "power", "history", "--minutes", "1440", "--samples-per-entry", "24"],
                               env=self.environment(UNTIL), capture_output=True, text=True, timeout=120, check=True).stdout

        missing = [entry for entry in entries if entry["dc"]["avg_w"] is None]
        self.assertGreaterEqual(len(missing) * 12, 19 * 60 - 12)
        for entry in missing:
            self.assertEqual(entry["dc"] | entry["ac"], {"avg_w": None, "max_w": None, "min_w": None})
        self.assertEqual(sum(line.split()[1:] == ["-"] * 6 for line in table.splitlines()), len(missing))
        self.assertNotIn("65535", table)

    def test_supplies_5_to_12_are_stored_as_they_were_measured(self):
        trace = self.file_with_twelve_supplies()

        self.replay(trace)

        expected = expected_extra_rows(trace, UNTIL)
        self.assertEqual(len(expected), 2879)
        self.assertEqual(self.rows("HistExtraPowers24HrMem", EXTRA_COLUMNS), expected)
        self.assertEqual(self.rows("HistExtraPowers24Hr", EXTRA_COLUMNS), expected)

    def test_supply_12_is_shown_as_it_was_measured(self):
        trace = self.file_with_twelve_supplies()
        self.properties = self.place / "properties.conf"
        self.properties.write_text("/dc/tavn/dm/planar/0/psu/maxcount = 12\n", encoding="utf-8")

        self.replay(trace)

        # _id, then the pairs of supplies 5 to 12: supply 12 at places 15 and 16.
        rows = expected_extra_rows(trace, UNTIL)
        self.assertEqual(self.window("psu", "12", end=UNTIL, minutes=120, samples=4),
                         fold_window(rows, UNTIL, 120, 4, fold_psu(15)))

    def test_a_wrapped_ring_holds_every_stamp_once(self):
        trace = self.file_with_twelve_supplies()
        later = UNTIL + 6 * 3600 + 7
        self.replay(trace)

        self.replay(trace, later)

        expected = expected_extra_rows(trace, later)
        self.assertGreater(len({values[0] for values in expected.values()}), 2878)
        self.assertEqual(self.rows("HistExtraPowers24Hr", EXTRA_COLUMNS), expected)
        self.assertEqual(self.rows("HistExtraPowers24HrMem", EXTRA_COLUMNS), expected)

    def test_a_reboot_brings_the_extra_supplies_back(self):
        trace = self.file_with_twelve_supplies()
        self.replay(trace)
        for file in self.runtime.iterdir():
            file.unlink()

        daemon = self.daemon("--source", "trace", "--trace", str(trace), clock=(UNTIL, 1))
        daemon.wait_for("power policy")
        self.assertEqual(daemon.end(), 0)

        expected = expected_extra_rows(trace, UNTIL)
        stored = self.rows("HistExtraPowers24HrMem", EXTRA_COLUMNS)
        self.assertEqual({stamp: stored[stamp] for stamp in expected}, expected)

    def test_processors_keep_ten_minutes_and_are_missing_where_nothing_measures_them(self):
        self.replay(DAY)

        rows = self.rows("HistCpuPowersMem", CPU_COLUMNS)
        shown = self.ctl("cpu", "latest", clock=UNTIL)["entries"]

        self.assertEqual(list(rows), list(range(1748994630, 1748995170 + 30, 30)))
        self.assertEqual(set(rows[1748995170][1:]), {65535})
        self.assertEqual(len(shown), 1)
        self.assertEqual({shown[0][f"cpu{n}"]["avg_w"] for n in range(1, 9)}, {None})


if __name__ == "__main__":
    unittest.main()
