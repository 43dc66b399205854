# SPDX-License-Identifier: Apache-2.0
"""What can be broken in a C++ source, one place at a time: operators, comparisons, constants, statements and their
order. Works on the text: a mutant that does not compile is thrown away by whoever builds it."""
import dataclasses
import re

OPERATORS = [
    (r"(?<![<>=!\-+*/&|^%])<=(?!>)", ("<", "==")), (r"(?<![>\-])>=", (">", "==")), (r"==", ("!=",)), (r"!=", ("==",)),
    (r" < ", (" <= ", " >= ")), (r" > ", (" >= ", " <= ")), (r"&&", ("||",)), (r"\|\|", ("&&",)),
    (r" \+ ", (" - ",)), (r" - ", (" + ",)), (r" \* ", (" / ",)), (r" / ", (" * ",)), (r" % ", (" / ",)),
    (r" \+= ", (" -= ", " = ")), (r" -= ", (" += ",)), (r"\+\+", ("--",)), (r" >> ", (" << ",)), (r" << ", (" >> ",)),
    (r" & ", (" | ",)), (r" \| ", (" & ",)), (r"(?<=[( ])!(?=[\w(])", ("",)),
    (r"\btrue\b", ("false",)), (r"\bfalse\b", ("true",)),
]
NUMBER = re.compile(r"(?<![\w.\"'<])(0x[0-9a-fA-F]+|\d+)(?![\w.\"'])")
STATEMENT = re.compile(r"^ {4,}(?!const |constexpr |static|using |auto |return|if |for |while |switch |case |\}|std::\w+ \w+[;{]|"
                       r"[\w:<>, ]+[*&]? \w+(?:\{|;| = ))[\w:.\->*\[\]]+.*;$")
ENUMERATOR = re.compile(r"Status::(\w+)")


@dataclasses.dataclass(frozen=True)
class Mutant:
    file: str  # below the tree, e.g. src/query/window.cpp
    line: int  # from 1
    kind: str
    before: str
    after: str
    text: str = dataclasses.field(repr=False, compare=False)  # the whole file

    def key(self):
        return f"{self.file}: {self.before.strip()} -> {self.after.strip() or '(nothing)'}"


def code_spans(line):
    """The parts of a line that are neither text nor comment, as (start, end)."""
    spans, start, at, quote = [], 0, 0, None
    while at < len(line):
        char = line[at]
        if quote:
            if char == "\\":
                at += 1
            elif char == quote:
                quote, start = None, at + 1
        elif char in "\"'" and not (char == "'" and at and line[at - 1].isalnum()):
            spans.append((start, at))
            quote = char
        elif line.startswith("//", at):
            break
        at += 1
    if not quote:
        spans.append((start, at))
    return spans


def is_mutable(line):
    stripped = line.strip()
    return bool(stripped) and not stripped.startswith(("//", "#", "static_assert", "namespace", "using ", "template", "*", "/*"))


def is_statement(line):
    return bool(STATEMENT.match(re.sub(r"\s+//.*", "", line)))


def is_call(line):
    """A call for its effect. Assignments change places without anybody noticing."""
    return is_statement(line) and bool(re.match(r" *[\w:.\->]+\(", line))


def _line_changes(line, statuses):
    for start, end in code_spans(line):
        part = line[start:end]
        for pattern, replacements in OPERATORS:
            for match in re.finditer(pattern, part):
                for new in replacements:
                    yield "operator", line[:start] + part[:match.start()] + new + part[match.end():] + line[end:]
        for match in NUMBER.finditer(part):
            value = int(match[0], 0)
            if re.search(r"std::array<[^<>]+, $", part[:match.start()]):
                continue  # the values that follow decide
            for new in sorted({value + 1, max(value - 1, 0)} - {value}):
                yield "constant", line[:start] + part[:match.start()] + str(new) + part[match.end():] + line[end:]
        for match in ENUMERATOR.finditer(part):
            new = statuses[(statuses.index(match[1]) + 1) % len(statuses)] if match[1] in statuses else None
            if new:
                yield "status", line[:start] + part[:match.start(1)] + new + part[match.end(1):] + line[end:]
    if is_statement(line):
        yield "deleted", ""


def mutants_of(file, text, statuses=()):
    """Every mutant of one file. A status is exchanged for another one of a different number."""
    lines = text.split("\n")

    def mutant(index, kind, new_lines, before, after):
        return Mutant(file, index + 1, kind, before, after, "\n".join(new_lines))

    for index, line in enumerate(lines):
        if not is_mutable(line):
            continue
        for kind, changed in _line_changes(line, list(statuses)):
            yield mutant(index, kind, lines[:index] + [changed] + lines[index + 1:], line, changed)
        following = lines[index + 1] if index + 1 < len(lines) else ""
        if file.endswith(".cpp") and is_call(line) and is_call(following) and line != following:
            swapped = lines[:index] + [following, line] + lines[index + 2:]
            yield mutant(index, "order", swapped, line, f"after {following.strip()}")
