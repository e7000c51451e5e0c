#!/usr/bin/python3
"""Converts files of any size on a Dask cluster, as one process would:

    convert_corpus.py --source=big5 --output=FOLDER FILE...

A line depends on nothing but itself, so the files are cut into blocks at line ends, and each block
is a task. FOLDER receives 000000.txt, 000001.txt and so on, one for each block, whose concatenation
is the text, and losses.tsv: file, line, offset, bytes and reason of each character that was lost or
replaced. By default two worker processes on this machine do the work; with --scheduler=ADDRESS the
workers of a running cluster, which must see the files under the same names.
"""

import argparse
import os
import pathlib
import socket
import sys

import distributed

import sgbk

PIECE = 1 << 20
MARKER = ".unfinished"


def blocks(path, size):
    """Yields where blocks of about this size begin and end."""
    with open(path, "rb") as file:
        end, last = 0, file.seek(0, os.SEEK_END)
        while end < last:
            begin = end
            file.seek(min(begin + size, last) - 1)
            while (part := file.readline(PIECE)) and not part.endswith(b"\n"):
                pass
            end = file.tell()
            yield begin, end


def convert_block(path, begin, end, output, source, target, options):
    """Converts a part of a file; a task that may be run again, or twice at once."""
    converter = sgbk.Converter(source, target, losses=True, **options)
    unfinished = f"{output}.{socket.gethostname()}.{os.getpid()}{MARKER}"
    with open(path, "rb") as file, open(unfinished, "wb") as text, \
            open(f"{unfinished}.losses", "w", encoding="ascii") as losses:
        file.seek(begin)
        while begin < end:
            data = file.read(min(PIECE, end - begin))
            if not data:
                raise EOFError(f"{path} has become shorter")
            begin += len(data)
            text.write(converter.feed(data) if begin < end else converter.finish(data))
            for loss in converter.losses:
                print(loss.line, loss.offset, loss.bytes.hex(" "), loss.reason, sep="\t", file=losses)
    os.replace(f"{unfinished}.losses", f"{output}.losses")
    os.replace(unfinished, f"{output}.txt")
    return converter.counts


def convert(client, paths, folder, source, target, options, size):
    """Converts files on a cluster and returns the counts of all of them."""
    tasks = [(str(path), begin, end, str(folder / f"{number:06}"))
             for number, (path, begin, end) in enumerate(
                 (path, *block) for path in paths for block in blocks(path, size))]
    futures = [client.submit(convert_block, *task, source, target, options, pure=False)
               for task in tasks]
    distributed.progress(futures, notebook=False)
    counts = client.gather(futures)
    add_up(tasks, counts, folder)
    for left in folder.glob(f"*{MARKER}*"):  # by workers that died
        left.unlink()
    return sgbk.Counts(*map(sum, zip(*counts))) if counts else sgbk.Converter().counts


def add_up(tasks, counts, folder):
    """Makes one account of the blocks' own, with the places in the whole files."""
    with open(folder / "losses.tsv", "w", encoding="utf-8", errors="surrogateescape") as account:
        for (path, begin, _, output), count in zip(tasks, counts):
            if begin == 0:
                lines = 0
            with open(f"{output}.losses", encoding="ascii") as losses:
                for loss in losses:
                    line, offset, rest = loss.split("\t", 2)
                    account.write(f"{path}\t{lines + int(line)}\t{begin + int(offset)}\t{rest}")
            os.unlink(f"{output}.losses")
            lines += count.lines


def option(text):
    name, _, value = text.partition("=")
    if name in ("html", "declare", "strict"):
        raise argparse.ArgumentTypeError(f"{name} is about a file and not about its blocks")
    return name.replace("-", "_"), value or True


def main():
    parser = argparse.ArgumentParser(description="Converts files of any size on a Dask cluster.")
    parser.add_argument("files", metavar="FILE", nargs="+", type=lambda p: pathlib.Path(p).resolve())
    parser.add_argument("--source", required=True, choices=["big5", "gbk", "utf-8", "hz"])
    parser.add_argument("--target", default="gbk")
    parser.add_argument("--option", metavar="NAME[=VALUE]", type=option, action="append", default=[])
    parser.add_argument("--output", metavar="FOLDER", required=True,
                        type=lambda p: pathlib.Path(p).resolve())
    parser.add_argument("--block", metavar="BYTES", type=int, default=1 << 26)
    parser.add_argument("--scheduler", metavar="ADDRESS")
    parser.add_argument("--workers", metavar="N", type=int, default=2)
    given = parser.parse_args()
    options = dict(given.option)
    where = {"address": given.scheduler} if given.scheduler else {
        "n_workers": given.workers, "threads_per_worker": 1, "dashboard_address": None}
    try:
        sgbk.Converter(given.source, given.target, **options)
        given.output.mkdir(parents=True)
        with distributed.Client(**where) as client:
            counts = convert(client, given.files, given.output, given.source, given.target, options,
                             given.block)
    except (LookupError, ValueError, OSError) as error:
        sys.exit(f"convert_corpus: {error}")
    print(f"\n{counts.bytes} bytes, {counts.lines} lines, {counts.characters} characters, "
          f"{counts.lost} lost, {counts.replaced} replaced")


if __name__ == "__main__":
    main()
