#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The daemon killed at random moments, again and again, with and without the loss of what a power cut takes: whatever was
saved is there and whole, and no more than the unsaved batch is missing. KILLED_SEED and KILLED_ROUNDS in the environment
choose other moments and more of them."""
import os
import random
import shutil
import signal
import sqlite3
import subprocess
import unittest

from daemon_support import DATA, HISTORY_COLUMNS, WayTest, seconds_of

START = 1748995210  # 2025-06-04 00:00:10
FROM_TRACE = ("--source", "trace", "--trace", str(DATA / "server_4socket_24h_60s.csv"))
SPEED = 300
BATCH = 4
EXTRA_COLUMNS = [f"Ps{n}Avg{side}" for n in range(5, 13) for side in ("Ac", "Dc")]


class Killed(WayTest):
    def setUp(self):
        super().setUp()
        self.random = random.Random(int(os.environ.get("KILLED_SEED", "20250604")))
        self.rounds = int(os.environ.get("KILLED_ROUNDS", "5"))

    def run_and_kill(self, start):
        """A daemon from there on; the stamps it said were recorded, and saved, when the kill came."""
        daemon = self.daemon(*FROM_TRACE, "--persist-every", str(BATCH), clock=(start, SPEED))
        recorded = daemon.wait_for_slots(self.random.randint(1, 2 * BATCH))
        try:  # a moment of the slot that is under way, or a little more
            daemon.process.wait(timeout=self.random.uniform(0, 45 / SPEED))
            self.fail(f"the daemon ended by itself: {daemon.said}")
        except subprocess.TimeoutExpired:
            pass
        self.assertEqual(daemon.end(signal.SIGKILL), -signal.SIGKILL)
        said = [line.split(" the slot of ") for line in daemon.said]
        stamps = {words[0].split(": ")[1]: seconds_of(words[1][:19]) for words in said if len(words) == 2}
        return max(recorded, stamps["recorded up to"]), stamps.get("saved up to")

    def cut_the_log(self):
        """What was not flushed yet may be lost from any point on: the database's log loses its end."""
        log = self.state / "vek_pwr_db.sqlite-wal"
        if log.exists():
            os.truncate(log, self.random.randint(0, log.stat().st_size))

    def assert_sound(self):
        connection = sqlite3.connect(self.state / "vek_pwr_db.sqlite", timeout=30)
        try:
            self.assertEqual(connection.execute("PRAGMA integrity_check").fetchall(), [("ok",)])
            for table, columns in (("HistPowers24Hr", HISTORY_COLUMNS), ("HistExtraPowers24Hr", EXTRA_COLUMNS)):
                partial = " OR ".join(f"{column} IS NULL" for column in columns)
                self.assertEqual(connection.execute(f"SELECT COUNT(*) FROM {table} WHERE {partial}").fetchone(), (0,))
        finally:
            connection.close()

    def saved_rows(self):
        self.assert_sound()
        rows = self.rows("HistPowers24Hr")
        self.assert_consecutive(rows)
        self.assertEqual(list(self.rows("HistExtraPowers24Hr", EXTRA_COLUMNS)), list(rows))
        return rows

    def test_what_was_saved_is_there_and_no_more_than_a_batch_is_missing(self):
        start, before = START, {}
        for number in range(self.rounds):
            power_cut = self.random.random() < 0.5
            with self.subTest(round=number, start=start, power_cut=power_cut):
                recorded, saved = self.run_and_kill(start)
                if power_cut:
                    shutil.rmtree(self.runtime)
                    self.runtime.mkdir(mode=0o700)

                rows = self.saved_rows()
                self.assertEqual({stamp: rows.get(stamp) for stamp in before}, before)
                if saved is not None:
                    self.assertGreaterEqual(max(rows), saved)
                newest = max(rows, default=START - 40)
                self.assertGreaterEqual(newest, recorded - 30 * BATCH)
                start, before = max(recorded, newest) + self.random.randint(31, 200), rows

    def test_a_log_that_lost_its_end_leaves_whole_rows(self):
        start = START
        for number in range(self.rounds):
            with self.subTest(round=number, start=start):
                recorded, _ = self.run_and_kill(start)
                everything = self.read_copy()
                self.cut_the_log()

                rows = self.saved_rows()
                self.assertEqual({stamp: everything.get(stamp) for stamp in rows}, rows)
                start = recorded + self.random.randint(61, 200)

    def read_copy(self):
        """The rows with the log as it is, read beside the database, which stays untouched."""
        copy = self.place / "copy"
        shutil.copytree(self.state, copy)
        state, self.state = self.state, copy
        try:
            return self.rows("HistPowers24Hr")
        finally:
            self.state = state
            shutil.rmtree(copy)


if __name__ == "__main__":
    unittest.main()
