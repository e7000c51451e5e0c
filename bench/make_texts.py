#!/usr/bin/env python3
"""Makes the texts to measure with from Debian packages, which it fetches and unpacks but does not
install: make_texts.py FOLDER writes prose and pages for zh-tw and zh-cn there, as UTF-8.

Pages are HTML as it is. Prose is the clauses of manuals, help and manual pages that are mostly
ideographs, each of them once and in random order: a processor learns a text that it has seen
before, and then shows a speed that no new text will have.
"""

import gzip
import html
import pathlib
import random
import re
import subprocess
import sys
import tempfile

PACKAGES = ["debian-reference-zh-tw", "debian-reference-zh-cn", "libreoffice-help-zh-tw",
            "libreoffice-help-zh-cn", "manpages-zh"]
PAGE_CHARACTERS = 50000
SHORTEST_CLAUSE = 6
STOPS = re.compile("(?<=[。，；：、！？\n])")


def pages(root, script):
    return [path.read_text("utf-8")[:PAGE_CHARACTERS] for path in
            sorted(root.glob(f"usr/share/debian-reference/*.{script}.html"))]


def without_tags(page):
    page = re.sub(r"</(p|h\d|li|td|div)>", "\n", page)
    return html.unescape(re.sub(r"<script.*?</script>|<[^>]*>", "", page, flags=re.DOTALL))


def without_requests(manual):
    manual = re.sub(r"^[.'] *\w* ?|\\f(\(..|.)|\\[&^|]|^.*\\\".*", "", manual, flags=re.MULTILINE)
    return manual.replace(r"\-", "-").replace(r"\e", "\\")


def documents(root, script):
    language, _, region = script.partition("-")
    locale = f"{language}-{region.upper()}"
    pages_of_help = [*root.glob(f"usr/share/debian-reference/*.{script}.html"),
                     *root.glob(f"usr/share/libreoffice/help/{locale}/**/*.html")]
    for path in sorted(pages_of_help):
        yield without_tags(path.read_text("utf-8"))
    for path in sorted(root.glob(f"usr/share/man/{locale.replace('-', '_')}/*/*.gz")):
        yield without_requests(gzip.decompress(path.read_bytes()).decode("utf-8", "ignore"))


def is_prose(clause):
    ascii_characters = sum(c.isascii() for c in clause)
    return len(clause) >= SHORTEST_CLAUSE and 3 * ascii_characters < len(clause)


def prose(root, script):
    found = {re.sub(r"[ \t]+", " ", clause).strip(" "): None
             for document in documents(root, script) for clause in STOPS.split(document)}
    clauses = list(filter(is_prose, found))
    random.Random(1).shuffle(clauses)
    return clauses


def unpack(root):
    with tempfile.TemporaryDirectory() as work:
        # The folder is closed to the user that apt would download as.
        subprocess.run(["apt-get", "-qq", "-o", "APT::Sandbox::User=root", "download", *PACKAGES],
                       cwd=work, check=True)
        for package in pathlib.Path(work).glob("*.deb"):
            subprocess.run(["dpkg-deb", "-x", package, root], check=True)


def main(folder):
    folder = pathlib.Path(folder)
    folder.mkdir(parents=True, exist_ok=True)
    with tempfile.TemporaryDirectory() as work:
        root = pathlib.Path(work)
        unpack(root)
        for script in ("zh-tw", "zh-cn"):
            for kind, parts in ("prose", prose(root, script)), ("pages", pages(root, script)):
                (folder / f"{kind}.{script}").write_text("".join(parts), "utf-8")


if __name__ == "__main__":
    main(*sys.argv[1:])
