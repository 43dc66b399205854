# SPDX-License-Identifier: Apache-2.0
"""Runs pwrmgtd and pwrmgtctl as processes under a clock of the test's choosing, each test with a database of its own."""
import json
import os
import queue
import re
import shutil
import signal
import sqlite3
import subprocess
import tempfile
import threading
import unittest
from datetime import datetime, timezone
from pathlib import Path

DAEMON = os.environ["PWRMGTD"]
CTL = os.environ["PWRMGTCTL"]
FAKETIME = os.environ["FAKETIME_LIBRARY"]
DATA = Path(os.environ["MEASURED_DATA_DIR"])
SLOWER = int(os.environ.get("DAEMON_SLOWER", "1"))  # than the build that the tests' clocks were chosen for
DEADLINE_S = 120 * SLOWER  # for a condition that comes about in a second or so

HISTORY_COLUMNS = """SysAvgDc SysMaxDc SysMinDc SysAvgAc SysMaxAc SysMinAc CpuAvgPwr CpuMaxPwr CpuMinPwr
    MemAvgPwr MemMaxPwr MemMinPwr Ps1AvgAc Ps1AvgDc Ps2AvgAc Ps2AvgDc Ps3AvgAc Ps3AvgDc Ps4AvgAc Ps4AvgDc
    SysAvgPtg SysMaxPtg SysMinPtg CpuAvgPtg MemAvgPtg IOAvgPtg""".split()


def utc_text(seconds):
    return datetime.fromtimestamp(seconds, timezone.utc).strftime("%Y-%m-%d %H:%M:%S")


def seconds_of(text):
    return int(datetime.strptime(text, "%Y-%m-%d %H:%M:%S").replace(tzinfo=timezone.utc).timestamp())


