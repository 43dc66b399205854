#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Writes the manual pages of section 3 from the public header: a page for each of its sections, found under the name of
every function in it, the records and constants as they are declared, and the overview with its list of functions."""
import argparse
import re
from pathlib import Path

from public_header import FUNCTION, plain, sections, tags_of

LICENCE = '.\\" SPDX-License-Identifier: Apache-2.0\n'
FUNCTIONS_MARK = '.\\" FUNCTIONS\n'
RECORDS = "pwrmgt_records"
DECLARED = {"Constants", "Records", "Globals"}


def text(words):
    """Words that mdoc prints as they stand, a line for each sentence, names in italics."""
    words = re.sub(r"([.!?][)\"]?) +(?=\S)", r"\1\n", words.replace("\\", "\\e"))
    words = re.sub(r"`([^`]+)`", r"\\fI\1\\fP", words)
    words = re.sub(r"#(\w+)", r"\\fI\1\\fP", words)
    return "\n".join("\\&" + line if line[:1] in (".", "'") else line for line in words.split("\n"))


def paragraphs(words):
    """Flowing text; an item that starts with "- " is one of a list."""
    blocks = []
    for block in words.split("\n\n"):
        if block.lstrip().startswith("- "):
            items = re.split(r"^\s*- ", block, flags=re.MULTILINE)[1:]
            blocks.append(".Bl -bullet -compact\n" + "".join(f".It\n{text(' '.join(item.split()))}\n" for item in items) + ".El\n")
        elif block.strip():
            blocks.append(text(" ".join(block.split())) + "\n")
    return ".Pp\n".join(blocks)


def parameters(declared):
    """The parameters of a declaration, one by one; none for (void)."""
    flat = " ".join(declared.split())
    return [] if flat == "void" else [part.strip() for part in flat.split(",")]


def synopsis(result, name, declared):
    lines = [f".Ft {' '.join(result.split())}", f".Fo {name}"]
    lines += [f'.Fa "{parameter}"' for parameter in parameters(declared)] or [".Fa void"]
    return "\n".join(lines + [".Fc"]) + "\n"


def tagged(width, rows):
    items = "".join(f".It {tag}\n{text(words)}\n" for tag, words in rows)
    return f".Bl -tag -width {width} -compact\n{items}.El\n"


def without_tags(comment):
    """The paragraphs of a comment that are no tags: what comes first and what comes last."""
    blocks = [block for block in comment.split("\n\n") if not block.lstrip().startswith("@")]
    return "\n\n".join(re.split(r"\n@", block)[0] for block in blocks)


def described(name, comment):
    """A function's own subsection."""
    words = plain(comment)
    tags = tags_of(words)
    first, _, rest = without_tags(words).partition("\n\n")
    page = f".Ss {name}\n" + paragraphs(first)
    given = [(f"Fa {row.split(' ', 1)[0]}", row.split(" ", 1)[1]) for tag, row in tags if tag == "param"]
    if given:
        page += ".Pp\nParameters:\n" + tagged("samples_per_entry", given)
    statuses = [row.split(" ", 1) for tag, row in tags if tag == "retval"]
    if statuses:
        page += ".Pp\nReturns:\n" + tagged("31", [(row[0], row[1] if len(row) > 1 else "") for row in statuses])
    for tag, row in tags:
        if tag == "return":
            says = row[0].upper() + row[1:] if row.startswith("otherwise") else f"Returns {row}"
            page += ".Pp\n" + text(says.rstrip(".") + ".") + "\n"
    if rest.strip():
        page += ".Pp\n" + paragraphs(rest)
    return page


def heading(date, name, others, about):
    names = "".join(f".Nm {other} ,\n" for other in [name, *others][:-1]) + f".Nm {[name, *others][-1]}\n"
    return f"{LICENCE}.Dd {date}\n.Dt {name.upper()} 3\n.Os\n.Sh NAME\n{names}.Nd {about}\n"


