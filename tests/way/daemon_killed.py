#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The daemon killed at random moments, again and again, with and without the loss of what a power cut takes, beside readers
that are killed too: whatever was saved is there and whole, no more than the unsaved batch is missing, and nobody waits for
the dead. KILLED_SEED and KILLED_ROUNDS in the environment choose other moments and more of them."""
import contextlib
import itertools
import os
import random
import re
import shutil
import signal
import sqlite3
import subprocess
import threading
import unittest

from daemon_support import CTL, DATA, HISTORY_COLUMNS, MovedClock, WayTest, forget_shared_clock, seconds_of

START = 1748995210  # 2025-06-04 00:00:10
TRACE = str(DATA / "server_4socket_24h_60s.csv")
BATCH = 4
DAY_S = 86400
QUERIES = (("power", "history", "--period", "24h"), ("psu", "history", "1"), ("thermal", "history"), ("policy", "get"))
READER_S = 0.012  # about as long as one of them takes
SLOT_WORK_S = 0.03  # longer than a slot and its save take
EXTRA_COLUMNS = [f"Ps{n}Avg{side}" for n in range(5, 13) for side in ("Ac", "Dc")]


class Victims:
    """Readers that are killed one after the other, each at a moment of its own, until the block ends."""

    def __init__(self, environment, seed):
        self._environment = environment
        self._random = random.Random(seed)
        self._ended = threading.Event()
        self._thread = threading.Thread(target=self._run)
        self.killed, self.finished, self.refused = 0, 0, []

    def __enter__(self):
        self._thread.start()
        return self

    def __exit__(self, *_):
        self._ended.set()
        self._thread.join()

    def _run(self):
        while not self._ended.is_set():
            command = self._random.choice(QUERIES)
            with subprocess.Popen([CTL, *command, "--json"], env=self._environment, stdin=subprocess.DEVNULL,
                                  stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True) as reader:
                try:
                    reader.wait(timeout=self._random.uniform(0, READER_S))
                    self.finished += 1
                except subprocess.TimeoutExpired:
                    reader.kill()
                    self.killed += 1
                said = reader.stderr.read()
            forget_shared_clock(reader.pid)
            if reader.returncode not in (0, -signal.SIGKILL):
                self.refused.append((command, reader.returncode, said))


class Killed(WayTest):
    def setUp(self):
        super().setUp()
        self.seed = int(os.environ.get("KILLED_SEED", "20250604"))
        self.random = random.Random(self.seed)
        self.rounds = int(os.environ.get("KILLED_ROUNDS", "5"))
        self.readers = {"killed": 0, "finished": 0}
        self.daemon_once("--replay", TRACE, "--until", str(START), clock=START)
        self.trace = self.place / "minute.csv"  # is read with each wake-up
        with open(TRACE, encoding="utf-8") as day:
            self.trace.write_text("".join(itertools.islice(day, 4)), encoding="utf-8")

    def run_and_kill(self, start, readers_live_on=True):
        """A daemon from there on, and readers; the stamps it said were recorded, and saved, when the kill came, and the
        number of slots that it had missed."""
        self.clock = MovedClock(self.place, start)
        daemon = self.daemon("--source", "trace", "--trace", str(self.trace), "--persist-every", str(BATCH), clock=self.clock)
        daemon.wait_for("recording from trace")
        recorded = self.next_slot(daemon)
        with Victims(self.environment(recorded + 45), self.random.random()) as victims:
            for _ in range(self.random.randint(0, 2 * BATCH - 1)):
                recorded = self.next_slot(daemon)
            if readers_live_on:
                self.kill(daemon)
        if not readers_live_on:
            self.kill(daemon)
        self.readers["killed"] += victims.killed
        self.readers["finished"] += victims.finished
        self.assertEqual(victims.refused, [])
        self.assertEqual([line for line in daemon.said if re.search("status|refused", line)], [])
        said = [line.split(" the slot of ") for line in daemon.said]
        stamps = {words[0].split(": ")[1]: seconds_of(words[1][:19]) for words in said if len(words) == 2}
        missed = re.search("([0-9]+) missed slots", "\n".join(daemon.said))
        return max(recorded, stamps["recorded up to"]), stamps.get("saved up to"), int(missed[1]) if missed else 0

    @contextlib.contextmanager
    def told(self, **facts):
        """A failure tells which round it was; the rounds after it would fail for it too."""
        try:
            yield
        except Exception as failure:
            failure.add_note(f"{facts}, KILLED_SEED={self.seed}")
            raise

    def wake_in_next_slot(self, daemon):
        self.clock.move_to(self.clock.now + 30)
        daemon.process.send_signal(signal.SIGHUP)

    def next_slot(self, daemon):
        self.wake_in_next_slot(daemon)
        return daemon.wait_for_slots()

    def kill(self, daemon):
        """At a moment of recording and saving a slot, or a little later."""
        self.wake_in_next_slot(daemon)
        try:
            daemon.process.wait(timeout=self.random.uniform(0, SLOT_WORK_S))
            self.fail(f"the daemon ended by itself: {daemon.said}")
        except subprocess.TimeoutExpired:
            pass
        self.assertEqual(daemon.end(signal.SIGKILL), -signal.SIGKILL)

    def assert_shown(self, recorded):
        self.assertTrue(self.ctl("power", "history", "--period", "24h", clock=recorded + 45)["entries"])

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
        # A start trims one after the other: a log that ends in between leaves extra rows from before the day.
        extra = [stamp for stamp in self.rows("HistExtraPowers24Hr", EXTRA_COLUMNS) if stamp >= min(rows)]
        self.assertEqual(extra, list(rows))
        return rows

    def test_what_was_saved_is_there_and_no_more_than_a_batch_is_missing(self):
        start, before = START + 60, self.rows("HistPowers24Hr")
        for number in range(self.rounds):
            power_cut = self.random.random() < 0.5
            with self.told(round=number, start=start, power_cut=power_cut):
                recorded, saved, missed = self.run_and_kill(start)
                self.assert_shown(recorded)
                if power_cut:
                    shutil.rmtree(self.runtime)
                    self.runtime.mkdir(mode=0o700)

                rows = self.saved_rows()
                kept = {stamp: row for stamp, row in before.items() if stamp > recorded + 120 - DAY_S}
                self.assertEqual({stamp: rows.get(stamp) for stamp in kept}, kept)
                if saved is not None:
                    self.assertGreaterEqual(max(rows), saved)
                newest = max(rows)
                self.assertGreaterEqual(newest, recorded - 30 * (BATCH + missed))
                start, before = max(recorded, newest) + self.random.randint(31, 200), rows
        print(f"{self.rounds} rounds, readers {self.readers}")

    def test_a_log_that_lost_its_end_leaves_whole_rows(self):
        start = START + 60
        for number in range(self.rounds):
            with self.told(round=number, start=start):
                # The last one that closes an undamaged database leaves no log to cut.
                recorded, _, _ = self.run_and_kill(start, readers_live_on=False)
                everything = self.read_copy()
                self.cut_the_log()

                rows = self.saved_rows()
                # A trim that was lost with the log's end leaves rows from before the day.
                day = {stamp: row for stamp, row in rows.items() if stamp >= min(everything)}
                self.assertEqual({stamp: everything.get(stamp) for stamp in day}, day)
                self.assert_shown(recorded)
                start = recorded + self.random.randint(61, 200)
        print(f"{self.rounds} rounds, readers {self.readers}")

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
