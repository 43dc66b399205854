#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Documents: every relative link and anchor leads somewhere, every path in backticks that starts with a directory of
ours exists, and the README stays readable in one sitting."""
import re

import check_common

README_LINES = 120
FENCE = re.compile(r"^(```|~~~).*?^\1[^\S\n]*$", re.MULTILINE | re.DOTALL)
LINK = re.compile(r"!?\[[^\]\[]*\]\(\s*<?([^)\s>]+)>?(?:\s+\"[^\"]*\")?\s*\)")
HEADING = re.compile(r"^#{1,6}[ \t]+(.+?)[ \t#]*$", re.MULTILINE)
SPAN = re.compile(r"`([^`\n]+)`")
PATH = re.compile(r"^(?:\./)?[\w.+-]+(?:/[\w.+-]*)+$")


def without_fences(text):
    """The text with fenced code blanked out, its line numbers kept."""
    return FENCE.sub(lambda m: "\n" * m[0].count("\n"), text)


def anchors(text):
    """The anchors that the usual renderers make from headings: lower case, punctuation dropped, spaces to dashes."""
    found, seen = set(), {}
    for heading in HEADING.findall(without_fences(text)):
        plain = re.sub(r"\[([^\]]*)\]\([^)]*\)", r"\1", heading).replace("`", "")
        slug = re.sub(r"[^\w\- ]", "", plain.lower()).replace(" ", "-")
        seen[slug] = seen.get(slug, -1) + 1
        found.add(slug if seen[slug] == 0 else f"{slug}-{seen[slug]}")
    return found


def exists(root, base, name):
    """A file or directory that is part of the tree; a name outside of it is none of ours to check."""
    target = (base / name).resolve()
    return target.exists() and (target == root or root in target.parents)


def link_breaches(root, file, text):
    for match in LINK.finditer(text):
        name, _, anchor = match[1].partition("#")
        if re.match(r"[a-z][a-z+.-]*:", name):
            continue
        where = f"{file}:{text.count(chr(10), 0, match.start()) + 1}"
        base = (root / file).parent
        if name and not exists(root, base, name):
            yield f"{where}: link to {name}, which does not exist"
        elif anchor:
            target = base / name if name else root / file
            if target.suffix == ".md" and anchor not in anchors(target.read_text(encoding="utf-8")):
                yield f"{where}: no heading for the anchor #{anchor} in {name or file}"


def path_breaches(root, file, text):
    """A span counts as a path of ours when its first word has a slash and starts with a directory of the tree's top."""
    tops = {entry.parts[0] for entry in check_common.tree_files(root) if len(entry.parts) > 1}
    for match in SPAN.finditer(text):
        word = match[1].split()[0] if match[1].split() else ""
        word = re.sub(r":\d+$", "", word)
        if not PATH.match(word):
            continue
        if word.removeprefix("./").split("/")[0] not in tops:
            continue
        if not exists(root, root, word) and not exists(root, (root / file).parent, word):
            where = f"{file}:{text.count(chr(10), 0, match.start()) + 1}"
            yield f"{where}: names {word}, which does not exist"


def document_breaches(root):
    files = [f for f in check_common.tree_files(root) if f.suffix == ".md"]
    breaches = []
    for file in files:
        whole = check_common.read(root, file)
        text = without_fences(whole)
        breaches += link_breaches(root, file, SPAN.sub(lambda m: " " * len(m[0]), text))
        breaches += path_breaches(root, file, text)
        if file.as_posix() == "README.md" and whole.count("\n") > README_LINES:
            breaches.append(f"README.md: {whole.count(chr(10))} lines, at most {README_LINES} are read")
    return len(files), breaches


if __name__ == "__main__":
    check_common.run(lambda root, _: document_breaches(root), __doc__)
