#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Every file says under which licence it is, in a line of its own near its top or in .reuse/dep5; each licence's text is in
LICENSES/, and no text without a file."""
import fnmatch
import re

import check_common

TAG = re.compile(r"SPDX-License-" + r"Identifier:[ \t]*([\w.-]+(?:[ \t]+(?:OR|AND)[ \t]+[\w.-]+)*)")
TOP = 5
TEXTS = "LICENSES/"


def stanzas(text):
    """(patterns, licences) of each Files paragraph of a copyright file."""
    for paragraph in re.split(r"\n[ \t]*\n", text):
        fields = dict(re.findall(r"^([A-Z][\w-]*):((?:.*)(?:\n[ \t].*)*)", paragraph, re.MULTILINE))
        if "Files" in fields:
            yield fields["Files"].split(), licences_in(fields.get("License", ""))


def licences_in(expression):
    return {word for word in expression.split() if word.upper() not in ("OR", "AND")}


def tagged(text):
    found = TAG.search("\n".join(text.split("\n", TOP)[:TOP]))
    return licences_in(found[1]) if found else set()


def licences_of(file, text, paragraphs):
    """A line of the file's own comes first; of several paragraphs the last that names the file counts."""
    own = tagged(text)
    if own:
        return own
    named = [licences for patterns, licences in paragraphs if any(fnmatch.fnmatchcase(file, pattern) for pattern in patterns)]
    return named[-1] if named else set()


def licence_breaches(root):
    files = [file.as_posix() for file in check_common.tree_files(root)]
    paragraphs = list(stanzas(check_common.read(root, ".reuse/dep5"))) if ".reuse/dep5" in files else []
    texts = {file[len(TEXTS):].removesuffix(".txt") for file in files if file.startswith(TEXTS)}
    breaches, used = [], set()
    checked = [file for file in files if not file.startswith((TEXTS, ".reuse/"))]
    for file in checked:
        licences = licences_of(file, check_common.read(root, file), paragraphs)
        used |= licences
        if not licences:
            breaches.append(f"{file}: no licence, neither in the file nor in .reuse/dep5")
        breaches += [f"{file}: {licence} has no text in {TEXTS}" for licence in sorted(licences - texts)]
    breaches += [f"{TEXTS}{text}.txt: no file is under it" for text in sorted(texts - used)]
    for patterns, _ in paragraphs:
        breaches += [f".reuse/dep5: {pattern} names no file" for pattern in patterns
                     if not any(fnmatch.fnmatchcase(file, pattern) for file in checked)]
    return len(checked), breaches


if __name__ == "__main__":
    check_common.run(lambda root, _: licence_breaches(root), __doc__)
