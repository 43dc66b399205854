# SPDX-License-Identifier: Apache-2.0
"""check_hardening.py on small programs and libraries, each built without one protection."""
import json
import subprocess
import sys
from pathlib import Path

import check_common

SCRIPT = str(Path(__file__).resolve().parent / "check_hardening.py")
SOURCE = ("#include <stdio.h>\n#include <string.h>\nint main(int argc, char** argv) {\n    char text[16];\n"
          "    strcpy(text, argv[argc - 1]);\n    return printf(\"%s\", text);\n}\n")
COMPILED = ("-O2", "-fPIC", "-fstack-protector-strong", "-U_FORTIFY_SOURCE", "-D_FORTIFY_SOURCE=2")
LINKED = ("-pie", "-Wl,-z,relro", "-Wl,-z,now", "-Wl,-z,noexecstack")


class Hardening(check_common.TreeCase):
    def told(self, compiled=COMPILED, linked=LINKED, more=("--fortified", "--asks-for", "__stack_chk_fail"),
             output="src/x.dir/main.c.o"):
        """Exit status and output of the check on a program that was built with these options."""
        self.write("src/main.c", SOURCE)
        source, program = self.root / "src/main.c", self.root / "program"
        subprocess.run(["gcc", *compiled, source, "-o", program, *linked], check=True, capture_output=True)
        command = " ".join(["gcc", *compiled, "-o", output, "-c", str(source)])
        self.write("compile_commands.json", json.dumps([{"file": str(source), "command": command}]))
        done = subprocess.run([sys.executable, SCRIPT, str(self.root), str(program), "--root", str(self.root), *more],
                              capture_output=True, text=True, check=False)
        return done.returncode, done.stdout

    def assert_told(self, pieces, *arguments, **keywords):
        status, text = self.told(*arguments, **keywords)
        self.assertEqual(status, 1, text)
        self.assertIn(pieces, text)

    def without(self, options, *left_out):
        return tuple(option for option in options if option not in left_out)

    def test_a_protected_program_passes(self):
        self.assertEqual(self.told(), (0, "2 checked, 0 breaches\n"))

    def test_writable_relocations_are_reported(self):
        self.assert_told("program: relocations stay writable", linked=self.without(LINKED, "-Wl,-z,relro") + ("-Wl,-z,norelro",))

    def test_late_binding_is_reported(self):
        self.assert_told("program: functions are bound late", linked=self.without(LINKED, "-Wl,-z,now") + ("-Wl,-z,lazy",))

    def test_an_executable_stack_is_reported(self):
        self.assert_told("program: the stack is executable", linked=LINKED + ("-Wl,-z,execstack",))

    def test_a_fixed_address_is_reported(self):
        self.assert_told("program: loaded at a fixed address", linked=self.without(LINKED, "-pie") + ("-no-pie",))

    def test_symbols_bound_to_the_file_are_reported(self):
        self.assert_told("program: symbols are bound to the file itself", linked=LINKED + ("-shared", "-Wl,-Bsymbolic"))

    def test_frames_without_a_guard_are_reported(self):
        self.assert_told("program: does not ask for __stack_chk_fail",
                         compiled=self.without(COMPILED, "-fstack-protector-strong") + ("-fno-stack-protector",))

    def test_a_source_compiled_without_an_option_is_reported(self):
        for option in ("-fstack-protector-strong", "-D_FORTIFY_SOURCE=2"):
            self.assert_told(f"src/main.c: compiled without {option}", compiled=self.without(COMPILED, option), more=("--fortified",))

    def test_a_guard_of_arrays_alone_has_to_begin_at_four_bytes(self):
        compiled = COMPILED + ("-fstack-protector",)

        self.assert_told("src/main.c: compiled without -fstack-protector-strong", compiled=compiled)
        self.assertEqual(self.told(compiled=compiled + ("--param=ssp-buffer-size=4",))[0], 0)

    def test_a_build_that_is_not_optimised_needs_no_fortified_calls(self):
        self.assertEqual(self.told(compiled=self.without(COMPILED, "-D_FORTIFY_SOURCE=2"), more=())[0], 0)

    def test_a_source_that_a_test_compiles_for_itself_is_not_shipped(self):
        compiled = self.without(COMPILED, "-D_FORTIFY_SOURCE=2")

        self.assertEqual(self.told(compiled=compiled, output="tests/x.dir/main.c.o"), (0, "1 checked, 0 breaches\n"))
