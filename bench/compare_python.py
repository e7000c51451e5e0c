#!/usr/bin/env python3
"""Times the Python package beside what people write without it: Python's own codec, which does not
simplify, and OpenCC behind it. Prints the figures of python/README.md.

Usage: compare_python.py TEXTS [ROUNDS]
TEXTS is the folder that make_texts.py wrote. The package has to be importable.
"""

import ctypes
import ctypes.util
import hashlib
import pathlib
import sys
import threading
import time

import sgbk

CODEC = "big5hkscs"
TITLE = "國語辭典修訂本，二〇二六年版 A".encode(CODEC)
assert len(TITLE) == 30


class OpenCC:
    """By its C interface, in this process, as its Python packages do it."""

    def __init__(self, config):
        self._library = ctypes.CDLL(ctypes.util.find_library("opencc"))
        self._library.opencc_open.restype = ctypes.c_void_p
        self._library.opencc_convert_utf8.restype = ctypes.c_void_p
        self._handle = ctypes.c_void_p(self._library.opencc_open(config.encode()))

    def convert(self, text):
        data = text.encode()
        result = self._library.opencc_convert_utf8(self._handle, data, ctypes.c_size_t(len(data)))
        converted = ctypes.string_at(result).decode()
        self._library.opencc_convert_utf8_free(ctypes.c_void_p(result))
        return converted


def measured(calls, rounds):
    """Processor seconds of each call: the median of some rounds, in which they take turns."""
    seconds = {name: [] for name in calls}
    for _ in range(rounds):
        for name, call in calls.items():
            begin = time.process_time()
            call()
            seconds[name].append(time.process_time() - begin)
    return {name: sorted(times)[rounds // 2] for name, times in seconds.items()}


def texts(folder, rounds):
    opencc = OpenCC("tw2s.json")
    print("| Big5 to `str` | codec alone | codec, OpenCC | `sgbk.decode` | ratios |\n|---|--:|--:|--:|--:|")
    for kind in "prose", "pages":
        data = pathlib.Path(folder, f"{kind}.zh-tw").read_text("utf-8").encode(CODEC, "ignore")
        part = data[:100000]
        fast = measured({"codec": lambda: data.decode(CODEC, "replace"),
                         "sgbk": lambda: sgbk.decode(data, "big5")}, rounds)
        slow = measured({"opencc": lambda: opencc.convert(part.decode(CODEC, "replace")),
                         "sgbk": lambda: sgbk.decode(part, "big5")}, max(rounds // 5, 3))
        codec, ours, both = (1e9 * seconds / size for seconds, size in (
            (fast["codec"], len(data)), (fast["sgbk"], len(data)), (slow["opencc"], len(part))))
        print(f"| {kind}, ns/byte | {codec:.2f} | {both:.0f} | {ours:.2f} "
              f"| {codec / ours:.1f}, {slow['opencc'] / slow['sgbk']:.0f} |")


def titles(rounds):
    def many(call, *arguments, **options):
        def run():
            for _ in range(1000):
                call(*arguments, **options)
        return run

    rows = {"`data.decode`": many(TITLE.decode, CODEC, "replace"),
            "`sgbk.decode`": many(sgbk.decode, TITLE, "big5"),
            "`sgbk.convert`": many(sgbk.convert, TITLE, "big5", "utf-8"),
            "`sgbk.convert`, two options": many(sgbk.convert, TITLE, "big5", "utf-8", entities=True,
                                                half_width=True)}
    print("\n| a title of 30 bytes | µs |\n|---|--:|")
    for name, seconds in measured(rows, 10 * rounds).items():
        print(f"| {name} | {1e3 * seconds:.2f} |")


def threads(folder, rounds):
    data = pathlib.Path(folder, "prose.zh-tw").read_text("utf-8").encode(CODEC, "ignore")

    def together(count, call):
        def work():
            for _ in range(64 // count):
                call()
        crew = [threading.Thread(target=work) for _ in range(count)]
        begin = time.perf_counter()
        for thread in crew:
            thread.start()
        for thread in crew:
            thread.join()
        return time.perf_counter() - begin

    print("\n| threads | 2 | 8 |\n|---|--:|--:|")
    # The last one shares nothing and shows what the machine has to give.
    for name, call in (("sgbk.convert", lambda: sgbk.convert(data, "big5")),
                       ("sgbk.decode", lambda: sgbk.decode(data, "big5")),
                       ("hashlib.sha256", lambda: hashlib.sha256(data))):
        times = {1: [], 2: [], 8: []}
        for _ in range(rounds):
            for count in times:
                times[count].append(together(count, call))
        alone, two, eight = (min(seconds) for seconds in times.values())
        print(f"| `{name}`, times as fast as one | {alone / two:.2f} | {alone / eight:.2f} |")


def main(folder, rounds="15"):
    texts(folder, int(rounds))
    titles(int(rounds))
    threads(folder, int(rounds))


if __name__ == "__main__":
    main(*sys.argv[1:])
