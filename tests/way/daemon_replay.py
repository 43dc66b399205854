#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""A measured day from its file through the daemon and the tables to what a front end shows, against slots and folds that
this script works out from the file by itself."""
import csv
import unittest

from daemon_support import DATA, WayTest

UNTIL = 1748995210  # 2025-06-04 00:00:10
DAY = DATA / "server_4socket_24h_60s.csv"
GAPS = DATA / "server_poweron_24h_60s.csv"
METER = DATA / "wall_meter_6probe_23h_15s.csv"
HOLD_S = 90
NO_W, NO_PCT = 65535, 255
PERIODS = {"1h": (3600, 1), "6h": (21600, 6), "12h": (43200, 12), "24h": (86400, 24)}


def whole(cell):
    """Cells round half away from zero; none of the files' is negative."""
    return None if cell is None or cell == "" else int(float(cell) + 0.5)


def quantities(row):
    """One row of a file as {name: number or None}."""
    supplies = [n for n in range(1, 13) if f"psu{n}_ac_in_W" in row]
    probes = [n for n in range(1, 13) if f"probe{n}_active_power_W" in row]
    if supplies:
        out = [whole(row[f"psu{n}_dc_out_W"]) for n in supplies]
        into = [whole(row[f"psu{n}_ac_in_W"]) for n in supplies]
        ac = whole(row["sys_power_W"])
        dc = None if ac is None or None in out or None in into else sum(out)
    elif probes:
        metered = [whole(row[f"probe{n}_active_power_W"]) for n in probes]
        ac = dc = None if None in metered else sum(metered)
    else:
        ac = dc = whole(row["sys_power_W"])
    if dc is None:
        ac = None
    found = {"dc": dc, "ac": ac, "cpu": whole(row.get("cpu_power_W")), "mem": whole(row.get("mem_power_W"))}
    for n in range(1, 5):
        found[f"ps{n}ac"] = whole(row.get(f"psu{n}_ac_in_W", row.get(f"probe{n}_active_power_W")))
        found[f"ps{n}dc"] = whole(row.get(f"psu{n}_dc_out_W"))
    for name in ("sys", "cpu", "mem", "io"):
        found[f"{name}_pct"] = whole(row.get(f"{name}_util_pct"))
    return found


def read_file(path):
    """[(second, quantities or None where nothing answered)] in the file's order."""
    with open(path, newline="", encoding="utf-8") as file:
        return [(int(float(row["epoch_s"])), None if row.get("sdr_rows") == "0" else quantities(row))
                for row in csv.DictReader(file)]


def seconds_of_trace(readings):
    """{second: quantities} for every second that a row speaks for."""
    spoken = {}
    for place, (start, values) in enumerate(readings):
        following = readings[place + 1][0] if place + 1 < len(readings) else start + HOLD_S
        for second in range(start, min(following, start + HOLD_S)):
            if values is None:
                spoken.pop(second, None)
            else:
                spoken[second] = values
    return spoken


def expected_rows(path, until):
    """{stamp: (_id, the columns in table order)} of the replay of a file."""
    readings = read_file(path)
    spoken = seconds_of_trace(readings)
    last = until // 30 * 30 - 30
    shift = last - readings[-1][0] // 30 * 30
    first = max(readings[0][0] // 30 * 30 + shift, -(-(until - 86400) // 30) * 30)
    return {stamp: (stamp % 86400 // 30, *row_of(spoken, stamp - shift)) for stamp in range(first, last + 30, 30)}


def row_of(spoken, start):
    moments = [spoken[second] for second in range(start, start + 30) if second in spoken]

    def three(name, missing):
        known = [moment[name] for moment in moments if moment[name] is not None]
        return (sum(known) // len(known), max(known), min(known)) if known else (missing,) * 3

    columns = []
    for name in ("dc", "ac", "cpu", "mem"):
        columns += three(name, NO_W)
    for n in range(1, 5):
        columns += [three(f"ps{n}ac", NO_W)[0], three(f"ps{n}dc", NO_W)[0]]
    columns += three("sys_pct", NO_PCT)
    columns += [three(f"{name}_pct", NO_PCT)[0] for name in ("cpu", "mem", "io")]
    return columns


def fold(rows, now, period, fold_entry):
    """The 120 entries of a period: rows of the window, walked back from the newest one in steps of 30 seconds."""
    period_s, per_entry = PERIODS[period]
    oldest = (now - period_s) // 60 * 60 + period_s // 120
    window = {stamp: values for stamp, values in rows.items() if oldest <= stamp <= now}
    newest, end = max(window), min(window)
    entries = []
    for index in range(120):
        stamps = [newest - 30 * slot for slot in range(index * per_entry, (index + 1) * per_entry)]
        stamps = [stamp for stamp in stamps if stamp >= end]
        if not stamps:
            break
        slots = [window[stamp] for stamp in stamps if stamp in window]
        entries.append({"index": index, "timestamp_s": stamps[0], **fold_entry(slots)})
    return entries


def mean(values):
    return sum(values) // len(values) if values else None


def group(slots, at):
    return {"avg_w": mean([s[at] for s in slots]), "max_w": max((s[at + 1] for s in slots), default=None),
            "min_w": min((s[at + 2] for s in slots), default=None)}


def fold_system(slots):
    valid = [s for s in slots if NO_W not in s[1:4]]
    return {"dc": group(valid, 1), "ac": group(valid, 4)}


def fold_domain(at):
    return lambda slots: {"dc": group([s for s in slots if NO_W not in s[at:at + 3]], at)}


def fold_psu(at):
    def entry(slots):
        valid = [s for s in slots if NO_W not in s[at:at + 2]]
        # Sums are kept in 16 bits.
        ac, dc = (sum(s[at + i] for s in valid) % 65536 // len(valid) if valid else None for i in (0, 1))
        return {"ac": {"avg_w": ac}, "dc": {"avg_w": dc}}
    return entry


def fold_performance(slots):
    valid = [s for s in slots if NO_PCT not in s[21:27]]
    columns = list(zip(*(s[21:27] for s in valid))) or [()] * 6
    return {"system": {"avg_pct": mean(columns[0]), "max_pct": max(columns[1], default=None),
                       "min_pct": min(columns[2], default=None)},
            "cpu": {"avg_pct": mean(columns[3])}, "memory": {"avg_pct": mean(columns[4])},
            "io": {"avg_pct": mean(columns[5])}}


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
                shown = self.ctl("history", *arguments, "--period", period, clock=UNTIL)["entries"]
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

        shown = self.ctl("realtime", clock=UNTIL)
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
