#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Compares the symbols that a shared library exports with a list of them."""
import argparse
import subprocess
import sys
from pathlib import Path


def exported(nm, library):
    lines = subprocess.run([nm, "-D", "-P", "--defined-only", library], capture_output=True, text=True, check=True).stdout
    return {line.split()[0] for line in lines.splitlines()}


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("library")
    parser.add_argument("list", type=Path)
    parser.add_argument("--nm", default="nm")
    arguments = parser.parse_args()
    listed = {line for line in arguments.list.read_text(encoding="utf-8").splitlines() if line and line[0] != "#"}
    found = exported(arguments.nm, arguments.library)
    for name in sorted(found - listed):
        print(f"{arguments.library} exports {name}, which is not listed")
    for name in sorted(listed - found):
        print(f"{name} is listed and not exported")
    return 0 if found == listed else 1


if __name__ == "__main__":
    sys.exit(main())
