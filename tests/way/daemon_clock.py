#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The history of a running daemon, and of one that starts, when the clock is set or has not been set yet. The test moves
the daemon's clock; what counts is that nothing is lost and no slot is written twice."""
import re
import shutil
import signal
import sqlite3
import unittest

from daemon_support import DATA, MovedClock, WayTest

NOON = 1749038400  # 2025-06-04 12:00:00
DAY_S = 86400
TRACE = str(DATA / "server_4socket_24h_60s.csv")
FROM_TRACE = ("--source", "trace", "--trace", TRACE)


class ClockSteps(WayTest):
    def setUp(self):
        super().setUp()
        self.daemon_once("--replay", TRACE, "--until", str(NOON), clock=NOON)
        self.day = self.rows("HistPowers24Hr")
        self.assertEqual(max(self.day), NOON - 30)
        self.clock = MovedClock(self.place, NOON)

    def start(self, *arguments):
        return self.daemon(*FROM_TRACE, *arguments, clock=self.clock)

    def start_at(self, seconds):
        """A daemon that has recorded the slot before `seconds`; missed ones before it are empty."""
        self.clock.move_to(seconds)
        daemon = self.start()
        self.assertEqual(daemon.wait_for_slots(), seconds - 30)
        return daemon

    def assert_kept(self, rows, count):
        """The last rows of the replayed day are there as they were."""
        kept = [stamp for stamp in self.day if stamp >= min(rows)]
        self.assertGreaterEqual(len(kept), count)
        self.assertEqual({stamp: rows.get(stamp) for stamp in kept}, {stamp: self.day[stamp] for stamp in kept})

    def test_a_step_forward_leaves_empty_slots_and_the_rest_of_the_day(self):
        daemon = self.start_at(NOON + 60)
        self.clock.move_to(NOON + 3600)
        self.assertEqual(daemon.wait_for_slots(), NOON + 3570)
        self.assertEqual(daemon.end(), 0, daemon.said)

        rows = self.rows("HistPowers24Hr")
        self.assert_consecutive(rows)
        self.assert_kept(rows, 2700)
        self.assertEqual({rows[stamp][1] for stamp in range(NOON + 90, NOON + 3600, 30)}, {65535})
        self.assertEqual(self.rows("HistPowers24HrMem"), rows)

    def test_a_step_back_writes_no_slot_twice_and_goes_on_where_it_was(self):
        daemon = self.start_at(NOON + 90)
        before = self.rows("HistPowers24HrMem")

        self.clock.move_to(NOON - 1800)
        daemon.wait_for("recording waits for its end")
        self.assertEqual(self.rows("HistPowers24HrMem"), before)
        self.clock.move_to(NOON + 150)
        self.assertEqual(daemon.wait_for_slots(), NOON + 120)
        self.assertEqual(daemon.end(), 0, daemon.said)

        rows = self.rows("HistPowers24Hr")
        self.assert_consecutive(rows)
        self.assert_kept(rows, 2870)
        self.assertEqual([rows[stamp] for stamp in before if stamp in rows],
                         [before[stamp] for stamp in before if stamp in rows])

    def test_a_start_in_1970_costs_nothing(self):
        self.clock.move_to(60)
        daemon = self.start()
        daemon.wait_for("clock: cannot be right; recording waits until it is set")
        self.assertEqual(self.rows("HistPowers24Hr"), self.day)

        self.clock.move_to(NOON + 300)
        self.assertEqual(daemon.wait_for_slots(), NOON + 270)
        self.assertEqual(daemon.end(), 0, daemon.said)

        rows = self.rows("HistPowers24Hr")
        self.assert_consecutive(rows)
        self.assert_kept(rows, 2869)
        self.assertEqual(self.rows("HistPowers24HrMem"), rows)

    def test_a_start_years_behind_waits_until_the_clock_is_set(self):
        self.clock.move_to(946684800)  # 2000-01-01
        daemon = self.start()
        daemon.wait_for("days behind the newest slot, 2025-06-04 11:59:30Z; recording waits until it is set")
        self.assertEqual(self.rows("HistPowers24Hr"), self.day)
        self.assertEqual(self.rows("HistPowers24HrMem"), self.day)

        self.clock.move_to(NOON + 60)
        self.assertEqual(daemon.wait_for_slots(), NOON + 30)
        self.assertEqual(daemon.end(), 0, daemon.said)

        rows = self.rows("HistPowers24Hr")
        self.assert_consecutive(rows)
        self.assert_kept(rows, 2876)

    def test_a_clock_that_is_believed_all_the_same_is_told_loudly(self):
        self.clock.move_to(NOON - 2 * DAY_S)
        daemon = self.start("--clock-wait", "0")
        daemon.wait_for("the clock has not been set past .*: rows from then on are dropped")
        self.clock.move_to(NOON - 2 * DAY_S + 60)
        self.assertEqual(daemon.wait_for_slots(), NOON - 2 * DAY_S + 30)
        self.assertEqual(daemon.end(), 0, daemon.said)

        self.assertEqual(list(self.rows("HistPowers24Hr")), [NOON - 2 * DAY_S, NOON - 2 * DAY_S + 30])


