#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Statuses: docs/status.md is what the comments of the public header say, turned by number. --write writes it anew."""
import re
import sys
from pathlib import Path

import check_common

sys.path.append(str(Path(__file__).resolve().parent.parent / "man"))
import public_header  # noqa: E402

HEADER = "include/vekdb_pwrmgt.h"
DOCUMENT = "docs/status.md"
OPTIONS = [("--write", {"action": "store_true", "help": f"write {DOCUMENT} instead of comparing it"})]

AS = re.compile(r"^As (\w+)\(\),?\s*(.*)$", re.DOTALL)

INTRODUCTION = """\
# Statuses

Every number that an exported function returns, by number, then in the order of the public header, with its cause
there. This page is written from the comments in `include/vekdb_pwrmgt.h` by `tests/check_status.py --write`; a check of
the tree fails when the two differ.

Most numbers mean one thing nearly everywhere: 0 done, 1 a null argument or no connection given, 2 the database did not
open, 3 a query failed, 4 an insert or a copy failed, 5 an update failed, 6 a statement failed, 7 no content could be
made, 8 no row or no valid reading, 10 not offered here or a count out of range, 31 an exchange with the firmware failed
or something is invalid. Where a function differs, the tables are right.
"""


def functions(header):
    """(name, first paragraph, [(tag, text)] of what it returns) of each exported function, in the header's order."""
    for match in public_header.FUNCTION.finditer(header):
        text = public_header.plain(match[1])
        tags = [(tag, words) for tag, words in public_header.tags_of(text) if tag != "param"]
        yield match[3], " ".join(text.split("\n\n")[0].split()), tags


def table(head, rows):
    lines = [f"| {' | '.join(head)} |", "|" + "---|" * len(head)]
    return "\n".join(lines + [f"| {' | '.join(cell.replace('|', chr(92) + '|') for cell in row)} |" for row in rows]) + "\n"


def collect(header):
    """The rows of each number, of results handed on, of other results, and of functions that are as another."""
    numbers, passed_on, values, others, silent = {}, [], [], [], []
    for name, first, tags in functions(header):
        call = f"`{name}`"
        statuses = [words.split(" ", 1) for tag, words in tags if tag == "retval"]
        for number, *cause in statuses:
            numbers.setdefault(int(number), []).append((call, cause[0] if cause else ""))
        for words in (words for tag, words in tags if tag == "return"):
            (passed_on if statuses else values).append((call, words))
        alike = AS.match(first)
        if not tags and alike:
            others.append((call, f"`{alike[1]}`", alike[2].rstrip(".") or "nothing"))
        elif not tags:
            silent.append((call, first.rstrip(".")))
    return numbers, passed_on, values, others, silent


def document(header):
    numbers, passed_on, values, others, silent = collect(header)
    parts = [INTRODUCTION]
    for number in sorted(numbers):
        parts.append(f"## {number}\n\n" + table(("Function", "Cause"), numbers[number]))
    parts.append("## Handed on from another function\n\nBeside their own numbers above.\n\n"
                 + table(("Function", "Result"), passed_on))
    parts.append("## Results that are no status\n\n" + table(("Function", "Result"), values + silent))
    parts.append("## As another function\n\n" + table(("Function", "As", "What differs"), others))
    return "\n".join(parts)


def status_breaches(root, write):
    header = check_common.read(root, HEADER)
    wanted = document(header)
    path = root / DOCUMENT
    if write:
        path.write_text(wanted, encoding="utf-8")
    present = path.read_text(encoding="utf-8") if path.is_file() else ""
    missing = sorted(set(wanted.split("\n")) - set(present.split("\n")))
    surplus = sorted(set(present.split("\n")) - set(wanted.split("\n")))
    breaches = [f"{DOCUMENT} lacks: {line}" for line in missing] + [f"{DOCUMENT} should not say: {line}" for line in surplus]
    if present != wanted and not breaches:
        breaches.append(f"{DOCUMENT}: its lines are in another order")
    if breaches:
        breaches.append("put right with: tests/check_status.py --write")
    return len(list(functions(header))), breaches


if __name__ == "__main__":
    check_common.run(lambda root, arguments: status_breaches(root, arguments.write), __doc__, OPTIONS)
