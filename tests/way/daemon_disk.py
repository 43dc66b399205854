#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The daemon on disks that fill up or fail under it: it says so once, goes on with what is left, and catches up. The small
disks are file systems of the test's own, in a mount namespace that ends with it: as root, or as a user who may make user
namespaces. Where neither works the test is skipped and says so."""
import ctypes
import errno
import os
import re
import signal
import sqlite3
import subprocess
import unittest

from daemon_support import DATA, DEADLINE_S, MovedClock, WayTest

START = 1748995210  # 2025-06-04 00:00:10
TRACE = str(DATA / "server_4socket_24h_60s.csv")
FROM_TRACE = ("--source", "trace", "--trace", TRACE)
STAND_IN = os.environ["FAILING_DISK_LIBRARY"]

NEW_MOUNTS, NEW_USERS = 0x00020000, 0x10000000
RECURSIVE_PRIVATE = 0x4000 | 0x40000


def enter_own_mounts():
    """From here on this process and its children mount for themselves. The reason why not, or nothing."""
    libc = ctypes.CDLL(None, use_errno=True)
    user, group = os.geteuid(), os.getegid()
    if libc.unshare(NEW_MOUNTS | (NEW_USERS if user else 0)) != 0:
        return os.strerror(ctypes.get_errno())
    if user:
        for file, text in (("setgroups", "deny"), ("uid_map", f"0 {user} 1"), ("gid_map", f"0 {group} 1")):
            with open(f"/proc/self/{file}", "w", encoding="ascii") as stream:
                stream.write(text)
    if libc.mount(b"none", b"/", None, RECURSIVE_PRIVATE, None) != 0:
        return os.strerror(ctypes.get_errno())
    return None


class DiskTest(WayTest):
    def setUp(self):
        super().setUp()
        self.clock = MovedClock(self.place, START)

    def start(self, batch=1):
        """A daemon that has recorded and saved a slot."""
        daemon = self.daemon(*FROM_TRACE, "--persist-every", str(batch), clock=self.clock)
        daemon.wait_for("recording from trace")
        daemon.process.send_signal(signal.SIGUSR1)  # is answered after the first reading
        daemon.wait_for("asked to save")
        self.go_on(daemon, 1)
        return daemon

    def go_on(self, daemon, slots):
        """So many slots, each with a reading and an attempt to save; what was said meanwhile."""
        at = len(daemon.said)
        for _ in range(slots):
            self.clock.move_to(self.clock.now + 30)
            daemon.process.send_signal(signal.SIGUSR1)
            daemon.wait_for("asked to save")
        return daemon.said[at:]

    def fail_for(self, daemon, slots, doing):
        """From the first trouble on nothing is done any more: a full disk has room for some bytes. What was said."""
        said = self.go_on(daemon, slots)
        first = next(at for at, line in enumerate(said) if "status" in line)
        self.assertEqual([line for line in said[first:] if doing in line], [])
        return said

    def newest_slot(self):
        return self.clock.now // 30 * 30 - 30

    def assert_said_once(self, lines, *wanted):
        """Each trouble and each end of one is said once, and there are some."""
        troubles = [line for line in lines if not re.search("(up to the slot of|asked to save|missed slots)", line)]
        self.assertEqual(sorted(set(troubles)), sorted(troubles))
        for words in wanted:
            self.assertTrue([line for line in troubles if re.search(words, line)], f"{words}: {troubles}")

    def assert_sound(self):
        for file in (self.state / "vek_pwr_db.sqlite", self.runtime / "vek_pwr_db-mem.sqlite"):
            connection = sqlite3.connect(file, timeout=30)
            try:
                self.assertEqual(connection.execute("PRAGMA integrity_check").fetchall(), [("ok",)], file)
            finally:
                connection.close()

    def assert_readers_see(self, newest):
        entries = self.ctl("power", "history", "--period", "1h", clock=newest + 35)["entries"]
        self.assertEqual(entries[0]["timestamp_s"], newest)

    def assert_nothing_lost(self):
        """Every slot from the first on is in all tables and holds a reading."""
        rows = self.rows("HistPowers24Hr")
        self.assert_consecutive(rows)
        self.assertEqual((min(rows), max(rows)), (START // 30 * 30, self.newest_slot()))
        self.assertNotIn(65535, [row[1] for row in rows.values()])
        self.assertEqual(self.rows("HistPowers24HrMem"), rows)
        self.assertEqual(list(self.rows("HistExtraPowers24Hr", ["Ps5AvgAc"])), list(rows))
        self.assert_sound()


class Full(DiskTest):
    @classmethod
    def setUpClass(cls):
        reason = enter_own_mounts()
        if reason:
            raise unittest.SkipTest(f"no mount namespace: {reason}")

    def mount(self, directory):
        subprocess.run(["mount", "-t", "tmpfs", "-o", "size=8m,mode=0700", "tmpfs", directory], check=True)
        self.addCleanup(subprocess.run, ["umount", directory], check=True)

    def fill(self, directory):
        """A file that takes what room there is left."""
        ballast = directory / "ballast"
        with open(ballast, "wb", buffering=0) as file:
            try:
                while True:
                    file.write(bytes(4096))
            except OSError as failure:
                self.assertEqual(failure.errno, errno.ENOSPC)
        return ballast

    def test_a_full_disk_costs_nothing_once_there_is_room_again(self):
        self.mount(self.state)
        daemon = self.start()
        ballast = self.fill(self.state)

        said = self.fail_for(daemon, 12, "saved up to")
        self.assert_said_once(said, "saving slots: status 4, no space is left")
        self.assert_readers_see(self.newest_slot())
        ballast.unlink()
        self.assert_said_once(self.go_on(daemon, 1), "saving slots: works again")
        self.assertEqual(daemon.end(), 0, daemon.said)

        self.assert_nothing_lost()

    def test_an_end_on_a_full_disk_is_a_failure_that_the_next_start_makes_good(self):
        self.mount(self.state)
        daemon = self.start()
        ballast = self.fill(self.state)
        self.fail_for(daemon, 6, "saved up to")
        self.assertEqual(daemon.end(), 1, daemon.said)

        self.assertEqual(daemon.said[-1], "pwrmgtd: ended with slots that could not be saved")
        self.assert_sound()
        ballast.unlink()
        daemon = self.start()
        self.assertEqual(daemon.end(), 0, daemon.said)
        self.assert_nothing_lost()

    def test_slots_wait_in_memory_while_the_working_tables_have_no_room(self):
        self.mount(self.runtime)
        daemon = self.start()
        ballast = self.fill(self.runtime)

        said = self.fail_for(daemon, 12, "recorded up to")
        self.assert_said_once(said, "storing slots: status 4, no space is left")
        self.assert_readers_see(max(self.rows("HistPowers24HrMem")))
        ballast.unlink()
        self.assert_said_once(self.go_on(daemon, 1), "works again")
        self.assertEqual(daemon.end(), 0, daemon.said)

        self.assert_nothing_lost()

    def test_an_end_without_room_for_the_working_tables_leaves_a_gap(self):
        self.mount(self.runtime)
        daemon = self.start()
        ballast = self.fill(self.runtime)
        self.fail_for(daemon, 6, "recorded up to")
        recorded, ended = max(self.rows("HistPowers24HrMem")), self.newest_slot()
        self.assertEqual(daemon.end(), 1, daemon.said)

        self.assertEqual(daemon.said[-1], "pwrmgtd: ended with slots that could not be saved")
        self.assert_sound()
        ballast.unlink()
        daemon = self.start()
        self.assertEqual(daemon.end(), 0, daemon.said)
        rows = self.rows("HistPowers24Hr")
        self.assert_consecutive(rows)
        self.assertEqual([stamp for stamp, row in rows.items() if row[1] == 65535],
                         list(range(recorded + 30, ended + 30, 30)))
        self.assertEqual(self.rows("HistPowers24HrMem"), rows)

    def test_a_start_on_a_read_only_disk_is_refused(self):
        self.mount(self.state)
        daemon = self.start()
        self.assertEqual(daemon.end(), 0, daemon.said)
        subprocess.run(["mount", "-o", "remount,bind,ro", self.state], check=True)

        _, errors = self.daemon_once(*FROM_TRACE, clock=self.clock, exit_code=1)

        self.assertIn(f"{self.state}: Read-only file system", errors)
        subprocess.run(["mount", "-o", "remount,bind,rw", self.state], check=True)
        daemon = self.start()
        self.assertEqual(daemon.end(), 0, daemon.said)
        self.assert_nothing_lost()


class Failing(DiskTest):
    """A stand-in for the kernel fails the daemon's writes to the disk of the persistent tables."""

    def setUp(self):
        super().setUp()
        self.switch = self.place / "failing"

    def environment(self, clock):
        variables = super().environment(clock)
        return variables | {"LD_PRELOAD": f"{variables['LD_PRELOAD']}:{STAND_IN}", "FAILING_DISK": str(self.switch),
                            "FAILING_DISK_PLACE": f"{self.state}/"}

    def test_a_disk_that_turns_read_only_costs_nothing_once_it_is_writable_again(self):
        for error in (errno.EROFS, errno.EIO):
            with self.subTest(errno.errorcode[error]):
                daemon = self.start()
                self.switch.write_text(f"{error}\n", encoding="ascii")

                said = self.fail_for(daemon, 12, "saved up to")
                self.assert_said_once(said, "saving slots: status 7")
                self.assert_readers_see(self.newest_slot())
                self.switch.unlink()
                self.assert_said_once(self.go_on(daemon, 1), "saving slots: works again")
                self.assertEqual(daemon.end(), 0, daemon.said)

                self.assert_nothing_lost()

    def test_an_end_on_a_read_only_disk_is_a_failure_that_the_next_start_makes_good(self):
        daemon = self.start()
        self.switch.write_text(f"{errno.EROFS}\n", encoding="ascii")
        self.fail_for(daemon, 6, "saved up to")
        self.assertEqual(daemon.end(), 1, daemon.said)

        self.assertEqual(daemon.said[-1], "pwrmgtd: ended with slots that could not be saved")
        self.switch.unlink()
        self.assert_sound()
        daemon = self.start()
        self.assertEqual(daemon.end(), 0, daemon.said)
        self.assert_nothing_lost()


