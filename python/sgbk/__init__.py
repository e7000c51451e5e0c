"""Chinese text as it is found in the wild, to clean simplified text.

Big5, GBK, GB18030, HZ, UTF-8 and UTF-16 come in; str, or bytes in GBK, Big5 or Unicode, goes out,
simplified character by character:

>>> import sgbk
>>> page = "<p>漢語，ＡＢＣ</p>".encode("big5")
>>> sgbk.decode(page, "big5")
'<p>汉语，ＡＢＣ</p>'
>>> sgbk.decode(page, "big5", half_width=True, fold_case=True)
'<p>汉语,abc</p>'
>>> sgbk.convert(page, "big5", "gbk").decode("gbk")
'<p>汉语，ＡＢＣ</p>'

As with errors="replace", conversion goes on where a character cannot be converted. strict=True makes
it stop there, losses=True reports each of them. A str loses no well-formed character.

Text is anything with the buffer interface: bytes, bytearray, memoryview, mmap. It is not copied,
and other threads run while it is converted.
"""

import io
import re
import threading
from typing import TYPE_CHECKING, Any, Callable, Literal, Optional, Union, overload

from sgbk._engine import ffi as _ffi, lib as _lib
from sgbk._library import (
    OPTIONS, STR, Counts, Engine, Loss, Option, Result, rows_of, text_of)

if TYPE_CHECKING:
    import os
    from typing import BinaryIO

    from _typeshed import ReadableBuffer

__all__ = ["Converter", "Counts", "Lines", "Loss", "Result", "convert", "decode", "detect", "open"]

_MOST_IDLE = 64
# With more output, or losses, an engine has become too large to be kept.
_LONG = 1 << 22
_MANY = 1000
# Engines at rest, by how they were made. One that works is out of here, where no other thread, no
# signal handler and no child of a fork can meet it.
_idle: dict[tuple[Any, ...], list[Engine]] = {}


def _whole(data: "ReadableBuffer", source: str, target: str, losses: bool, options: dict[str, Option],
           take: Callable[[Engine], Any]) -> Any:
    key = (source, target, losses, *options.items())
    try:
        engine = _idle[key].pop()
    except (KeyError, IndexError):
        engine = Engine(source, target, losses, options)
    engine.run(data, True, data)
    taken = take(engine)
    if len(_idle) > _MOST_IDLE:
        _idle.clear()
    if engine.size[0] < _LONG and (not losses or len(taken.losses) < _MANY):
        _idle.setdefault(key, []).append(engine)
    return taken


def decode(data: "ReadableBuffer", source: str = "auto", **options: Option) -> str:
    r"""Returns text of any encoding as a simplified str, as bytes.decode does unsimplified.

    source    the encoding, by any of its names; "auto" finds it from the text
    options   see help(sgbk)

    >>> decode(b"\xba~\xbby", "big5")
    '汉语'
    >>> decode("漢語 &eacute; 😀".encode(), entities=True)
    '汉语 é 😀'
    >>> decode(b"\xba~\xff", "big5", strict=True)
    Traceback (most recent call last):
      ...
    UnicodeDecodeError: 'big5' codec can't decode byte 0xff in position 2: malformed

    Raises LookupError for an unknown encoding, UnicodeError when "auto" cannot tell it, ValueError
    for options that are unknown or exclude one another, UnicodeDecodeError for the first character
    that is lost under strict=True.
    """
    return _whole(data, source, STR, False, options, Engine.text)


@overload
def convert(data: "ReadableBuffer", source: str = ..., target: str = ..., *,
            losses: Literal[False] = ..., **options: Option) -> bytes: ...
@overload
def convert(data: "ReadableBuffer", source: str = ..., target: str = ..., *,
            losses: Literal[True], **options: Option) -> Result: ...
def convert(data: "ReadableBuffer", source: str = "auto", target: str = "gbk", *,
            losses: bool = False, **options: Option) -> Union[bytes, Result]:
    r"""Returns text of any encoding as simplified bytes in another one.

    source    the encoding, by any of its names; "auto" finds it from the text
    target    the encoding of the result
    losses    return a Result: the data, with each character that was lost or replaced
    options   see help(sgbk)

    >>> convert("ＡＢ 漢語".encode(), target="gbk", half_width=True)
    b'AB \xba\xba\xd3\xef'
    >>> result = convert(b"\xba~\n\xff\xbby", "big5", "utf-8", losses=True)
    >>> result.data.decode()
    '汉\n语'
    >>> result.losses
    [Loss(line=2, offset=3, bytes=b'\xff', reason='malformed', code_point=None)]
    >>> result.counts.characters, result.counts.lost
    (4, 1)

    Raises what decode() raises.
    """
    return _whole(data, source, target, losses, options, Engine.result if losses else Engine.data)


