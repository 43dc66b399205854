#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Supplies that lose their input, fail, are taken out and come back while the daemon runs, as a front end sees them. The
test moves the daemon's clock from row to row of a trace that it makes from a measured one."""
import csv
import sqlite3
import unittest

from daemon_support import DATA, MovedClock, WayTest

MIDNIGHT = 1748995200  # 2025-06-04 00:00:00; a trace that is played live starts here
STEP_S = 60
GOOD = {"present": 1, "ac_lost": 0, "fault": 0, "label_out_W": 1800}
AC_LOST = GOOD | {"ac_lost": 1}
FAULT = GOOD | {"fault": 1}
WEAKER = GOOD | {"label_out_W": 1600}
OUT = {"present": 0}
SILENT = None


class Supplies(WayTest):
    def setUp(self):
        super().setUp()
        self.properties = self.place / "properties.conf"
        self.properties.write_text("/dc/tavn/dm/planar/0/psu/config_type = 3\n", encoding="utf-8")
        self.trace = self.place / "supplies.csv"
        self.clock = MovedClock(self.place, MIDNIGHT)

    def write_trace(self, phases):
        """A row per phase, each a list of supplies, or SILENT: the controller is out of reach."""
        bays = max(len(phase or ()) for phase in phases)
        columns = [f"psu{n}_{column}" for n in range(1, bays + 1) for column in GOOD]
        with open(DATA / "server_4socket_24h_60s.csv", newline="", encoding="utf-8") as measured, \
                open(self.trace, "w", newline="", encoding="utf-8") as made:
            rows = csv.DictWriter(made, ["epoch_s", "sdr_rows", "sys_power_W", *columns])
            rows.writeheader()
            for number, (phase, row) in enumerate(zip([*phases, phases[-1]], csv.DictReader(measured))):
                cells = {"epoch_s": MIDNIGHT + number * STEP_S, "sdr_rows": 0 if phase is SILENT else row["sdr_rows"]}
                if phase is not SILENT:
                    cells["sys_power_W"] = row["sys_power_W"]
                    cells |= {f"psu{n}_{name}": value for n, supply in enumerate(phase, 1) for name, value in supply.items()}
                rows.writerow(cells)

    def start(self, *arguments):
        daemon = self.daemon("--source", "trace", "--trace", str(self.trace), *arguments, clock=self.clock)
        daemon.wait_for("recording from trace")
        return daemon

    def set_limits(self):
        """A lowest cap of 300 W AC and 250 W DC; nothing that is not stressed."""
        connection = sqlite3.connect(self.state / "vek_pwr_db.sqlite", timeout=30)
        try:
            with connection:
                connection.execute("UPDATE PowerPolicy SET CapMinAc=300, CapMaxAc=9000, CapMinDc=250, CapMaxDc=8000,"
                                   " UnstressAdapterPwr=0, UnstressHddPwr=0")
        finally:
            connection.close()

    def bays(self):
        return self.ctl("psu", "list", clock=self.clock)

    def states(self):
        """Each bay that the machine has in a few words."""
        words = []
        for bay in self.bays()["psus"]:
            if bay["state"] == "no bay":
                continue
            words.append(bay["state"] if bay["state"] != "present" else
                         "good" if (bay["input"], bay["health"]) == ("good", "good") else
                         "AC lost" if bay["input"] == "lost" else "fault")
        return words

    def available_w(self):
        return self.ctl("power", "available", clock=self.clock)["available_w"]

    def capping_ranges(self):
        ranges = [self.ctl("capping", "ranges", *side, clock=self.clock) for side in ((), ("--dc",))]
        return [(side["min_w"], side["max_w"]) for side in ranges]

    def next_phase(self, daemon, *patterns):
        self.clock.move_to(self.clock.now + STEP_S)
        for pattern in patterns:
            daemon.wait_for(pattern)

    def test_status_available_power_and_capping_range_follow_a_failing_supply(self):
        self.write_trace([[GOOD] * 4, [GOOD, AC_LOST, GOOD, GOOD], [GOOD, AC_LOST, GOOD, FAULT],
                          [GOOD, GOOD, GOOD, OUT], [GOOD, GOOD, GOOD, WEAKER], [GOOD] * 4])
        daemon = self.start("--redundancy-mode", "2")
        daemon.wait_for("supply 4: present, AC good, no fault, label 1800 W")
        self.set_limits()
        self.assertEqual(self.ctl("redundancy", "get", clock=self.clock)["mode"], 2)
        self.assertEqual(self.states(), ["good", "good", "good", "good"])
        self.assertEqual(self.available_w(), 7200)
        self.assertEqual(self.capping_ranges(), [(300, 7200), (250, 7200)])

        self.next_phase(daemon, "supply 2: present, AC lost, no fault, label 1800 W")
        self.assertEqual(self.states(), ["good", "AC lost", "good", "good"])
        self.assertEqual((self.bays()["present"], self.bays()["healthy"]), (4, 3))
        self.assertEqual(self.available_w(), 5400)
        self.assertEqual(self.capping_ranges(), [(300, 5400), (250, 5400)])

        self.next_phase(daemon, "supply 4: present, AC good, fault, label 1800 W")
        self.assertEqual(self.states(), ["good", "AC lost", "good", "fault"])
        self.assertEqual(self.available_w(), 3600)
        self.assertEqual(self.capping_ranges(), [(300, 3600), (250, 3600)])

        self.next_phase(daemon, "supply 2: present, AC good", "supply 4: not there")
        self.assertEqual(self.states(), ["good", "good", "good", "empty"])
        self.assertEqual((self.bays()["present"], self.bays()["healthy"]), (3, 3))
        self.assertEqual(self.available_w(), 5400)

        self.next_phase(daemon, "supply 4: present, AC good, no fault, label 1600 W")
        self.assertEqual(self.states(), ["good", "good", "good", "good"])
        self.assertEqual(self.available_w(), 6400)
        self.assertEqual(self.capping_ranges(), [(300, 6400), (250, 6400)])

        self.next_phase(daemon, "supply 4: present, AC good, no fault, label 1800 W")
        self.assertEqual(self.available_w(), 7200)
        self.assertEqual(self.ctl("redundancy", "get", clock=self.clock)["mode"], 2)
        self.assertEqual(daemon.end(), 0, daemon.said)

    def test_with_one_in_reserve_a_lost_input_a_fault_and_an_empty_bay_differ(self):
        self.write_trace([[GOOD] * 3, [GOOD, AC_LOST, GOOD], [GOOD, FAULT, GOOD], [GOOD, OUT, GOOD], [GOOD] * 3])
        daemon = self.start("--redundancy-mode", "4", "--bays", "12")
        daemon.wait_for("supply 3: present")
        self.assertEqual(self.available_w(), 5400)

        self.next_phase(daemon, "supply 2: present, AC lost")
        self.assertEqual(self.available_w(), 3600)

        self.next_phase(daemon, "supply 2: present, AC good, fault")
        self.assertEqual(self.available_w(), 3600)

        # Two that are all there are may be oversubscribed: 1.2 x 1800.
        self.next_phase(daemon, "supply 2: not there")
        self.assertEqual(self.available_w(), 2160)

        self.next_phase(daemon, "supply 2: present, AC good, no fault")
        self.assertEqual(self.available_w(), 5400)
        self.assertEqual(daemon.end(), 0, daemon.said)

    def test_without_a_healthy_supply_no_power_is_told_and_the_table_keeps_its_range(self):
        self.write_trace([[GOOD, GOOD], [AC_LOST, FAULT], [GOOD, FAULT]])
        daemon = self.start("--redundancy-mode", "0")
        daemon.wait_for("supply 2: present")
        self.set_limits()
        self.assertEqual(self.capping_ranges(), [(300, 1800), (250, 1800)])

        self.next_phase(daemon, "supply 1: present, AC lost", "supply 2: present, AC good, fault")
        self.assertIn("(status 17)", self.ctl_refused(4, "power", "available", clock=self.clock))
        self.assertEqual(self.states(), ["AC lost", "fault"])
        self.assertEqual(self.capping_ranges(), [(300, 9000), (250, 8000)])

        self.next_phase(daemon, "supply 1: present, AC good, no fault")
        self.assertEqual(self.available_w(), 1800)
        self.assertEqual(daemon.end(), 0, daemon.said)

    def test_a_source_that_falls_silent_leaves_the_last_state(self):
        self.write_trace([[GOOD, AC_LOST], SILENT, SILENT, [GOOD, GOOD]])
        daemon = self.start("--redundancy-mode", "2")
        daemon.wait_for("supply 2: present, AC lost")
        before = self.bays()

        # The second slot begins after the first silent row has been looked at.
        for _ in range(2):
            self.next_phase(daemon)
            daemon.wait_for_slots()

        self.assertEqual(self.bays()["psus"], before["psus"])
        self.next_phase(daemon, "supply 2: present, AC good")
        self.assertEqual(self.states(), ["good", "good"])
        self.assertEqual(daemon.end(), 0, daemon.said)
        self.assertEqual(len([line for line in daemon.said if "supply " in line]), 3, daemon.said)

    def test_a_restarted_daemon_learns_the_bays_anew(self):
        self.write_trace([[GOOD, FAULT], [GOOD, FAULT], [GOOD, FAULT], SILENT, SILENT])
        daemon = self.start("--redundancy-mode", "2")
        daemon.wait_for("supply 2: present, AC good, fault")
        before = self.bays()
        self.assertEqual(daemon.end(), 0, daemon.said)
        self.assertEqual(self.bays(), before)

        self.clock.move_to(MIDNIGHT + STEP_S)
        daemon = self.start()
        daemon.wait_for("supply 2: present, AC good, fault")
        self.assertEqual(self.bays()["psus"], before["psus"])
        self.next_phase(daemon)
        daemon.wait_for_slots()
        self.assertEqual(daemon.end(), 0, daemon.said)

        # What nothing tells of is not known, whatever an earlier run knew. The first tick records missed slots; when
        # the next one does, the first silent row has been looked at.
        self.clock.move_to(MIDNIGHT + 3 * STEP_S)
        daemon = self.start()
        daemon.wait_for_slots()
        self.next_phase(daemon)
        daemon.wait_for_slots()
        self.assertEqual([bay["state"] for bay in self.bays()["psus"][:3]], [None, None, "no bay"])
        self.assertEqual(daemon.end(), 0, daemon.said)

    def test_supplies_of_the_kernel_are_followed_too(self):
        chips = self.place / "sys" / "class" / "hwmon"
        for place, device in enumerate(("7-0058", "7-0059")):
            chip = chips / f"hwmon{place}"
            chip.mkdir(parents=True)
            (chip / "device").symlink_to(f"../../../devices/{device}")
            for name, value in {"name": "pmbus", "in1_label": "vin", "in1_input": "230000", "power1_label": "pin",
                                "power1_input": "220000000", "power2_label": "pout1", "power2_input": "200000000",
                                "power2_rated_max": "1600000000", "fan1_fault": "0"}.items():
                (chip / name).write_text(value + "\n", encoding="utf-8")
        daemon = self.daemon("--source", "kernel", "--kernel-root", str(self.place), "--redundancy-mode", "2", "--bays",
                             "2", clock=self.clock)
        daemon.wait_for("supply 2: present, AC good, no fault, label 1600 W")
        self.assertEqual(self.available_w(), 3200)

        (chips / "hwmon1" / "in1_input").write_text("0\n", encoding="utf-8")
        self.next_phase(daemon, "supply 2: present, AC lost")
        self.assertEqual(self.states(), ["good", "AC lost"])
        self.assertEqual(self.available_w(), 1600)
        self.assertEqual(daemon.end(), 0, daemon.said)
        system = self.ctl("power", "realtime", clock=self.clock)["system"]
        self.assertEqual((system["ac_w"], system["dc_w"]), (440, 400))

    def test_a_measured_trace_shows_its_supplies_with_the_label_that_was_set_up(self):
        self.trace = DATA / "server_4socket_24h_60s.csv"
        daemon = self.start("--redundancy-mode", "1", "--psu-label", "750", "--psu-input-label", "815")
        daemon.wait_for("supply 2: present, AC good, no fault, label 750 W")

        self.assertEqual(self.bays()["psus"][1], {"psu": 2, "state": "present", "input": "good", "health": "good",
                                                  "voltage_class": None, "input_label_w": 815, "output_label_w": 750})
        self.assertEqual(self.states(), ["good", "good"])
        self.assertEqual(self.available_w(), 900)
        self.assertEqual(daemon.end(), 0, daemon.said)


if __name__ == "__main__":
    unittest.main()