class Emptied(DiskTest):
    """Somebody deletes what is in a directory of the database while the daemon runs."""

    def empty(self, directory):
        for file in directory.iterdir():
            file.unlink()

    def end_of(self, daemon):
        daemon.process.wait(timeout=DEADLINE_S)
        code = daemon.end()
        return code, [line for line in daemon.said if re.search("is gone|ended", line)]

    def start_again(self):
        daemon = self.start()
        self.assertEqual(daemon.end(), 0, daemon.said)
        self.assert_nothing_lost()

    def test_an_emptied_runtime_directory_ends_the_daemon_and_costs_nothing(self):
        daemon = self.start(batch=100)
        self.go_on(daemon, 3)
        self.clock.move_to(self.clock.now + 30)
        self.assertEqual(daemon.wait_for_slots(), self.newest_slot())  # not saved yet

        self.empty(self.runtime)

        self.assertEqual(self.end_of(daemon), (1, [
            f"pwrmgtd: {self.runtime}/vek_pwr_db-mem.sqlite is gone: ending, so that the next start opens what is there",
            "pwrmgtd: ended, everything saved"]))
        self.start_again()

    def test_a_reader_that_made_new_files_meanwhile_changes_nothing(self):
        daemon = self.start()
        daemon.process.send_signal(signal.SIGSTOP)
        self.empty(self.runtime)
        self.ctl_refused(4, "power", "history", clock=self.clock.now)
        daemon.process.send_signal(signal.SIGCONT)

        code, said = self.end_of(daemon)

        self.assertEqual(code, 1)
        self.assertIn("vek_pwr_db-mem.sqlite is another file by now", daemon.said[-2])
        self.assertEqual(said[-1], "pwrmgtd: ended, everything saved")
        self.start_again()

    def test_an_emptied_state_directory_ends_the_daemon_and_the_next_start_saves_the_day(self):
        daemon = self.start()
        self.go_on(daemon, 3)

        self.empty(self.state)

        code, said = self.end_of(daemon)
        self.assertEqual(code, 1)
        self.assertIn(f"{self.state}/vek_pwr_db.sqlite is gone", said[0])
        self.start_again()


if __name__ == "__main__":
    unittest.main()
