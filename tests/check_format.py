#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Every C and C++ file is as clang-format would write it."""
import subprocess

import check_common

OPTIONS = [("--clang-format", {"default": "clang-format", "metavar": "PROGRAM"})]


def format_breaches(root, program):
    files = check_common.sources(root)
    if not files:
        return 0, []
    done = subprocess.run([program, "--dry-run", "--Werror", "--style=file", *map(str, files)], cwd=root,
                          capture_output=True, text=True)
    places = [line for line in done.stderr.splitlines() if "error:" in line]
    if done.returncode != 0 and not places:
        places = [done.stderr.strip() or f"{program} failed"]
    if places:
        places.append("put right with: clang-format -i FILE")
    return len(files), places


if __name__ == "__main__":
    check_common.run(lambda root, arguments: format_breaches(root, arguments.clang_format), __doc__, OPTIONS)
