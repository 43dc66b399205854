#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Kept behaviours: every comment in src/ that starts "Kept:" names its tests in square brackets; each is a TEST below
tests/ and stands in docs/kept.md, and that document names no test that does not exist."""
import re

import check_common

COMMENT = re.compile(r"(?://|/\*+)[ \t]*Kept:[^\n]*(?:\n[ \t]*(?://|\*)[^\n]*)*")
NAMES = re.compile(r"\[((?:\w+\.)?[A-Z]\w+(?:,\s*(?:\w+\.)?[A-Z]\w+)*)\]")
TEST = re.compile(r"\bTEST(?:_[FP])?\(\s*(\w+)\s*,\s*(\w+)\s*\)")
DOCUMENT = "docs/kept.md"


def test_names(root):
    """Every test, by its bare name and as Suite.Name."""
    names = set()
    for file in check_common.sources(root, "tests"):
        for suite, name in TEST.findall(check_common.read(root, file)):
            names |= {name, f"{suite}.{name}"}
    return names


def kept_comments(root):
    """(where, names) of each comment; a comment may run over several lines and ends before the next one that starts so."""
    for file in check_common.sources(root, "src"):
        text = check_common.read(root, file)
        for match in COMMENT.finditer(text):
            first, *rest = match[0].split("\n")
            lines = [first]
            for line in rest:
                lines.append(re.sub(r"^[ \t]*(?://|\*)", "", line))
            where = f"{file}:{text.count(chr(10), 0, match.start()) + 1}"
            for piece in re.split(r"\bKept:", " ".join(lines))[1:]:
                groups = NAMES.findall(piece)
                yield where, [name.strip() for group in groups for name in group.split(",")]


def kept_breaches(root):
    tests = test_names(root)
    path = root / DOCUMENT
    document = path.read_text(encoding="utf-8") if path.is_file() else ""
    listed = set(re.findall(r"[\w.]+", document))
    breaches, count = [], 0
    for where, names in kept_comments(root):
        count += 1
        if not names:
            breaches.append(f"{where}: a kept behaviour names no test in square brackets")
        for name in names:
            if name not in tests:
                breaches.append(f"{where}: no TEST is called {name}")
            if name not in listed and name.split(".")[-1] not in listed:
                breaches.append(f"{where}: {DOCUMENT} does not list {name}")
    for group in NAMES.findall(document):
        for name in (piece.strip() for piece in group.split(",")):
            if name not in tests:
                breaches.append(f"{DOCUMENT}: no TEST is called {name}")
    return count, breaches


def check(root, _):
    count, breaches = kept_breaches(root)
    print(f"{count} kept behaviours")
    return len(check_common.sources(root, "src")), breaches


if __name__ == "__main__":
    check_common.run(check, __doc__)
