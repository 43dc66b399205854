# SPDX-License-Identifier: Apache-2.0
"""Every command and option that a tool's --help tells of is in its manual page, and nothing else is."""
import os
import re
import subprocess
import unittest
from pathlib import Path

MAN = Path(os.environ["MAN_DIRECTORY"])
OPTION = re.compile(r"^  (?:-\w,)?--([a-z][a-z-]*)", re.MULTILINE)
COMMANDS = re.compile(r"^Subcommands:\n((?:  .*\n)+)", re.MULTILINE)


def help_of(tool, *command):
    run = subprocess.run([tool, *command, "--help"], capture_output=True, text=True, timeout=120, check=True,
                         stdin=subprocess.DEVNULL)
    return run.stdout


def told(tool, *command):
    """(commands that have no commands of their own, options) of a tool, all levels together; a tool without commands is
    the empty one."""
    text = help_of(tool, *command)
    options = set(OPTION.findall(text))
    found = COMMANDS.search(text)
    if found is None:
        return {" ".join(command)}, options
    commands = set()
    for name in re.findall(r"^  (\S+)", found[1], re.MULTILINE):
        more, their_options = told(tool, *command, name)
        commands |= more
        options |= their_options
    return commands, options


class Manual:
    """What a page has to hold; each tool is a case."""

    def setUp(self):
        self.page = (MAN / self.name).read_text(encoding="utf-8")
        self.commands, self.options = told(os.environ[self.variable])

    def test_every_command_is_in_the_page(self):
        named = {" ".join(words.split()) for line in re.findall(r"^\.(?:It )?Cm (.*)$", self.page, re.MULTILINE)
                 for words in re.split(r"\||\bOp\b|\bAr\b", line)}

        self.assertTrue(self.commands)
        self.assertEqual(self.commands - {""} - named, set())

    def test_every_option_is_in_the_page(self):
        described = set(re.findall(r"\bFl -([a-z][a-z-]*)", self.page))

        self.assertTrue(self.options)
        self.assertEqual(self.options - described, set())

    def test_every_option_of_the_page_is_one_of_the_tool(self):
        described = set(re.findall(r"\bFl -([a-z][a-z-]*)", self.page))

        self.assertEqual(described - self.options, set())


class Pwrmgtctl(Manual, unittest.TestCase):
    name, variable = "pwrmgtctl.1", "PWRMGTCTL"


class Pwrmgtd(Manual, unittest.TestCase):
    name, variable = "pwrmgtd.8", "PWRMGTD"


class Simctl(Manual, unittest.TestCase):
    name, variable = "vekdb-simctl.1", "SIMCTL"


if __name__ == "__main__":
    unittest.main()
