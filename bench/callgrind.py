# SPDX-License-Identifier: Apache-2.0
"""What a program's callgrind dumps tell: instructions by the object (program or shared library) that they are in, and how
often each object called which function of another."""
import collections
import re
from pathlib import Path

POSITION = re.compile(r"^(fl|fi|fe|fn|ob|cfi|cfl|cfn|cob)=(?:\((\d+)\))?\s*(.*)$")
# "+3 14": a place, relative or not, and the cost there.
COST = re.compile(r"^[+*\-\d]\S* (\d+)")


class Dump:
    """One dump: `name` is the mark it was made at."""

    def __init__(self, text):
        self.name = ""
        self.by_object = collections.Counter()
        self.calls = collections.Counter()  # (from object, to object, function) -> how often
        self._names = {"ob": {}, "fn": {}}
        self._read(text)

    @property
    def total(self):
        return sum(self.by_object.values())

    def own(self, library):
        """Instructions in the objects whose file name starts with `library`."""
        return sum(cost for path, cost in self.by_object.items() if Path(path).name.startswith(library))

    def calls_between(self, source, target):
        """Calls from one library straight into another, by function."""
        found = collections.Counter()
        for (caller, callee, function), count in self.calls.items():
            if Path(caller).name.startswith(source) and Path(callee).name.startswith(target):
                found[function] += count
        return found

    def _named(self, kind, number, name):
        """Names are written out once and numbered from then on."""
        if number is None:
            return name
        if name:
            self._names[kind][number] = name
        return self._names[kind][number]

    def _read(self, text):
        here = called = function = None
        inclusive = False
        for line in text.splitlines():
            if line.startswith("desc: Trigger: Client Request: "):
                self.name = line.rsplit(": ", 1)[1]
            elif position := POSITION.match(line):
                key, number, name = position.groups()
                if key == "ob":
                    here = self._named("ob", number, name)
                elif key == "cob":
                    called = self._named("ob", number, name)
                elif key == "fn":
                    self._named("fn", number, name)
                elif key == "cfn":
                    function = self._named("fn", number, name)
            elif line.startswith("calls="):
                # A call within one object names no object.
                self.calls[here, called or here, function] += int(line[len("calls="):].split()[0])
                called, inclusive = None, True
            elif cost := COST.match(line):
                # The line behind calls= is what the callee cost, which is counted where it was spent.
                if not inclusive:
                    self.by_object[here] += int(cost[1])
                inclusive = False


def dumps(directory):
    """The marked dumps in a directory, by name."""
    read = (Dump(path.read_text(encoding="utf-8")) for path in sorted(Path(directory).glob("callgrind.*")))
    return {dump.name: dump for dump in read if dump.name}
