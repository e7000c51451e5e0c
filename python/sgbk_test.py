"""The routes of the package beside each other: any cutting, any kind of buffer, any thread."""

import array
import gzip
import io
import itertools
import mmap
import pathlib
import random
import re
import sys
import threading
import time
from concurrent.futures import ThreadPoolExecutor

import pytest

import sgbk

PIECE = sgbk._PIECE


def damaged(size, seed=1):
    """Text in Big5 of at least so many bytes, with rare characters and stray bytes."""
    chance = random.Random(seed)
    units = [*"漢語，學而時習之。ABC <b>\n\n", "\U00020547", "&eacute;"]
    text = b"".join(chance.choice(units).encode("big5hkscs") for _ in range(size))
    for _ in range(size // 100):
        at = chance.randrange(len(text))
        text = text[:at] + chance.choice([b"\xff", b"\x80", b"\xa3\xfe", b"\xfe"]) + text[at:]
    return text + b"\n"


LONG = damaged(PIECE)


def cut(data, seed):
    chance = random.Random(seed)
    while data:
        size = chance.choice([1, 2, 3, 100, PIECE, 2 * PIECE + 1])
        yield data[:size]
        data = data[size:]


def test_a_str_holds_every_character():
    text = "".join(map(chr, [*range(0x80, 0xD800), *range(0xE000, 0xFEFF), *range(0xFF00, 0x110000)]))
    result = sgbk.convert(text.encode(), "utf-8", "utf-8", losses=True)
    assert result.losses == [] and result.counts.characters == len(text)
    decoded = sgbk.decode(text.encode(), "utf-8")
    assert decoded == result.data.decode() and len(decoded) == len(text)


@pytest.mark.parametrize("source", ["big5", "gbk", "utf-8", "ucs-2le", "hz"])
def test_all_routes_give_one_text_and_one_account(source, tmp_path):
    data = bytes(random.Random(2).choices(range(256), k=3000)) + b"\n" + LONG
    whole = sgbk.convert(data, source, "utf-8", losses=True, entities=True)
    assert whole.losses and whole.counts.lost + whole.counts.replaced == len(whole.losses)
    assert whole.counts.bytes == len(data)
    assert sgbk.decode(data, source, entities=True) == whole.data.decode()
    assert sgbk.convert(data, source, "utf-8", entities=True) == whole.data
    for loss in whole.losses:
        assert data[loss.offset:loss.offset + len(loss.bytes)] == loss.bytes
    converter = sgbk.Converter(source, "utf-8", losses=True, entities=True)
    for seed in range(2):
        text, losses = b"", []
        for piece in cut(data, seed):
            text += converter.feed(piece)
            losses += converter.losses
        text += converter.finish()
        assert (text, losses + converter.losses) == (whole.data, whole.losses)
        assert converter.counts == whole.counts
        with pytest.raises(ValueError, match="reset"):
            converter.feed(b"")
        converter.reset()
    tmp_path.joinpath("text").write_bytes(data)
    tmp_path.joinpath("text.gz").write_bytes(gzip.compress(data, 1))
    for file in tmp_path / "text", gzip.open(tmp_path / "text.gz"):
        with sgbk.open(file, source, newline="\n", entities=True) as lines:
            assert list(lines) == list(io.StringIO(whole.data.decode(), newline="\n"))
            assert lines.counts == whole.counts and lines.source == source


def test_every_kind_of_buffer(tmp_path):
    data = LONG[:-1] if len(LONG) % 2 else LONG
    expected = sgbk.decode(data, "big5")
    path = tmp_path / "text"
    path.write_bytes(data)
    with open(path, "rb") as file, mmap.mmap(file.fileno(), 0, access=mmap.ACCESS_READ) as mapped:
        for buffer in bytearray(data), memoryview(data), array.array("H", data), mapped:
            assert sgbk.decode(buffer, "big5") == expected
    assert sgbk.decode(b"") == "" and sgbk.convert(memoryview(b"")) == b""
    for wrong in "text", None, memoryview(data)[::2]:
        with pytest.raises((TypeError, BufferError, ValueError)):
            sgbk.decode(wrong)


@pytest.mark.parametrize("before", [0, 5, 2 * PIECE + 3])
def test_strict_tells_the_place(before, tmp_path):
    data = b"a" * before + b"\xff\n\xba~\xfe"
    for buffer in data, bytearray(data):
        with pytest.raises(UnicodeDecodeError) as caught:
            sgbk.decode(buffer, "BIG-FIVE", strict=True)
        assert caught.value.args == ("big5", data, before, before + 1, "malformed")
    tmp_path.joinpath("text").write_bytes(data)
    with sgbk.open(tmp_path / "text", "big5", strict=True) as lines:
        with pytest.raises(UnicodeDecodeError, match=f"byte {before}: FF is malformed") as caught:
            list(lines)
        assert caught.value.object[caught.value.start:caught.value.end] == b"\xff"
    converter = sgbk.Converter("big5", strict=True)
    converter.feed(data[:before])
    with pytest.raises(UnicodeDecodeError, match=f"byte {before}: FF is malformed"):
        converter.finish(data[before:])
    # What failed leaves nothing behind.
    assert sgbk.decode(b"\xba~", "BIG-FIVE", strict=True) == "汉"


@pytest.mark.parametrize("error, told, names, options", [
    (LookupError, "'big6'.* big5, .*hz", ["big6"], {}),
    (LookupError, "'auto'.* gb18030", ["big5", "auto"], {}),
    (ValueError, "'entitys'.* entities, ", ["big5"], {"entitys": True}),
    (ValueError, "NUL", ["big5"], {"replace": "a\0b"}),
    (ValueError, "^replace", ["big5"], {"replace": "a\nb"}),
    (ValueError, "^truncate", ["big5"], {"truncate": "x"}),
    (ValueError, "^traditional", ["big5"], {"traditional": True})])
def test_what_is_wrong_is_told_with_the_choices(error, told, names, options):
    with pytest.raises(error, match=told):
        sgbk.convert(b"", *names, **options)


def test_options():
    line = "ＡＢ 漢語，漢語，漢語".encode("gbk")
    rows = {"AB 汉语,汉语,汉语": {"half_width": True}, "ＡＢ 漢語，漢語，漢語": {"simplify": False},
            "ＡＢ ...": {"truncate": 10}, "ＡＢ 汉语，汉语，汉语": {"truncate": None, "html": False}}
    for expected, options in rows.items():
        assert sgbk.decode(line, "gbk", **options) == expected
    assert sgbk.decode(b"\xff", "gbk", replace="〓") == "〓"
    assert sgbk.convert("x😀".encode(), "utf-8", "gbk", losses=True).losses == [
        (1, 1, "😀".encode(), "not in the target", ord("😀"))]
    for option in sgbk._library.OPTIONS:
        assert f"\n    {option}=" in sgbk.__doc__


def test_the_encoding_is_found():
    text = "人之初，性本善。性相近，习相远。苟不教，性乃迁。" * 20
    for name in "gbk", "utf-8":
        result = sgbk.convert(text.encode(name), losses=True)
        assert sgbk.detect(text.encode(name)) == result.source == name
    # Without a line end, more may tell more.
    assert sgbk.detect(text.encode(), whole=False) is None
    with pytest.raises(UnicodeError, match="UTF-32"):
        sgbk.decode(b"\xff\xfe\0\0")


def test_the_program_in_the_readme(capsys):
    readme = pathlib.Path(__file__).parent.parent.joinpath("README.md").read_text("utf-8")
    program = re.search("```python\n(.*?)```", readme, re.DOTALL)[1]
    exec(program)
    assert capsys.readouterr().out.splitlines() == re.findall(r"print\(.*# (.*)", program)


def test_threads():
    texts = [damaged(50 * size, seed=size) for size in range(1, 9)]
    expected = [sgbk.convert(text, "big5", "utf-8") for text in texts]
    shared = sgbk.Converter("big5", "utf-8")

    def work(number):
        for _ in range(50):
            assert sgbk.convert(texts[number], "big5", "utf-8") == expected[number]
            shared.feed(LONG)

    with ThreadPoolExecutor(8) as pool:
        list(pool.map(work, range(8)))
    assert shared.counts.lines == 8 * 50 * LONG.count(b"\n")


def test_other_threads_run_while_it_converts():
    ticks, done = itertools.count(), threading.Event()

    def tick():
        while not done.is_set():
            next(ticks)
            time.sleep(0)

    interval = sys.getswitchinterval()
    thread = threading.Thread(target=tick, daemon=True)
    thread.start()
    # From here on a thread runs until it waits, or lets others run.
    sys.setswitchinterval(1000)
    before = next(ticks)
    # On a busy machine the other one may be late.
    has_run = any(sgbk.convert(LONG * 20, "big5") and next(ticks) != before + n for n in range(1, 100))
    sys.setswitchinterval(interval)
    done.set()
    thread.join()
    assert has_run


def test_no_engine_is_kept_that_has_become_large():
    sgbk._idle.clear()
    sgbk.convert(b"\xff" * 5000, "gbk", losses=True)
    sgbk.decode(b"a" * (1 << 22), "gbk")
    assert not sgbk._idle
    sgbk.decode(b"a", "gbk")
    assert sgbk._idle
