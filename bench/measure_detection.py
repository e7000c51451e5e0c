#!/usr/bin/env python3
"""Measures how often the encoding of a text is found; prints the table of docs/detection.md.

Usage: measure_detection.py [EVERY]        (EVERY 3: every third page)
PYTHONPATH has the package sgbk. The pages are those of the packages of make_texts.py.

A piece is the text of some lines, of which one at least has an ideograph. Pages say nothing about their
encoding, and what an encoding lacks is a character reference. Exits with 1 if too little is found.
"""

import collections
import gzip
import pathlib
import random
import re
import sys
import tempfile

import make_texts
import sgbk

PIECES = {None: 99, 50: 95, 10: 0, 3: 0}  # lines, and the percentage that has to be found
MOST_PIECES = 6  # of a page
TRIES_FOR_ONE_ERROR = 5000
ENCODINGS = [  # as told, of the pages of, codec, mark, as found
    ("Big5", "zh-tw", "big5", b"", "big5"),
    ("GBK, simplified", "zh-cn", "gbk", b"", "gbk"),
    ("GBK, traditional", "zh-tw", "gbk", b"", "gbk"),
    ("HZ", "zh-cn", "hz", b"", "hz"),
    ("UTF-8, traditional", "zh-tw", "utf-8", b"", "utf-8"),
    ("UTF-8, simplified", "zh-cn", "utf-8", b"", "utf-8"),
    ("UTF-16LE with a mark", "zh-tw", "utf-16-le", b"\xff\xfe", "ucs-2le"),
    ("UTF-16BE with a mark", "zh-cn", "utf-16-be", b"\xfe\xff", "ucs-2be"),
    ("UTF-16LE", "zh-cn", "utf-16-le", b"", "ucs-2le"),
    ("UTF-16BE", "zh-tw", "utf-16-be", b"", "ucs-2be"),
]


def pages(root, script):
    locale = script[:2] + script[2:].upper()
    for pattern in (f"debian-reference/*.{script}.[ht]*", f"libreoffice/help/{locale}/**/*.html",
                    f"man/{locale.replace('-', '_')}/*/*.gz"):
        for path in sorted((root / "usr/share").glob(pattern)):
            raw = path.read_bytes()
            text = (gzip.decompress(raw) if path.suffix == ".gz" else raw).decode("utf-8", "ignore")
            yield re.sub(r'(?i)charset="?utf-8', "", text)


def pieces(page, size):
    lines = page.splitlines(keepends=True)
    size = size or len(lines) or 1
    found = ["".join(lines[i:i + size]) for i in range(0, len(lines), size)]
    found = [piece for piece in found if re.search("[\u4e00-\u9fff]", piece)]
    return random.sample(found, min(len(found), MOST_PIECES))


def measured(texts, codec, mark, wanted):
    counts = collections.Counter()
    for text in texts:
        data = mark + text.encode(codec, "xmlcharrefreplace")
        # Where nothing is left but references, all that matters is that it stays as it is.
        if data.isascii() and b"\0" not in data and b"~{" not in data:
            continue
        found = sgbk.detect(data)
        counts["found" if found == wanted else "refused" if found is None else "wrong"] += 1
    return counts


def main(every="1"):
    random.seed(1)
    texts = {}
    with tempfile.TemporaryDirectory() as root:
        make_texts.unpack(root)
        for script in ("zh-tw", "zh-cn"):
            chosen = list(pages(pathlib.Path(root), script))[::int(every)]
            texts[script] = {size: [p for page in chosen for p in pieces(page, size)] for size in PIECES}
    print("| encoding | whole pages | 50 lines | 10 lines | 3 lines | wrong |\n|---|---|---|---|---|---|")
    total = collections.Counter()
    is_enough = True
    for name, script, codec, mark, wanted in ENCODINGS:
        row, wrong = [], 0
        for size, least in PIECES.items():
            counts = measured(texts[script][size], codec, mark, wanted)
            percent = 100 * counts["found"] / max(counts.total(), 1)
            is_enough &= percent >= least
            row.append(f"{percent:.2f} %")
            wrong += counts["wrong"]
            total += counts
        print("|", " | ".join([name, *row, str(wrong)]), "|", flush=True)
    print(f"\n{total.total()} tries, {total['wrong']} wrong")
    sys.exit(not is_enough or total["wrong"] * TRIES_FOR_ONE_ERROR >= total.total())


if __name__ == "__main__":
    main(*sys.argv[1:])
