"""Pages of Debian's reference manual for Taiwan, converted to Big5, indexed and searched.

    index_pages.py SEARCH      the program of search.cpp
"""

import pathlib
import re
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent

# What a reader of simplified Chinese types, and what is on the pages.
QUERIES = {"网络": "網絡", "软件包": "軟件包", "档案系统": "檔案系統", "编译器": "編譯器",
           "软体包管理": "軟體包管理", "數據": "數據"}


def main(program=""):
    needs = subprocess.run([HERE.parent / "needs", "libfriso-dev", "libsqlite3-dev", "friso-dict",
                            "debian-reference-zh-tw"], check=False)
    if needs.returncode != 0:
        return needs.returncode
    if not pathlib.Path(program).is_file():
        sys.exit("not built: the packages came after cmake had run, which has to run again")
    with tempfile.TemporaryDirectory() as name:
        return check(program, pathlib.Path(name))


def check(program, folder):
    texts = {}
    listed = subprocess.run(["dpkg", "-L", "debian-reference-zh-tw"], stdout=subprocess.PIPE,
                            check=True, text=True).stdout.split()
    for page in (pathlib.Path(name) for name in sorted(listed) if name.endswith(".zh-tw.html")):
        texts[page.name] = page.read_text("utf-8").encode("big5", "ignore")
        (folder / page.name).write_bytes(texts[page.name])
    search = [program, HERE / "friso.ini"]
    printed = subprocess.run([*search, "index", folder / "db", *(folder / page for page in texts)],
                             capture_output=True, check=True, text=True).stdout
    print(printed, end="")
    before, after = map(float, re.findall(r"([\d.]+) %", printed))
    failed = before > 45 or after < 75

    for query, written in QUERIES.items():
        found = subprocess.run([*search, "find", folder / "db", query], capture_output=True,
                               check=False, text=True).stdout.splitlines()
        paths, titles = zip(*(line.split("\t") for line in found)) if found else ((), ("none",))
        names = {pathlib.Path(path).name for path in paths}
        right = {page for page, text in texts.items() if written.encode("big5") in text}
        print(f"{query}: {len(names & right)} of the {len(right)} pages with {written}, "
              f"{len(names - right)} others; first: {titles[0]}")
        failed = failed or not right or names != right
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
