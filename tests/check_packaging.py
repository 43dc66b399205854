#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""What packages the tree says what the tree says: one version everywhere, the symbols of the exported lists, options that
CMake has, files that are installed, the licence's checksum."""
import hashlib
import re

import check_common

RECIPES = "yocto/meta-vekdb-pwrmgt/recipes-support/vekdb-pwrmgt"
HOST_LISTS = {"libipmiraw": "ipmi/exports.txt", "libvekdb_client": "db/exports.txt",
              "libvekdb_platform": "platform_id.exports.txt", "libvekdb_prop": "prop/exports.txt"}
# Options of CMake's own, not of this tree.
CMAKE_OWN = re.compile(r"CMAKE_\w+")


def first(pattern, text):
    found = re.search(pattern, text, re.MULTILINE)
    return found[1] if found else None


def recipes(root):
    return sorted((root / RECIPES).glob("vekdb-pwrmgt_*.bb"))


def versions(root):
    """Where the version stands, and what it is there."""
    yield "CMakeLists.txt", first(r"^project\(vekdb_pwrmgt VERSION ([\d.]+)", check_common.read(root, "CMakeLists.txt"))
    yield "debian/changelog", first(r"^vekdb-pwrmgt \(([^)]*)\)", check_common.read(root, "debian/changelog"))
    for recipe in recipes(root):
        yield f"{RECIPES}/{recipe.name}", recipe.stem.rpartition("_")[2]


def version_breaches(root):
    found = list(versions(root))
    if len(found) < 3:
        yield f"{RECIPES}: no recipe"
    for place, version in found[1:]:
        if version != found[0][1]:
            yield f"{place}: version {version}, CMakeLists.txt says {found[0][1]}"


def listed(root, file):
    return {line for line in check_common.read(root, file).splitlines() if line and line[0] != "#"}


def symbols(root, file):
    """{library: names} of a Debian symbols file."""
    found, library = {}, None
    for line in check_common.read(root, file).splitlines():
        if line[:1] not in (" ", "|", "*", ""):
            library = line.split(".so.")[0]
            found[library] = set()
        elif line.startswith(" "):
            found[library].add(line.split("@")[0].strip())
    return found


def symbol_breaches(root):
    wanted = {"debian/libvekdb-pwrmgt1.symbols": {"libvekdb_pwrmgt": "abi/exports.txt"},
              "debian/libvekdb-host1.symbols": {name: f"platform/host/{file}" for name, file in HOST_LISTS.items()}}
    for file, libraries in wanted.items():
        found = symbols(root, file)
        for library, exports in libraries.items():
            names = listed(root, exports)
            for name in sorted(names ^ found.get(library, set())):
                yield f"{file}: {name} is {'missing' if name in names else 'not listed in ' + exports}"


def options(root):
    """Names of the options that the tree's CMake files declare."""
    names = set()
    for file in check_common.tree_files(root):
        if file.name == "CMakeLists.txt" or file.suffix == ".cmake":
            text = check_common.read(root, file)
            names |= set(re.findall(r"\boption\(\s*(PWRMGT_\w+)", text)) | set(re.findall(r"\bset\(\s*(PWRMGT_\w+)[^)]*?\bCACHE\b", text))
    return names


def option_breaches(root):
    known = options(root)
    files = ["debian/rules", "scripts/packages"] + [f"{RECIPES}/{recipe.name}" for recipe in recipes(root)]
    for file in files:
        used = set(re.findall(r"-D([A-Z]\w*)=", check_common.read(root, file)))
        for name in sorted(name for name in used - known if not CMAKE_OWN.fullmatch(name)):
            yield f"{file}: -D{name}, which CMake does not know"
    documented = set(re.findall(r"`(PWRMGT_\w+)`", check_common.read(root, "docs/install.md")))
    for name in sorted(known - documented - {name for name in known if name.startswith(("PWRMGT_TEST_", "PWRMGT_GTEST"))}):
        if re.search(rf"option\(\s*{name}\b", check_common.read(root, "CMakeLists.txt")):
            yield f"docs/install.md: option {name} is not told"
    for name in sorted(documented - known):
        if name != "PWRMGT_INTERFACE_VERSION":
            yield f"docs/install.md: {name}, which CMake does not know"


def recipe_breaches(root):
    md5 = hashlib.md5((root / "LICENSE").read_bytes()).hexdigest()
    readme = check_common.read(root, f"{RECIPES}/../../README.md")
    for recipe in recipes(root):
        text, name = recipe.read_text(encoding="utf-8"), f"{RECIPES}/{recipe.name}"
        if first(r"file://LICENSE;md5=(\w+)", text) != md5:
            yield f"{name}: the checksum of LICENSE is {md5}"
        for choice in re.findall(r"^PACKAGECONFIG\[(\w+)\]", text, re.MULTILINE):
            if f"| `{choice}` |" not in readme:
                yield f"{name}: PACKAGECONFIG {choice} is not told in the layer's README.md"
        for file in re.findall(r"file://([\w-]+)(?=[\s\"])", text):
            if not (root / RECIPES / "files" / file).is_file():
                yield f"{name}: there is no files/{file}"
        for unit in re.findall(r"\b([\w-]+\.service)\b", text):
            if not (root / "systemd" / unit).is_file():
                yield f"{name}: there is no systemd/{unit}"


CHECKS = (version_breaches, symbol_breaches, option_breaches, recipe_breaches)

if __name__ == "__main__":
    check_common.run(lambda root, _: (len(CHECKS) if recipes(root) else 0, [b for check in CHECKS for b in check(root)]), __doc__)
