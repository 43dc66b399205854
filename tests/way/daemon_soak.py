#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The daemon for a long time, with front ends that read: nothing of it may grow. SOAK_DAYS in the environment is how many
days of its clock it runs on top of the full ring that it starts with."""
import os
import sqlite3
import unittest
from pathlib import Path

from daemon_support import DAEMON, DATA, WayTest

START = 1748995210  # 2025-06-04 00:00:10
TRACE = str(DATA / "server_4socket_24h_60s.csv")
SPEED = 3000
DAY_SLOTS = 2880
LOOKS = 24
READERS = (("power", "history", "--period", "24h"), ("psu", "history", "1"), ("thermal", "history"), ("psu", "list"))
MEMORY_SLACK_KB = 1024
FILE_SLACK = 256 * 1024
LONGEST_LOG = 8 * 1024 * 1024  # readers that never pause keep it from starting over; the writer then waits for a gap


class Soak(WayTest):
    def look(self, daemon):
        process = Path("/proc", str(daemon.process.pid))
        status = dict(line.split(":", 1) for line in (process / "status").read_text(encoding="utf-8").splitlines())
        return {"memory_kb": int(status["VmRSS"].split()[0]), "descriptors": len(os.listdir(process / "fd")),
                "files": sum(file.stat().st_size for place in (self.state, self.runtime) for file in place.glob("*.sqlite")),
                "longest_log": max(file.stat().st_size for place in (self.state, self.runtime)
                                   for file in place.glob("*-wal"))}

    def most_rows(self):
        counts = []
        for directory, name in ((self.runtime, "vek_pwr_db-mem.sqlite"), (self.state, "vek_pwr_db.sqlite")):
            connection = sqlite3.connect(directory / name, timeout=30)
            try:
                tables = [row[0] for row in connection.execute("SELECT name FROM sqlite_schema WHERE type = 'table'")]
                counts += [connection.execute(f"SELECT COUNT(*) FROM {table}").fetchone()[0]
                           for table in tables if table.startswith("HistPowers")]
            finally:
                connection.close()
        return max(counts)

    def test_rows_files_memory_and_descriptors_stay_as_they_are(self):
        slots = int(float(os.environ.get("SOAK_DAYS", "0.02")) * DAY_SLOTS)
        # Its end leaves the day in the files, out of the logs.
        self.daemon_once("--replay", TRACE, "--until", str(START), clock=START)
        daemon = self.daemon("--source", "trace", "--trace", TRACE, "--sample-interval", "30", clock=(START, SPEED))
        daemon.wait_for("saved up to", 2)
        looks = []
        for _ in range(LOOKS):
            newest = daemon.wait_for_slots(max(slots // LOOKS, 1))
            daemon.said.clear()
            for command in READERS:
                # Every reader stands a little after the newest row that was recorded when it was started.
                self.ctl(*command, clock=newest + 45)
            looks.append(self.look(daemon))
            self.assertLessEqual(self.most_rows(), DAY_SLOTS)
        self.assertEqual(daemon.end(), 0, daemon.said[-20:])

        settled, late = looks[:LOOKS // 3], looks[-LOOKS // 3:]
        # A look may find one more, of the log that a save flushes.
        self.assertLessEqual(min(look["descriptors"] for look in late), max(look["descriptors"] for look in settled))
        self.assertLessEqual(max(look["files"] for look in late), max(look["files"] for look in settled) + FILE_SLACK)
        self.assertLessEqual(max(look["longest_log"] for look in looks), LONGEST_LOG)
        if b"__asan_init" not in Path(DAEMON).read_bytes():  # it keeps what was freed
            self.assertLessEqual(min(look["memory_kb"] for look in late),
                                 max(look["memory_kb"] for look in settled) + MEMORY_SLACK_KB)
        print(f"{slots} slots, first {looks[0]}, last {looks[-1]}")


if __name__ == "__main__":
    unittest.main()
