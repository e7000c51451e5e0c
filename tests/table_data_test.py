#!/usr/bin/env python3
"""The table images against what must hold of them, and against converters that they were not made
from: the C library's iconv for the encodings, ICU for simplified, traditional, compatible forms.

usage: table_data_test.py IMAGES LIBTABLES EMBEDDED_IMAGE KNOWN_DIFFERENCES
"""

import pathlib
import re
import struct
import subprocess
import sys

images, tables, embedded, known_differences = map(pathlib.Path, sys.argv[1:])
failures = []

# Codes are written lead byte first here, as in 0xB0A1.
SPACE, NO_FORM, BIG5_MISSING, BIG5_SPACE = 0xA1A1, 0x3F3F, 0xA1BC, 0xA140
PAIRS = [code for code in range(0x8140, 0xFF00) if 0x40 <= code & 0xFF != 0xFF]
# The library lays its own ASCII over the entries of the other ones.
CODES = [code for code in range(0x10000) if code & 0xFF or code >= 0x8000]


def entries(name):
    return struct.unpack(">65536H", (images / f"{name}.ctb").read_bytes())


def by_code(name):
    units = entries(name)
    return [units[(code & 0xFF) << 8 | code >> 8] for code in range(0x10000)]


big52sgbk, gbkt2s, uc2sgbk = by_code("big52sgbk"), by_code("gbkt2s"), entries("uc2sgbk")


def by(command, lines):
    """What a command makes of each line."""
    result = subprocess.run(command.split(), input=b"\n".join(lines), capture_output=True).stdout
    return result.split(b"\n")


# GB 18030 of 2022 gives these characters four bytes, and their two-byte codes to private use again.
MOVED = str.maketrans("\uE816\uE817\uE818\uE831\uE83B\uE855",
                      "\U00020087\U00020089\U000200CC\U000215D7\U0002298F\U000241FE")


def decoded(encoding):
    """The characters of the pairs; of a pair without one, its trail byte may remain."""
    found = by(f"iconv -c -f {encoding} -t UTF-8", [struct.pack(">H", code) for code in PAIRS])
    characters = (text.decode().translate(MOVED) if text > b"\xC2\x80" else "" for text in found)
    return dict(zip(PAIRS, characters, strict=True))


def from_character(command, accepted):
    found = zip(CHARACTERS, by(command, map(str.encode, CHARACTERS)), strict=True)
    return {c: accepted(text, c) for c, text in found}


def encoded(encoding):
    return from_character(f"iconv -c -f UTF-8 -t {encoding}",
                          lambda text, _: int.from_bytes(text, "big") if len(text) == 2 else 0)


def transliterated(rule):
    """By ICU; what becomes several characters stays."""
    return from_character(f"uconv -f UTF-8 -t UTF-8 -x {rule}",
                          lambda text, c: text.decode() if len(text.decode()) == 1 else c)


CHARACTERS = [chr(c) for c in range(0x20, 0x30000) if not 0xD800 <= c <= 0xDFFF]
simplified = transliterated("Traditional-Simplified")
traditional = transliterated("Simplified-Traditional")
compatible = transliterated("Any-NFKC")
full_width = transliterated("Halfwidth-Fullwidth")

gbk, to_gbk = decoded("GB18030"), encoded("GB18030")
big5, to_big5 = decoded("BIG5-HKSCS"), encoded("BIG5-HKSCS")
to_gbk |= {gbk[code]: code for code in PAIRS if gbk[code] in map(chr, MOVED.values())}
# The codes with a public character, but those that GBK leaves free, and ten without a character.
cells = {code for code in PAIRS if gbk[code] and not "\uE000" <= gbk[code] <= "\uF8FF"}
cells -= {0xA2E3, *range(0xA6D9, 0xA6E0), 0xA6EC, 0xA6ED, 0xA6F3}
cells |= {*range(0xA9F0, 0xA9F5), *range(0xD7FA, 0xD7FF)}


def cell_of(character):
    return to_gbk[character] if to_gbk[character] in cells else 0


def is_common(code):
    return 0xA140 <= code <= 0xC67E or 0xC940 <= code <= 0xF9FE


wrong = {form for form in {*big52sgbk, *gbkt2s, *uc2sgbk} - {NO_FORM}
         if form not in cells or gbkt2s[form] != form}
if wrong or NO_FORM in {*big52sgbk, *gbkt2s}:
    failures.append(f"no simplified forms: {sorted(map(hex, wrong))}")
if embedded.read_bytes() not in tables.read_bytes():
    failures.append("another table of Big5 is embedded")


def shown(code, characters=gbk):
    """A code as the ideograph that it stands for, or as a number."""
    character = characters.get(code, "")
    return character if "\u3400" <= character < "\uE000" else f"{code:04X}"


icu = int(re.search(r"ICU (\d+)", subprocess.check_output(["uconv", "--version"], text=True))[1])


def compare(image, table, codes, expected, shown_index, characters=gbk):
    """What differs from what is expected must be just what is listed."""
    found = {f"{shown_index(code)}={shown(table[code], characters)}"
             for code in codes if table[code] != expected(code)}
    listed = set()
    for line in known_differences.read_text(encoding="utf-8").splitlines():
        if line.startswith(image + "\t"):
            _, _reason, differences, *before = line.split("\t")
            if not before or icu < int(before[0].removeprefix("before ICU ")):
                listed |= set(differences.split())
    for what, entries in ("differs", found - listed), ("does not differ", listed - found):
        if entries:
            failures.append(f"{image} {what} here: {' '.join(sorted(entries))}\n  {known_differences}"
                            " lists what may differ: image, a tab, the reason, a tab, INDEX=ENTRY")


def simplified_cell(code):
    return (cell_of(simplified[gbk[code]]) or code) if code in cells else SPACE


def expected_form(character):
    """The character by the C library and ICU; its simplified form by gbkt2s, which is compared too."""
    if not character or "\uD800" <= character <= "\uF8FF":
        return NO_FORM
    form = compatible[character]
    for candidate in character, full_width[form] if form < "\x7F" else form:
        if cell := cell_of(candidate):
            return gbkt2s[cell]
    return cell_of(simplified[character]) or NO_FORM


def big5_form(code):
    # What is in the other tables must be the same here, character by character.
    c = big5.get(code, "")[:1]
    form = uc2sgbk[ord(c)] if "" < c <= "\uFFFF" else expected_form(c)
    return SPACE if form == NO_FORM else form


def expected_big5(code, traditional_first=False):
    if code not in cells:
        return BIG5_SPACE
    own = to_big5[gbk[code]]
    other = to_big5[traditional[gbk[code]]]
    both = (other, own) if traditional_first and gbkt2s[code] == code else (own, other)
    return next(filter(is_common, both), own or other or BIG5_MISSING)


compare("gbkt2s", gbkt2s, CODES, simplified_cell, shown)
compare("uc2sgbk", uc2sgbk, range(0x80, 0x10000), lambda c: expected_form(chr(c)), "U+{:04X}".format)
compare("big52sgbk", big52sgbk, CODES, big5_form, "{:04X}".format)
own, first = by_code("gbk2big5"), by_code("gbk2big5_traditional_first")
compare("gbk2big5", own, range(0x10000), expected_big5, shown, big5)
# Where both take the character's own code, one list is enough.
known = {code for code in range(0x10000) if first[code] == own[code] != expected_big5(code)}
compare("gbk2big5_traditional_first", first, {*range(0x10000)} - known,
        lambda code: expected_big5(code, True), shown, big5)

sys.exit("\n".join(failures) or 0)
