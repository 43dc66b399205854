#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""What is shipped is protected: the built libraries and programs as the dynamic linker maps them, and the compiler
options of every source that goes into them."""
import json
import re
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent))
import check_common
from check_symbols import output

SHIPPED = ("src", "platform", "trace", "tools")
# On a small machine only frames with an array are guarded, all of them from four bytes on.
ARRAYS_OF_4 = "--param=ssp-buffer-size=4"


def file_breaches(header, segments, dynamic):
    """The breaches of one file, from what readelf tells of its header, its segments and its dynamic section."""
    if not re.search(r"^\s+GNU_RELRO\s", segments, re.MULTILINE):
        yield "relocations stay writable (no GNU_RELRO)"
    if not re.search(r"\bBIND_NOW\b|FLAGS_1.*\bNOW\b", dynamic):
        yield "functions are bound late (no BIND_NOW)"
    if not re.search(r"GNU_STACK\s.*\sRW\s", segments):
        yield "the stack is executable"
    if not re.search(r"Type:\s+DYN\b", header):
        yield "loaded at a fixed address (not position independent)"
    if re.search(r"\bTEXTREL\b", dynamic):
        yield "code is written to when it is loaded (text relocations)"
    if re.search(r"\bSYMBOLIC\b", dynamic):
        yield "symbols are bound to the file itself"


def command_breaches(root, commands, fortified):
    """How many compile commands of shipped files there are, and their breaches. A test may compile such a file for itself."""
    count, breaches = 0, []
    for entry in commands:
        file = Path(entry["file"])
        if not file.is_relative_to(root) or file.relative_to(root).parts[0] not in SHIPPED:
            continue
        words = entry["command"].split()
        if "tests" in Path(words[words.index("-o") + 1]).parts:
            continue
        count += 1
        guarded = [word for word in words if word.startswith(("-fstack-protector", "-fno-stack-protector"))][-1:]
        if guarded != ["-fstack-protector-strong"] and not (guarded == ["-fstack-protector"] and ARRAYS_OF_4 in words):
            breaches.append(f"{file.relative_to(root)}: compiled without -fstack-protector-strong")
        if fortified and "-D_FORTIFY_SOURCE=2" not in words:
            breaches.append(f"{file.relative_to(root)}: compiled without -D_FORTIFY_SOURCE=2")
    return count, breaches


def check(root, arguments):
    commands = json.loads((arguments.build / "compile_commands.json").read_text(encoding="utf-8"))
    count, breaches = command_breaches(root, commands, arguments.fortified)
    for file in map(Path, arguments.files):
        texts = [output(arguments.readelf, option, file) for option in ("-hW", "-lW", "-dW")]
        breaches += [f"{file.name}: {breach}" for breach in file_breaches(*texts)]
        asked = {line.split()[0].split("@")[0] for line in output(arguments.nm, "-D", "-P", "--undefined-only", file).splitlines()}
        breaches += [f"{file.name}: does not ask for {name}" for name in arguments.asks_for if name not in asked]
    return count + len(arguments.files), breaches


OPTIONS = [("build", {"type": Path}), ("files", {"nargs": "+"}),
           ("--fortified", {"action": "store_true", "help": "an optimised build without sanitizers"}),
           ("--asks-for", {"action": "append", "default": [], "help": "a function that protected code of every file calls"}),
           ("--nm", {"default": "nm"}), ("--readelf", {"default": "readelf"})]

if __name__ == "__main__":
    check_common.run(check, __doc__, OPTIONS)
