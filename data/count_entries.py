#!/usr/bin/env python3
"""Count the entries of the table images by what they are made of: the figures of data/README.md.

    count_entries.py IMAGES
"""

import struct
import sys
from pathlib import Path

MAPPINGS = Path(__file__).parent / "mappings"
SPACE, UNMAPPED, WHITE_SQUARE = 0xA1A1, 0x3F3F, 0xA1BC


def by_code(name):
    """Entries by codes that are written lead byte first, as in 0xB0A1."""
    units = struct.unpack(">65536H", (Path(sys.argv[1]) / f"{name}.ctb").read_bytes())
    return [units[(code & 0xFF) << 8 | code >> 8] for code in range(65536)]


def rows(name):
    lines = (MAPPINGS / name).read_text(encoding="utf-8").splitlines()
    return (line.split("\t") for line in lines if line and not line.startswith("#"))


def mapping(name):
    return {int(code, 16): character for code, character, *_ in rows(name)}


def is_ideograph(character):
    return any(first <= character <= last for first, last in [
        ("\u2E80", "\u2FDF"), ("\u3400", "\u9FFF"), ("\uF900", "\uFAFF"),
        ("\U00020000", "\U0003FFFF")])


def is_of_hong_kong(code):
    return code < 0xA140 or code > 0xF9FE


def show(count, what):
    print(f"{count:7,}  {what}")


characters, big5 = mapping("gbk.tsv"), mapping("big5.tsv")
big5 |= {int(f[1], 16): f[2] for f in rows("choices.tsv") if f[0] == "big5_code"}
gbkt2s, big52sgbk = by_code("gbkt2s"), by_code("big52sgbk")
gbk2big5, traditional_first = by_code("gbk2big5"), by_code("gbk2big5_traditional_first")
uc2sgbk = struct.unpack(">65536H", (Path(sys.argv[1]) / "uc2sgbk.ctb").read_bytes())

cells = [code for code in range(0x8140, 65536) if gbkt2s[code] != SPACE or code == SPACE]
show(len(cells), "cells")
show(sum(code in characters for code in cells), "of them with a character")
show(sum(gbkt2s[code] != code for code in cells), "cells that gbkt2s changes")
show(sum(unit != UNMAPPED for unit in uc2sgbk[0x80:]), "code points from U+0080 on in uc2sgbk")
show(sum(big52sgbk[code] != SPACE or code == 0xA140 for code in big5), "Big5 codes in big52sgbk")
show(len(big5), "Big5 codes")

written = [code for code in cells if code in characters]
own = [code for code in written if big5.get(gbk2big5[code]) == characters[code]]
without = [code for code in written if gbk2big5[code] == WHITE_SQUARE and code not in own]
show(len(own), "cells that gbk2big5 gives their own code")
show(len(written) - len(own) - len(without), "cells that it gives another form")
show(len(without), "cells with a character that it gives the white square")
show(sum(is_ideograph(characters[code]) for code in without), "of them ideographs or parts of one")
show(sum(is_of_hong_kong(gbk2big5[code]) for code in cells), "cells that it gives a Hong Kong code")
show(sum(gbk2big5[code] != traditional_first[code] for code in cells),
     "cells that differ with traditional forms first")
