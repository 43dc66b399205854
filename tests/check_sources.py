#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Every source file is built: a .c or .cpp that no CMakeLists.txt above it names would be dead, and a test in it would
never run."""
import re

import check_common

TOPS = ("src", "platform", "trace", "tools", "tests", "bench", "fuzz")


def build_files(root, file):
    """The CMakeLists.txt of the file's directory and of those above it, with the path from there to the file."""
    for directory in file.parents:
        if (root / directory / "CMakeLists.txt").is_file():
            yield check_common.read(root, directory / "CMakeLists.txt"), file.relative_to(directory).as_posix()


def source_breaches(root):
    files = [file for file in check_common.sources(root, *TOPS) if file.suffix != ".h"]
    breaches = []
    for file in files:
        named = any(re.search(rf"(?<![\w./-]){re.escape(name)}(?![\w.-])", re.sub(r"#.*", "", text))
                    for text, name in build_files(root, file))
        if not named:
            breaches.append(f"{file}: no CMakeLists.txt names it")
    return len(files), breaches


if __name__ == "__main__":
    check_common.run(lambda root, _: source_breaches(root), __doc__)
