#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The daemon as a service: what its manager hears, what its signals do, how it is configured and what it says."""
import os
import re
import signal
import socket
import subprocess
import unittest

from daemon_support import DAEMON, DATA, DEADLINE_S, MovedClock, WayTest

START = 1748995210  # 2025-06-04 00:00:10
TRACE = DATA / "server_4socket_24h_60s.csv"
FROM_TRACE = ("--source", "trace", "--trace", str(TRACE))
SPEED = 300


class Service(WayTest):
    def listen(self, **variables):
        """A service manager's socket, named in the environment of the daemons to come."""
        manager = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self.addCleanup(manager.close)
        manager.bind(str(self.place / "notify"))
        manager.settimeout(DEADLINE_S)
        self.variables = {"NOTIFY_SOCKET": str(self.place / "notify")} | variables
        return manager

    def hear(self, manager, pattern, times=1):
        """What was heard up to the message that makes it `times` of the pattern's."""
        heard = []
        while times:
            heard.append(manager.recv(4096).decode())
            times -= re.search(pattern, heard[-1]) is not None
        return heard

    def write_trace(self, watts):
        file = self.place / "day.csv"
        file.write_text(f"epoch_s,sys_power_W\n0,{watts}\n60,{watts}\n", encoding="utf-8")
        return file

    def configure(self, text):
        self.configuration = self.place / "pwrmgtd.conf"
        self.configuration.write_text(text, encoding="utf-8")

    def shown_w(self, clock):
        return self.ctl("power", "realtime", clock=clock)["system"]["dc_w"]

    def test_the_manager_hears_of_start_progress_life_and_end(self):
        manager = self.listen(WATCHDOG_USEC="300000")
        daemon = self.daemon(*FROM_TRACE, clock=(START, SPEED))

        heard = self.hear(manager, "^READY=1")
        self.assertEqual(heard[-1], f"READY=1\nSTATUS=recording from trace {TRACE}")
        heard = self.hear(manager, "^STATUS=recording from trace .*, recorded up to the slot of 2025-06-04 00:0")
        self.hear(manager, "^WATCHDOG=1$", times=3)

        self.assertEqual(daemon.end(), 0, daemon.said)
        self.hear(manager, "^STOPPING=1\n")

    def test_in_normal_running_nothing_is_said(self):
        manager = self.listen()
        daemon = self.daemon(*FROM_TRACE, clock=(START, SPEED), quiet=True)
        self.hear(manager, "recorded up to", times=12)

        self.assertEqual(daemon.end(), 0, daemon.said)

        self.assertEqual((daemon.said, daemon.stdout), ([], ""))

    def test_the_journal_gets_each_line_once_with_its_priority(self):
        out, into = os.pipe()
        journal = os.fstat(into)
        self.variables = {"JOURNAL_STREAM": f"{journal.st_dev}:{journal.st_ino}"}
        self.configure("bays = 13\n")
        refused = subprocess.run([DAEMON], env=self.environment(None), stderr=into, check=False, stdin=subprocess.DEVNULL)
        self.configure("bays = 2\n")
        done = subprocess.run([DAEMON, "--replay", str(TRACE), "--until", str(START)], env=self.environment(START),
                              stdout=subprocess.DEVNULL, stderr=into, check=False, stdin=subprocess.DEVNULL)
        os.close(into)
        with os.fdopen(out, encoding="utf-8") as stream:
            said = stream.read().splitlines()

        self.assertEqual((refused.returncode, done.returncode), (2, 0), said)
        self.assertRegex(said[0], r"^<3>.*:1: bays: Value 13 not in range 1 to 12$")
        self.assertIn("<5>power history: empty", said)
        self.assertEqual([line for line in said if not re.match("<[345]>", line)], [])

    def test_a_hangup_reads_configuration_and_trace_again(self):
        trace = self.write_trace(100)
        self.configure(f"source = trace\ntrace = {trace}\n")
        clock = MovedClock(self.place, START)
        manager = self.listen()
        daemon = self.daemon(clock=clock)
        self.hear(manager, "^READY=1")
        self.assertEqual(self.shown_w(clock), 100)

        self.write_trace(200)
        daemon.process.send_signal(signal.SIGHUP)
        daemon.wait_for("configuration read again")
        heard = self.hear(manager, "^READY=1")
        self.assertRegex(heard[0], "^RELOADING=1\nMONOTONIC_USEC=[0-9]+$")
        clock.move_to(START + 1)
        daemon.process.send_signal(signal.SIGUSR1)
        daemon.wait_for("asked to save")
        self.assertEqual(self.shown_w(clock), 200)

        self.assertEqual(daemon.end(), 0, daemon.said)

    def test_a_configuration_with_a_mistake_leaves_the_one_in_force(self):
        trace = self.write_trace(100)
        self.configure(f"source = trace\ntrace = {trace}\n")
        clock = MovedClock(self.place, START)
        daemon = self.daemon(clock=clock)
        daemon.wait_for("recording from trace")

        for text, words in ((f"source = trace\ntrace = {trace}\nsample-interval = 0\n", ":3: sample-interval: "),
                            ("source = trace\ntrace = /nonexistent.csv\n", "/nonexistent.csv: No such file")):
            self.configure(text)
            daemon.process.send_signal(signal.SIGHUP)
            daemon.wait_for(re.escape(words))
            daemon.wait_for("the configuration stays as it was")
        clock.move_to(START + 1)
        daemon.process.send_signal(signal.SIGUSR1)
        daemon.wait_for("asked to save")

        self.assertEqual(self.ctl("power", "realtime", clock=clock)["timestamp_s"], START + 1)
        self.assertEqual(self.shown_w(clock), 100)
        self.assertEqual(daemon.end(), 0, daemon.said)

    def test_the_first_user_signal_saves_now(self):
        daemon = self.daemon(*FROM_TRACE, "--persist-every", "2880", clock=(START, SPEED))
        newest = daemon.wait_for_slots(3)
        self.assertEqual(self.rows("HistPowers24Hr"), {})

        daemon.process.send_signal(signal.SIGUSR1)
        daemon.wait_for("asked to save: [0-9]+ slots saved")

        self.assertGreaterEqual(max(self.rows("HistPowers24Hr")), newest)
        self.assertEqual(daemon.end(signal.SIGKILL), -signal.SIGKILL)

    def test_new_labels_and_bays_are_in_force_after_a_reload(self):
        self.configure(f"source = trace\ntrace = {TRACE}\npsu-label = 800\n")
        clock = MovedClock(self.place, START)
        daemon = self.daemon(clock=clock)
        daemon.wait_for("supply 2: present, AC good, no fault, label 800 W")

        self.configure(f"source = trace\ntrace = {TRACE}\npsu-label = 1200\nbays = 4\n")
        daemon.process.send_signal(signal.SIGHUP)
        daemon.wait_for("supply 2: present, AC good, no fault, label 1200 W")

        self.assertEqual(self.ctl("psu", "list", clock=clock)["bays"], 4)
        self.assertEqual(daemon.end(), 0, daemon.said)

    def test_the_configuration_in_force_can_be_looked_at(self):
        self.configure("persist-every = 20\n")
        self.variables = {"PWRMGTD_BAYS": "4"}

        out, errors = self.daemon_once("--check-config", "--sample-interval", "2")

        self.assertEqual(errors, "")
        self.assertIn(f"persist-every = 20  # {self.configuration}:1\n", out)
        self.assertIn("bays = 4  # PWRMGTD_BAYS\n", out)
        self.assertIn("sample-interval = 2  # command line\n", out)
        self.assertEqual(list(self.state.iterdir()) + list(self.runtime.iterdir()), [])


    def test_the_manual_and_the_page_name_every_option(self):
        options = re.findall("^  (?:-h,)?(--[a-z-]+)", self.daemon_once("--help")[0], re.MULTILINE)
        manual = (DATA.parent / "man" / "pwrmgtd.8").read_text(encoding="utf-8")
        page = (DATA.parent / "docs" / "pwrmgtd.md").read_text(encoding="utf-8")

        self.assertGreater(len(options), 15)
        self.assertEqual([name for name in options if not re.search(rf"Fl {name[1:]}\b", manual)], [])
        self.assertEqual([name for name in options if f"`{name}" not in page], [])

    def test_the_file_to_start_from_changes_nothing_until_it_is_edited(self):
        sample = DATA.parent / "systemd" / "pwrmgtd.conf"
        self.configuration = os.devnull
        built_in, _ = self.daemon_once("--check-config")

        out, _ = self.daemon_once("--check-config", "--config", str(sample))
        edited = self.place / "edited.conf"
        edited.write_text(re.sub(r"^#(?=[a-z-]+ = )", "", sample.read_text(encoding="utf-8"), flags=re.MULTILINE)
                          .replace("/usr/share/doc/pwrmgtd/day.csv", str(TRACE)), encoding="utf-8")
        names = re.findall("^([a-z-]+) = ", self.daemon_once("--check-config", "--config", str(edited))[0], re.MULTILINE)

        self.assertEqual(out.splitlines()[1:], built_in.splitlines()[1:])
        self.assertEqual(names, re.findall("^#? ?([a-z-]+) (?:=|is not set)", built_in, re.MULTILINE))


if __name__ == "__main__":
    unittest.main()
