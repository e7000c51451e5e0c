#!/usr/bin/env python3
"""Damaged text: just what is malformed is told so, and no ASCII is lost with it or made of it."""

import itertools
import random
import re

from running import Test, main, read, run

# What stands at the beginning of a text: a character, else what is malformed at once.
THREE = rb"(?:\xe0[\xa0-\xbf]|[\xe1-\xec\xee\xef][\x80-\xbf]|\xed[\x80-\x9f])"
FOUR = rb"(?:\xf0[\x90-\xbf]|[\xf1-\xf3][\x80-\xbf]|\xf4[\x80-\x8f])"
STRAY = rb"|([\x81-\xfe][\x80-\xff]|.)"
SHAPES = {
    "big5": rb"[\0-\x7f]|[\x81-\xfe][\x40-\x7e\xa1-\xfe]" + STRAY,
    "gbk": rb"[\0-\x7f]|[\x81-\xfe](?:[\x40-\x7e\x80-\xfe]|[0-9][\x81-\xfe][0-9])" + STRAY,
    "utf-8": (rb"[\0-\x7f]|[\xc2-\xdf]T|%bT|%bTT|(\xed[\xa0-\xaf]T\xed[\xb0-\xbf]T|%b|%bT?|.)" %
              (THREE, FOUR, THREE, FOUR)).replace(b"T", rb"[\x80-\xbf]"),
    "hz": rb"[\0-\x7d\x7f]|~[{~]|~(?=[\r\n])|(~[!-~]|.)",
    "hz in GB mode": rb"\n|~}|[!-}][!-~]|(~[!-~]|.)",
}
SHAPES = {name: re.compile(shape, re.DOTALL) for name, shape in SHAPES.items()}
TELLING = b"\n0@a~{\x80\x81\xa1\xbf\xc3\xe0\xed\xf0\xf4\xfe"


class Malformed(Test):
    def check(self, source, text):
        shape, at, told, kept = SHAPES[source], 0, [], []
        while at < len(text):
            found = shape.match(text, at)
            if found[1]:
                told.append(b"%d\t%s" % (at, found[1].hex(" ").upper().encode()))
            elif found[0] == b"~~" or len(found[0]) == 1 and (source, found[0]) != ("hz", b"~"):
                kept.append(found[0][:1])
            if source == "hz" and found[0] in [b"\n", b"~{", b"~}"]:
                shape = SHAPES["hz in GB mode" if found[0] == b"~{" else "hz"]
            at = found.end()
        out = run("-q", "-f", source, "-t", "utf-8", "--report=r", data=text)[1]
        rows = re.findall(rb"\t(\d+\t[ \dA-F]+)\tmalformed\t", read("r"))
        ascii_only = re.sub(rb"[\x80-\xff]", b"", out)
        for ours, theirs in [(told, rows), (b"".join(kept), ascii_only)]:
            at = next((i for i, (a, b) in enumerate(zip(ours, theirs)) if a != b), 0)
            self.assertTrue(ours == theirs, (source, ours[at:][:9], theirs[at:][:9]))

    def test_takes_no_ascii_with_it(self):
        chance = random.Random(3)
        pairs = [code.to_bytes(2, "little") for code in range(65536)]
        for source in ["big5", "gbk", "utf-8", "hz"]:
            self.check(source, b"".join(pairs))
            self.check(source, b"A\n".join(pairs))
            self.check(source, b"x".join(map(bytes, itertools.product(TELLING, repeat=4))))
            self.check(source, bytes(chance.choices([*TELLING * 16, *range(256)], k=1 << 18)))
            for end in range(1, 8):
                self.check(source, bytes(chance.choices(TELLING, k=end)))
                self.check(source, b"\xed\xa0\x80\xed\xb0\x80"[:end])


if __name__ == "__main__":
    main()
