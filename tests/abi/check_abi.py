#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The built library still has the interface that is on record for its machine: functions, their parameters, globals and
every record they reach. abi/README.md says what to do when it does not. --write puts the present interface on record."""
import re
import subprocess
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent))
import check_common
from check_symbols import output

# Only what programs can reach, and nothing that depends on where or with which libraries it was built.
RECORDED = ("--exported-interfaces-only", "--no-corpus-path", "--no-comp-dir-path", "--no-show-locs", "--no-parameter-names",
            "--no-elf-needed", "--type-id-style", "hash")
CHANGED, INCOMPATIBLE = 4, 8
MACHINES = {"Advanced Micro Devices X86-64": "x86_64", "ARM": "arm"}


def record_of(root, machine):
    return root / f"abi/libvekdb_pwrmgt.{machine}.abi"


def differences(record, library, tool="abidiff"):
    """Breaches, one per change that abidiff reports."""
    done = subprocess.run([tool, "--exported-interfaces-only", str(record), str(library)], capture_output=True, text=True, check=False)
    if done.returncode & ~(CHANGED | INCOMPATIBLE) or (done.returncode == 0) != (not done.stdout.strip()):
        return [f"abidiff: {done.returncode}: {done.stdout}{done.stderr}"]
    if done.returncode == 0:
        return []
    kind = "programs built before would break" if done.returncode & INCOMPATIBLE else "the interface changed"
    return [f"{kind}; see abi/README.md\n{done.stdout.strip()}"]


def check(root, arguments):
    machine = re.search(r"Machine:\s+(.*)", output(arguments.readelf, "-hW", arguments.library))[1].strip()
    if machine not in MACHINES:
        return 1, [f"no interface is on record for {machine}"]
    if ".debug_info" not in output(arguments.readelf, "-SW", arguments.library):
        return 1, [f"{arguments.library}: without debug information (-g) there is nothing to compare"]
    record = record_of(root, MACHINES[machine])
    if arguments.write:
        text = output("abidw", *RECORDED, arguments.library)
        record.write_text(text, encoding="utf-8")
    return record.read_text(encoding="utf-8").count("<function-decl "), differences(record, arguments.library)


OPTIONS = [("library", {"type": Path}), ("--readelf", {"default": "readelf"}),
           ("--write", {"action": "store_true", "help": "put the library's interface on record in abi/"})]

if __name__ == "__main__":
    check_common.run(check, __doc__, OPTIONS)
