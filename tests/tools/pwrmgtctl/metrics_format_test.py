# SPDX-License-Identifier: Apache-2.0
"""The metrics through the parsers that collectors use, and that no firmware is asked for them."""
import os
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

# Where the distribution keeps the module, for an interpreter of another origin.
sys.path.append("/usr/lib/python3/dist-packages")
from prometheus_client.openmetrics.parser import text_string_to_metric_families as openmetrics_families  # noqa: E402
from prometheus_client.parser import text_string_to_metric_families as textfile_families  # noqa: E402

SOURCES = ["realtime", "processors", "supply_power", "supplies", "policy", "available_power", "temperatures"]


class Metrics(unittest.TestCase):
    def setUp(self):
        self.place = Path(tempfile.mkdtemp(prefix="metrics-format-"))
        self.addCleanup(shutil.rmtree, self.place)
        self.runtime = self.place / "run"
        kept = {k: v for k, v in os.environ.items() if not k.startswith("VEKDB_")}
        self.environment = kept | {"VEKDB_STATE_DIR": str(self.place / "state"), "VEKDB_RUNTIME_DIR": str(self.runtime)}
        (self.place / "state").mkdir(mode=0o700)
        self.runtime.mkdir(mode=0o700)

    def run_tool(self, name, *arguments, **more):
        run = subprocess.run([os.environ[name], *arguments], env=self.environment | more, capture_output=True, text=True,
                             timeout=120, stdin=subprocess.DEVNULL, check=False)
        self.assertEqual(run.returncode, 0, run.stderr)
        return run.stdout

    def record_a_day(self):
        self.run_tool("PWRMGTD", "--replay", os.environ["MEASURED_TRACE"], "--until", "now")

    def samples(self, families):
        return {(sample.name, tuple(sorted(sample.labels.items()))): sample.value
                for family in families for sample in family.samples}

    def test_openmetrics_parser_takes_a_measured_day(self):
        self.record_a_day()

        families = list(openmetrics_families(self.run_tool("PWRMGTCTL", "metrics")))

        self.assertTrue(families)
        self.assertEqual({family.type for family in families}, {"gauge"})
        for family in families:
            self.assertTrue(family.documentation.endswith("."), family.name)
            self.assertTrue(family.name.startswith("pwrmgt_"))
            for unit in ("watts", "seconds", "celsius", "ratio"):
                self.assertEqual(family.unit == unit, family.name.endswith("_" + unit), family.name)

    def test_both_parsers_read_the_same_samples(self):
        self.record_a_day()
        text = self.run_tool("PWRMGTCTL", "metrics")

        modern, textfile = self.samples(openmetrics_families(text)), self.samples(textfile_families(text))

        self.assertEqual(modern, textfile)
        self.assertIn(("pwrmgt_system_power_watts", (("side", "dc"),)), modern)
        self.assertIn(("pwrmgt_supply_power_watts", (("side", "input"), ("supply", "2"))), modern)

    def test_no_sample_has_a_time_of_its_own(self):
        self.record_a_day()

        families = list(openmetrics_families(self.run_tool("PWRMGTCTL", "metrics")))

        self.assertEqual({sample.timestamp for family in families for sample in family.samples}, {None})
        self.assertTrue(any(family.name.endswith("_timestamp_seconds") for family in families))

    def test_empty_database_is_valid_and_every_source_is_down(self):
        text = self.run_tool("PWRMGTCTL", "metrics")

        samples = self.samples(openmetrics_families(text))

        self.assertEqual(samples, {("pwrmgt_up", (("source", source),)): 0 for source in SOURCES})

    def test_firmware_is_not_asked(self):
        self.record_a_day()
        for command in ("0x32", "0x06", "0xDB", "0x90"):
            self.run_tool("SIMCTL", "fault", "add", "--command", command, "--kind", "busy", "--times", "5")
        state = self.runtime / "ipmi-sim.json"
        before = state.read_bytes()

        reachable = self.run_tool("PWRMGTCTL", "metrics")
        after = state.read_bytes()
        unreachable = self.run_tool("PWRMGTCTL", "metrics", VEKDB_IPMI="nothing that is there")

        self.assertEqual(before, after)
        self.assertEqual(reachable, unreachable)

    def test_an_exchange_would_have_changed_the_simulator(self):
        self.run_tool("SIMCTL", "fault", "add", "--command", "0x32", "--kind", "busy", "--times", "5")
        state = self.runtime / "ipmi-sim.json"
        before = state.read_bytes()

        subprocess.run([os.environ["PWRMGTCTL"], "power", "realtime", "--live"], env=self.environment, capture_output=True,
                       timeout=120, stdin=subprocess.DEVNULL, check=False)

        self.assertNotEqual(before, state.read_bytes())


if __name__ == "__main__":
    unittest.main()
