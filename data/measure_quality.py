#!/usr/bin/env python3
"""Compare the table images with phrase-level conversion on real text.

    measure_quality.py IMAGES --traditional PATH... --simplified PATH...

PATHs are files or folders of UTF-8 text: HTML, XML, plain text, manual pages, .gz of these, .mo
message catalogues. The reference is the command opencc (Debian package opencc). Markup is removed,
equal lines count once, and of their characters only the ideographs. "best" is what the best
conceivable table could reach on the same text: each character's most frequent result.
"""

import argparse
import collections
import gettext
import gzip
import html
import re
import subprocess
from pathlib import Path

IDEOGRAPH = re.compile("[\u3400-\u9fff\uf900-\ufaff\U00020000-\U0003ffff]")


def text_of(path):
    raw = path.read_bytes()
    if path.suffix == ".mo":
        with path.open("rb") as file:
            return "\n".join(v for v in gettext.GNUTranslations(file)._catalog.values()
                             if isinstance(v, str))
    try:
        text = (gzip.decompress(raw) if path.suffix == ".gz" else raw).decode("utf-8")
    except UnicodeDecodeError:
        return ""
    return html.unescape(re.sub(r"<[^>]*>", "\n", text))


def lines(paths):
    files = [f for p in paths for f in (sorted(p.rglob("*")) if p.is_dir() else [p])]
    found = {}
    for file in files:
        if file.is_file() and not file.is_symlink():
            found.update((line.strip(), None) for line in text_of(file).split("\n")
                         if IDEOGRAPH.search(line))
    return list(found)


def opencc(config, source):
    result = subprocess.run(["opencc", "-c", f"{config}.json"], input="\n".join(source),
                            capture_output=True, check=True, encoding="utf-8").stdout
    return result.split("\n")


class Image:
    """An image as a function from one character to another, by way of Python's codecs. None is for
    a character that the input encoding lacks."""

    def __init__(self, path, source, target):
        self.data, self.source, self.target, self.known = path.read_bytes(), source, target, {}

    def __call__(self, c):
        if c not in self.known:
            self.known[c] = self.look_up(c)
        return self.known[c]

    def look_up(self, c):
        unit = c.encode(self.source, "replace")
        if len(unit) != 2:
            return None
        index = 2 * int.from_bytes(unit, "little")
        return self.data[index:index + 2].decode(self.target, "replace")


def report(title, total, values, differences):
    print(f"{title:34}{total:9}" + "".join(f"{100 * v / total:11.4f}" for v in values))
    commonest = sorted(differences.items(), key=lambda item: -item[1])[:16]
    print("    " + " ".join(f"{pair}:{count}" for pair, count in commonest))


def compare(title, image, config, source):
    """One figure, and the commonest differences: character, the table's and the reference's."""
    results = collections.defaultdict(collections.Counter)
    for before, after in zip(source, opencc(config, source)):
        if len(before) == len(after):
            for c, wanted in zip(before, after):
                if IDEOGRAPH.match(c) and image(c) is not None:
                    results[c][wanted] += 1
    total = sum(r.total() for r in results.values())
    same = sum(r[image(c)] for c, r in results.items())
    best = sum(max(r.values()) for r in results.values())
    report(title, total, (same, best), {f"{c}{image(c)}/{w}": n for c, r in results.items()
                                        for w, n in r.items() if image(c) != w})


def main():
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("images", type=Path)
    parser.add_argument("--traditional", type=Path, nargs="*", default=[])
    parser.add_argument("--simplified", type=Path, nargs="*", default=[])
    args = parser.parse_args()

    def image(name, source, target="gb18030"):
        return Image(args.images / f"{name}.ctb", source, target)

    print(f"{'':34}{'ideographs':>9}{'% equal':>10}{'% best':>11}")
    t2s = image("gbkt2s", "gb18030")
    if args.traditional:
        source = lines(args.traditional)
        compare("gbkt2s, against t2s", t2s, "t2s", source)
        compare("uc2sgbk, against t2s", image("uc2sgbk", "utf-16-le"), "t2s", source)
        compare("big52sgbk, against tw2s", image("big52sgbk", "big5"), "tw2s", source)
    if args.simplified:
        source = lines(args.simplified)
        counts = collections.Counter(c for line in source for c in line
                                     if IDEOGRAPH.match(c) and t2s(c))
        changed = {c: n for c, n in counts.items() if t2s(c) != c}
        report("gbkt2s, unchanged", counts.total(), [counts.total() - sum(changed.values())],
               {c + t2s(c): n for c, n in changed.items()})
        for title, name in (("gbk2big5, against s2tw", "gbk2big5"),
                            ("  traditional form first", "gbk2big5_traditional_first")):
            compare(title, image(name, "gb18030", "big5hkscs"), "s2tw", source)


if __name__ == "__main__":
    main()
