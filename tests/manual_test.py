#!/usr/bin/env python3
"""sgbk(3) is clean, knows everything that is exported, and its prototypes are those of the headers.

usage: manual_test.py MANUAL INCLUDE_FOLDER COMPILER EXPORTED_SYMBOLS
"""

import re
import subprocess
import sys

manual, include, compiler, exported = sys.argv[1:]
text = open(manual, encoding="utf-8").read()

subprocess.run(["mandoc", "-T", "lint", "-W", "warning", manual], check=True)

for line in open(exported, encoding="utf-8"):
    name = re.match(r"(?:\w+::)?(\w+)(?:\(|$)", line)
    if name:
        assert re.search(r"\b%s\b" % name[1], text), f"sgbk(3) does not know {name[1]}"

# The compiler takes the address of each function as what the manual says that it is.
synopsis = text[text.index(".Sh SYNOPSIS") : text.index(".Sh DESCRIPTION")]
checks = []
for result, name, arguments in re.findall(
    r"^\.Ft (.*)\n\.F[no] (\S+)((?: .*)?(?:\n\.Fa .*)*)", synopsis, re.MULTILINE
):
    *how, result = re.fullmatch(r"(static |constexpr )?(.*)", result).groups()
    is_member = "::" in name and how == [None]
    pointer = "EncodingConvertor::*" if is_member else "*"
    types = ", ".join(re.findall(r'"([^"]*)"', arguments))
    checks.append(f"{result} ({pointer}check{len(checks)})({types}) = &{name};")
assert len(checks) > 30
program = "#include <sgbk/EncodingConvertor.h>\n" + "\n".join(checks)
command = [compiler, f"-I{include}", "-fsyntax-only", "-x", "c++", "-"]
subprocess.run(command, input=program, text=True, check=True)
