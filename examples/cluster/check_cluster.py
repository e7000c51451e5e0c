"""Converts a corpus on a cluster of which a worker is killed half-way, and compares text and losses
with those of one process:

    check_cluster.py [BYTES]       of the corpus, 60 million by default

The corpus is the pages of Debian's reference manual for Taiwan in Big5, again and again, with some
damage.
"""

import filecmp
import os
import pathlib
import resource
import signal
import subprocess
import sys
import tempfile
import time

HERE = pathlib.Path(__file__).parent
NEEDS = ["python3-distributed", "debian-reference-zh-tw",
         "/usr/share/debian-reference/index.zh-tw.html"]
if missing := subprocess.run([HERE.parent / "needs", *NEEDS], check=False).returncode:
    sys.exit(missing)

import distributed  # noqa: E402
import sgbk  # noqa: E402

BLOCKS = 24


def write_corpus(path, size):
    pages = b"".join(page.read_text("utf-8").encode("big5", "ignore")
                     for page in sorted(pathlib.Path(NEEDS[-1]).parent.glob("*.zh-tw.html")))
    lines = pages.splitlines(keepends=True)
    lines[::1000] = [b"\xff" + line for line in lines[::1000]]
    lines[::1500] = [line.rstrip(b"\n") + b"\xa4\n" for line in lines[::1500]]
    pages = b"".join(lines)
    with open(path, "wb") as file:
        while file.tell() < size:
            file.write(pages)
        return file.tell()


def convert_alone(path, text_path, losses_path):
    converter = sgbk.Converter("big5", "utf-8", losses=True)
    with open(path, "rb") as file, open(text_path, "wb") as text, open(losses_path, "w") as losses:
        while True:
            data = file.read(1 << 20)
            text.write(converter.feed(data) if data else converter.finish())
            for loss in converter.losses:
                losses.write(f"{path}\t{loss.line}\t{loss.offset}\t{loss.bytes.hex(' ')}\t{loss.reason}\n")
            if not data:
                return converter.counts


def kill_half_way(worker, folder):
    while len(list(folder.glob("*.txt"))) < BLOCKS // 3:
        time.sleep(0.001)
    os.kill(worker, signal.SIGKILL)
    assert len(list(folder.glob("*.txt"))) < BLOCKS, "it was at work no longer"


def main(size="60000000"):
    with tempfile.TemporaryDirectory() as work:
        work = pathlib.Path(work)
        corpus, parts = work / "corpus", work / "parts"
        size = write_corpus(corpus, int(size))
        begin = time.monotonic()
        counts = convert_alone(corpus, work / "alone.txt", work / "alone.tsv")
        alone = time.monotonic() - begin
        with distributed.LocalCluster(n_workers=2, threads_per_worker=1,
                                      dashboard_address=None) as cluster, \
                distributed.Client(cluster) as client:
            victim, _ = client.run(os.getpid).values()
            begin = time.monotonic()
            program = subprocess.Popen(
                [sys.executable, HERE / "convert_corpus.py", "--source=big5", "--target=utf-8",
                 f"--scheduler={cluster.scheduler_address}", f"--output={parts}",
                 f"--block={size // BLOCKS}", corpus], stdout=subprocess.PIPE, text=True)
            kill_half_way(victim, parts)
            said = program.communicate()[0].splitlines()[-1]
            on_cluster = time.monotonic() - begin
            memory = client.run(lambda: resource.getrusage(resource.RUSAGE_SELF).ru_maxrss)
            assert victim not in client.run(os.getpid).values()
        assert program.returncode == 0
        with subprocess.Popen(["cat", *sorted(parts.glob("*.txt"))], stdout=subprocess.PIPE) as cat:
            subprocess.run(["cmp", work / "alone.txt"], stdin=cat.stdout, check=True)
        assert filecmp.cmp(work / "alone.tsv", parts / "losses.tsv", shallow=False), "other losses"
        assert not list(parts.glob("*.unfinished*")) and counts.lost > 0
        assert said.startswith(f"{size} bytes, {counts.lines} lines") and f" {counts.lost} lost" in said
        print(said)
        print(f"one process {alone:.1f} s; two workers, one of them killed, {on_cluster:.1f} s, "
              f"at most {max(memory.values()) / 1000:.0f} MB each")


if __name__ == "__main__":
    main(*sys.argv[1:])
