# SPDX-License-Identifier: Apache-2.0
"""The installed tree, moved to another place, as other people's builds find it: the CMake package, vekdb_pwrmgt.pc, the
programs. The build that is installed is told in the environment (CMakeLists.txt)."""
import os
import re
import shlex
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

BUILD, SOURCE = Path(os.environ["BUILD_DIR"]), Path(os.environ["SOURCE_DIR"])
CONSUMER = Path(__file__).resolve().parent / os.environ["CONSUMER"]
CC, CXX, CMAKE = os.environ["CC"], os.environ["CXX"], os.environ["CMAKE"]
EMULATOR = shlex.split(os.environ["EMULATOR"])
LIBDIR, INTERFACE = os.environ["LIBDIR"], os.environ["INTERFACE"]
HOST_PLATFORM = os.environ["HOST_PLATFORM"] == "1"
HOST_LIBRARIES = ("vekdb_client", "vekdb_prop", "ipmiraw", "vekdb_platform")


def run(*command, **options):
    """Standard output of a command that has to succeed; what it said is in the failure."""
    done = subprocess.run([str(part) for part in command], text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          stdin=subprocess.DEVNULL, **options)
    if done.returncode != 0:
        raise AssertionError(f"{' '.join(map(str, command))}: {done.returncode}\n{done.stdout}")
    return done.stdout


def without_build(environment):
    """No path into the build tree or the sources is left for a consumer to find."""
    return {name: value for name, value in environment.items()
            if name not in ("LD_LIBRARY_PATH", "PKG_CONFIG_PATH", "CMAKE_PREFIX_PATH")
            and str(BUILD) not in value and str(SOURCE) not in value}


class InstalledTree(unittest.TestCase):
    """One installation of `components` per class, made under one name and used under another."""
    components = ()

    @classmethod
    def setUpClass(cls):
        scratch = tempfile.TemporaryDirectory()
        cls.addClassCleanup(scratch.cleanup)
        cls.scratch = Path(scratch.name)
        cls.prefix = cls.scratch / "moved here"
        made = cls.scratch / "made"
        for component in cls.components:
            run(CMAKE, "--install", BUILD, "--prefix", made, "--component", component)
        made.rename(cls.prefix)
        for name in ("state", "run"):
            (cls.scratch / name).mkdir(mode=0o700)
        # The sysroot of a cross build lies in the build tree.
        cls.environment = without_build(os.environ) | {"LDFLAGS": os.environ["LINK_FLAGS"]} | {
            "VEKDB_STATE_DIR": str(cls.scratch / "state"), "VEKDB_RUNTIME_DIR": str(cls.scratch / "run")}

    def execute(self, program, *arguments, **more):
        return run(*EMULATOR, program, *arguments, env=self.environment | more)

    def build_with_cmake(self, *options):
        build = self.scratch / "consumer"
        # A toolchain file for another machine keeps the search to that machine's system: there the package is named.
        found = [f"-DCMAKE_TOOLCHAIN_FILE={os.environ['TOOLCHAIN']}",
                 f"-Dvekdb_pwrmgt_DIR={self.prefix / LIBDIR / 'cmake/vekdb_pwrmgt'}"] if os.environ["TOOLCHAIN"] else [
                     f"-DCMAKE_C_COMPILER={CC}", f"-DCMAKE_CXX_COMPILER={CXX}", f"-DCMAKE_PREFIX_PATH={self.prefix}"]
        run(CMAKE, "-G", os.environ["GENERATOR"], "-S", CONSUMER, "-B", build, *found, *options, env=self.environment)
        run(CMAKE, "--build", build, env=self.environment)
        return build

    def pkg_config(self, *arguments):
        places = {"PKG_CONFIG_LIBDIR": str(self.prefix / LIBDIR / "pkgconfig")}
        return shlex.split(run(os.environ["PKG_CONFIG_PROGRAM"], *arguments, "vekdb_pwrmgt", env=self.environment | places))

    def files(self):
        return {file.relative_to(self.prefix).as_posix() for file in self.prefix.rglob("*") if not file.is_dir()}


class WholeTree(InstalledTree):
    components = ("lib", "dev", "host")

    def test_a_c_and_a_cxx_project_are_built_with_the_cmake_package(self):
        build = self.build_with_cmake()

        self.assertEqual(self.execute(build / "consumer_c"), "history: status 8\n")
        self.assertEqual(self.execute(build / "consumer_cpp"), "history is offered: 1\nsummary: status 8\n")
        self.assertEqual(self.execute(build / "consumer_platform"), "opened: 1, quoril: 0, query failed: 0\n")

    def test_a_c_and_a_cxx_program_are_built_with_pkg_config(self):
        flags = self.pkg_config("--cflags", "--libs")
        where = f"-Wl,-rpath,{self.prefix / LIBDIR}"
        for compiler, source, shown in ((CC, "consumer.c", "history: status 8\n"),
                                        (CXX, "consumer.cpp", "history is offered: 1\nsummary: status 8\n")):
            program = self.scratch / f"{source}.program"

            run(compiler, CONSUMER / source, "-o", program, *flags, *shlex.split(os.environ["LINK_FLAGS"]), where, env=self.environment)

            self.assertEqual(self.execute(program), shown)

    def test_the_version_is_the_projects(self):
        self.assertEqual(self.pkg_config("--modversion"), [os.environ["VERSION"]])

    def test_every_shared_library_has_its_interface_in_its_name(self):
        for name in ("vekdb_pwrmgt", *HOST_LIBRARIES):
            library = self.prefix / LIBDIR / f"lib{name}.so"

            self.assertEqual(os.readlink(library), f"lib{name}.so.1")
            self.assertEqual(os.readlink(f"{library}.1"), f"lib{name}.so.{INTERFACE}")
            self.assertIn(f"Library soname: [lib{name}.so.1]", run(os.environ["READELF"], "-dW", library))

    def test_no_text_file_names_where_it_was_built_or_installed(self):
        texts = [self.prefix / file for file in self.files() if Path(file).suffix in (".cmake", ".pc", ".h")]

        self.assertGreater(len(texts), 5)
        for file in texts:
            self.assertNotRegex(file.read_text(encoding="utf-8"),
                                "|".join(map(re.escape, (str(BUILD), str(SOURCE), str(self.scratch)))))


