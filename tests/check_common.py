# SPDX-License-Identifier: Apache-2.0
"""What the checks of the tree share: which files belong to it, how a check reports, and a throw-away tree to test it on."""
import argparse
import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SOURCE_SUFFIXES = {".h", ".c", ".cpp"}
SKIPPED_DIRECTORIES = {".git", ".cache", "__pycache__"}


def tree_files(root):
    """The tree's files, relative to `root`: those git tracks, or all of them where there is no git (a source archive)."""
    root = Path(root)
    if (root / ".git").exists():
        listing = subprocess.run(["git", "-c", "safe.directory=*", "-C", str(root), "ls-files", "-z"],
                                 capture_output=True, check=True).stdout.decode()
        files = [Path(name) for name in listing.split("\0") if name]
        return sorted(file for file in files if (root / file).is_file())
    files = []
    for directory, names, leaves in os.walk(root):
        at_top = Path(directory) == root
        names[:] = [n for n in names if n not in SKIPPED_DIRECTORIES and not (at_top and n.startswith("build"))]
        files += [(Path(directory) / leaf).relative_to(root) for leaf in leaves]
    return sorted(files)


def sources(root, *tops):
    """The C and C++ files below the given top directories (all of them when none is given)."""
    return [f for f in tree_files(root) if f.suffix in SOURCE_SUFFIXES and (not tops or f.parts[0] in tops)]


def read(root, file):
    return (Path(root) / file).read_text(encoding="utf-8", errors="replace")


def run(check, description, options=()):
    """Runs `check(root, arguments)`, which returns (how many things it looked at, the list of breaches). Exits 1 on a
    breach, and also when there was nothing to look at: a check of nothing proves nothing."""
    parser = argparse.ArgumentParser(description=description)
    parser.add_argument("--root", type=Path, default=Path(__file__).resolve().parent.parent)
    for name, keywords in options:
        parser.add_argument(name, **keywords)
    arguments = parser.parse_args()
    looked_at, breaches = check(arguments.root.resolve(), arguments)
    for breach in breaches:
        print(breach)
    print(f"{looked_at} checked, {len(breaches)} breaches")
    if looked_at == 0:
        print("nothing to check: is --root the repository?")
    sys.exit(1 if breaches or looked_at == 0 else 0)


class TreeCase(unittest.TestCase):
    """A test with a tree of its own in a temporary directory."""

    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.root = Path(directory.name)

    def write(self, name, text):
        file = self.root / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text, encoding="utf-8")

    def assert_breach(self, breaches, *pieces):
        """One breach mentions every piece."""
        self.assertTrue(any(all(piece in breach for piece in pieces) for breach in breaches),
                        f"no breach mentions {pieces}: {breaches}")
