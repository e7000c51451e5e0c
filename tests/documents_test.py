#!/usr/bin/env python3
"""What the documents promise: the manuals are clean, know everything that is exported, and have the
prototypes of the headers; the README's programs print what they say; links lead somewhere.

usage: documents_test.py SOURCE_FOLDER COMPILER LIBSGBK LIBTABLES LIBTEXT
"""

import pathlib
import re
import subprocess
import sys
import tempfile

root, compiler, *libraries = pathlib.Path(sys.argv[1]), *sys.argv[2:]
compile_program = [compiler, f"-I{root}/include", "-Wall", "-Wextra", "-Werror", "-x", "c++", "-"]


def checked_manual(name, header, exported):
    """The manual, when it knows all names and the compiler takes the address of each function as
    what the manual says that it is."""
    subprocess.run(["mandoc", "-T", "lint", "-W", "warning", root / "docs" / name], check=True)
    manual = root.joinpath("docs", name).read_text(encoding="utf-8")
    for known in exported:
        assert re.search(rf"\b{known}\b", manual), f"{name} does not know {known}"
    synopsis = manual[manual.index(".Sh SYNOPSIS") : manual.index(".Sh DESCRIPTION")]
    checks = [f"#include <sgbk/{header}>"]
    for how, result, function, arguments in re.findall(
        r"^\.Ft (static |constexpr )?(.*)\n\.F[no] (\S+)((?: .*)?(?:\n\.Fa .*)*)", synopsis, re.MULTILINE
    ):
        pointer = "EncodingConvertor::*" if function.startswith("Encoding") and not how else "*"
        types = ", ".join(re.findall(r'"([^"]*)"', arguments))
        checks.append(f"{result} ({pointer}check{len(checks)})({types}) = &{function};")
    assert len(checks) > len(exported) / 2
    subprocess.run([*compile_program, "-fsyntax-only"], input="\n".join(checks), text=True, check=True)
    return manual


names = root.joinpath("packaging/libsgbk.map").read_text(encoding="utf-8")
checked_manual("sgbk.3", "EncodingConvertor.h", re.findall(r'^ +"?(?:\w+::)?(\w+)[(;]', names, re.MULTILINE))
header = root.joinpath("include/sgbk/text.h").read_text(encoding="utf-8")
manual = checked_manual("sgbk_text.3", "text.hpp", re.findall(r"^SGBK_API.*\b(\w+)\(", header, re.MULTILINE))
program = re.search(r"^\.Bd -literal\n(.*?)^\.Ed", manual, re.MULTILINE | re.DOTALL)[1].replace(r"\e", "\\")
subprocess.run([*compile_program, "-fsyntax-only"], input=program, text=True, check=True)

readme = root.joinpath("README.md").read_text(encoding="utf-8")
programs = re.findall(r"^```cpp\n(.*?)^```", readme, re.MULTILINE | re.DOTALL)
assert len(programs) == 2
with tempfile.TemporaryDirectory() as work:
    link = ["-xnone", *libraries, *(f"-Wl,-rpath,{pathlib.Path(so).parent}" for so in libraries)]
    command = [*compile_program, "-std=c++11", *link, "-o", f"{work}/program"]
    for program in programs:
        promised, encoding = re.search(r";  // (.*), in (\S+)$", program, re.MULTILINE).groups()
        subprocess.run(command, input=program, text=True, check=True)
        printed = subprocess.run(f"{work}/program", capture_output=True, check=True).stdout
        assert printed.decode(encoding).strip() == promised, printed

for page in [*root.glob("*.md"), *root.glob("*/*.md")]:
    for link in re.findall(r"\]\(([^):#]+)[#)]", page.read_text(encoding="utf-8")):
        assert page.parent.joinpath(link).exists(), f"{page}: {link}"
