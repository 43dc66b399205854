#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Manual pages: mandoc has nothing to say about those in man/ and those written from the public header, each exported
function is found under its name, and each reference to a page of ours leads to one."""
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

import check_common

OPTIONS = [("--mandoc", {"default": shutil.which("mandoc"), "help": "mandoc, which looks the pages through"})]
PAGE = re.compile(r"\.[1-8]$")
REFERENCE = re.compile(r"^\.Xr (\S+) (\d)", re.MULTILINE)
OURS = re.compile(r"pwrmgt|vekdb|^thermal_|^judge_")


def written_pages(root, directory):
    """The pages of section 3, as a build writes them."""
    run = subprocess.run([sys.executable, "-B", str(root / "man/write_pages.py"), str(root / "include/vekdb_pwrmgt.h"),
                          str(root / "man/libvekdb_pwrmgt.3.in"), str(directory), "--date", "November 21, 2026"],
                         capture_output=True, text=True, check=False)
    return [] if run.returncode == 0 else [f"man/write_pages.py: {run.stderr.strip()}"]


def lint(mandoc, page):
    run = subprocess.run([mandoc, "-T", "lint", "-W", "warning", page.name], cwd=page.parent, capture_output=True, text=True,
                         check=False)
    return run.stdout.splitlines() + run.stderr.splitlines()


def exported(root):
    """The functions that the header marks, found without the code that writes the pages."""
    header = check_common.read(root, "include/vekdb_pwrmgt.h")
    return re.findall(r"^PWRMGT_API [^;({]*?\b(\w+)\(", header, re.MULTILINE)


def man_breaches(root, mandoc):
    if not mandoc:
        return 0, ["mandoc is not installed (package mandoc)"]
    with tempfile.TemporaryDirectory() as place:
        breaches = written_pages(root, Path(place))
        pages = [root / file for file in check_common.tree_files(root) if file.parts[0] == "man" and PAGE.search(file.name)]
        pages += sorted(Path(place).iterdir())
        names = {page.name for page in pages}
        for page in pages:
            if page.is_symlink():
                continue
            breaches += lint(mandoc, page)
            for name, section in REFERENCE.findall(page.read_text(encoding="utf-8")):
                if OURS.search(name) and f"{name}.{section}" not in names:
                    breaches.append(f"{page.name}: refers to {name}({section}), which is no page")
        breaches += [f"{name}: exported, and has no page" for name in exported(root) if f"{name}.3" not in names]
        return len(pages), breaches


if __name__ == "__main__":
    check_common.run(lambda root, arguments: man_breaches(root, arguments.mandoc), __doc__, OPTIONS)
