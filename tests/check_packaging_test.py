# SPDX-License-Identifier: Apache-2.0
"""check_packaging.py on a small tree, and on that tree with one thing out of step."""
import check_common
import check_packaging

RECIPE = f"{check_packaging.RECIPES}/vekdb-pwrmgt_1.2.3.bb"
FILES = {
    "CMakeLists.txt": 'project(vekdb_pwrmgt VERSION 1.2.3)\noption(PWRMGT_TOOLS "x" ON)\nset(PWRMGT_DIR "" CACHE PATH "y")\n',
    "LICENSE": "licence\n",
    "abi/exports.txt": "one\ntwo\n",
    "debian/changelog": "vekdb-pwrmgt (1.2.3) unstable; urgency=medium\n\nvekdb-pwrmgt (1.2.2) unstable; urgency=medium\n",
    "debian/libvekdb-pwrmgt1.symbols": "libvekdb_pwrmgt.so.1 libvekdb-pwrmgt1 #MINVER#\n one@Base 1.2\n two@Base 1.2\n",
    "debian/libvekdb-host1.symbols": "".join(f"{name}.so.1 libvekdb-host1\n {name}_f@Base 1\n" for name in check_packaging.HOST_LISTS),
    "debian/rules": "\tdh_auto_configure -- -DCMAKE_SKIP_INSTALL_RPATH=ON -DPWRMGT_DIR=x\n",
    "scripts/packages": "",
    "docs/install.md": "`PWRMGT_TOOLS` and `PWRMGT_DIR`\n",
    "systemd/pwrmgtd.service": "",
    RECIPE: 'LIC_FILES_CHKSUM = "file://LICENSE;md5=170075bc935c15050ca79671c85bedf2"\nSRC_URI = "file://run-ptest"\n'
            'PACKAGECONFIG[host] = "-DPWRMGT_TOOLS=ON"\nSYSTEMD_SERVICE = "pwrmgtd.service"\n',
    f"{check_packaging.RECIPES}/files/run-ptest": "",
    "yocto/meta-vekdb-pwrmgt/README.md": "| `host` | on |\n",
} | {f"platform/host/{file}": f"{name}_f\n" for name, file in check_packaging.HOST_LISTS.items()}


class Packaging(check_common.TreeCase):
    def setUp(self):
        super().setUp()
        for name, text in FILES.items():
            self.write(name, text)

    def breaches(self, file=None, before="", after=""):
        if file is not None:
            self.assertIn(before, FILES[file])
            self.write(file, FILES[file].replace(before, after))
        return [breach for check in check_packaging.CHECKS for breach in check(self.root)]

    def test_a_tree_in_step_passes(self):
        self.assertEqual(self.breaches(), [])

    def test_another_version_is_reported(self):
        self.assert_breach(self.breaches("debian/changelog", "(1.2.3)", "(1.2.4)"), "debian/changelog: version 1.2.4", "1.2.3")

    def test_a_recipe_of_another_version_is_reported(self):
        (self.root / RECIPE).rename(self.root / RECIPE.replace("1.2.3", "1.2.2"))

        self.assert_breach(self.breaches(), "vekdb-pwrmgt_1.2.2.bb: version 1.2.2")

    def test_a_missing_recipe_is_reported(self):
        (self.root / RECIPE).unlink()

        self.assert_breach(self.breaches(), "no recipe")

    def test_an_export_that_the_symbols_lack_is_reported(self):
        self.assert_breach(self.breaches("abi/exports.txt", "two\n", "two\nthree\n"), "libvekdb-pwrmgt1.symbols: three is missing")

    def test_a_symbol_that_is_not_exported_is_reported(self):
        self.assert_breach(self.breaches("abi/exports.txt", "two\n", ""), "two is not listed in abi/exports.txt")

    def test_a_host_library_is_compared_too(self):
        self.assert_breach(self.breaches("debian/libvekdb-host1.symbols", " libvekdb_prop_f", " other"), "libvekdb_prop_f is missing")

    def test_an_option_that_cmake_does_not_know_is_reported(self):
        self.assert_breach(self.breaches("debian/rules", "PWRMGT_DIR", "PWRMGT_DIRECTORY"), "debian/rules: -DPWRMGT_DIRECTORY")
        self.assert_breach(self.breaches(RECIPE, "PWRMGT_TOOLS", "PWRMGT_TOOL"), ".bb: -DPWRMGT_TOOL,")

    def test_an_option_that_is_not_told_is_reported(self):
        self.assert_breach(self.breaches("docs/install.md", "PWRMGT_TOOLS", "x"), "option PWRMGT_TOOLS is not told")

    def test_a_told_option_that_is_gone_is_reported(self):
        self.assert_breach(self.breaches("docs/install.md", "PWRMGT_DIR", "PWRMGT_GONE"), "PWRMGT_GONE, which CMake")

    def test_a_changed_licence_text_is_reported(self):
        self.assert_breach(self.breaches("LICENSE", "licence", "another"), "checksum of LICENSE")

    def test_a_choice_that_the_layer_does_not_tell_is_reported(self):
        self.assert_breach(self.breaches(RECIPE, "[host]", "[ipmi]"), "PACKAGECONFIG ipmi is not told")

    def test_files_that_are_not_there_are_reported(self):
        self.assert_breach(self.breaches(RECIPE, "run-ptest", "run-tests"), "there is no files/run-tests")
        self.assert_breach(self.breaches(RECIPE, "pwrmgtd.service", "other.service"), "there is no systemd/other.service")
