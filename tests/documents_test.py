#!/usr/bin/env python3
"""What the documents promise: sgbk(3) is clean, knows everything that is exported, and has the
prototypes of the headers; the README's program prints what its comment says; links lead somewhere.

usage: documents_test.py SOURCE_FOLDER COMPILER LIBSGBK LIBTABLES
"""

import pathlib
import re
import subprocess
import sys
import tempfile

root, compiler, *libraries = pathlib.Path(sys.argv[1]), *sys.argv[2:]
manual = root.joinpath("docs/sgbk.3").read_text(encoding="utf-8")
compile_program = [compiler, f"-I{root}/include", "-Wall", "-Wextra", "-Werror", "-x", "c++", "-"]

subprocess.run(["mandoc", "-T", "lint", "-W", "warning", root / "docs/sgbk.3"], check=True)
exported = root.joinpath("packaging/exported_symbols.txt").read_text(encoding="utf-8")
for name in re.findall(r"^(?:\w+::)?(\w+)(?=\(|$)", exported, re.MULTILINE):
    assert re.search(rf"\b{name}\b", manual), f"sgbk(3) does not know {name}"

# The compiler takes the address of each function as what the manual says that it is.
synopsis = manual[manual.index(".Sh SYNOPSIS") : manual.index(".Sh DESCRIPTION")]
checks = ["#include <sgbk/EncodingConvertor.h>"]
for how, result, name, arguments in re.findall(
    r"^\.Ft (static |constexpr )?(.*)\n\.F[no] (\S+)((?: .*)?(?:\n\.Fa .*)*)", synopsis, re.MULTILINE
):
    pointer = "EncodingConvertor::*" if "::" in name and not how else "*"
    types = ", ".join(re.findall(r'"([^"]*)"', arguments))
    checks.append(f"{result} ({pointer}check{len(checks)})({types}) = &{name};")
assert len(checks) > 30
subprocess.run([*compile_program, "-fsyntax-only"], input="\n".join(checks), text=True, check=True)

readme = root.joinpath("README.md").read_text(encoding="utf-8")
program = re.search(r"^```cpp\n(.*?)^```", readme, re.MULTILINE | re.DOTALL)[1]
promised = re.search(r"fwrite.*// (.*), in GBK$", program, re.MULTILINE)[1]
with tempfile.TemporaryDirectory() as work:
    link = ["-xnone", *libraries, *(f"-Wl,-rpath,{pathlib.Path(so).parent}" for so in libraries)]
    command = [*compile_program, "-std=c++11", *link, "-o", f"{work}/program"]
    subprocess.run(command, input=program, text=True, check=True)
    printed = subprocess.run(f"{work}/program", capture_output=True, check=True).stdout
assert printed.decode("gbk").strip() == promised, printed

for page in [*root.glob("*.md"), *root.glob("*/*.md")]:
    for link in re.findall(r"\]\(([^):#]+)[#)]", page.read_text(encoding="utf-8")):
        assert page.parent.joinpath(link).exists(), f"{page}: {link}"
