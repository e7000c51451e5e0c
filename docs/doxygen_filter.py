#!/usr/bin/env python3
"""Shows the plain comments of the public headers to Doxygen as documentation.

The headers are written to be read as they stand, and nothing is added here: a comment that begins a
section, with dashes, heads a group of members; lines that begin with a parameter, or "Returns", and
two spaces become a list; of several declarations below one comment, it speaks of each.
"""

import re
import sys


def marked(comment):
    for text in comment:
        text = re.sub(r"^ {0,2}(\w[\w ]*?) {2,}(?=\S)", r"- @b \1 ", text)
        yield f"/// {text}"


def documented(lines):
    group_is_open = False
    comment = []  # the one above, for the next declaration
    i = 0
    while i < len(lines):
        line = lines[i]
        i += 1
        if line.lstrip().startswith("//"):
            comment = [line.strip()[2:].removeprefix(" ")]
            while lines[i].lstrip().startswith("//"):
                comment.append(lines[i].strip()[2:].removeprefix(" "))
                i += 1
            is_first = i == len(comment)
            if comment[0].startswith("---"):
                title = comment.pop(0).strip("- ") or comment.pop(0)
                describes_group = not lines[i].strip()
                yield from ["///@}"] * group_is_open
                yield f"/// @name {title}"
                yield from marked(comment) if describes_group else []
                yield from ["///@{", ""]
                group_is_open = True
            elif is_first:
                yield "/// @file"
                yield from marked(comment)
            continue
        if group_is_open and line in ("};", "#endif"):
            yield "///@}"
            group_is_open = False
        if not line.strip():
            comment = []
        yield from marked(comment)
        if not line.split(" //")[0].rstrip().endswith(";"):
            comment = []  # a body or the rest of a declaration follows
        yield re.sub(r"; +// ", ";  ///< ", line)


with open(sys.argv[1], encoding="utf-8") as header:
    print("\n".join(documented(header.read().splitlines())))
