#!/usr/bin/env python3
"""Times the command beside iconv, uconv and opencc; prints the figures of docs/coming-from-iconv.md.

Usage: compare_commands.py SGBK TEXTS [MEGABYTES]        (200 megabytes an input by default)
TEXTS is the folder that make_texts.py wrote.
"""

import os
import subprocess
import sys
import tempfile

ROUNDS = 5
ENCODINGS = {  # of the text, as Python, iconv and uconv call them
    "Big5": ("big5", "BIG5", "big5"), "UTF-8": ("utf-8", "UTF-8", "utf-8"),
    "GBK": ("gbk", "GBK", "gbk"), "UTF-16LE": ("utf-16-le", "UTF-16LE", None)}


def measured(command):
    """Processor seconds, the best of some rounds, and the most memory held, in megabytes."""
    rounds = []
    for _ in range(ROUNDS):
        # A child of this program would count what this one holds as its own.
        done = subprocess.run(["time", "-q", "-f", "%U %S %M", *command], stdout=subprocess.DEVNULL,
                              stderr=subprocess.PIPE, check=False)
        user, system, kilobytes = map(float, done.stderr.split(b"\n")[-2].split())
        rounds.append((user + system, kilobytes / 1000))
    return min(seconds for seconds, _ in rounds), max(memory for _, memory in rounds)


def write(path, text, encoding, size):
    data = text.encode(encoding, "ignore")
    with open(path, "wb") as file:
        for _ in range(-(-size // len(data))):
            file.write(data)
    return path


def main(sgbk, texts, megabytes="200"):
    size = int(megabytes) * 1000000
    text = {name: open(os.path.join(texts, name), encoding="utf-8").read()
            for name in ("pages.zh-tw", "prose.zh-tw", "prose.zh-cn")}
    print("| input | `sgbk` | `iconv -c` | `uconv --callback skip` |\n|---|---|---|---|")
    most = {}
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, "text")
        for encoding, kind in [("Big5", "pages"), ("Big5", "prose"), ("UTF-8", "pages"),
                               ("UTF-8", "prose"), ("GBK", "prose"), ("UTF-16LE", "prose")]:
            python, iconv, uconv = ENCODINGS[encoding]
            script = "zh-cn" if encoding == "GBK" else "zh-tw"
            write(path, text[f"{kind}.{script}"], python, size)
            commands = [[sgbk, "-q", "-f", python, path],
                        ["iconv", "-c", "-f", iconv, "-t", "GBK", path],
                        uconv and ["uconv", "--callback", "skip", "-f", uconv, "-t", "gbk", path]]
            cells = []
            for command in filter(None, commands):
                seconds, memory = measured(command)
                cells.append(f"{seconds:.2f}")
                most[command[0]] = max(most.get(command[0], 0), memory)
            print(f"| {encoding} {kind} |", " | ".join(cells + [""] * (3 - len(cells))), "|", flush=True)
        print("| resident memory |", " | ".join(f"{m:.1f} MB" for m in most.values()), "|\n")
        write(path, text["prose.zh-tw"], "utf-8", size // 50)
        for command in [["uconv", "-x", "Traditional-Simplified"], ["opencc", "-c", "tw2s", "-i"]]:
            seconds, _ = measured([*command, path])
            print(f"`{' '.join(command[:3])}`: {seconds:.1f} s for {size / 50e6:.1f} MB of prose")


if __name__ == "__main__":
    main(*sys.argv[1:])
