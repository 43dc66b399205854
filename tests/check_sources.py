#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Every source file is built: a .c or .cpp that no CMakeLists.txt above it names would be dead, and a test in it would
never run. The same for a directory: a CMakeLists.txt that none above it adds is never read."""
import re

import check_common

TOPS = ("src", "platform", "trace", "tools", "tests", "bench", "fuzz")


def build_files(root, file):
    """The CMakeLists.txt of the file's directory and of those above it, with the path from there to the file."""
    for directory in file.parents:
        if (root / directory / "CMakeLists.txt").is_file():
            yield check_common.read(root, directory / "CMakeLists.txt"), file.relative_to(directory).as_posix()


def is_named(root, path):
    return any(re.search(rf"(?<![\w./-]){re.escape(name)}(?![\w.-])", re.sub(r"#.*", "", text))
               for text, name in build_files(root, path))


def source_breaches(root):
    files = [file for file in check_common.sources(root, *TOPS) if file.suffix != ".h"]
    rooms = [file.parent for file in check_common.tree_files(root)
             if file.name == "CMakeLists.txt" and file.parts[0] in TOPS]
    breaches = [f"{file}: no CMakeLists.txt names it" for file in files if not is_named(root, file)]
    breaches += [f"{room}: no CMakeLists.txt above it adds it" for room in rooms if not is_named(root, room)]
    return len(files), breaches


if __name__ == "__main__":
    check_common.run(lambda root, _: source_breaches(root), __doc__)
