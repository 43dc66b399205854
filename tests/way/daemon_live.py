#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The daemon as a process: how it starts, is refused, ends, is killed and comes back, and readers beside it. Its clock
runs hundreds of times faster than the wall's, so a slot takes a moment.

READER_SECONDS in the environment makes the readers go on for so long (0: until the daemon has saved a few times)."""
import os
import shutil
import signal
import subprocess
import threading
import time
import unittest
from pathlib import Path

from daemon_expected import moments, read_file, row_of, seconds_of_trace
from daemon_support import CTL, DAEMON, DATA, WayTest

START = 1748995210  # 2025-06-04 00:00:10
TRACE = str(DATA / "server_4socket_24h_60s.csv")
FROM_TRACE = ("--source", "trace", "--trace", TRACE)
SPEED = 300


class Live(WayTest):
    def run_for(self, slots, *arguments, start=START):
        """A daemon that records so many slots and is ended by SIGTERM; where it was last."""
        daemon = self.daemon(*FROM_TRACE, *arguments, clock=(start, SPEED))
        newest = daemon.wait_for_slots(slots)
        self.assertEqual(daemon.end(), 0, daemon.said)
        return newest

    def test_every_slot_is_recorded_and_saved_at_the_end(self):
        for hours, number in enumerate((signal.SIGTERM, signal.SIGINT)):
            with self.subTest(number.name):
                daemon = self.daemon(*FROM_TRACE, clock=(START + 3600 * hours, SPEED))
                newest = daemon.wait_for_slots(3)

                self.assertEqual(daemon.end(number), 0, daemon.said)

                persistent = self.rows("HistPowers24Hr")
                self.assertGreaterEqual(max(persistent), newest)
                self.assert_consecutive(persistent)
                self.assertEqual(self.rows("HistPowers24HrMem"), persistent)
                self.assertEqual(daemon.stdout, "")

    def test_a_row_holds_what_the_trace_says(self):
        trace = read_file(TRACE)
        spoken, first, span = seconds_of_trace(trace), trace[0][0], trace[-1][0] - trace[0][0] + 1

        self.run_for(4)

        compared = 0
        for stamp, row in self.rows("HistPowers24Hr").items():
            slot = moments(spoken, [first + second % 86400 % span for second in range(stamp, stamp + 30)])
            # A fast clock leaves seconds out; where the trace stands still, that makes no difference.
            if all(moment == slot[0] for moment in slot) and row[1] != 65535:
                self.assertEqual(list(row[1:]), row_of(slot))
                compared += 1
        self.assertGreater(compared, 0)

    def test_the_firmware_is_the_source_when_none_is_named(self):
        daemon = self.daemon(clock=(START, SPEED))
        daemon.wait_for(r"recording from the firmware")
        daemon.wait_for_slots(2)

        self.assertEqual(daemon.end(), 0, daemon.said)

        self.assertTrue(self.rows("HistPowers24Hr"))
        shown = self.ctl("power", "realtime", clock=START + 3600, exit_code=5)
        self.assertTrue(shown["stale"])
        self.assertIsNotNone(shown["timestamp_s"])

    def test_what_was_saved_outlives_a_kill(self):
        # The next save is seconds away when the kill comes.
        daemon = self.daemon(*FROM_TRACE, "--persist-every", "50", clock=(START, SPEED))
        daemon.wait_for("saved up to")
        daemon.wait_for_slots()
        self.assertEqual(daemon.end(signal.SIGKILL), -signal.SIGKILL)
        saved, working = self.rows("HistPowers24Hr"), self.rows("HistPowers24HrMem")
        self.assertGreater(len(working), len(saved))

        self.run_for(2, start=max(working) + 95)

        after = self.rows("HistPowers24Hr")
        self.assertEqual({stamp: after.get(stamp) for stamp in saved}, saved)
        self.assertEqual({stamp: after.get(stamp) for stamp in working}, working)
        self.assertGreater(max(after), max(working))
        self.assert_consecutive(after)

    def test_what_was_saved_is_back_after_a_reboot(self):
        self.daemon_once("--replay", TRACE, "--until", str(START), clock=START)
        day = self.rows("HistPowers24Hr")
        shutil.rmtree(self.runtime)
        self.runtime.mkdir(mode=0o700)

        self.run_for(2, start=START + 100)

        working = self.rows("HistPowers24HrMem")
        kept = [stamp for stamp in day if stamp >= min(working)]
        self.assertGreater(len(kept), 2800)
        self.assertEqual([working[stamp] for stamp in kept], [day[stamp] for stamp in kept])
        self.assert_consecutive(working)
        self.assertEqual(working, self.rows("HistPowers24Hr"))

    def test_the_time_between_two_runs_is_empty(self):
        newest = self.run_for(2)

        self.run_for(1, start=newest + 7200)

        rows = self.rows("HistPowers24Hr")
        self.assert_consecutive(rows)
        self.assertEqual(rows[newest + 7140][1], 65535)

    def test_a_replay_can_go_on_live(self):
        daemon = self.daemon("--replay", TRACE, "--then-run", *FROM_TRACE, clock=(START, SPEED))
        daemon.wait_for_slots(3)

        self.assertEqual(daemon.end(), 0, daemon.said)

        self.assertRegex(daemon.stdout, r"^replayed .*\n$")
        rows = self.rows("HistPowers24Hr")
        self.assert_consecutive(rows)
        self.assertGreater(max(rows), 1748995170)

    def test_a_second_daemon_is_refused(self):
        daemon = self.daemon(*FROM_TRACE, clock=(START, SPEED))
        daemon.wait_for_slots()

        for arguments in (FROM_TRACE, ("--replay", TRACE)):
            _, errors = self.daemon_once(*arguments, exit_code=3)
            self.assertIn(f"process {daemon.process.pid}", errors)
            self.assertIn("pwrmgtd.lock", errors)

        self.assertEqual(daemon.end(), 0, daemon.said)

    def test_readers_beside_a_daemon_see_no_error(self):
        reader_s = float(os.environ.get("READER_SECONDS", "0"))
        self.daemon_once("--replay", TRACE, "--until", str(START), clock=START)
        daemon = self.daemon(*FROM_TRACE, "--persist-every", "2", clock=(START + 30, SPEED))
        newest = daemon.wait_for_slots()
        ended, failures, rounds = threading.Event(), [], [0, 0]

        def read(number, arguments, clock):
            while not ended.is_set():
                run = subprocess.run([CTL, *arguments], env=self.environment(clock()), capture_output=True, text=True,
                                     stdin=subprocess.DEVNULL, check=False)
                rounds[number] += 1
                if run.returncode != 0 or not run.stdout:
                    failures.append((arguments, run.returncode, run.stderr))

        # To a clock that stands where the replay ended, the latest reading is never old: not the replay's either.
        history = (0, ("power", "history", "--period", "24h", "--json"), lambda: newest + 30)
        realtime = (1, ("power", "realtime", "--json"), lambda: START)
        readers = [threading.Thread(target=read, args=arguments) for arguments in (history, realtime)]
        stop_s = time.monotonic() + reader_s
        for reader in readers:
            reader.start()
        try:
            while time.monotonic() < stop_s or min(rounds) < 10:
                newest = daemon.wait_for_slots()
            daemon.wait_for("saved up to", times=3)
        finally:
            ended.set()
            for reader in readers:
                reader.join()

        self.assertEqual(failures, [])
        self.assertEqual(daemon.end(), 0, daemon.said)
        self.assertEqual([line for line in daemon.said if "status" in line], [])
        self.assert_consecutive(self.rows("HistPowers24Hr"))


class Refused(WayTest):
    """Each with an exit code and a reason on standard error, and nothing on standard output."""

    def refused(self, exit_code, *arguments):
        out, errors = self.daemon_once(*arguments, exit_code=exit_code)
        self.assertEqual(out, "")
        self.assertRegex(errors, r"^pwrmgtd: ")
        return errors

    def test_a_wrong_command_line(self):
        self.assertIn("--sample-interval", self.refused(2, "--sample-interval", "0"))
        self.assertIn("--help", self.refused(2, "--no-such-option"))
        self.assertIn("--trace", self.refused(2, "--source", "trace"))

    def test_a_trace_that_is_not_there(self):
        for arguments in (("--replay", "/nonexistent/day.csv"), ("--source", "trace", "--trace", "/nonexistent/day.csv")):
            self.assertIn("/nonexistent/day.csv", self.refused(1, *arguments))

    def test_a_trace_that_is_garbled(self):
        file = self.place / "garbled.csv"
        file.write_text("epoch_s,sys_power_W\n1748908811,270\n1748908871,many\n", encoding="utf-8")

        self.assertIn(f"{file}:3: sys_power_W", self.refused(1, "--replay", str(file)))

    def test_a_place_that_cannot_be_written(self):
        file = self.place / "file"
        file.write_text("not a directory", encoding="utf-8")
        self.state = file / "state"

        self.assertIn(str(self.state), self.refused(1, "--replay", TRACE))

    def test_a_directory_of_somebody_else(self):
        if os.geteuid() != 0:
            self.skipTest("only root can become somebody else")
        if not all(parent.stat().st_mode & 0o001 for parent in Path(DAEMON).resolve().parents):
            self.skipTest("somebody else cannot get at the build directory")
        os.chmod(self.place, 0o755)
        run = subprocess.run([DAEMON, "--replay", TRACE], env=self.environment(None), capture_output=True, text=True,
                             check=False, stdin=subprocess.DEVNULL, user=65534, group=65534, extra_groups=[])

        self.assertEqual(run.returncode, 1, run.stdout + run.stderr)
        self.assertIn(str(self.state), run.stderr)

    def test_standard_output_that_is_full(self):
        with open("/dev/full", "w", encoding="utf-8") as full:
            run = subprocess.run([DAEMON, "--replay", TRACE], env=self.environment(None), stdout=full,
                                 stderr=subprocess.PIPE, text=True, check=False, stdin=subprocess.DEVNULL)

        self.assertEqual(run.returncode, 1)
        self.assertIn("standard output", run.stderr)


if __name__ == "__main__":
    unittest.main()
