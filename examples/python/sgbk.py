"""The library from Python, through its exported symbols: no build step, no package.

Double-byte GBK, in which every character takes two bytes, is a bytes object here; on a little-endian
machine an array of units is the same bytes. SGBK_LIBRARY names a library that is not installed.
"""

import ctypes
import os
from ctypes import POINTER, c_bool, c_char_p, c_int, c_size_t, c_uint16, c_void_p

_library = ctypes.CDLL(os.environ.get("SGBK_LIBRARY", "libsgbk.so.1"))

LINE_END = b"\xfd\xa3"


def _function(symbol, result, *arguments):
    function = getattr(_library, symbol)
    function.restype, function.argtypes = result, arguments
    return function


def _member(name, arguments, *types):
    """A member function: C++ passes the object as a hidden first argument."""
    symbol = f"_ZN17EncodingConvertor{len(name)}{name}E{arguments}"
    return _function(symbol, c_int, c_void_p, *types)


_initialize = _function("_ZN17EncodingConvertor18initializeInstanceEPKc", c_int, c_char_p)
_instance = _function("_ZN17EncodingConvertor11getInstanceEv", c_void_p)
_clear = _function("_ZN17EncodingConvertor5clearEv", None)
_sbc2dbc = _function("_Z7sbc2dbcPKciPcib", c_int, c_char_p, c_int, c_char_p, c_int, c_bool)
_trim = _function("_Z9trimgPuncPKtmPt", c_size_t, POINTER(c_uint16), c_size_t, POINTER(c_uint16))

_STREAMS = {
    encoding: _member(name, "PKciPci", c_char_p, c_int, c_char_p, c_int)
    for encoding, name in
    {"big5": "b52sgbk", "gbk": "t2sgbk", "utf-8": "utf82sgbk", "hz": "hz2sgbk"}.items()
}


class Converter:
    """The one converter of the process, as a context manager."""

    def __enter__(self):
        if _initialize(None) != 0:
            raise MemoryError("no memory for the tables")
        self._object = _instance()
        return self

    def __exit__(self, *_):
        _clear()

    def simplify(self, text, encoding):
        """Bytes in big5, gbk, utf-8 or hz as simplified double-byte GBK."""
        room = ctypes.create_string_buffer(2 * len(text) + 1)
        length = _STREAMS[encoding](self._object, text, len(text), room, len(room))
        return room.raw[:length]


def half_width(text, fold_case=False):
    """GBK text with full-width ASCII as ASCII, and blanks and undefined codes as spaces."""
    room = ctypes.create_string_buffer(len(text) + 1)
    length = _sbc2dbc(text, len(text), room, len(room), fold_case)
    return room.raw[:length]


def trim(text):
    """Double-byte GBK without excess blanks, decoration and long runs of punctuation."""
    units = (c_uint16 * (len(text) // 2 + 1)).from_buffer_copy(text + b"\0\0")
    room = type(units)()
    length = _trim(units, len(units), room) - 1
    return bytes(room)[:2 * length]
