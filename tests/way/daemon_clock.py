#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The history of a running daemon, and of one that starts, when the clock is set or has not been set yet. The test moves
the daemon's clock; what counts is that nothing is lost and no slot is written twice."""
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


if __name__ == "__main__":
    unittest.main()
