#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Who may include whom: the rooms of the library stand side by side, tools and host platform never look into src/,
nothing includes itself round a corner, and (--compile) every header compiles alone."""
import concurrent.futures
import os
import re
import subprocess

import check_common

INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*([<"])([^>"]+)[>"]', re.MULTILINE)
TOPS = ("include", "platform", "src", "trace", "tools", "bench", "tests", "fuzz")
PUBLIC = ("include", "platform/include")

# What a directory's files may include beside themselves; the longest prefix of a file's path decides.
MAY_INCLUDE = {
    "include": (),
    "platform/include": (),
    "trace": (),
    "src/db": PUBLIC,
    "src": PUBLIC + ("src/db",),
    "platform/host": PUBLIC + ("trace",),
    "tools": PUBLIC + ("trace", "platform/host/db/state_dir.h"),
    "bench": PUBLIC + ("trace",),
    "fuzz": PUBLIC + ("trace", "platform/host", "src", "tests/support"),
    # A whole walk ends in a tool, and is driven as the tool's own tests drive it.
    "tests/way": PUBLIC + ("trace", "platform/host", "tools", "tests/support", "tests/tools"),
    "tests": PUBLIC + ("trace", "platform/host", "src", "tools", "tests/support"),
}
# Rooms: a file belongs to the directory this many levels deep, and may include what is in it.
ROOM_DEPTH = {"src": 2, "platform": 2, "tests": 2}


def room_of(file):
    return "/".join(file.parts[:min(ROOM_DEPTH.get(file.parts[0], 1), len(file.parts) - 1)])


def below(path, prefix):
    return path == prefix or path.startswith(prefix + "/")


def search_path(file):
    """Where a file's includes are looked for, as the compiler is told to, its own directory first."""
    host_first = file.parts[0] in ("platform", "tools", "bench") or str(file).startswith(("tests/host", "tests/way"))
    halves = ["platform/host", "src"] if host_first else ["src", "platform/host"]
    own_tool = ["/".join(file.parts[:2])] if file.parts[0] == "tools" and len(file.parts) > 2 else []
    mirrored = ["/".join(file.parts[1:-1])] if file.parts[0] == "tests" and len(file.parts) > 2 else []
    return [str(file.parent), *PUBLIC, *own_tool, *mirrored, *halves, "platform/host/db", "tools", "trace", "tests",
            "tests/support", "."]


def resolve(file, name, known):
    """The file of ours that is meant: on the search path, else the only one of that name anywhere."""
    for directory in search_path(file):
        candidate = os.path.normpath(os.path.join(directory, name))
        if candidate in known:
            return candidate
    namesakes = [path for path in known if path.endswith("/" + name)]
    return namesakes[0] if len(namesakes) == 1 else None


def allowed(file, target):
    path, room = file.as_posix(), room_of(file)
    rule = max((prefix for prefix in MAY_INCLUDE if below(path, prefix)), key=len, default=None)
    if rule is None or below(target, room):
        return True
    return any(below(target, prefix) for prefix in MAY_INCLUDE[rule])


def includes(root, files):
    """For each file, (line, quoted?, name as written, file of ours or None)."""
    known = {file.as_posix() for file in files}
    for file in files:
        text = check_common.read(root, file)
        yield file, [(text.count("\n", 0, m.start()) + 1, m[1] == '"', m[2], resolve(file, m[2], known))
                     for m in INCLUDE.finditer(text)]


def cycles(graph):
    """Each include cycle once, as the path that closes it."""
    found, state, path = [], {}, []

    def walk(node):
        state[node] = "open"
        path.append(node)
        for target in graph.get(node, ()):
            if state.get(target) == "open":
                found.append(" -> ".join(path[path.index(target):] + [target]))
            elif target not in state:
                walk(target)
        path.pop()
        state[node] = "done"

    for node in graph:
        if node not in state:
            walk(node)
    return found


def flow_breaches(root):
    files = check_common.sources(root, *TOPS)
    breaches, graph = [], {}
    for file, lines in includes(root, files):
        for line, quoted, name, target in lines:
            where = f"{file}:{line}"
            if target is None:
                if quoted:
                    breaches.append(f'{where}: "{name}" is no file of ours; a system header is written <{name}>')
                continue
            graph.setdefault(file.as_posix(), []).append(target)
            if not allowed(file, target):
                breaches.append(f"{where}: {room_of(file)} may not include {target}")
    return len(files), breaches + [f"include cycle: {cycle}" for cycle in cycles(graph)]


# Where MariaDB Connector/C has its headers; the compiler passes over a directory that is not there.
LIBRARY_PATHS = ("-isystem", "/usr/include/mariadb", "-isystem", "/usr/include/mysql")


# Whose sources the build compiles, one by one.
BUILT = ("src", "platform/host", "trace", "tools")


def shown_by_the_build(root, header, known):
    """The source of the same name includes the header first, and nothing is precompiled there: no need to do it again."""
    source = header.with_suffix(".cpp")
    if source.as_posix() not in known or not any(below(header.as_posix(), top) for top in BUILT):
        return False
    rules = [root / directory / "CMakeLists.txt" for directory in header.parents]
    if any("target_precompile_headers" in file.read_text(encoding="utf-8") for file in rules if file.is_file()):
        return False
    first = INCLUDE.search(check_common.read(root, source))
    return first is not None and first[1] == '"' and resolve(source, first[2], known) == header.as_posix()


def compile_breaches(root, compiler):
    """A header that needs another one included before it does not compile alone."""
    files = check_common.sources(root, *TOPS)
    known = {file.as_posix() for file in files}
    headers = [file for file in files if file.suffix == ".h" and not shown_by_the_build(root, file, known)]

    def compile_one(header):
        paths = [f"-I{root / directory}" for directory in search_path(header)[1:]]
        # A file of one line, because #pragma once in a main file is itself a warning.
        command = [compiler, "-std=c++20", "-fsyntax-only", "-Wall", "-Wextra", "-Werror", *paths,
                   *LIBRARY_PATHS, "-x", "c++", "-"]
        done = subprocess.run(command, input=f'#include "{root / header}"\n', capture_output=True, text=True)
        return [] if done.returncode == 0 else [f"{header}: does not compile alone\n{done.stderr.rstrip()}"]

    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        results = list(pool.map(compile_one, headers))
    return len(headers), [breach for result in results for breach in result]


def check(root, arguments):
    return compile_breaches(root, arguments.compile) if arguments.compile else flow_breaches(root)


if __name__ == "__main__":
    check_common.run(check, __doc__, [("--compile", {"metavar": "CXX", "help": "compile each header alone instead"})])
