#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""A measured day's temperatures from its file through the daemon and the tables to what a front end shows."""
import csv
import sqlite3
import unittest

from daemon_expected import seconds_of_trace, whole
from daemon_support import DATA, WayTest

UNTIL = 1748995210  # 2025-06-04 00:00:10
DAY = DATA / "server_4socket_24h_60s.csv"
SENSORS = [(1, 1, "ambient_C"), (4, 1, "exhaust_C"), *((2, n, f"cpu{n}_C") for n in range(1, 5))]


def expected_records():
    """{minute: {(type, instance): degrees}} of the replay: what is in force on each whole minute."""
    with open(DAY, newline="", encoding="utf-8") as file:
        readings = [(int(row["epoch_s"]), {(kind, n): whole(row[name]) for kind, n, name in SENSORS})
                    for row in csv.DictReader(file)]
    spoken = seconds_of_trace(readings)
    shift = UNTIL // 30 * 30 - 30 - readings[-1][0] // 30 * 30
    first, end = readings[0][0] // 30 * 30 + shift, UNTIL // 30 * 30
    return {minute: spoken[minute - shift] for minute in range(-(-first // 60) * 60, end, 60) if minute - shift in spoken}


def expected_indexes(records, period_s, count):
    """{index time: {(type, instance): degrees in it}} of a query at UNTIL."""
    step = period_s // count
    start = (UNTIL - period_s) // 60 * 60
    indexes = {start + step * (at + 1): {} for at in range(count)}
    for minute, values in records.items():
        end = start + step * max(1, -(-(minute - start) // step))
        if minute >= start and end in indexes:
            for sensor, degrees in values.items():
                indexes[end].setdefault(sensor, []).append(degrees)
    return indexes


def triple(degrees):
    return {"min_c": min(degrees), "avg_c": sum(degrees) // len(degrees), "max_c": max(degrees)}


class Temperatures(WayTest):
    def setUp(self):
        super().setUp()
        self.daemon_once("--replay", str(DAY), "--until", str(UNTIL), clock=UNTIL)

    def stored(self, directory, name, table):
        connection = sqlite3.connect(directory / name, timeout=30)
        try:
            rows = connection.execute(f"SELECT Timestamp, Type, InstNum, Value FROM {table}").fetchall()
        finally:
            connection.close()
        found = {}
        for minute, kind, instance, value in rows:
            sensors = found.setdefault(minute, {})
            self.assertNotIn((kind, instance), sensors, "a sensor stands twice in a minute")
            sensors[kind, instance] = value
        return found

    def test_each_minute_is_stored_as_it_was_measured(self):
        expected = expected_records()

        self.assertGreater(len(expected), 1400)
        self.assertEqual(self.stored(self.runtime, "vek_pwr_db-mem.sqlite", "HistThermal24HrMem"), expected)
        self.assertEqual(self.stored(self.state, "vek_pwr_db.sqlite", "HistThermal24Hr"), expected)

    def test_histories_equal_what_the_file_says(self):
        records = expected_records()
        for period, period_s, count in (("1h", 3600, 60), ("6h", 21600, 60), ("24h", 86400, 120), ("24h", 86400, 1440)):
            shown = self.ctl("thermal", "history", "--period", period, "--entries", str(count), clock=UNTIL)["entries"]
            seen = 0
            expected = expected_indexes(records, period_s, count)
            for entry in shown:
                sensors = expected[entry["timestamp_s"]]
                for kind, group in ((1, "inlet"), (2, "cpu"), (4, "exhaust")):
                    for place, value in enumerate(entry[group]):
                        degrees = sensors.get((kind, place + 1))
                        self.assertEqual(value, triple(degrees) if degrees else
                                         {"min_c": None, "avg_c": None, "max_c": None}, (period, entry["timestamp_s"]))
                        seen += degrees is not None
            self.assertEqual(seen, sum(len(sensors) for sensors in expected.values()), period)

    def test_the_last_row_is_shown_as_the_latest(self):
        shown = self.ctl("thermal", "realtime", clock=UNTIL)

        with open(DAY, newline="", encoding="utf-8") as file:
            last = list(csv.DictReader(file))[-1]
        readings = {reading["sensor"]: reading["temperature_c"] for reading in shown["readings"]}
        expected = {f"cpu{n}": whole(last[f"cpu{n}_C"]) for n in range(1, 5)}
        self.assertEqual(readings, {"inlet1": whole(last["ambient_C"]), **expected})


if __name__ == "__main__":
    unittest.main()
