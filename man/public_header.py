# SPDX-License-Identifier: Apache-2.0
"""The public header as data: its sections with their prose, and each exported function with its comment."""
import re

# A comment and the exported function that follows it.
FUNCTION = re.compile(r"/\*\*((?:(?!\*/).)*)\*/\s*PWRMGT_API([^;{]*?)\b(\w+)\(([^;]*)\);", re.DOTALL)
TAG = re.compile(r"@(retval|return|param)[ \t]+((?:(?!@|\n\n).)*)", re.DOTALL)
SECTION = re.compile(r"^/\* -{60,}\n((?: \*.*\n)*?) \* -{60,} \*/$", re.MULTILINE)


def plain(comment):
    """A comment's text without its stars."""
    return "\n".join(re.sub(r"^[ \t]*\* ?", "", line) for line in comment.split("\n")).strip()


def tags_of(text):
    """[(tag, text)] of a comment; a tag's text ends at the next tag or at an empty line."""
    return [(tag, " ".join(words.split())) for tag, words in TAG.findall(text)]


def sections(header):
    """(title, prose, text of the section) in the header's order."""
    marks = list(SECTION.finditer(header))
    for mark, following in zip(marks, marks[1:] + [None]):
        words = plain(mark[1])
        title, _, prose = words.partition("\n")
        yield title.strip(), prose.strip(), header[mark.end():following.start() if following else len(header)]
