# SPDX-License-Identifier: Apache-2.0
"""check_units.py on units that leave the machine open or that systemd does not understand."""
import argparse
from pathlib import Path

import check_common
import check_units

UNITS = Path(__file__).resolve().parent.parent / "systemd"
SHUT_OFF = (UNITS / "pwrmgtd.service").read_text(encoding="utf-8")


class Units(check_common.TreeCase):
    def check(self):
        return check_units.all_breaches(self.root, argparse.Namespace(analyze="systemd-analyze", sysusers="systemd-sysusers"))

    def test_a_unit_that_is_shut_off_passes(self):
        self.write("systemd/a.service", SHUT_OFF)

        self.assertEqual(self.check(), (1, []))

    def test_a_unit_without_a_sandbox_is_reported(self):
        self.write("systemd/a.service", "[Service]\nExecStart=/bin/true\n")

        self.assert_breach(self.check()[1], "systemd/a.service", "exposure 9.")

    def test_a_setting_that_systemd_does_not_know_is_reported(self):
        self.write("systemd/a.service", SHUT_OFF.replace("[Install]", "[Service]\nProtectEverything=yes\n[Install]"))

        self.assert_breach(self.check()[1], "systemd/a.service", "ProtectEverything")

    def test_a_unit_that_cannot_be_loaded_is_reported(self):
        self.write("systemd/a.service", "[Service]\n")

        self.assertNotEqual(self.check()[1], [])

    def test_a_line_that_declares_no_user_is_reported(self):
        self.write("systemd/a.sysusers", "u vekdb - \"Daemon\"\n")
        self.write("systemd/b.sysusers", "user vekdb\n")

        looked_at, breaches = self.check()

        self.assertEqual(looked_at, 2)
        self.assertEqual(len(breaches), 1, breaches)
        self.assert_breach(breaches, "systemd/b.sysusers")

    def test_a_tree_without_units_is_nothing_checked(self):
        self.write("src/a.service", SHUT_OFF)

        self.assertEqual(self.check(), (0, []))