class LibraryAlone(InstalledTree):
    """For a controller, which brings its own platform."""
    components = ("lib", "dev")

    def test_nothing_of_the_host_platform_is_installed_with_the_library(self):
        run(CMAKE, "--install", BUILD, "--prefix", self.scratch / "library", "--component", "lib")

        installed = {file.name for file in (self.scratch / "library").rglob("*") if not file.is_dir()}
        self.assertEqual(installed, {"libvekdb_pwrmgt.so.1", f"libvekdb_pwrmgt.so.{INTERFACE}"})

    def test_a_program_with_a_platform_of_its_own_is_built_with_the_cmake_package(self):
        build = self.build_with_cmake(f"-DOWN_PLATFORM={SOURCE / 'tests/abi/absent_platform.c'}")

        # The library may name the four platform libraries; the functions in the program come first.
        for name in HOST_LIBRARIES if HOST_PLATFORM else ():
            run(CC, "-shared", "-o", self.prefix / LIBDIR / f"lib{name}.so.1", f"-Wl,-soname,lib{name}.so.1",
                "-x", "c", "/dev/null")
        self.assertEqual(self.execute(build / "consumer_c"), "history: status 2\n")
        self.assertEqual(self.execute(build / "consumer_cpp"), "history is offered: 1\nsummary: status 2\n")


class Programs(InstalledTree):
    components = ("lib", "host", "tools")

    def test_every_program_runs_where_it_was_moved_and_tells_its_version(self):
        programs = sorted((self.prefix / "bin").iterdir()) + sorted((self.prefix / "sbin").glob("*"))

        self.assertEqual([file.name for file in programs], ["pwrmgtctl", "pwrmgtd", "vekdb-simctl"])
        for program in programs:
            self.assertEqual(self.execute(program, "--version"), f"{program.name} {os.environ['VERSION']}\n")


class ForeignPlatform(unittest.TestCase):
    """Building the library with the headers and libraries of a controller, which lie in a prefix of their own."""

    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.scratch = Path(scratch.name)
        self.platform = self.scratch / "controller"
        shutil.copytree(SOURCE / "platform/include", self.platform / "include")
        (self.platform / "lib").mkdir()

    def configure(self, *options):
        launcher = [f"-D{kind}_LAUNCHER={os.environ['CC_LAUNCHER']}" for kind in ("CMAKE_C_COMPILER", "CMAKE_CXX_COMPILER")]
        return subprocess.run(
            [CMAKE, "-G", os.environ["GENERATOR"], "-S", SOURCE, "-B", self.scratch / "build", "-DCMAKE_BUILD_TYPE=Plain",
             f"-DPWRMGT_PLATFORM_DIR={self.platform}", f"-DCMAKE_C_COMPILER={CC}", f"-DCMAKE_CXX_COMPILER={CXX}",
             *launcher, *options], text=True, capture_output=True, env=os.environ | {"LC_ALL": "C"}, check=False)

    def test_its_headers_and_libraries_are_used_and_what_it_lacks_stays_open(self):
        header = self.platform / "include/vekdb_client.h"
        header.write_text("#define vek_db_open controller_db_open\n" + header.read_text(encoding="utf-8"), encoding="utf-8")
        self.make_client()

        told = self.configure()
        run(CMAKE, "--build", self.scratch / "build", "--parallel")

        library = self.scratch / "build/src/libvekdb_pwrmgt.so"
        needed = re.findall(r"NEEDED.*\[(.*)\]", run(os.environ["READELF"], "-dW", library))
        self.assertIn("libcontroller_db.so.7", needed)
        self.assertFalse([name for name in needed if name.startswith(("libvekdb", "libipmiraw"))], needed)
        asked = re.findall(r" UND (\w+)", run(os.environ["READELF"], "--dyn-syms", "-W", library))
        self.assertIn("controller_db_open", asked)
        self.assertNotIn("vek_db_open", asked)
        self.assertIn("send_ipmi_cmd", asked)
        self.assertIn("libipmiraw.so is not in", told.stdout)

    def make_client(self):
        source = self.scratch / "client.c"
        source.write_text("unsigned controller_db_open(void) { return 0; }\n", encoding="utf-8")
        run(CC, "-shared", "-fPIC", "-o", self.platform / "lib/libvekdb_client.so", "-Wl,-soname,libcontroller_db.so.7", source)

    def test_it_and_the_host_platform_exclude_each_other(self):
        told = self.configure("-DPWRMGT_HOST_PLATFORM=ON")

        self.assertNotEqual(told.returncode, 0)
        self.assertIn("PWRMGT_PLATFORM_DIR names another platform", told.stderr)


if __name__ == "__main__":
    unittest.main()
