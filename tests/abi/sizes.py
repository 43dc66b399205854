#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""What the library costs a machine: its size, its frames, what happens when it is loaded. Prints a table with the change
since the figures on record in abi/sizes.txt, and fails on a bound that is broken or on growth that is not on record.
--write puts the present figures on record. Each build is a name, a build directory and the prefix of its tools."""
import re
import sys
import tempfile
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent))
import check_common
from check_symbols import output

RECORD = "abi/sizes.txt"
BOUNDS = {"largest frame": 2048, "heap functions": 0, "constructors": 0}
# The first target is the controller's; elsewhere it is only shown.
ARM_BOUNDS = {"text": 40 * 1024}
# What may grow without a word: a figure changes a little with every compiler.
SLACK = 256
HEAP = re.compile(r"^(?:malloc|calloc|realloc|_Zn[wa]\w*|aligned_alloc|strdup)$")


def frames(directory):
    """(bytes, function) of every frame that the compiler told of; a frame of unknown size counts as unbounded."""
    for file in directory.rglob("*.su"):
        for line in file.read_text(encoding="utf-8").splitlines():
            place, size, kind = line.split("\t")
            yield (int(size) if "dynamic" not in kind or "bounded" in kind else sys.maxsize), place.split(":", 3)[-1]


def figures(build, tools):
    """The figures of the build in a directory, by name, and the function with the largest frame."""
    library = build / "src/libvekdb_pwrmgt.so"
    with tempfile.TemporaryDirectory() as scratch:
        stripped = Path(scratch) / "stripped.so"
        output(f"{tools}strip", "--strip-unneeded", "-o", stripped, library)
        text, data, bss = output(f"{tools}size", stripped).splitlines()[1].split()[:3]
        size = stripped.stat().st_size
    relocations = re.findall(r"^[0-9a-f]+\s+[0-9a-f]+\s+(R_\w+)", output(f"{tools}readelf", "-rW", library), re.MULTILINE)
    asked = [line.split()[0].split("@")[0] for line in output(f"{tools}nm", "-D", "-P", "--undefined-only", library).splitlines()]
    header = output(f"{tools}readelf", "-hW", library)
    array = re.search(r"\.init_array\s+INIT_ARRAY\s+\w+\s+\w+\s+(\w+)", output(f"{tools}readelf", "-SW", library))
    pointer = 8 if "ELF64" in header else 4
    largest = max(frames(build / "src"))
    return {
        "text": int(text), "data": int(data), "bss": int(bss), "stripped file": size,
        "relocations": len(relocations),
        "functions bound": sum(kind.endswith("JUMP_SLO") or kind.endswith("JUMP_SLOT") for kind in relocations),
        # One entry is the compiler's start file.
        "constructors": int(array[1], 16) // pointer - 1 if array else 0,
        "heap functions": sum(bool(HEAP.match(name)) for name in asked),
        "largest frame": largest[0],
    }, largest[1]


def read_record(root):
    """{build: {figure: number}} of the figures on record."""
    record = {}
    for line in check_common.read(root, RECORD).splitlines():
        if line and line[0] != "#":
            build, name, number = line.split("\t")
            record.setdefault(build, {})[name] = int(number)
    return record


def breaches_of(build, now, before):
    bounds = BOUNDS | (ARM_BOUNDS if build == "arm" else {})
    for name, bound in bounds.items():
        if now[name] > bound:
            yield f"{build}: {name} is {now[name]}, above {bound}"
    for name in ("text", "data", "bss", "relocations"):
        slack = SLACK if name != "relocations" else 8
        if before and now[name] > before[name] + slack:
            yield f"{build}: {name} grew from {before[name]} to {now[name]}; if that is meant, --write puts it on record"


def show(builds, record):
    """The table: a column and the change since the record for each build."""
    print("".join([f"{'':16}"] + [f"{build:>12}{'change':>8}" for build in builds]))
    for name in next(iter(builds.values()))[0]:
        cells = []
        for build, (now, _) in builds.items():
            change = now[name] - record.get(build, {}).get(name, now[name])
            cells.append(f"{now[name]:>12}{f'{change:+}' if change else '':>8}")
        print(f"{name:16}" + "".join(cells))
    for build, (_, function) in builds.items():
        print(f"largest frame, {build}: {function}")


def check(root, arguments):
    builds = {}
    for build in arguments.builds:
        name, directory, tools = (build.split("=") + [""])[:3]
        builds[name] = figures(Path(directory), tools)
    if arguments.write:
        lines = [f"{build}\t{name}\t{number}" for build, (now, _) in builds.items() for name, number in now.items()]
        (root / RECORD).write_text("# Figures of the library, as tests/abi/sizes.py --write put them on record.\n" + "\n".join(lines) + "\n",
                                   encoding="utf-8")
    record = read_record(root)
    show(builds, record)
    return len(builds), [breach for build, (now, _) in builds.items() for breach in breaches_of(build, now, record.get(build))]


OPTIONS = [("builds", {"nargs": "+", "metavar": "NAME=DIRECTORY[=TOOLS]"}),
           ("--write", {"action": "store_true", "help": "put the figures on record"})]

if __name__ == "__main__":
    check_common.run(check, __doc__, OPTIONS)
