#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Every record, field and constant of the public header stands in layouts.c, so that none is added unasserted."""
import re
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent))
import check_common

RECORD = re.compile(r"^typedef struct (\w+) \{(.*?)^\} (\w+);", re.MULTILINE | re.DOTALL)
ENUM = re.compile(r"^enum[^{;]*\{(.*?)\}", re.MULTILINE | re.DOTALL)
DECLARATOR = re.compile(r"(\w+)(?:\[[^\]]*\])*$")


def without_comments(text):
    return re.sub(r"/\*.*?\*/|//[^\n]*", "", text, flags=re.DOTALL)


def declared(header):
    """(what, how layouts.c writes it) for everything of the header that has a number."""
    text = without_comments(header)
    for name, body, _ in RECORD.findall(text):
        yield name, rf"RECORD\(\s*{name}\s*,"
        for member in filter(None, (piece.strip() for piece in body.split(";"))):
            for declarator in member.split(","):
                field = DECLARATOR.search(declarator.strip())[1]
                yield f"{name}.{field}", rf"FIELD\(\s*{name}\s*,\s*{field}\s*,"
    for body in ENUM.findall(text):
        for constant in re.findall(r"\b([A-Z]\w*)\s*(?:=[^,]*)?(?:,|$)", body.strip()):
            yield constant, rf"CONSTANT\(\s*{constant}\s*,"


def layout_breaches(root):
    header = check_common.read(root, "include/vekdb_pwrmgt.h")
    layouts = without_comments(check_common.read(root, "tests/abi/layouts.c"))
    things = sorted(set(declared(header)))
    return len(things), [f"tests/abi/layouts.c: {what} is not asserted" for what, pattern in things
                         if not re.search(pattern, layouts)]


if __name__ == "__main__":
    check_common.run(lambda root, _: layout_breaches(root), __doc__)