LAST_SIGNED = 2147483647  # 2038-01-19 03:14:07
LAST_UNSIGNED = 4294967295  # 2106-02-07 06:28:15
PAST_2038 = "is past 2038-01-19 03:14:07Z, the last second that the tables hold; recording waits until it is set"


def wait_for_first_reading(daemon):
    """A save that is asked for is answered after the reading."""
    daemon.wait_for("recording from trace")
    daemon.process.send_signal(signal.SIGUSR1)
    daemon.wait_for("asked to save")


class AtTheEnd(WayTest):
    def start_at(self, seconds, *arguments):
        self.clock = MovedClock(self.place, seconds)
        daemon = self.daemon(*FROM_TRACE, *arguments, clock=self.clock)
        wait_for_first_reading(daemon)
        return daemon

    def wait_for_reading(self, daemon, seconds):
        self.clock.move_to(seconds)
        daemon.process.send_signal(signal.SIGUSR1)
        daemon.wait_for("asked to save")

    def shown(self):
        connection = sqlite3.connect(self.runtime / "vek_pwr_db-mem.sqlite", timeout=30)
        try:
            return connection.execute("SELECT Timestamp FROM RealTimePowersMem").fetchone()[0]
        finally:
            connection.close()

    def troubles(self, daemon):
        return [line for line in daemon.said if re.search("^pwrmgtd: (clock|slots|real-time row): |status [0-9]|refused", line)]


class ClockOf32Bits(AtTheEnd):
    """A C library whose clock is in 1901 after the last signed second."""

    def test_the_history_ends_with_the_last_second_and_is_kept(self):
        self.daemon_once("--replay", TRACE, "--until", str(LAST_SIGNED - 67), clock=LAST_SIGNED - 67)
        daemon = self.start_at(LAST_SIGNED - 66, "--persist-every", "1")
        self.clock.move_to(2147483640)
        self.assertEqual(daemon.wait_for_slots(), 2147483610)
        daemon.wait_for("saved up to the slot of 2038-01-19 03:13:30Z")
        day = self.rows("HistPowers24Hr")

        for later in (LAST_SIGNED + 1, LAST_SIGNED + DAY_S):
            self.wait_for_reading(daemon, later)
            self.assertEqual(self.shown(), 2147483640)
        self.assertEqual(daemon.end(), 0, daemon.said)

        self.assertEqual(self.rows("HistPowers24Hr"), day)
        self.assertEqual(self.rows("HistPowers24HrMem"), day)
        self.assert_consecutive(day)
        self.assertEqual(self.troubles(daemon), ["pwrmgtd: clock: cannot be right; recording waits until it is set",
                                                 "pwrmgtd: real-time row: its time does not hold the clock's"])


