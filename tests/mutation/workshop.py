# SPDX-License-Identifier: Apache-2.0
"""Where a broken library is built and tried out: a copy of the tree, compiled without optimisation, and the test
programs of another build, which load it."""
import contextlib
import json
import os
import re
import shlex
import shutil
import subprocess
import sys
import time

ROOMS = ("db", "history", "policy", "psu", "query", "thermal")
COPIED = ("CMakeLists.txt", "abi", "cmake", "include", "man", "platform", "src", "tests")
# Sources that a test program compiles into itself: it does not see them broken in the library.
COMPILED_IN = {
    "src/policy/data_store.cpp": "enterprise_number_test",
    "src/policy/ipmi.cpp": "enterprise_number_test",
    "src/psu/rated_power.cpp": "rated_power_test",
}
START_S = 5  # what a busy machine may take to start a test program
SLOW_TEST_MS = 50


class Trouble(Exception):
    """The unbroken tree does not build, or does not pass."""


def room_of(file):
    return file.split("/")[1]


def rooms_that_see(file):
    """A file's own room, and every room when all of them stand on it."""
    return ROOMS if room_of(file) == "db" else (room_of(file),)


class Workshop:
    def __init__(self, root, tests, scratch):
        self.tree = scratch / "tree"
        self.build = scratch / "build"
        self.objects = scratch / "objects"
        self.tests = tests
        self.seconds = {}  # of each test program on the unbroken library
        self.slow_tests = {}  # of each test program, those that noticed something last in front
        self._copy(root)
        self._configure()
        self._learn_commands()
        self._build_unbroken()

    def _copy(self, root):
        self.tree.mkdir(parents=True)
        for name in COPIED:
            source = root / name
            (shutil.copytree if source.is_dir() else shutil.copy)(source, self.tree / name)

    def _configure(self):
        run = subprocess.run(["cmake", "-S", self.tree, "-B", self.build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug",
                              "-DPWRMGT_HOST_PLATFORM=OFF", "-DCMAKE_CXX_FLAGS_DEBUG=-O0", "-DPWRMGT_TESTS=ON",
                              "-DPWRMGT_TEST_OPTIONS=-O0", "-DPWRMGT_TEST_UNITY=OFF", "-DPWRMGT_WERROR=ON"],
                             capture_output=True, text=True)
        if run.returncode != 0:
            raise Trouble(f"the unbroken tree cannot be configured\n{run.stdout}{run.stderr}")

    def _learn_commands(self):
        """The compiler's own command lines: a build tool costs as much as the compiler on a file of this size."""
        self.compile = {}  # source -> command without output
        for entry in json.loads((self.build / "compile_commands.json").read_text()):
            if "/vekdb_pwrmgt.dir/" not in entry["command"]:
                continue
            words = shlex.split(entry["command"])
            at = words.index("-o")
            kept = words[:at] + words[at + 2:]
            source = os.path.relpath(entry["file"], self.tree)
            self.compile[source] = [word for word in kept if word not in ("-g", "-fstack-usage")]
        listed = subprocess.run(["ninja", "-C", self.build, "-t", "commands", "vekdb_pwrmgt"], capture_output=True,
                                text=True)
        link = next(line for line in listed.stdout.splitlines() if " -shared " in line)
        self.link = [word for word in shlex.split(link.split("&&")[1]) if not word.endswith(".o")]
        del self.link[self.link.index("-o"):self.link.index("-o") + 2]

    def _build_unbroken(self):
        (self.objects / "broken").mkdir(parents=True)
        self.headers = {}  # source -> files that it includes
        for source in self.compile:
            rules = self.objects / "rules.d"
            if not self._compiled(source, self._sound(source), "-MMD", "-MF", rules):
                raise Trouble(f"{source} does not compile unbroken")
            words = rules.read_text().replace("\\\n", " ").split()[1:]
            self.headers[source] = {os.path.relpath(word, self.tree) for word in words}
        self.library = self.objects / "libvekdb_pwrmgt.so.1"
        if not self._linked({}):
            raise Trouble("the unbroken library does not link")
        for room in ROOMS:
            self._measure(self._program(room))

    def _measure(self, program):
        started = time.monotonic()
        run = subprocess.run([program], env=self._environment(self.objects), capture_output=True, text=True)
        if run.returncode != 0:
            raise Trouble(f"{program} does not pass on the unbroken library\n{run.stdout}{run.stderr}")
        self.seconds[program] = time.monotonic() - started
        times = re.findall(r"\[ +OK \] (\S+) \((\d+) ms\)", run.stdout)
        self.slow_tests[program] = [name for name, time_ms in times if int(time_ms) >= SLOW_TEST_MS]

    def _sound(self, source):
        return self.objects / source.replace("/", "-").replace(".cpp", ".o")

    def _compiled(self, source, output, *options):
        run = subprocess.run([*self.compile[source], *options, "-o", output], cwd=self.build, capture_output=True)
        return run.returncode == 0

    def _linked(self, broken):
        """The library of the sound objects and, for sources in `broken`, of those."""
        objects = [broken.get(source) or self._sound(source) for source in self.compile]
        run = subprocess.run([*self.link, *objects, "-o", self.library], cwd=self.build, capture_output=True)
        return run.returncode == 0

    def _program(self, room):
        return self.tests / room / f"{room}_test"

    @staticmethod
    def _environment(library_path):
        return dict(os.environ, LD_LIBRARY_PATH=str(library_path))

    def _passes(self, program, limit_s, library_path, *options):
        try:
            run = subprocess.run([program, "--gtest_fail_fast", "--gtest_brief=1", *options],
                                 env=self._environment(library_path), stdout=subprocess.DEVNULL,
                                 stderr=subprocess.DEVNULL, timeout=limit_s)
        except subprocess.TimeoutExpired:
            return False
        return run.returncode == 0

    def _room_passes(self, room):
        """The slow tests, which are few, one by one and only when the others have noticed nothing."""
        program = self._program(room)
        limit_s, slow = START_S + 10 * self.seconds[program], self.slow_tests[program]
        if not self._passes(program, limit_s, self.objects, f"--gtest_filter=*-{':'.join(slow)}"):
            return False
        for name in slow:
            if not self._passes(program, limit_s, self.objects, f"--gtest_filter={name}"):
                slow.insert(0, slow.pop(slow.index(name)))
                return False
        return True

    @contextlib.contextmanager
    def _broken_file(self, mutant):
        path = self.tree / mutant.file
        original = path.read_text()
        path.write_text(mutant.text)
        try:
            yield
        finally:
            path.write_text(original)

    def try_out(self, mutant):
        """invalid: did not compile. killed. same: the optimised code is that of the unbroken tree. survived."""
        with self._broken_file(mutant):
            outcome = self._seen_by_rooms(mutant)
            if outcome == "survived" and self._seen_by_own_programs(mutant):
                outcome = "killed"
        if outcome == "survived" and self._same_code(mutant):
            return "same"
        return outcome

    def _seen_by_rooms(self, mutant):
        """Room by room: a breakage of a header that stands everywhere is noticed long before all of it is compiled."""
        broken = {}
        for room in rooms_that_see(mutant.file):
            affected = [source for source, headers in self.headers.items()
                        if mutant.file in headers and room_of(source) == room]
            for source in affected:
                broken[source] = self.objects / "broken" / self._sound(source).name
                if not self._compiled(source, broken[source]):
                    return "invalid"
            if affected and not self._linked(broken):
                return "invalid"
            if not self._room_passes(room):
                return "killed"
        return "survived"

    def _seen_by_own_programs(self, mutant):
        """The test programs that compile the broken file themselves, built from the broken tree."""
        if mutant.file in COMPILED_IN:
            programs = [(room_of(mutant.file), COMPILED_IN[mutant.file])]
        elif mutant.file.endswith(".h"):
            programs = [(room, f"{room}_test") for room in rooms_that_see(mutant.file)]
        else:
            return False
        for room, name in programs:
            run = subprocess.run(["ninja", "-C", self.build, "-j1", name], capture_output=True)
            program = self.build / "tests" / room / name
            if run.returncode != 0 or not self._passes(program, 120, self.build / "src"):
                return True
        return False

    def _same_code(self, mutant):
        for source, headers in self.headers.items():
            if mutant.file not in headers:
                continue
            sound, broken = self.objects / "sound.o", self.objects / "mutant.o"
            if not self._compiled(source, sound, "-O2"):
                return False
            with self._broken_file(mutant):
                if not self._compiled(source, broken, "-O2"):
                    return False
            if sound.read_bytes() != broken.read_bytes():
                return False
        return True


def open_workshop(root, tests, scratch):
    try:
        return Workshop(root, tests, scratch)
    except Trouble as trouble:
        sys.exit(str(trouble))
