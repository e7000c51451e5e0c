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


def expect(holds, *message):
    if not holds:
        failures.append(" ".join(f"{part:04X}" if isinstance(part, int) else part for part in message))


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


for name, table in ("big52sgbk", big52sgbk), ("gbkt2s", gbkt2s), ("uc2sgbk", uc2sgbk):
    for index, entry in enumerate(table):
        holds = entry in cells and gbkt2s[entry] == entry
        expect(holds or table is uc2sgbk and entry == NO_FORM, name, index, "is no simplified cell")

# The codes on which all decoders of GBK agree, which are those that the C library's GBK has.
undisputed = {code: c for code, c in decoded("GBK").items() if c and code in cells}
expect(len(undisputed) == 21791, f"{len(undisputed)} undisputed cells")
for code, c in undisputed.items():
    expect(uc2sgbk[ord(c)] == gbkt2s[code], "uc2sgbk and gbkt2s disagree about", code)

own_first = by_code("gbk2big5")
ideographs = [code for code in range(0xA440, 0xF9DD) if big5.get(code) and is_common(code)]
expect(len(ideographs) == 13060, f"{len(ideographs)} ideographs")
for code in ideographs:
    cell = cell_of(big5[code])
    expect(cell and big52sgbk[code] != SPACE and own_first[cell] == code, "Big5 ideograph", code)

expect(embedded.read_bytes() in tables.read_bytes(), "another table of Big5 is embedded")


def shown(code, characters):
    """A code as the ideograph that it stands for, or as a number."""
    character = characters.get(code, "")
    return character if "\u3400" <= character < "\uE000" else f"{code:04X}"


icu = int(re.search(r"ICU (\d+)", subprocess.check_output(["uconv", "--version"], text=True))[1])


def expect_known(image, found):
    listed = []
    for line in known_differences.read_text(encoding="utf-8").splitlines():
        if line.startswith(image + "\t"):
            _, reason, differences, *before = line.split("\t")
            expect(len(reason) > 10, "a difference needs its reason:", line)
            if not before or icu < int(before[0].removeprefix("before ICU ")):
                listed += differences.split()
    expect(len(set(listed)) == len(listed), image, "lists a difference twice")
    form = f"\n  {known_differences} lists what may differ: {image}, a tab, the reason, a tab, INDEX=ENTRY"
    expect(found <= set(listed), image, "differs here:", *sorted(found - set(listed)), form)
    expect(found >= set(listed), image, "does not differ here:", *sorted(set(listed) - found), form)


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


def big5_form(character):
    c = character[:1]
    form = uc2sgbk[ord(c)] if "" < c <= "\uFFFF" else expected_form(c)
    return SPACE if form == NO_FORM else form


def expected_big5(code, traditional_first):
    if code not in cells:
        return BIG5_SPACE
    own = to_big5[gbk[code]]
    other = to_big5[traditional[gbk[code]]]
    both = (other, own) if traditional_first and gbkt2s[code] == code else (own, other)
    return next(filter(is_common, both), own or other or BIG5_MISSING)


expect_known("gbkt2s", {
    f"{shown(code, gbk)}={shown(gbkt2s[code], gbk)}"
    for code in CODES if gbkt2s[code] != simplified_cell(code)
})
expect_known("uc2sgbk", {
    f"U+{c:04X}={shown(uc2sgbk[c], gbk)}"
    for c in range(0x80, 0x10000) if uc2sgbk[c] != expected_form(chr(c))
})
# What is in the other tables must be the same here, character by character.
expect_known("big52sgbk", {
    f"{code:04X}={shown(big52sgbk[code], gbk)}"
    for code in CODES if big52sgbk[code] != big5_form(big5.get(code, ""))
})
for name, first in ("gbk2big5", False), ("gbk2big5_traditional_first", True):
    table = by_code(name)
    expect_known(name, {
        f"{shown(code, gbk)}={shown(table[code], big5)}"
        for code in range(0x10000) if table[code] != expected_big5(code, first)
        and not (first and table[code] == own_first[code] != expected_big5(code, False))
    })

sys.exit("\n".join(failures) or 0)
