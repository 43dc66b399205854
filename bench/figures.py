#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Puts what the programs of this directory measured beside its bound and prints the table. Exits 1 when a bound is missed
or a figure was not measured."""
import argparse
import datetime
import json
import os
import re
import subprocess
import sys
from dataclasses import dataclass
from pathlib import Path

import callgrind

LIBRARY = "libvekdb_pwrmgt.so"
CLIENT = "libvekdb_client.so"
# Calls that are made per row; all others are made once per query.
PER_ROW = re.compile(r"vek_db_result_(step|column_)")


@dataclass(frozen=True)
class Figure:
    key: str
    text: str
    unit: str
    bound: float | None = None  # None: told, not judged
    held: float | None = None  # a bound that is not met yet: where it must not get worse than
    at_least: bool = False

    def meets(self, value, limit):
        return value >= limit if self.at_least else value <= limit

    def verdict(self, value):
        if self.bound is None:
            return "told"
        if self.meets(value, self.bound):
            return "met"
        if self.held is not None and self.meets(value, self.held):
            return f"missed, held at {number(self.held)}"
        return "MISSED"

    def bound_text(self):
        return "" if self.bound is None else f"{'>=' if self.at_least else '<='} {number(self.bound)}"


# Instruction counts: the same on an idle machine and on a loaded one.
COUNTED = [
    Figure("day.own_k", "day of the system: the library's own code", "k instructions", 350),
    Figure("day.calls_per_row", "day of the system: calls into the client per row (a step and seven reads)", "calls", 8),
    Figure("day.k", "day of the system, everything", "k instructions", 7500),
    Figure("day.against_plain", "day of the system against plain SQLite", "x instructions"),
    Figure("window.entries", "by window: 2880 entries against 120", "x instructions", 1.05),
    Figure("hour.against_day", "period 0 against 24 h", "x instructions", 0.06),
    Figure("policy.k", "power policy (one row)", "k instructions", 60),
    Figure("available.k", "available power (six such queries)", "k instructions", 60, held=140),
    Figure("rows.linear", "a row in a day against a row in half a day", "x instructions", 1.05),
    Figure("samples.flat", "2^31 samples per entry against as many as there are rows", "x instructions", 1.01),
    Figure("insert.k", "history row recorded", "k instructions"),
    Figure("save.k", "slot saved", "k instructions"),
]

# Times, sizes and rates.
TIMED = [
    Figure("day_against_plain_sqlite.ratio", "day of the system against plain SQLite", "x time", 0.70),
    Figure("window_of_2880_entries_against_120.ratio", "by window: 2880 entries against 120", "x time", 1.05),
    Figure("hour_against_day.ratio", "period 0 against 24 h", "x time", 0.06),
    Figure("policy_against_unpooled.ratio", "power policy against open, query, close without pooling", "x time", 0.05),
    Figure("available_power_against_unpooled.ratio", "available power (six queries) against one unpooled", "x time",
           0.05, held=0.25),
    Figure("insert_against_plain_sqlite.ratio", "history row recorded, against plain SQLite", "x time", 1.3),
    Figure("insert_against_rrd_update.ratio", "history row recorded, against rrd_update_r", "x time", 0.70),
    Figure("save_against_plain_sqlite.rate_ratio", "slots saved, against plain SQLite", "x rate", 1.1, at_least=True),
    Figure("wear.save_20_data", "20 slots saved: dirtied per slot, database and log", "bytes", 3072),
    Figure("wear.save_1_data", "one slot saved: dirtied, database and log", "bytes", 8192),
    Figure("wear.group_20_data", "20 slots in one transaction: dirtied per slot, database and log", "bytes", 614),
    Figure("wear.group_10_data", "10 slots in one transaction, as pwrmgtd saves: database and log", "bytes"),
    Figure("wear.group_10_kernel", "10 slots in one transaction: log's index too", "bytes"),
    Figure("wear.save_20_kernel", "20 slots saved: dirtied per slot, log's index too", "bytes"),
    Figure("wear.save_1_kernel", "one slot saved: dirtied, log's index too", "bytes"),
    Figure("readers.failed_calls", "two readers and a writer: calls that failed", "calls", 0),
    Figure("readers.rate_ratio", "two readers beside a writer, against alone", "x rate", 0.75, at_least=True),
    Figure("readers.writes_per_s", "the writer meanwhile", "writes/s", 900, at_least=True),
    Figure("readers.longest_log_kb", "longest write-ahead log meanwhile", "KiB", 8192),
    Figure("memory.reader_over_bare_kb", "a reader's anonymous memory over a bare C++ process's", "kB", 800),
    Figure("day_against_rrd_fetch.ratio", "day of the system against rrd_fetch_r and fold", "x time"),
    Figure("day_against_inlined_fold.ratio", "day of the system against the inlined fold of structs", "x time"),
]


def number(value):
    """Three digits that count."""
    return f"{value:.0f}" if abs(value) >= 100 else f"{value:.3g}"


def counted(directory):
    """The figures of the instruction counts."""
    dumps = callgrind.dumps(directory)
    day = dumps["day"]
    calls = day.calls_between(LIBRARY, CLIENT)
    rows = calls["vek_db_result_step"] - 1
    per_row = sum(count for function, count in calls.items() if PER_ROW.match(function))
    lengths = [(dumps[name].total, row_count) for name, row_count in
               (("window-quarter", 721), ("window-half", 1441), ("window-120", 2880))]
    slopes = [(more[0] - less[0]) / (more[1] - less[1]) for less, more in zip(lengths, lengths[1:])]
    return {
        "day.own_k": day.own(LIBRARY) / 1000,
        "day.calls_per_row": (per_row - 1) / rows,  # the last step finds no row
        "day.k": day.total / 1000,
        "day.against_plain": day.total / dumps["day-plain"].total,
        "window.entries": dumps["window-2880"].total / dumps["window-120"].total,
        "hour.against_day": dumps["hour"].total / day.total,
        "policy.k": dumps["policy"].total / 1000,
        "available.k": dumps["available-power"].total / 1000,
        "rows.linear": slopes[1] / slopes[0],
        "samples.flat": dumps["reader-2^31-samples"].total / dumps["reader-2880-samples"].total,
        "insert.k": dumps["insert"].total / 1000,
        "save.k": dumps["save-20"].total / 20 / 1000,
    }


def benchmarks(text):
    """The counters in Google Benchmark's JSON."""
    return {f"{run['name'].split('/')[0]}.{key}": value for run in json.loads(text)["benchmarks"]
            for key, value in run.items() if key in ("ratio", "rate_ratio")}


