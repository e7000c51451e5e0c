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

What cannot be converted does not stop the work, as it does not with errors="replace"; strict=True
stops, and losses=True tells each character that was lost. A str loses no well-formed character.

Text is anything with the buffer interface: bytes, bytearray, memoryview, mmap. It is not copied,
and other threads run while it is converted.
"""

import ctypes
import io
import re
import threading
from typing import TYPE_CHECKING, Any, Callable, Literal, NamedTuple, Optional, Union, overload

from sgbk._engine import ffi as _ffi, lib as _lib

if TYPE_CHECKING:
    import os
    from typing import BinaryIO

    from _typeshed import ReadableBuffer

__all__ = ["Converter", "Counts", "Lines", "Loss", "Result", "convert", "decode", "detect", "open"]

Option = Union[bool, int, str, None]

_STR = "utf-16le"
_UNITS = _ffi.typeof("char16_t *")
# Makes a str of code units, each of them a character, ten times as fast as any decoder.
_str_of_units = ctypes.pythonapi.PyUnicode_FromKindAndData
_str_of_units.restype = ctypes.py_object
_str_of_units.argtypes = [ctypes.c_int, ctypes.c_void_p, ctypes.c_ssize_t]
_SHORT = 500
# A piece of text and what becomes of it stay in the processor's cache, and an engine's buffers small.
_PIECE = 1 << 18
_MOST_IDLE = 64


class Loss(NamedTuple):
    """A character that was lost, or replaced by ASCII that stands for it, such as (C)."""

    line: int
    offset: int
    bytes: bytes
    reason: str
    code_point: Optional[int]


Loss.line.__doc__ = "The line of the input, from 1."
Loss.offset.__doc__ = "Where it begins in the input, in bytes from 0."
Loss.bytes.__doc__ = "Its bytes in the input."
Loss.reason.__doc__ = '"malformed", "undefined", "not in the target" or "replaced".'
Loss.code_point.__doc__ = "None unless the input is Unicode, or it was a character reference."


class Counts(NamedTuple):
    """How much an input was, and how many of its characters were lost or replaced, by reason."""

    bytes: int
    lines: int
    characters: int
    malformed: int
    undefined: int
    not_in_target: int
    replaced: int

    @property
    def lost(self) -> int:
        """The characters that did not arrive; those that were replaced are not among them."""
        return self.malformed + self.undefined + self.not_in_target


class Result(NamedTuple):
    """What convert() returns with losses=True."""

    data: bytes
    losses: list[Loss]
    counts: Counts
    source: str


Result.source.__doc__ = 'The encoding of the input, as "auto" found it.'


def _bytes_of(loss: Any) -> bytes:
    return bytes(_ffi.buffer(loss.bytes, loss.size))


def _text(c_string: Any) -> str:
    return _ffi.string(c_string).decode()


def _rows(table: Any) -> list[Any]:
    count = _ffi.new("size_t *")
    first = table(count)
    return [first[i] for i in range(count[0])]


_OPTIONS = {_text(row.name).replace("-", "_"): row for row in _rows(_lib.sgbk_options)}
_REASONS = [_text(_lib.sgbk_reason_name(reason)) for reason in range(_lib.SGBK_REASONS)]


def _c_string(text: str) -> bytes:
    if "\0" in text:
        raise ValueError(f"a NUL in {text!r}")
    return text.encode()


class _Engine:
    """A converter of the C library, with what its calls write to."""

    __slots__ = ("handle", "out", "size", "is_one_unit_each")

    def __init__(self, source: str, target: str, losses: bool, options: dict[str, Option]):
        names = _c_string(source), _c_string(target)
        handle = _lib.sgbk_open(*names)
        if not handle:
            for given, known, table in ((names[0], _lib.sgbk_source_name, _lib.sgbk_sources),
                                        (names[1], _lib.sgbk_target_name, _lib.sgbk_targets)):
                if not known(given):
                    choices = ", ".join(_text(row.name) for row in _rows(table))
                    raise LookupError(f"unknown encoding: {given.decode()!r}; known are {choices}")
            raise MemoryError
        self.handle = _ffi.gc(handle, _lib.sgbk_close)
        self.out, self.size = _ffi.new("const char **"), _ffi.new("size_t *")
        self.is_one_unit_each = _ffi.new("int *") if target == _STR else _ffi.NULL
        if losses:
            self.check(_lib.sgbk_set(self.handle, b"losses", _ffi.NULL))
        for name, value in options.items():
            if name not in _OPTIONS:
                raise ValueError(f"unknown option: {name!r}; known are {', '.join(_OPTIONS)}")
            if value is not None:
                text = _c_string(str(int(value) if isinstance(value, bool) else value))
                self.check(_lib.sgbk_set(self.handle, _OPTIONS[name].name, text))

    def run(self, data: "ReadableBuffer", last: bool, take: Callable[["_Engine"], Any],
            whole: "Optional[ReadableBuffer]" = None) -> list[Any]:
        """Converts data, and takes what there is after each piece; whole as for check(). Where that is
        given, a new text begins."""
        buffer = rest = _ffi.from_buffer(data)
        size = len(buffer)
        is_first = whole is not None
        taken = []
        while True:
            piece = size if size < _PIECE else _PIECE
            ends = last and piece == size
            result = _lib.sgbk_step(self.handle, is_first, rest, piece, ends, self.out, self.size,
                                    self.is_one_unit_each)
            if result:
                self.check(result, whole)
            taken.append(take(self))
            if piece == size:
                return taken
            rest, size, is_first = rest + piece, size - piece, False

    def check(self, result: int, whole: "Optional[ReadableBuffer]" = None) -> None:
        """Raises what a result stands for; whole is all of the input, where that is at hand."""
        if result == _lib.SGBK_OK:
            return
        if result == _lib.SGBK_NO_MEMORY:
            raise MemoryError
        sentence = _text(_lib.sgbk_error(self.handle))
        if result == _lib.SGBK_UNKNOWN_SOURCE:
            raise UnicodeError(sentence)
        if result != _lib.SGBK_LOST:
            raise ValueError(sentence)
        loss = _lib.sgbk_count(self.handle).first
        start, reason = loss.offset, _REASONS[loss.reason]
        if whole is None:
            whole, start, reason = _bytes_of(loss), 0, sentence
        raise UnicodeDecodeError(self.source(), whole, start, start + loss.size, reason)

    # What there is after a piece.

    def data(self) -> bytes:
        return _ffi.unpack(self.out[0], self.size[0])

    def text(self) -> str:
        units = _ffi.cast(_UNITS, self.out[0])
        count = self.size[0] // 2
        if count > _SHORT and self.is_one_unit_each[0]:
            return _str_of_units(2, int(_ffi.cast("uintptr_t", units)), count)
        return _ffi.unpack(units, count)

    def losses(self) -> list[Loss]:
        count = _ffi.new("size_t *")
        first = _lib.sgbk_losses(self.handle, count)
        return [Loss(loss.line, loss.offset, _bytes_of(loss), _REASONS[loss.reason],
                     loss.code_point or None)
                for loss in (first[i] for i in range(count[0]))]

    def counts(self) -> Counts:
        counts = _lib.sgbk_count(self.handle)
        return Counts(counts.bytes, counts.lines, counts.characters, *counts.reasons)

    def source(self) -> str:
        return _text(_lib.sgbk_source(self.handle))

    def result(self) -> Result:
        return Result(self.data(), self.losses(), self.counts(), self.source())


# Engines at rest, by how they were made. One that works is out of here, where no other thread, no
# signal handler and no child of a fork can meet it.
_idle: dict[tuple[Any, ...], list[_Engine]] = {}


def _whole(data: "ReadableBuffer", source: str, target: str, losses: bool, options: dict[str, Option],
           take: Callable[[_Engine], Any]) -> list[Any]:
    key = (source, target, losses, *options.items())
    try:
        engine = _idle[key].pop()
    except (KeyError, IndexError):
        engine = _Engine(source, target, losses, options)
    pieces = engine.run(data, True, take, data)
    if len(_idle) > _MOST_IDLE:
        _idle.clear()
    _idle.setdefault(key, []).append(engine)
    return pieces


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
    return "".join(_whole(data, source, _STR, False, options, _Engine.text))


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
    if not losses:
        return b"".join(_whole(data, source, target, False, options, _Engine.data))
    pieces = _whole(data, source, target, True, options, _Engine.result)
    return pieces[-1]._replace(data=b"".join(piece.data for piece in pieces),
                               losses=[loss for piece in pieces for loss in piece.losses])


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
        self._engine = _Engine(source, target, losses, options)
        self._engine.run(b"", False, _Engine.data)
        self._take = _Engine.result if losses else _Engine.data
        self._losses: list[Loss] = []
        # Other threads run while the engine works.
        self._lock = threading.Lock()

    def _run(self, data: "ReadableBuffer", last: bool) -> bytes:
        with self._lock:
            pieces = self._engine.run(data, last, self._take)
        if self._take is _Engine.data:
            return b"".join(pieces)
        self._losses = [loss for piece in pieces for loss in piece.losses]
        return b"".join(piece.data for piece in pieces)

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
    converter = Converter(source, _STR, losses=False, **options)
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
    return _text(name) if name else None


def _manual() -> str:
    """The encodings and options, as the C library tells them."""
    letters = {row.letter.decode(): name for name, row in _OPTIONS.items()}

    def in_python(sentence: str) -> str:
        return re.sub(r"-(?:-([a-z-]+)|([A-Z])\b)",
                      lambda m: m[1].replace("-", "_") if m[1] else letters[m[2]], sentence)

    lines = []
    for title, table in ("Sources", _lib.sgbk_sources), ("Targets", _lib.sgbk_targets):
        lines += ["", f"{title}:"]
        lines += [f"    {_text(row.name):10}{_text(row.note)}".rstrip() for row in _rows(table)]
    lines += ["", "Options, all off but simplify:"]
    for name, row in _OPTIONS.items():
        value = _text(row.argument) if row.argument else "True"
        lines.append(f"    {name + '=' + value:18}{in_python(_text(row.help))}")
    return "\n".join(lines) + "\n"


__doc__ = f"{__doc__ or ''}{_manual()}"