class WayTest(unittest.TestCase):
    def setUp(self):
        self.place = Path(tempfile.mkdtemp(prefix="pwrmgtd-way-"))
        self.addCleanup(shutil.rmtree, self.place)
        self.state, self.runtime = self.place / "state", self.place / "run"
        self.properties = None  # a file of the test's own
        self.configuration = Path(os.devnull)
        self.variables = {}  # more of the environment
        # Made here, so that a database client that runs as root and one that does not find the same.
        self.state.mkdir(mode=0o700)
        self.runtime.mkdir(mode=0o700)

    def environment(self, clock):
        """`clock`: seconds to stand still at, or ("seconds to start at", factor to run faster by), a MovedClock, or None:
        real time."""
        kept = {k: v for k, v in os.environ.items() if not k.startswith(("VEKDB_", "FAKETIME", "PWRMGTD_"))}
        kept |= {"VEKDB_STATE_DIR": str(self.state), "VEKDB_RUNTIME_DIR": str(self.runtime), "TZ": "UTC",
                 "PWRMGTD_CONFIG": str(self.configuration)} | self.variables
        if self.properties is not None:
            kept["VEKDB_PROPS"] = str(self.properties)
        if clock is None:
            return kept
        kept |= {"LD_PRELOAD": FAKETIME, "FAKETIME_DONT_FAKE_MONOTONIC": "1", "NO_FAKE_STAT": "1"}
        if isinstance(clock, MovedClock):
            kept |= {"FAKETIME_TIMESTAMP_FILE": str(clock.file), "FAKETIME_NO_CACHE": "1"}
        elif isinstance(clock, tuple):
            kept["FAKETIME"] = f"@{utc_text(clock[0])} x{clock[1] / SLOWER:g}"
        else:
            kept["FAKETIME"] = utc_text(clock)
        # The sanitizer's runtime wants to be the first library, and its allocator asks for the time when it gives memory
        # back, which libfaketime answers only after allocating some.
        kept["ASAN_OPTIONS"] = kept.get("ASAN_OPTIONS", "") + \
            ":verify_asan_link_order=0:allocator_release_to_os_interval_ms=-1"
        return kept

    def daemon_once(self, *arguments, clock=None, exit_code=0):
        """Runs the daemon to its end; standard output and error."""
        run = subprocess.run([DAEMON, *arguments], env=self.environment(clock), capture_output=True, text=True,
                             timeout=DEADLINE_S, stdin=subprocess.DEVNULL)
        self.assertEqual(run.returncode, exit_code, run.stdout + run.stderr)
        return run.stdout, run.stderr

    def daemon(self, *arguments, clock, quiet=False):
        verbose = [] if quiet else ["--verbose"]
        running = RunningDaemon([DAEMON, *verbose, *arguments], self.environment(clock))
        self.addCleanup(running.dispose)
        return running

    def ctl(self, *arguments, clock, exit_code=0):
        run = subprocess.run([CTL, *arguments, "--json"], env=self.environment(clock), capture_output=True, text=True,
                             timeout=DEADLINE_S, stdin=subprocess.DEVNULL)
        self.assertEqual(run.returncode, exit_code, f"{arguments}: {run.stderr}")
        return json.loads(run.stdout)

    def ctl_refused(self, exit_code, *arguments, clock):
        """What it says when it cannot answer."""
        run = subprocess.run([CTL, *arguments, "--json"], env=self.environment(clock), capture_output=True, text=True,
                             timeout=DEADLINE_S, stdin=subprocess.DEVNULL)
        self.assertEqual((run.returncode, run.stdout), (exit_code, ""), f"{arguments}: {run.stderr}")
        return run.stderr

    def rows(self, table, columns=None):
        """{stamp: (_id, values...)} of a history table; a stamp that stands twice is a failure."""
        directory, name = (self.runtime, "vek_pwr_db-mem.sqlite") if table.endswith("Mem") else \
            (self.state, "vek_pwr_db.sqlite")
        connection = sqlite3.connect(directory / name, timeout=30)
        try:
            found = connection.execute(
                f"SELECT Timestamp, _id, {', '.join(columns or HISTORY_COLUMNS)} FROM {table} ORDER BY Timestamp").fetchall()
        finally:
            connection.close()
        rows = {row[0]: row[1:] for row in found}
        self.assertEqual(len(rows), len(found), f"{table}: a stamp stands twice")
        return rows

    def assert_consecutive(self, rows):
        """Stamps 30 seconds apart, numbered by the time of day."""
        stamps = list(rows)
        self.assertEqual(stamps, list(range(stamps[0], stamps[-1] + 30, 30)) if stamps else [])
        for stamp, values in rows.items():
            self.assertEqual(values[0], stamp % 86400 // 30, f"slot number of {stamp}")


def forget_shared_clock(process):
    """libfaketime keeps its clock in shared memory, and a killed process leaves that behind."""
    for name in (f"faketime_shm_{process}", f"sem.faketime_sem_{process}"):
        Path("/dev/shm", name).unlink(missing_ok=True)


class MovedClock:
    """Stands still where the test puts it; a daemon that waits for a second notices within one."""

    def __init__(self, directory, start, text=utc_text):
        """`text`: how a time is written in the file."""
        self.file = Path(directory, "clock")
        self._text = text
        self.move_to(start)

    def move_to(self, seconds):
        new = self.file.with_suffix(".new")
        new.write_text(self._text(seconds) + "\n", encoding="utf-8")
        new.rename(self.file)
        self.now = seconds


class RunningDaemon:
    """A daemon in the background; what it says on standard error is how far it is."""

    def __init__(self, command, environment):
        self.process = subprocess.Popen(command, env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                        stderr=subprocess.PIPE, text=True)
        self.said = []
        self._lines = queue.Queue()
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()

    def _read(self):
        for line in self.process.stderr:
            self._lines.put(line.rstrip("\n"))
        self._lines.put(None)

    def wait_for(self, pattern, times=1):
        """The match in the line that makes it `times` lines from now on."""
        while True:
            line = self._lines.get(timeout=DEADLINE_S)
            if line is None:
                raise AssertionError(f"the daemon ended before it said {pattern!r}: {self.said}")
            self.said.append(line)
            match = re.search(pattern, line)
            times -= match is not None
            if match and times == 0:
                return match

    def wait_for_slots(self, times=1):
        """The stamp of the newest row after so many more."""
        return seconds_of(self.wait_for(r"recorded up to the slot of (.*)Z", times)[1])

    def end(self, signal_number=signal.SIGTERM):
        self.process.send_signal(signal_number)
        self.process.wait(timeout=DEADLINE_S)
        self._reader.join()
        forget_shared_clock(self.process.pid)
        while (line := self._lines.get_nowait()) is not None:
            self.said.append(line)
        self.stdout = self.process.stdout.read()
        return self.process.returncode

    def dispose(self):
        if self.process.poll() is None:
            self.process.kill()
            self.process.wait()
        self._reader.join()
        forget_shared_clock(self.process.pid)
        self.process.stdout.close()
        self.process.stderr.close()