LIBRARY = ".Sh LIBRARY\nPower and thermal data of a server (libvekdb_pwrmgt, \\-lvekdb_pwrmgt)\n"
SEE_ALSO = ".Sh SEE ALSO\n.Xr libvekdb_pwrmgt 3 ,\n.Xr pwrmgt_records 3 ,\n.Xr vekdb_pwrmgt 7\n"


def section_page(date, title, prose, functions):
    names = [match[3] for match in functions]
    page = heading(date, names[0], names[1:], title[0].lower() + title[1:])
    page += LIBRARY + ".Sh SYNOPSIS\n.In vekdb_pwrmgt.h\n" + "".join(synopsis(m[2], m[3], m[4]) for m in functions)
    page += ".Sh DESCRIPTION\n" + (paragraphs(prose) if prose else f"{title}.\n")
    page += "".join(described(match[3], match[1]) for match in functions)
    return page + SEE_ALSO


def declarations(body):
    """C as it stands in the header, for a literal display."""
    lines = body.strip("\n").replace("\\", "\\e").split("\n")
    return "\n".join("\\&" + line if line[:1] in (".", "'") else line for line in lines)


def records_page(date, declared):
    page = heading(date, RECORDS, [], "constants, records and globals of libvekdb_pwrmgt")
    page += LIBRARY + ".Sh SYNOPSIS\n.In vekdb_pwrmgt.h\n.Sh DESCRIPTION\n"
    page += "All records are naturally aligned and have the same layout on 64-bit hosts and 32-bit ARM.\n"
    for title, body in declared:
        page += f".Ss {title}\n.Bd -literal\n{declarations(body)}\n.Ed\n"
    return page + ".Sh SEE ALSO\n.Xr libvekdb_pwrmgt 3 ,\n.Xr vekdb_pwrmgt 7\n"


def function_list(parts):
    """For the overview: every function under its section, and the page that tells of it."""
    lines = ""
    for title, functions in parts:
        names = [match[3] for match in functions]
        lines += f".It {title}\n" + "".join(f".Xr {name} 3 ,\n" for name in names[:-1]) + f".Xr {names[-1]} 3\n"
    return f".Bl -tag -width Ds\n{lines}.El\n"


def pages(header, overview, date):
    """{file name: contents, or the Path that it is a link to}."""
    written, parts, declared = {}, [], []
    for title, prose, body in sections(header):
        functions = list(FUNCTION.finditer(body))
        if title in DECLARED:
            declared.append((title, body))
        elif functions:
            parts.append((title, functions))
            first = functions[0][3]
            written[f"{first}.3"] = section_page(date, title, prose, functions)
            for match in functions[1:]:
                written[f"{match[3]}.3"] = Path(f"{first}.3")
    written[f"{RECORDS}.3"] = records_page(date, declared)
    if FUNCTIONS_MARK not in overview:
        raise SystemExit(f"the overview has no line {FUNCTIONS_MARK}")
    written["libvekdb_pwrmgt.3"] = overview.replace(FUNCTIONS_MARK, function_list(parts))
    return written


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("header", type=Path)
    parser.add_argument("overview", type=Path, help="libvekdb_pwrmgt.3.in")
    parser.add_argument("directory", type=Path, help="where the pages go; pages of functions that are gone are removed")
    parser.add_argument("--date", required=True, help="such as 'November 21, 2026'")
    arguments = parser.parse_args()
    written = pages(arguments.header.read_text(encoding="utf-8"), arguments.overview.read_text(encoding="utf-8"),
                    arguments.date)
    arguments.directory.mkdir(parents=True, exist_ok=True)
    for old in arguments.directory.glob("*.3"):
        old.unlink()
    for name, page in written.items():
        if isinstance(page, Path):
            (arguments.directory / name).symlink_to(page)
        else:
            (arguments.directory / name).write_text(page, encoding="utf-8")


if __name__ == "__main__":
    main()
