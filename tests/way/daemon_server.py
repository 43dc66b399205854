#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The daemon's tables on a MariaDB server: a measured day is shown as it is from files, and the daemon records, saves and
starts again there. The server is the test's own, on a socket only."""
import os
import signal
import subprocess
import tempfile
import unittest
from pathlib import Path

from daemon_support import DATA, DEADLINE_S, WayTest, seconds_of

SERVER = os.environ["MARIADBD"]
SHARE = Path(os.environ["MARIADB_SHARE"])
NO_SYNC = os.environ["NO_SYNC"]
UNTIL = 1748995210  # 2025-06-04 00:00:10
DAY = DATA / "server_4socket_24h_60s.csv"
FROM_TRACE = ("--source", "trace", "--trace", str(DAY))
QUERIES = [
    ("power", "history", "--period", "24h"),
    ("power", "history", "--period", "1h", "--domain", "cpu"),
    ("psu", "history", "1", "--period", "24h"),
    ("psu", "list"),
    ("performance", "history", "--period", "12h"),
    ("cpu", "history"),
    ("thermal", "history", "--period", "24h"),
    ("thermal", "realtime"),
    ("policy", "get"),
]


class Server:
    def __init__(self):
        self.place = tempfile.TemporaryDirectory(prefix="pwrmgtd-server-")
        self.directory = Path(self.place.name)
        self.socket = self.directory / "socket"
        self.process = None
        self.databases = 0

    def command(self, *more):
        return [SERVER, "--no-defaults", f"--datadir={self.directory}/data", f"--socket={self.socket}",
                f"--pid-file={self.directory}/pid", f"--log-error={self.directory}/log.err", "--user=root", "--skip-networking",
                "--innodb-log-file-size=4M", "--innodb-buffer-pool-size=8M", "--innodb-flush-log-at-trx-commit=2",
                "--innodb-data-file-path=ibdata1:4M:autoextend", "--innodb-temp-data-file-path=ibtmp1:4M:autoextend",
                "--innodb-autoextend-increment=1", "--innodb-undo-tablespaces=0", "--innodb-doublewrite=0", *more]

    def start(self):
        environment = os.environ | {"LD_PRELOAD": NO_SYNC}
        if not (self.directory / "data").exists():
            (self.directory / "data").mkdir()
            sql = "create database mysql;\nuse mysql;\n" + "".join(
                (SHARE / name).read_text(encoding="utf-8")
                for name in ("mysql_system_tables.sql", "mysql_system_tables_data.sql"))
            subprocess.run(self.command("--bootstrap"), input=sql, text=True, check=True, env=environment,
                           capture_output=True, timeout=DEADLINE_S)
        log = self.directory / "log.err"
        log.unlink(missing_ok=True)
        self.process = subprocess.Popen(self.command(), env=environment, stdin=subprocess.DEVNULL,
                                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        # The socket's file is there before anybody is let in.
        while not (log.exists() and "ready for connections" in log.read_text(encoding="utf-8")):
            try:
                self.process.wait(timeout=0.02)
            except subprocess.TimeoutExpired:
                continue
            raise AssertionError(log.read_text(encoding="utf-8"))

    def end(self):
        self.process.kill()
        self.process.wait(timeout=DEADLINE_S)

    def address(self, database):
        return f"mariadb://root@{str(self.socket).replace('/', '%2F')}/{database}"


class OnServer(WayTest):
    @classmethod
    def setUpClass(cls):
        cls.server = Server()
        cls.addClassCleanup(cls.server.place.cleanup)
        cls.server.start()
        cls.addClassCleanup(cls.server.end)

    def use_server(self):
        self.server.databases += 1
        self.variables = {"VEKDB_SERVER": self.server.address(f"test{self.server.databases}")}

    def shown(self, clock):
        answers = [self.ctl(*query, clock=clock) for query in QUERIES]
        for answer in answers:
            answer.pop("database")
        return answers

    def test_a_measured_day_is_shown_as_it_is_from_files(self):
        self.daemon_once("--replay", str(DAY), "--until", str(UNTIL), clock=UNTIL)
        from_files = self.shown(UNTIL)
        self.use_server()

        self.daemon_once("--replay", str(DAY), "--until", str(UNTIL), clock=UNTIL)

        self.assertEqual(self.shown(UNTIL), from_files)
        entries = from_files[0]["entries"]
        self.assertGreater(sum(entry["dc"]["avg_w"] is not None for entry in entries), 100)

    def test_it_says_which_server_without_a_password(self):
        self.use_server()
        address = self.variables["VEKDB_SERVER"]
        self.variables["VEKDB_SERVER"] = address.replace("root@", "root:@")

        out, _ = self.daemon_once("--replay", str(DAY), "--until", str(UNTIL), clock=UNTIL)

        self.assertIn(f"database {address}, ", out)
        self.assertEqual(self.ctl("power", "history", clock=UNTIL)["database"], address)
        self.assertEqual(self.ctl("policy", "get", clock=UNTIL)["database"], address)

    def test_what_was_recorded_and_saved_is_there_after_a_restart_of_both(self):
        self.use_server()
        daemon = self.daemon(*FROM_TRACE, "--persist-every", "2", clock=(UNTIL, 300))
        newest = daemon.wait_for_slots(4)
        self.assertEqual(daemon.end(), 0)
        before = self.recorded(newest)
        self.server.end()
        self.server.start()

        again = self.daemon(*FROM_TRACE, clock=(newest + 200, 300))
        again.wait_for_slots()
        self.assertEqual(again.end(), 0)

        # As from then: a slow machine may be more than an hour of this clock later.
        after = self.recorded(newest)
        self.assertGreaterEqual(len(before), 4)
        self.assertEqual({stamp: after.get(stamp) for stamp in before}, before)

    def recorded(self, newest):
        """{stamp: power} of the slots of the hour before."""
        entries = self.ctl("power", "history", "--period", "1h", clock=newest + 100)["entries"]
        return {entry["timestamp_s"]: entry["dc"] for entry in entries if entry["dc"]["avg_w"] is not None}

    def test_a_server_that_is_gone_is_a_failure_and_no_file_takes_its_place(self):
        self.use_server()
        self.variables["VEKDB_SERVER"] += "%2Fnot"
        self.server.end()
        try:
            _, error = self.daemon_once("--replay", str(DAY), "--until", str(UNTIL), clock=UNTIL, exit_code=1)
        finally:
            self.server.start()

        self.assertIn("the database did not open", error)
        self.assertEqual(list(self.state.iterdir()) + list(self.runtime.iterdir()), [])

    def test_the_daemon_goes_on_when_its_server_comes_back(self):
        self.use_server()
        daemon = self.daemon(*FROM_TRACE, clock=(UNTIL, 60))
        daemon.wait_for_slots()
        self.server.end()
        self.server.start()

        daemon.wait_for_slots(2)

        self.assertEqual(daemon.end(signal.SIGTERM), 0)

    def test_what_was_saved_is_shown_again_when_the_server_comes_back(self):
        self.use_server()
        daemon = self.daemon(*FROM_TRACE, "--persist-every", "2", clock=(UNTIL, 60))
        saved = seconds_of(daemon.wait_for(r"saved up to the slot of (.*)Z", 2)[1])
        before = {stamp: power for stamp, power in self.recorded(saved).items() if stamp <= saved}
        self.server.end()
        self.server.start()

        daemon.wait_for("the working tables were emptied")
        daemon.wait_for_slots()

        after = self.recorded(saved)
        self.assertEqual(daemon.end(signal.SIGTERM), 0)
        self.assertGreater(len(before), 0)
        self.assertEqual({stamp: after.get(stamp) for stamp in before}, before)


if __name__ == "__main__":
    unittest.main()
