#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Service units: understood by systemd as they stand, and shut off from the rest of the machine (`systemd-analyze
security` at 2.0 at most); user declarations that systemd understands."""
import re
import subprocess

import check_common

MAX_EXPOSURE = 2.0
# The programs are not installed where this runs.
NOT_INSTALLED = re.compile(r"Command .* is not executable: No such file or directory$")


def systemd(*command):
    run = subprocess.run(command, capture_output=True, text=True, stdin=subprocess.DEVNULL, check=False)
    return run.returncode, run.stdout + run.stderr


def unit_breaches(path, analyze):
    for line in systemd(analyze, "verify", "--man=no", str(path))[1].splitlines():
        if path.name in line and not NOT_INSTALLED.search(line):
            yield line
    _, told = systemd(analyze, "security", "--offline=true", "--no-pager", str(path))
    level = re.search(rf"Overall exposure level for {re.escape(path.name)}: ([0-9.]+)", told)
    if level is None:
        yield f"systemd-analyze tells no exposure: {told.strip()}"
    elif float(level[1]) > MAX_EXPOSURE:
        yield f"exposure {level[1]}, {MAX_EXPOSURE} at most"


def sysusers_breaches(path, sysusers):
    code, told = systemd(sysusers, "--dry-run", str(path))
    if code != 0:
        yield told.strip()


def all_breaches(root, arguments):
    looked_at, breaches = 0, []
    for file in check_common.tree_files(root):
        checks = {".service": (unit_breaches, arguments.analyze), ".sysusers": (sysusers_breaches, arguments.sysusers)}
        if file.parts[0] != "systemd" or file.suffix not in checks:
            continue
        looked_at += 1
        check, program = checks[file.suffix]
        breaches += [f"{file}: {breach}" for breach in check(root / file, program)]
    return looked_at, breaches


if __name__ == "__main__":
    check_common.run(all_breaches, __doc__, [("--analyze", {"default": "systemd-analyze"}),
                                             ("--sysusers", {"default": "systemd-sysusers"})])