def lines(text):
    """Figures that a program printed: key, tabulator, value."""
    return {key: float(value) for key, value in (line.split("\t") for line in text.splitlines())}


def table(figures, measured):
    """The rows of the table, and whether all is well."""
    rows = ["| Figure | Measured | Unit | Bound | Verdict |", "|---|---:|---|---:|---|"]
    good = True
    for figure in figures:
        value = measured.get(figure.key)
        verdict = "NOT MEASURED" if value is None else figure.verdict(value)
        good = good and not verdict.isupper()
        shown = "" if value is None else number(value)
        rows.append(f"| {figure.text} | {shown} | {figure.unit} | {figure.bound_text()} | {verdict} |")
    return rows, good


def context(command):
    """Where and when: figures without it say little."""
    root = Path(__file__).resolve().parent.parent
    commit = subprocess.run(["git", "-c", "safe.directory=*", "-C", root, "describe", "--always", "--dirty"],
                            capture_output=True, text=True, check=False).stdout.strip() or "no repository"
    model = re.search(r"^model name\s*: (.*)$", Path("/proc/cpuinfo").read_text(encoding="utf-8"), re.MULTILINE)
    load = " ".join(f"{value:.1f}" for value in os.getloadavg())
    return [f"{datetime.date.today()}, commit {commit}, {os.cpu_count()} x {model[1] if model else os.uname().machine}, "
            f"load average {load}, `{command}`", ""]


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--callgrind", type=Path, required=True, help="directory of the dumps")
    parser.add_argument("--measured", type=Path, nargs="*", help="outputs of the other programs; without, only counts")
    parser.add_argument("--command", required=True, help="how the figures are made anew")
    parser.add_argument("--output", type=Path, required=True)
    arguments = parser.parse_args()
    figures = COUNTED if arguments.measured is None else COUNTED + TIMED
    measured = counted(arguments.callgrind)
    for path in arguments.measured or []:
        text = path.read_text(encoding="utf-8")
        measured |= benchmarks(text) if path.suffix == ".json" else lines(text)
    rows, good = table(figures, measured)
    text = "\n".join(context(arguments.command) + rows) + "\n"
    arguments.output.write_text(text, encoding="utf-8")
    print(text, end="")
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main())
