#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Breaks src/ in one place at a time and reports which breakages the unit tests do not notice.

The library is built from a copy of the tree; the test programs stay as they are and load the broken library. Every
survivor is either listed in equivalent.txt with the reason why nobody can notice it, or a test is missing: exit 1."""
import argparse
import concurrent.futures
import hashlib
import pathlib
import queue
import random
import resource
import signal
import sys
import tempfile
import time

import mutants
import workshop

# Statuses whose numbers differ, exchanged for one another in this order.
STATUSES = ("ok", "null_argument", "no_connection", "query_failed", "no_window", "no_data")
OUTCOMES = ("killed", "survived", "invalid", "same", "equivalent")
MEMORY_OF_A_PROCESS = 2 << 30  # a broken loop that stores what it reads


def excused(path):
    """key -> reason, of equivalent.txt: a line `key | reason` each."""
    rows = (line for line in path.read_text().splitlines() if line and not line.startswith("#"))
    return {key.strip(): reason.strip() for key, _, reason in (row.rpartition(" | ") for row in rows)}


def chosen_mutants(root, rooms, share, seed):
    """Of the rooms, in their order; headers after sources: a header costs more to try."""
    chooser = random.Random(seed)
    chosen = []
    for path in sorted((root / "src").rglob("*")):
        file = str(path.relative_to(root))
        if path.suffix not in (".cpp", ".h"):
            continue
        for mutant in mutants.mutants_of(file, path.read_text(), STATUSES):
            if chooser.random() < share and workshop.room_of(file) in rooms:
                chosen.append(mutant)
    return sorted(chosen, key=lambda mutant: (rooms.index(workshop.room_of(mutant.file)), mutant.file.endswith(".h")))


class Record:
    """Outcomes of an earlier run, so that an interrupted one goes on where it stopped. What survived is tried again:
    there may be a test by now."""

    def __init__(self, path, root):
        self.path, self.root, self.known = path, root, {}
        if path is not None and path.exists():
            for line in path.read_text().splitlines():
                outcome, _, name = line.partition("\t")
                self.known[name] = outcome

    def name(self, mutant):
        digest = hashlib.sha256((self.root / mutant.file).read_bytes()).hexdigest()[:12]
        return f"{digest} {mutant.file}:{mutant.line}: {mutant.before.strip()} -> {mutant.after.strip()}"

    def outcome(self, mutant):
        outcome = self.known.get(self.name(mutant))
        return None if outcome == "survived" else outcome

    def add(self, mutant, outcome):
        if self.path is not None:
            with self.path.open("a") as file:
                file.write(f"{outcome}\t{self.name(mutant)}\n")


def arguments():
    here = pathlib.Path(__file__).resolve()
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--root", type=pathlib.Path, default=here.parents[2])
    parser.add_argument("--tests", type=pathlib.Path, required=True, help="directory of the built test programs")
    parser.add_argument("--room", choices=workshop.ROOMS, action="append", help="only this room; may be given several times")
    parser.add_argument("--file", action="append", help="only this file, as in src/db/text.h; may be given several times")
    parser.add_argument("--share", type=float, default=1.0, help="part of the mutants to try, 0..1")
    parser.add_argument("--seed", type=int, default=1, help="which part")
    parser.add_argument("--jobs", type=int, default=1, help="how many to try at a time")
    parser.add_argument("--record", type=pathlib.Path, help="file of outcomes: what is in it is not tried again")
    return parser.parse_args()


def outcomes(options, record, scratch):
    """(mutant, outcome) of every chosen mutant, as they come."""
    known = excused(pathlib.Path(__file__).with_name("equivalent.txt"))
    rooms = tuple(options.room or workshop.ROOMS[1:] + workshop.ROOMS[:1])
    workshops = queue.SimpleQueue()
    for number in range(options.jobs):
        workshops.put(workshop.open_workshop(options.root, options.tests.resolve(), scratch / str(number)))

    def outcome_of(mutant):
        if mutant.key() in known:
            return mutant, "equivalent"
        outcome = record.outcome(mutant)
        if outcome is None:
            place = workshops.get()
            try:
                outcome = place.try_out(mutant)
            finally:
                workshops.put(place)
            record.add(mutant, outcome)
        return mutant, outcome

    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        chosen = chosen_mutants(options.root, rooms, options.share, options.seed)
        yield from pool.map(outcome_of, [mutant for mutant in chosen if mutant.file in (options.file or [mutant.file])])


def main():
    options = arguments()
    # Ended by somebody, it takes its copy of the tree with it.
    signal.signal(signal.SIGTERM, lambda number, _: sys.exit(128 + number))
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY_OF_A_PROCESS, MEMORY_OF_A_PROCESS))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    counts = dict.fromkeys(OUTCOMES, 0)
    started = time.monotonic()
    with tempfile.TemporaryDirectory(prefix="mutation-") as scratch:
        for mutant, outcome in outcomes(options, Record(options.record, options.root), pathlib.Path(scratch)):
            counts[outcome] += 1
            if outcome == "survived":
                print(f"survived {mutant.file}:{mutant.line}: {mutant.before.strip()} -> {mutant.after.strip() or '(nothing)'}",
                      flush=True)
    print(", ".join(f"{count} {name}" for name, count in counts.items()), f"in {time.monotonic() - started:.0f} s")
    sys.exit(1 if counts["survived"] else 0)


if __name__ == "__main__":
    main()
