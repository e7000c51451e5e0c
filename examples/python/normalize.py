"""Text in big5, gbk, utf-8 or hz to simplified, trimmed, lower-case text, printed in UTF-8.

    python3 normalize.py big5 < text
"""

import sys

import sgbk


def lines(units):
    """The lines of double-byte text. A character may contain a byte of the line end."""
    pairs = [units[i:i + 2] for i in range(0, len(units), 2)]
    while pairs:
        end = pairs.index(sgbk.LINE_END) if sgbk.LINE_END in pairs else len(pairs)
        yield b"".join(pairs[:end])
        pairs = pairs[end + 1:]


def main(encoding):
    with sgbk.Converter() as converter:
        units = converter.simplify(sys.stdin.buffer.read(), encoding)
    for line in lines(sgbk.trim(units)):
        text = sgbk.half_width(line, fold_case=True).decode("gbk")
        sys.stdout.buffer.write(text.encode("utf-8") + b"\n")


if __name__ == "__main__":
    main(*sys.argv[1:])
