"""What the C library does for the package: encodings, options, and texts converted by pieces."""

import ctypes
from typing import TYPE_CHECKING, Any, Callable, NamedTuple, Optional, Union

from sgbk._engine import ffi, lib

if TYPE_CHECKING:
    from _typeshed import ReadableBuffer

Option = Union[bool, int, str, None]

STR = "utf-16le"
_UNITS = ffi.typeof("char16_t *")
# Makes a str of code units, each of them a character, ten times as fast as any decoder.
_str_of_units = ctypes.pythonapi.PyUnicode_FromKindAndData
_str_of_units.restype = ctypes.py_object
_str_of_units.argtypes = [ctypes.c_int, ctypes.c_void_p, ctypes.c_ssize_t]
_SHORT = 500
_new_bytes = ctypes.pythonapi.PyBytes_FromStringAndSize
_new_bytes.restype = ctypes.py_object
_new_bytes.argtypes = [ctypes.c_void_p, ctypes.c_ssize_t]
# From here on memory is new to the process, and filling it takes so long that other threads may run.
_LONG = 1 << 16


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
    return bytes(ffi.buffer(loss.bytes, loss.size))


def text_of(c_string: Any) -> str:
    return ffi.string(c_string).decode()


def rows_of(table: Any) -> list[Any]:
    count = ffi.new("size_t *")
    first = table(count)
    return [first[i] for i in range(count[0])]


OPTIONS = {text_of(row.name).replace("-", "_"): row for row in rows_of(lib.sgbk_options)}
_REASONS = [text_of(lib.sgbk_reason_name(reason)) for reason in range(lib.SGBK_REASONS)]


def _c_string(text: str) -> bytes:
    if "\0" in text:
        raise ValueError(f"a NUL in {text!r}")
    return text.encode()


class Engine:
    """A converter of the C library, with what its calls write to."""

    __slots__ = ("handle", "out", "size", "is_one_unit_each")

    def __init__(self, source: str, target: str, losses: bool, options: dict[str, Option]):
        names = _c_string(source), _c_string(target)
        handle = lib.sgbk_open(*names)
        if not handle:
            for given, known, table in ((names[0], lib.sgbk_source_name, lib.sgbk_sources),
                                        (names[1], lib.sgbk_target_name, lib.sgbk_targets)):
                if not known(given):
                    choices = ", ".join(text_of(row.name) for row in rows_of(table))
                    raise LookupError(f"unknown encoding: {given.decode()!r}; known are {choices}")
            raise MemoryError
        self.handle = ffi.gc(handle, lib.sgbk_close)
        self.out, self.size = ffi.new("const char **"), ffi.new("size_t *")
        self.is_one_unit_each = ffi.new("int *") if target == STR else ffi.NULL
        if losses:
            self.check(lib.sgbk_set(self.handle, b"losses", ffi.NULL))
        for name, value in options.items():
            if name not in OPTIONS:
                raise ValueError(f"unknown option: {name!r}; known are {', '.join(OPTIONS)}")
            if value is not None:
                text = _c_string(str(int(value) if isinstance(value, bool) else value))
                self.check(lib.sgbk_set(self.handle, OPTIONS[name].name, text))

    def run(self, data: "ReadableBuffer", last: bool,
            whole: "Optional[ReadableBuffer]" = None) -> None:
        """Converts data, without Python's lock; whole as for check(). Where that is given, a new text
        begins."""
        buffer = ffi.from_buffer(data)
        result = lib.sgbk_step(self.handle, whole is not None, buffer, len(buffer), last, self.out,
                                self.size, self.is_one_unit_each)
        if result:
            self.check(result, whole)

    def check(self, result: int, whole: "Optional[ReadableBuffer]" = None) -> None:
        """Raises what a result stands for; whole is all of the input, where that is at hand."""
        if result == lib.SGBK_OK:
            return
        if result == lib.SGBK_NO_MEMORY:
            raise MemoryError
        sentence = text_of(lib.sgbk_error(self.handle))
        if result == lib.SGBK_UNKNOWN_SOURCE:
            raise UnicodeError(sentence)
        if result != lib.SGBK_LOST:
            raise ValueError(sentence)
        loss = lib.sgbk_count(self.handle).first
        start, reason = loss.offset, _REASONS[loss.reason]
        if whole is None:
            whole, start, reason = _bytes_of(loss), 0, sentence
        raise UnicodeDecodeError(self.source(), whole, start, start + loss.size, reason)

    # What there is after a call of run().

    def data(self) -> bytes:
        size = self.size[0]
        if size < _LONG:
            return ffi.unpack(self.out[0], size)
        data = _new_bytes(None, size)
        to, text = (int(ffi.cast("uintptr_t", p)) for p in (ffi.from_buffer(data), self.out[0]))
        ctypes.memmove(to, text, size)
        return data

    def text(self) -> str:
        units = ffi.cast(_UNITS, self.out[0])
        count = self.size[0] // 2
        if count > _SHORT and self.is_one_unit_each[0]:
            return _str_of_units(2, int(ffi.cast("uintptr_t", units)), count)
        return ffi.unpack(units, count)

    def losses(self) -> list[Loss]:
        count = ffi.new("size_t *")
        first = lib.sgbk_losses(self.handle, count)
        return [Loss(loss.line, loss.offset, _bytes_of(loss), _REASONS[loss.reason],
                     loss.code_point or None)
                for loss in (first[i] for i in range(count[0]))]

    def counts(self) -> Counts:
        counts = lib.sgbk_count(self.handle)
        return Counts(counts.bytes, counts.lines, counts.characters, *counts.reasons)

    def source(self) -> str:
        return text_of(lib.sgbk_source(self.handle))

    def result(self) -> Result:
        return Result(self.data(), self.losses(), self.counts(), self.source())
