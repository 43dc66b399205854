# SPDX-License-Identifier: Apache-2.0
"""scripts/: what is missing is named or installed, and a stage that fails, or that runs no test, fails the run."""
import os
import re
import subprocess
from pathlib import Path

import check_common

SCRIPTS = Path(__file__).resolve().parent.parent / "scripts"


class Shell(check_common.TreeCase):
    def bash(self, text):
        """Runs a text after both libraries, with the temporary tree as the project."""
        sources = f'. "{SCRIPTS}/lib.sh"; . "{SCRIPTS}/stages.sh"; PROJECT_ROOT="{self.root}"\n'
        # The run that this is a part of may have installed packages itself.
        environment = {name: value for name, value in os.environ.items() if name != "PACKAGE_LISTS_FRESH"}
        return subprocess.run(["bash", "-c", sources + text, "script"], capture_output=True, text=True, env=environment,
                              stdin=subprocess.DEVNULL)


class Packages(Shell):
    def test_what_is_there_is_not_asked_for(self):
        done = self.bash("apt-get() { echo called; }; need_packages sh:no-such '/bin/s*h:none' && echo go on")

        self.assertEqual((done.returncode, done.stdout), (0, "go on\n"))

    def test_an_ordinary_user_is_told_every_missing_package_at_once(self):
        done = self.bash("id() { echo 1000; }; need_packages no-tool:pkg-a sh:pkg-b /no/file:pkg-c; echo went on")

        self.assertEqual(done.returncode, 1)
        self.assertIn("apt-get install --no-install-recommends pkg-a pkg-c\n", done.stderr)
        self.assertNotIn("went on", done.stdout)

    def test_root_installs_with_one_update_for_several_calls(self):
        done = self.bash(f"id() {{ echo 0; }}; apt-get() {{ echo \"$*\" >>{self.root}/calls; touch {self.root}/a {self.root}/b; }}\n"
                         f"need_packages {self.root}/a:pkg-a; rm {self.root}/b; need_packages {self.root}/b:pkg-b")

        self.assertEqual(done.returncode, 0, done.stderr)
        calls = (self.root / "calls").read_text(encoding="utf-8").splitlines()
        self.assertEqual([call.split()[-1] for call in calls], ["update", "pkg-a", "pkg-b"])

    def test_a_package_that_brings_two_missing_things_is_asked_for_once(self):
        done = self.bash("id() { echo 1000; }; need_packages no-tool:pkg-a /no/file:pkg-a")

        self.assertIn("apt-get install --no-install-recommends pkg-a\n", done.stderr)

    def test_an_installation_that_does_not_bring_the_thing_fails(self):
        done = self.bash("id() { echo 0; }; apt-get() { :; }; need_packages no-tool:pkg-a")

        self.assertEqual(done.returncode, 1)
        self.assertIn("no-tool is still not there", done.stderr)


class Stages(Shell):
    def run_stages(self, body, stage="one"):
        return self.bash(f"STAGES=('{stage}|5|what it shows')\nstage_{stage}() {{ {body}; }}\nrun_stages {stage}")

    def test_the_closing_line_counts_ctest_s_tests_alone_on_its_line(self):
        done = self.run_stages("echo '100% tests passed, 0 tests failed out of 12'")

        self.assertEqual(done.returncode, 0)
        self.assertEqual(done.stdout.splitlines()[-1], "12 passed, 0 failed")

    def test_failed_tests_are_counted_and_fail_the_run(self):
        done = self.run_stages("echo '75% tests passed, 3 tests failed out of 12'; return 8")

        self.assertEqual(done.returncode, 1)
        self.assertEqual(done.stdout.splitlines()[-1], "9 passed, 3 failed")

    def test_a_skipped_test_is_no_passed_test(self):
        done = self.run_stages("echo ' 1/2 Test #1: a.b ...***Skipped   0.01 sec'; "
                               "echo '100% tests passed, 0 tests failed out of 2'")

        self.assertEqual(done.stdout.splitlines()[-1], "1 passed, 0 failed")
        self.assertRegex(done.stdout, r"\bpassed, 1 skipped\n")

    def test_a_build_that_fails_counts_as_one_failure_and_shows_its_output(self):
        done = self.run_stages("echo cannot compile; return 1")

        self.assertEqual(done.returncode, 1)
        self.assertIn("    cannot compile\n", done.stdout)
        self.assertEqual(done.stdout.splitlines()[-1], "0 passed, 1 failed")

    def test_a_stage_that_runs_no_test_fails(self):
        done = self.run_stages("echo built")

        self.assertEqual(done.returncode, 1)
        self.assertIn("no test was run", done.stdout)
        self.assertEqual(done.stdout.splitlines()[-1], "0 passed, 1 failed")

    def test_a_failed_stage_does_not_keep_the_next_from_running(self):
        done = self.bash("STAGES=('one|5|a' 'two|5|b')\nstage_one() { return 1; }\n"
                         "stage_two() { echo '100% tests passed, 0 tests failed out of 2'; }\nrun_stages one two")

        self.assertEqual(done.returncode, 1)
        self.assertEqual(done.stdout.splitlines()[-1], "2 passed, 1 failed")

    def test_the_table_gives_seconds_budget_and_result_of_each_stage(self):
        done = self.run_stages("echo '100% tests passed, 0 tests failed out of 12'")

        self.assertTrue(re.search(r"^one +\d+ +5 +12 +0  passed$", done.stdout, re.MULTILINE), done.stdout)


class Arguments(Shell):
    def test_an_unknown_stage_or_option_is_refused(self):
        for arguments in (["--stage", "nope"], ["--stage"], ["--nope"]):
            with self.subTest(arguments):
                done = subprocess.run([str(SCRIPTS / "test"), *arguments], capture_output=True, text=True)

                self.assertEqual(done.returncode, 2)

    def test_every_listed_stage_can_be_run(self):
        listed = subprocess.run([str(SCRIPTS / "test"), "--list"], capture_output=True, text=True).stdout.splitlines()
        names = [line.split()[0] for line in listed]

        self.assertIn("gcc", names)
        self.assertEqual(self.bash("declare -F " + " ".join(f"stage_{name}" for name in names)).returncode, 0)