class Converter:
    r"""Converts text that comes in pieces, cut anywhere: the output is that of the whole.

    The arguments are those of convert().

    >>> converter = Converter("big5", "utf-8")
    >>> text = converter.feed(b"\xba") + converter.feed(b"~\xbb") + converter.finish(b"y")
    >>> text.decode()
    '汉语'
    >>> converter.counts.characters
    2
    """

    def __init__(self, source: str = "auto", target: str = "gbk", *, losses: bool = False,
                 **options: Option):
        self._engine = Engine(source, target, losses, options)
        self._engine.run(b"", False)
        self._losses: list[Loss] = []
        # Other threads run while the engine works.
        self._lock = threading.Lock()

    def _run(self, data: "ReadableBuffer", last: bool) -> bytes:
        with self._lock:
            self._engine.run(data, last)
            self._losses = self._engine.losses()
            return self._engine.data()

    def feed(self, data: "ReadableBuffer") -> bytes:
        """Returns what is certain of the text so far and was not returned before."""
        return self._run(data, False)

    def finish(self, data: "ReadableBuffer" = b"") -> bytes:
        """Returns the rest, the input ending with data. Then only reset() makes feed() work."""
        return self._run(data, True)

    def reset(self) -> None:
        """Makes the converter ready for another input."""
        with self._lock:
            _lib.sgbk_reset(self._engine.handle)
        self._losses = []

    @property
    def losses(self) -> list[Loss]:
        """The losses found by the last call of feed() or finish(), with losses=True."""
        return self._losses

    @property
    def counts(self) -> Counts:
        """The counts of the input so far."""
        return self._engine.counts()

    @property
    def source(self) -> str:
        """The encoding of the input; "auto" until it has been found."""
        return self._engine.source()


# How many bytes of a file are converted at a time: they and the text stay in the processor's cache.
_PIECE = 1 << 18


class _Converted(io.RawIOBase):
    """The bytes of a file, converted as they are read."""

    def __init__(self, file: "BinaryIO", converter: Converter):
        self._file = file
        self.converter = converter
        self._ready = memoryview(b"")
        self._is_finished = False

    def readable(self) -> bool:
        return True

    def readinto(self, room: Any) -> int:
        while not self._ready and not self._is_finished:
            data = self._file.read(_PIECE)
            self._is_finished = not data
            convert = self.converter.feed if data else self.converter.finish
            self._ready = memoryview(convert(data))
        size = min(len(room), len(self._ready))
        room[:size], self._ready = self._ready[:size], self._ready[size:]
        return size

    def close(self) -> None:
        self._file.close()
        super().close()


class Lines(io.TextIOWrapper):
    """A text file as the built-in open() returns it, read only and simplified."""

    @property
    def counts(self) -> Counts:
        """The counts of what has been read of the file, some of it ahead of the lines."""
        return self.buffer.raw.converter.counts

    @property
    def source(self) -> str:
        """The encoding of the file; "auto" until it has been found."""
        return self.buffer.raw.converter.source


def open(file: "Union[str, bytes, os.PathLike[Any], BinaryIO]", source: str = "auto", *,
         newline: Optional[str] = None, **options: Option) -> Lines:
    r"""Opens a file of any size and any encoding for reading as simplified str.

    file      a path, or a file opened for bytes, such as one of gzip
    source    the encoding, by any of its names; "auto" finds it from the text
    newline   as for the built-in open()
    options   see help(sgbk)

    >>> with open("page.big5.html", "big5", half_width=True) as lines:
    ...     [line for line in lines if "静夜思" in line]
    ['<h2>【一】静夜思  李白(701-762)</h2>\n']
    """
    converter = Converter(source, STR, losses=False, **options)
    binary = file if hasattr(file, "read") else io.open(file, "rb", buffering=0)
    return Lines(io.BufferedReader(_Converted(binary, converter), _PIECE), "utf-16-le",
                 newline=newline)


def detect(data: "ReadableBuffer", *, whole: bool = True) -> Optional[str]:
    """Returns the encoding of a text as "auto" finds it; None when it cannot be told.

    whole     data is all of the text, and not only its beginning

    >>> detect("漢語，繁體字與簡體字的轉換。".encode())
    'utf-8'
    """
    buffer = _ffi.from_buffer(data)
    name = _lib.sgbk_detect(buffer, len(buffer), whole)
    return text_of(name) if name else None


def _manual() -> str:
    """The encodings and options, as the C library tells them."""
    letters = {row.letter.decode(): name for name, row in OPTIONS.items()}

    def in_python(sentence: str) -> str:
        return re.sub(r"-(?:-([a-z-]+)|([A-Z])\b)",
                      lambda m: m[1].replace("-", "_") if m[1] else letters[m[2]], sentence)

    lines = []
    for title, table in ("Sources", _lib.sgbk_sources), ("Targets", _lib.sgbk_targets):
        lines += ["", f"{title}:"]
        lines += [f"    {text_of(row.name):10}{text_of(row.note)}".rstrip()
                  for row in rows_of(table)]
    lines += ["", "Options, all off but simplify:"]
    for name, row in OPTIONS.items():
        value = text_of(row.argument) if row.argument else "True"
        lines.append(f"    {name + '=' + value:18}{in_python(text_of(row.help))}")
    return "\n".join(lines) + "\n"


__doc__ = f"{__doc__ or ''}{_manual()}"
