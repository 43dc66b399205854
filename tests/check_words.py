#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Words that must not appear in the tree's files, and the licence line that must. The patterns are put together from
pieces, so that this file passes its own check."""
import re

import check_common

TEXT_SUFFIXES = check_common.SOURCE_SUFFIXES | {
    "", ".md", ".py", ".sh", ".txt", ".cmake", ".json", ".in", ".service", ".sql", ".yml", ".yaml", ".toml", ".conf",
    ".1", ".3", ".5", ".7", ".8", ".bb", ".bash", ".rules", ".install", ".map"}
# Texts and measurements of others, whose words are theirs.
FOREIGN = ("LICENSE", "LICENSES/", "data/")


def word(*pieces):
    return r"\b" + "".join(pieces) + r"\b"


EVERYWHERE = [
    (re.compile(word("spec", r"\.md")), "the repository is its own authority"),
    (re.compile(word("(?:the|per|this|our|a|in|see) ", "spec"), re.IGNORECASE), "the repository is its own authority"),
    (re.compile(word("specifi", "cations?"), re.IGNORECASE), "the repository is its own authority"),
    (re.compile(r"\bP" + r"art \d+\.\d+"), "the repository is its own authority"),
    (re.compile(word("TO", "DO")), "unfinished work is not committed"),
    (re.compile(word("FIX", "ME")), "unfinished work is not committed"),
    (re.compile(word("X", "XX")), "unfinished work is not committed"),
    (re.compile(r"^(?:<{7}|>{7}) ", re.MULTILINE), "unresolved merge"),
    (re.compile(r"(?<![\w.>}*-])/wo" + "rk/"), "a path of one workplace"),
    (re.compile("/tmp/bash_" + "jobs"), "a path of one workplace"),
    (re.compile(r"(?<![\w.])/(?:ho" + r"me/\w+|ro" + "ot)/"), "a path of one workplace"),
]
# Where a condition can be waited for, waiting a fixed time is either too short or wasted.
SLEEPS = [
    (re.compile(word("(?:u|nano|clock_nano)?sle" + r"ep(?:_for|_until)?\s*\(").removesuffix(r"\b")), "wait for a condition"),
    (re.compile(r"(?:^|[;&|(]|\bdo|\bthen)[ \t]*sle" + r"ep[ \t]+[\d$\"]", re.MULTILINE), "wait for a condition"),
]
NO_SLEEPING = ("tests/", "scripts/", ".ci/")
LICENCE_LINE = "SPDX-License-" + "Identifier: Apache-2.0"


def is_source(file, text):
    return (file.suffix in check_common.SOURCE_SUFFIXES | {".py", ".sh", ".cmake"} or file.name == "CMakeLists.txt"
            or text.startswith("#!"))


def file_breaches(file, text):
    path = file.as_posix()
    patterns = EVERYWHERE + (SLEEPS if path.startswith(NO_SLEEPING) else [])
    for pattern, reason in patterns:
        for match in pattern.finditer(text):
            line = text.count("\n", 0, match.start()) + 1
            yield f"{path}:{line}: \"{match[0].strip()}\": {reason}"
    if is_source(file, text):
        first = text.split("\n", 2)[:2]
        if not any(LICENCE_LINE in line for line in (first if first[0].startswith("#!") else first[:1])):
            yield f"{path}:1: a source file starts with the {LICENCE_LINE} line"


def word_breaches(root):
    files = [f for f in check_common.tree_files(root)
             if f.suffix in TEXT_SUFFIXES and not f.as_posix().startswith(FOREIGN)]
    return len(files), [b for f in files for b in file_breaches(f, check_common.read(root, f))]


if __name__ == "__main__":
    check_common.run(lambda root, _: word_breaches(root), __doc__)