class LastDays(AtTheEnd):
    """Where 32 bits end: signed, in which statements print times, and unsigned, in which columns hold them."""

    def test_the_history_ends_with_the_last_signed_second_and_is_kept(self):
        self.daemon_once("--replay", TRACE, "--until", str(LAST_SIGNED - 67), clock=LAST_SIGNED - 67)
        daemon = self.start_at(LAST_SIGNED - 66, "--persist-every", "1")
        self.clock.move_to(2147483610)
        self.assertEqual(daemon.wait_for_slots(), 2147483580)
        self.clock.move_to(2147483640)
        self.assertEqual(daemon.wait_for_slots(), 2147483610)
        daemon.wait_for("saved up to the slot of 2038-01-19 03:13:30Z")
        day = self.rows("HistPowers24Hr")
        shown = self.ctl("power", "history", "--period", "24h", clock=LAST_SIGNED)["entries"]
        self.assertEqual(shown[0]["timestamp_s"], 2147483610)

        for later in (LAST_SIGNED + 1, LAST_SIGNED + 40, LAST_SIGNED + DAY_S, LAST_SIGNED + 365 * DAY_S):
            self.wait_for_reading(daemon, later)
            self.assertEqual(self.shown(), later)
        self.assertEqual(self.ctl("power", "realtime", clock=later)["timestamp_s"], later)
        self.assertIn("status 31", self.ctl_refused(1, "power", "history", clock=later))
        self.assertEqual(daemon.end(), 0, daemon.said)

        self.assertEqual(self.rows("HistPowers24Hr"), day)
        self.assertEqual(self.rows("HistPowers24HrMem"), day)
        self.assert_consecutive(day)
        self.assertEqual(self.troubles(daemon), ["pwrmgtd: clock: " + PAST_2038])

    def test_a_start_past_the_last_signed_second_keeps_the_day_and_waits(self):
        self.daemon_once("--replay", TRACE, "--until", str(LAST_SIGNED - 67), clock=LAST_SIGNED - 67)
        day = {stamp: row for stamp, row in self.rows("HistPowers24Hr").items() if stamp >= LAST_SIGNED - DAY_S}
        self.assertEqual(len(day), 2877)
        daemon = self.start_at(LAST_SIGNED + DAY_S)
        self.assertEqual(self.troubles(daemon), ["pwrmgtd: clock: " + PAST_2038])
        self.assertEqual(self.rows("HistPowers24HrMem"), day)

        self.clock.move_to(2147483610)
        self.assertEqual(daemon.wait_for_slots(), 2147483580)
        self.assertEqual(daemon.end(), 0, daemon.said)

        rows = self.rows("HistPowers24Hr")
        self.assert_consecutive(rows)
        self.assertEqual({stamp: rows.get(stamp) for stamp in day}, day)

    def test_past_the_last_unsigned_second_no_reading_is_stamped(self):
        daemon = self.start_at(LAST_UNSIGNED - 30)
        self.wait_for_reading(daemon, LAST_UNSIGNED)
        self.assertEqual(self.shown(), LAST_UNSIGNED)
        for later in (LAST_UNSIGNED + 1, LAST_UNSIGNED + 40, LAST_UNSIGNED + DAY_S):
            self.wait_for_reading(daemon, later)
        self.assertEqual(self.shown(), LAST_UNSIGNED)
        self.assertEqual(self.rows("HistPowers24HrMem"), {})
        self.assertIn("no reading", self.ctl_refused(4, "power", "history", clock=later))
        self.assertEqual(daemon.end(), 0, daemon.said)

        self.assertEqual(self.troubles(daemon), ["pwrmgtd: clock: " + PAST_2038,
                                                 "pwrmgtd: real-time row: its time does not hold the clock's"])


class Zones(WayTest):
    """Slots, stamps and what a reader shows follow from UTC, also in the night in which a zone changes its hours."""

    SPRING, AUTUMN = 1743296400, 1761440400  # 2025-03-30 and 2025-10-26, 01:00 UTC
    BERLIN = "CET-1CEST,M3.5.0,M10.5.0/3"

    def environment(self, clock):
        variables = super().environment(clock)
        # Seconds, which mean the same in every zone.
        return variables | {"TZ": self.zone, "FAKETIME_FMT": "%s"} | \
            ({"FAKETIME": str(clock)} if isinstance(clock, int) else {})

    def recorded(self, zone, change):
        """A replayed day up to the change of hours, a few slots over it, and what is shown of them."""
        self.zone = zone
        shutil.rmtree(self.state)
        shutil.rmtree(self.runtime)
        self.state.mkdir(mode=0o700)
        self.runtime.mkdir(mode=0o700)
        self.daemon_once("--replay", TRACE, "--until", str(change - 60), clock=change - 60)
        clock = MovedClock(self.place, change - 60, str)
        daemon = self.daemon(*FROM_TRACE, clock=clock)
        wait_for_first_reading(daemon)
        for slot in (change - 30, change, change + 30, change + 60):
            clock.move_to(slot)
            self.assertEqual(daemon.wait_for_slots(), slot - 30)
        self.assertEqual(daemon.end(), 0, daemon.said)
        shown = self.ctl("power", "history", "--period", "1h", clock=change + 65)
        return self.rows("HistPowers24Hr"), self.temperatures(), shown

    def temperatures(self):
        connection = sqlite3.connect(self.state / "vek_pwr_db.sqlite", timeout=30)
        try:
            return connection.execute("SELECT * FROM HistThermal24Hr ORDER BY Timestamp, Type, InstNum").fetchall()
        finally:
            connection.close()

    def test_a_night_of_changing_hours_is_a_night_like_any_other(self):
        for change in (self.SPRING, self.AUTUMN):
            with self.subTest(change=change):
                in_utc = self.recorded("UTC", change)
                self.assertEqual(self.recorded(self.BERLIN, change), in_utc)
                self.assert_consecutive(in_utc[0])
                self.assertEqual(len(in_utc[0]), 2880)


if __name__ == "__main__":
    unittest.main()
