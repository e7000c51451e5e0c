#!/usr/bin/env python3
"""Times the command beside iconv, uconv and opencc; prints the tables of docs/performance.md.

Usage: compare_commands.py SGBK TEXTS [MEGABYTES]        (200 megabytes an input by default)
TEXTS is the folder that make_texts.py wrote.
"""

import os
import subprocess
import sys
import tempfile

ROUNDS = 5
# What the text is written in: as Python, sgbk, and the peer call it.
ENCODINGS = {"Big5": ("big5", "big5", "BIG5"), "GBK": ("gbk", "gbk", "GBK"), "UTF-8": ("utf-8", "utf-8", "UTF-8"),
             "UTF-16LE": ("utf-16-le", "utf-16le", "UTF-16LE"), "HZ": ("hz", "hz", "HZ")}
ALL_STAGES = ["-EWCP", "--html", "--truncate=1000"]
ROWS = [  # from, to, options
    ("Big5", "GBK", []), ("GBK", "GBK", []), ("Big5", "UTF-8", []), ("UTF-8", "GBK", []),
    ("UTF-16LE", "GBK", []), ("GBK", "Big5", []), ("HZ", "GBK", []), ("Big5", "GBK", ["-W", "-C"]),
    ("Big5", "GBK", ["-P"]), ("Big5", "GBK", ALL_STAGES), ("UTF-8", "UTF-8", []), ("UTF-8", "UTF-8", ["--strict"])]


def run(command):
    """Processor seconds."""
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    usage = os.wait4(process.pid, 0)[2]
    return usage.ru_utime + usage.ru_stime


def measured(*commands):
    """The best of interleaved rounds for each command."""
    return [min(times) for times in zip(*([run(command) for command in commands] for _ in range(ROUNDS)))]


def memory_of(command):
    """The most megabytes held. A child of this program would count what this one holds as its own."""
    done = subprocess.run(["time", "-q", "-f", "%M", *command], stdout=subprocess.DEVNULL,
                          stderr=subprocess.PIPE, check=False)
    return float(done.stderr.split(b"\n")[-2]) / 1000


def write(path, text, encoding, size):
    lines = (line.encode(encoding, "ignore") for line in text.splitlines(True))
    data = b"".join(lines)  # by line, as HZ wants it
    with open(path, "wb") as file:
        for _ in range(-(-size // len(data))):
            file.write(data)


def peer_of(source, target, path):
    if source == "HZ":
        return ["uconv", "--callback", "skip", "-f", "HZ", "-t", "gbk", path]
    return ["iconv", "-c", "-f", ENCODINGS[source][2], "-t", ENCODINGS[target][2], path]


def main(sgbk, texts, megabytes="200"):
    size = int(megabytes) * 1000000
    text = {name: open(os.path.join(texts, name), encoding="utf-8").read()
            for name in ("pages.zh-tw", "prose.zh-tw", "pages.zh-cn", "prose.zh-cn")}
    print("| from, to | options | prose: `sgbk`, peer, ratio | pages: `sgbk`, peer, ratio |\n|---|---|---|---|")
    most = 0
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, "text")
        for source, target, options in ROWS:
            cells = []
            for kind in ("prose", "pages"):
                python, name, _ = ENCODINGS[source]
                script = "zh-cn" if python in ("gbk", "hz") else "zh-tw"
                write(path, text[f"{kind}.{script}"], python, size)
                command = [sgbk, "-q", "-f", name, "-t", ENCODINGS[target][1], *options, path]
                ours, peer = measured(command, peer_of(source, target, path))
                most = max(most, memory_of(command))
                cells.append(f"{ours:.3f}, {peer:.3f}, {peer / ours:.1f}")
            print(f"| {source}, {target} | {' '.join(options)} |", " | ".join(cells), "|", flush=True)
        print(f"\nMemory held: {most:.1f} MB\n")
        write(path, text["prose.zh-tw"], "utf-8", size // 50)
        for command in [["uconv", "-x", "Traditional-Simplified"], ["opencc", "-c", "tw2s", "-i"]]:
            [seconds] = measured([*command, path])
            print(f"`{' '.join(command[:3])}`: {seconds:.1f} s for {size / 50e6:.1f} MB of prose")


if __name__ == "__main__":
    main(*sys.argv[1:])
