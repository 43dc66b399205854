#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""What the built library shows to the dynamic linker: it exports the listed symbols and no other, the header declares
each of them, it asks for nothing but the platform's functions and the language's own libraries, and it loads without
text relocations, an executable stack or constructors of its own."""
import ctypes
import re
import subprocess
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent))
import check_common

LIBRARY_VERSIONS = re.compile(r"@+(?:GLIBC|GLIBCXX|CXXABI|GCC)_[\w.]+$")
COMPILER_OWN = re.compile(r"^(?:__gmon_start__|_ITM_\w+|__cxa_finalize)$")
SANITIZER_OWN = re.compile(r"^__(?:asan|ubsan|lsan|sanitizer)_\w+$")
PLATFORM_LIBRARIES = r"lib(?:vekdb_client|vekdb_prop|ipmiraw|vekdb_platform)\.so\.1"
SYSTEM_LIBRARIES = r"lib(?:stdc\+\+|gcc_s|c|m)\.so\.\d+|ld-linux.*"
SANITIZER_LIBRARIES = r"lib(?:asan|ubsan)\.so\.\d+"


def output(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True, env={"LC_ALL": "C", "PATH": "/usr/bin:/bin"}).stdout


def code(text):
    """A header without its comments and preprocessor lines."""
    return re.sub(r"/\*.*?\*/|//[^\n]*|^[ \t]*#[^\n]*", "", text, flags=re.DOTALL | re.MULTILINE)


def listed(root):
    return [line for line in check_common.read(root, "abi/exports.txt").splitlines() if line and line[0] != "#"]


def exports(arguments):
    """The exported symbols are the list's, and the list is sorted byte by byte without doubles."""
    wanted = listed(arguments.root)
    found = {line.split()[0] for line in output(arguments.nm, "-D", "-P", "--defined-only", arguments.library).splitlines()}
    breaches = [f"abi/exports.txt: {name} is not exported by the library" for name in sorted(set(wanted) - found)]
    breaches += [f"the library exports {name}, which abi/exports.txt does not list" for name in sorted(found - set(wanted))]
    if wanted != sorted(set(wanted)):
        breaches.append("abi/exports.txt: not sorted (LC_ALL=C sort -u)")
    return len(wanted), breaches


def declared(arguments):
    """Each listed symbol has its PWRMGT_API declaration in the public header, and each declaration is listed."""
    header = code(check_common.read(arguments.root, "include/vekdb_pwrmgt.h"))
    marked = {re.search(r"(\w+)\s*(?:\(|\[|$)", text)[1] for text in re.findall(r"\bPWRMGT_API\b([^;{=]*)[;={]", header)}
    named = {mangled: re.sub(r"\(.*", "", output(arguments.cxxfilt, mangled).strip()) for mangled in listed(arguments.root)}
    breaches = [f"abi/exports.txt: {symbol} is not declared with PWRMGT_API" for symbol, name in named.items() if name not in marked]
    breaches += [f"include/vekdb_pwrmgt.h: {name} is not listed in abi/exports.txt" for name in sorted(marked - set(named.values()))]
    return len(marked), breaches


def platform_functions(root):
    names = set()
    for header in (root / "platform/include").glob("*.h"):
        names |= set(re.findall(r"\b(\w+)\(", code(header.read_text(encoding="utf-8"))))
    return names


def from_sanitizer(name):
    """The runtime's own entries, and the C and C++ libraries' functions that it stands in front of without versions."""
    return SANITIZER_OWN.match(name) or any(hasattr(ctypes.CDLL(library), name) for library in ("libc.so.6", "libstdc++.so.6"))


def undefined(arguments):
    """What the library asks for: platform functions, versioned symbols of the C and C++ libraries, nothing else."""
    platform = platform_functions(arguments.root)
    breaches, names = [], []
    for line in output(arguments.nm, "-D", "-P", "--undefined-only", arguments.library).splitlines():
        name = line.split()[0]
        names.append(name)
        known = name in platform or LIBRARY_VERSIONS.search(name) or COMPILER_OWN.match(name)
        if not known and not (arguments.sanitized and from_sanitizer(name)):
            breaches.append(f"the library asks for {name}, which is neither a platform function nor the language's own")
    if not platform & {name.split("@")[0] for name in names}:
        breaches.append("the library asks for no platform function at all")
    allowed = "|".join([PLATFORM_LIBRARIES, SYSTEM_LIBRARIES] + ([SANITIZER_LIBRARIES] if arguments.sanitized else []))
    for needed in re.findall(r"\(NEEDED\).*\[(.*)\]", output(arguments.readelf, "-dW", arguments.library)):
        if not re.fullmatch(allowed, needed):
            breaches.append(f"the library needs {needed}")
    return len(names), breaches


def loading(arguments):
    """How the library is mapped: the flags that would cost a controller memory or safety, or cut its globals off."""
    dynamic = output(arguments.readelf, "-dW", arguments.library)
    segments = output(arguments.readelf, "-lW", arguments.library)
    sections = output(arguments.readelf, "-SW", arguments.library)
    symbols = output(arguments.readelf, "--dyn-syms", "-W", arguments.library)
    breaches = []
    if re.search(r"TEXTREL", dynamic):
        breaches.append("text relocations: some object is not position independent")
    if not re.search(r"GNU_STACK\s.*\sRW\s", segments):
        breaches.append("executable stack")
    if re.search(r"\bSYMBOLIC\b", dynamic) or re.search(r"\bPROTECTED\b", symbols):
        breaches.append("globals bound to the library itself: a program could not share them")
    if not re.search(r"\(SONAME\).*\[libvekdb_pwrmgt\.so\.1\]", dynamic):
        breaches.append("the name to load it by is not libvekdb_pwrmgt.so.1")
    pointer = 8 if "Class:                             ELF64" in output(arguments.readelf, "-h", arguments.library) else 4
    constructors = re.search(r"\.init_array\s+INIT_ARRAY\s+\w+\s+\w+\s+(\w+)", sections)
    # One entry is the compiler's start file; the sanitizers add one per object.
    if constructors and int(constructors[1], 16) > pointer and not arguments.sanitized:
        breaches.append("constructors of static objects run when the library is loaded")
    return 5, breaches


CHECKS = {function.__name__: function for function in (exports, declared, undefined, loading)}
OPTIONS = [("what", {"choices": CHECKS}), ("library", {}),
           ("--sanitized", {"action": "store_true", "help": "the sanitizers' own symbols and libraries are expected"}),
           ("--nm", {"default": "nm"}), ("--readelf", {"default": "readelf"}), ("--cxxfilt", {"default": "c++filt"})]

if __name__ == "__main__":
    check_common.run(lambda _, arguments: CHECKS[arguments.what](arguments), __doc__, OPTIONS)
