#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Breaks src/ in one place at a time and reports which breakages the unit tests do not notice.

The library is built from a copy of the tree; the test programs stay as they are and load the broken library. Every
survivor is either listed in equivalent.txt with the reason why nobody can notice it, or a test is missing: exit 1."""
import argparse
import os
import pathlib
import random
import shutil
import subprocess
import sys
import tempfile
import time

import mutants

ROOMS = ("db", "history", "policy", "psu", "query", "thermal")
COPIED = ("CMakeLists.txt", "abi", "cmake", "include", "platform", "src", "tests")
# Statuses whose numbers differ, exchanged for one another in this order.
STATUSES = ("ok", "null_argument", "no_connection", "query_failed", "no_window", "no_data")
TEST_TIMEOUT_S = 60


class Workshop:
    """A copy of the tree with a build of the library in it, and the test programs of another build."""

    def __init__(self, root, tests, scratch):
        self.tree = scratch / "tree"
        self.build = scratch / "build"
        self.tests = tests
        self.tree.mkdir()
        for name in COPIED:
            source = root / name
            (shutil.copytree if source.is_dir() else shutil.copy)(source, self.tree / name)
        run = subprocess.run(["cmake", "-S", self.tree, "-B", self.build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug",
                              "-DPWRMGT_HOST_PLATFORM=OFF", "-DCMAKE_CXX_FLAGS_DEBUG=-O0", "-DPWRMGT_TESTS=ON",
                              "-DPWRMGT_TEST_OPTIONS=-O0"], capture_output=True, text=True)
        if run.returncode != 0 or not self.compiles("vekdb_pwrmgt"):
            sys.exit(f"the unbroken tree does not build\n{run.stdout}{run.stderr}")

    def compiles(self, *targets):
        return subprocess.run(["ninja", "-C", self.build, "-j1", *targets], capture_output=True).returncode == 0

    def programs(self, file):
        """The test programs that see a file: its room's, or every room's when all rooms stand on it."""
        room = file.split("/")[1]
        rooms = ROOMS if room == "db" else (room,)
        return [(name, self.tests / name / f"{name}_test") for name in rooms]

    def tests_pass(self, file):
        environment = dict(os.environ, LD_LIBRARY_PATH=str(self.build / "src"))
        for _, program in self.programs(file):
            try:
                run = subprocess.run([program, "--gtest_fail_fast", "--gtest_brief=1"], env=environment, capture_output=True,
                                     timeout=TEST_TIMEOUT_S)
            except subprocess.TimeoutExpired:
                return False
            if run.returncode != 0:
                return False
        return True

    def try_out(self, mutant):
        """killed, survived, or invalid: did not compile."""
        path = self.tree / mutant.file
        original = path.read_text()
        path.write_text(mutant.text)
        try:
            if not self.compiles("vekdb_pwrmgt"):
                return "invalid"
            return "survived" if self.tests_pass(mutant.file) else "killed"
        finally:
            path.write_text(original)


def excused(path):
    """key -> reason, of equivalent.txt: a line `key | reason` each."""
    rows = (line for line in path.read_text().splitlines() if line and not line.startswith("#"))
    return {key.strip(): reason.strip() for key, _, reason in (row.rpartition(" | ") for row in rows)}


def chosen_mutants(root, rooms, skipped, share, seed):
    chooser = random.Random(seed)
    for path in sorted((root / "src").rglob("*")):
        file = str(path.relative_to(root))
        if path.suffix not in (".cpp", ".h") or file in skipped or file.split("/")[1] not in rooms:
            continue
        for mutant in mutants.mutants_of(file, path.read_text(), STATUSES):
            if chooser.random() < share:
                yield mutant


def arguments():
    here = pathlib.Path(__file__).resolve()
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--root", type=pathlib.Path, default=here.parents[2])
    parser.add_argument("--tests", type=pathlib.Path, required=True, help="directory of the built test programs")
    parser.add_argument("--room", choices=ROOMS, action="append", help="only this room; may be given several times")
    parser.add_argument("--share", type=float, default=1.0, help="part of the mutants to try, 0..1")
    parser.add_argument("--seed", type=int, default=1, help="which part")
    # The tests compile these into themselves, and would not see them broken in the library.
    parser.add_argument("--skip", action="append", default=["src/psu/rated_power.cpp", "src/psu/rated_power.h"])
    return parser.parse_args()


def main():
    options = arguments()
    known = excused(pathlib.Path(__file__).with_name("equivalent.txt"))
    counts = {"killed": 0, "survived": 0, "invalid": 0, "equivalent": 0}
    started = time.monotonic()
    with tempfile.TemporaryDirectory(prefix="mutation-") as scratch:
        workshop = Workshop(options.root, options.tests.resolve(), pathlib.Path(scratch))
        for room in ROOMS:
            if not workshop.tests_pass(f"src/{room}/"):
                sys.exit(f"the tests of {room} do not pass on the unbroken library")
        for mutant in chosen_mutants(options.root, options.room or ROOMS, options.skip, options.share, options.seed):
            if mutant.key() in known:
                counts["equivalent"] += 1
                continue
            outcome = workshop.try_out(mutant)
            counts[outcome] += 1
            if outcome == "survived":
                print(f"survived {mutant.file}:{mutant.line}: {mutant.before.strip()} -> {mutant.after.strip() or '(nothing)'}", flush=True)
    print(", ".join(f"{count} {name}" for name, count in counts.items()), f"in {time.monotonic() - started:.0f} s")
    sys.exit(1 if counts["survived"] else 0)


if __name__ == "__main__":
    main()
