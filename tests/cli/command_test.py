#!/usr/bin/env python3
"""The real binary: faults of its surroundings, statuses, messages, and promises to other programs.

Usage: command_test.py BINARY SOURCE_FOLDER BUILD_FOLDER [unittest arguments]
"""

import fcntl
import os
import pty
import random
import re
import resource
import signal
import subprocess
import sys
import tempfile
import time
import unittest

SGBK, SOURCE, BUILD = map(os.path.abspath, sys.argv[1:4])
PAGE = os.path.join(SOURCE, "examples", "page.big5.html")
LOSSY = b"a\n\xc5\xe9\x81\x41\n\x81<\n"  # one undefined, one malformed, in Big5


def run(*arguments, data=b"", **more):
    """Runs the command; returns its status, output and messages."""
    more.setdefault("stdout", subprocess.PIPE)
    if "stdin" not in more:
        more["input"] = data
    done = subprocess.run([SGBK, *arguments], stderr=subprocess.PIPE, timeout=60, **more)
    return done.returncode, done.stdout, done.stderr.decode()


class Test(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        os.chdir(self.folder)
        self.addCleanup(os.chdir, "/")

    def write(self, name, data):
        with open(name, "wb") as file:
            file.write(data)
        return name

    def read(self, name):
        with open(name, "rb") as file:
            return file.read()

    def leftovers(self):
        return [name for name in os.listdir(".") if name.startswith(".sgbk")]


class Faults(Test):
    def test_full_disk(self):
        with open("/dev/full", "wb") as full:
            status, _, message = run("-f", "big5", PAGE, stdout=full)
        self.assertEqual((status, message),
                         (3, "sgbk: standard output: write error: No space left on device\n"))
        self.assertEqual(run("-f", "big5", "-o", "/dev/full", PAGE)[0], 3)
        with open("/dev/full", "wb") as full:
            for word in ["--help", "--version", "--list", "--explain=a"]:
                self.assertEqual(run(word, stdout=full)[0], 3)
        self.assertEqual(run("-f", "big5", "--report=/dev/full", data=LOSSY)[0], 3)

    def test_closed_streams(self):
        def shell(redirection):
            done = subprocess.run(["sh", "-c", f'"$0" -f big5 "$@" {redirection}', SGBK, "in"],
                                  stdin=subprocess.PIPE, capture_output=True, timeout=60)
            return done.returncode, done.stderr.decode()

        self.write("in", LOSSY)
        self.assertEqual(shell(">&-"),
                         (3, "sgbk: standard output: write error: Bad file descriptor\n"))
        self.assertEqual(shell("- <&-")[0], 3)
        self.assertEqual(shell("-o out 2>&-"), (0, ""))
        # The messages must not end up in a file that got the number of standard error.
        self.assertEqual(self.read("out"), run("-f", "big5", "in")[1])

    def test_inputs_that_cannot_be_read(self):
        good = self.write("good", b"\xc5\xe9\n")
        status, out, message = run("-f", "big5", ".", good, "missing", "/proc/self/mem", good)
        self.assertEqual((status, out), (3, b"\xcc\xe5\n" * 2))
        self.assertEqual(message, "sgbk: .: Is a directory\n"
                         "sgbk: missing: No such file or directory\n"
                         "sgbk: /proc/self/mem: Input/output error\n")
        old = self.write("out", b"old")
        self.assertEqual(run("-f", "big5", "-o", old, "missing")[0], 3)
        self.assertEqual(self.read(old), b"old")
        self.assertEqual(run("-f", "big5", "-o", old, "missing", good)[0], 3)
        self.assertEqual(self.read(old), b"\xcc\xe5\n")
        self.assertEqual(run("-f", "big5", "-i", "missing", ".", "/dev/null")[0], 3)

    def test_output_that_is_an_input(self):
        text = b"\xc5\xe9\n" * 100000
        self.write("in", text)
        self.write("other", b"x\n")
        os.symlink("in", "soft")
        os.link("in", "hard")
        for spelling in ["in", "./in", os.path.abspath("in"), "soft", "hard"]:
            for inputs in [["in"], ["other", "soft"]]:
                status, _, message = run("-f", "big5", "-o", spelling, *inputs)
                self.assertEqual(status, 3, spelling)
                self.assertIn("would be destroyed", message)
            self.assertEqual(run("-f", "big5", f"--report={spelling}", "in")[0], 3)
            self.assertEqual(run("-f", "big5", "-i", f"--report={spelling}", "in")[0], 3)
        with open("in", "rb") as data:
            self.assertEqual(run("-f", "big5", "-o", "hard", stdin=data)[0], 3)
        with open("in", "ab") as end:
            self.assertEqual(run("-f", "big5", "other", "in", stdout=end)[0], 3)
        self.assertEqual(run("-f", "big5", "-o", "new", "--report=./new", "in")[0], 2)
        os.symlink("loop", "loop")
        self.assertEqual(run("-f", "big5", "-o", "loop", "in")[0], 3)
        self.assertEqual(self.read("in"), text)
        self.assertEqual(self.leftovers(), [])

    def test_output_to_a_stream_by_name(self):
        self.write("in", LOSSY)
        clean = run("-q", "-f", "big5", "in")[1]
        for name in ["/dev/stdout", "-"]:
            self.assertEqual(run("-q", "-f", "big5", "-o", name, "in")[:2], (0, clean))
        self.assertIn("byte\tbytes", run("-q", "-f", "big5", "--report=/dev/stderr", "in")[2])
        self.write("log", b"old\n")
        with open("log", "ab") as end:
            run("-q", "-f", "big5", "-o", "/dev/stdout", "in", stdout=end)
        self.assertEqual(self.read("log"), b"old\n" + clean)

    def test_output_in_place(self):
        self.write("old", LOSSY)
        os.chmod("old", 0o640)
        os.symlink("old", "soft")
        self.assertEqual(run("-f", "big5", "-i", "--fail-on-loss", "old")[0], 1)
        self.assertEqual(run("-f", "big5", "-i", "--strict", "old")[0], 1)
        self.assertEqual(self.read("old"), LOSSY)
        # Converting once more what is in GBK already would destroy it.
        self.assertEqual(run("-f", "big5", "-i.bak", "soft", "./old")[0], 3)
        self.assertEqual(self.read("old"), b"a\n\xcc\xe5\xa1\xa1\n\xa1\xa1\n")
        self.assertEqual(self.read("soft.bak"), LOSSY)
        self.assertTrue(os.path.islink("soft"))
        self.assertEqual(os.stat("old").st_mode & 0o7777, 0o640)
        run("-f", "big5", "-o", "new", "old", umask=0o027)
        self.assertEqual(os.stat("new").st_mode & 0o7777, 0o640)

    def test_death_in_the_middle(self):
        text = self.read(PAGE) * 400

        def small_files(handling):
            def prepare():
                signal.signal(signal.SIGXFSZ, handling)
                resource.setrlimit(resource.RLIMIT_FSIZE, (500000, 500000))
            return prepare

        for option in ["-i", "-oold"]:
            self.write("old", text)
            self.write("in", text)
            name = "old" if option == "-i" else "in"
            status, _, _ = run("-f", "big5", option, name,
                               preexec_fn=small_files(signal.SIG_DFL), restore_signals=False)
            self.assertEqual(status, -signal.SIGXFSZ)
            self.assertEqual(self.read("old"), text)
            for leftover in self.leftovers():
                os.unlink(leftover)
            status, _, message = run("-f", "big5", option, name,
                                     preexec_fn=small_files(signal.SIG_IGN), restore_signals=False)
            self.assertEqual((status, message), (3, "sgbk: old: write error: File too large\n"))
            self.assertEqual((self.read("old"), self.leftovers()), (text, []))
        # A signal that can be caught leaves nothing behind.
        with subprocess.Popen([SGBK, "-f", "big5", "-o", "old", "--report=r"],
                              stdin=subprocess.PIPE) as child:
            child.stdin.write(text)
            child.stdin.flush()
            child.terminate()
            self.assertEqual(child.wait(10), -signal.SIGTERM)
        self.assertEqual((self.read("old"), self.leftovers()), (text, []))

    def test_reader_that_goes_away(self):
        big = self.write("big", self.read(PAGE) * 400)
        for handling, status in [(signal.SIG_DFL, -signal.SIGPIPE), (signal.SIG_IGN, 3)]:
            with subprocess.Popen([SGBK, "-f", "big5", big], stdout=subprocess.PIPE,
                                  stderr=subprocess.PIPE, restore_signals=False,
                                  preexec_fn=lambda: signal.signal(signal.SIGPIPE, handling)) as child:
                child.stdout.read(10)
                child.stdout.close()
                self.assertEqual(child.stderr.read(), b"")
                self.assertEqual(child.wait(10), status)
        reader, messages = os.pipe()
        os.close(reader)
        child = subprocess.run([SGBK, "-v", "-i", "-f", "big5", big], stderr=messages)
        self.assertEqual((child.returncode, self.leftovers()), (-signal.SIGPIPE, []))

    def test_short_reads_and_writes(self):
        text = self.read(PAGE) * 100
        expected = run("-f", "big5", data=text)[1]
        in_end, feed = os.pipe()
        drain, out_end = os.pipe()
        for end in (in_end, out_end):  # every call may be cut short or refused
            fcntl.fcntl(end, fcntl.F_SETFL, os.O_NONBLOCK)
        child = subprocess.Popen([SGBK, "-f", "big5"], stdin=in_end, stdout=out_end)
        os.close(in_end)
        os.close(out_end)
        if os.fork() == 0:
            for i in range(0, len(text), 997):
                os.write(feed, text[i:i + 997])
            os._exit(0)
        os.close(feed)
        out = b""
        while part := os.read(drain, 700):
            out += part
        self.assertEqual((child.wait(10), out), (0, expected))
        os.close(drain)

    def test_memory_stays_small(self):
        endless = b"\xc5\xe9" * 2048 + b"a " * 2048  # no line feed at all
        for options in [["-f", "big5", "-E", "-W", "-C", "-P", "-t", "big5", "--truncate=99999"],
                        ["-f", "big5", "-t", "utf-8", "--html"], ["-f", "utf-8", "-t", "gbk-wide"]]:
            child = subprocess.Popen([SGBK, "-q", *options], stdin=subprocess.PIPE,
                                     stdout=subprocess.DEVNULL)
            for _ in range(8 << 10):
                child.stdin.write(endless)
            # What the process itself has had at most, not the one that it was forked from.
            with open(f"/proc/{child.pid}/status", encoding="ascii") as state:
                peak = int(re.search(r"VmHWM:\s*(\d+) kB", state.read())[1])
            child.stdin.close()
            self.assertEqual(child.wait(60), 0)
            if "sanitize" not in BUILD and "asan" not in BUILD and "tsan" not in BUILD:
                self.assertLess(peak, 16 << 10, options)


class Terminal(Test):
    def slow(self, *arguments, **streams):
        """Feeds input that takes more than a second; returns what the terminal showed."""
        leader, follower = pty.openpty()
        streams = {name: follower if to == "terminal" else to for name, to in streams.items()}
        child = subprocess.Popen([SGBK, "-f", "big5", *arguments], stdin=subprocess.PIPE, **streams)
        for _ in range(4):
            child.stdin.write(b"a\n")
            child.stdin.flush()
            time.sleep(0.4)
        rest = child.communicate()
        os.write(follower, b"|")
        shown = b""
        while not shown.endswith(b"|"):
            shown += os.read(leader, 10000)
        return shown[:-1], rest

    def test_progress(self):
        shown, _ = self.slow(stdout=subprocess.PIPE, stderr="terminal")
        self.assertRegex(shown, rb"\r[0-9]+ B, [0-9]+ B/s.*\r\x1b\[K$")
        self.assertEqual(self.slow("--progress=never", stdout=subprocess.PIPE, stderr="terminal")[0], b"")
        shown, _ = self.slow(stdout="terminal", stderr="terminal")
        self.assertNotIn(b"B/s", shown)
        self.assertEqual(self.slow(stdout=subprocess.PIPE, stderr=subprocess.PIPE)[1],
                         (b"a\n" * 4, b""))

    def test_terminal_input_is_announced(self):
        leader, follower = pty.openpty()
        os.write(leader, b"a\n\x04")
        status, out, message = run("-f", "big5", stdin=follower)
        self.assertEqual((status, out), (0, b"a\n"))
        self.assertIn("reading from the terminal", message)


class Account(Test):
    def test_losses_and_statuses(self):
        name = self.write("page.b5", LOSSY)
        summary = ("sgbk: page.b5: 2 of 7 characters lost (1 undefined, 1 malformed); "
                   "first: line 2, byte 4: 81 41\n")
        whole = b"a\n\xcc\xe5\xa1\xa1\n\xa1\xa1\n"
        for options, status, out in [([], 0, whole), (["--fail-on-loss"], 1, whole),
                                     (["--check"], 1, b"")]:
            self.assertEqual(run("-f", "big5", *options, name), (status, out, summary))
        self.assertEqual(run("-q", "-f", "big5", name), (0, whole, ""))
        status, out, message = run("-f", "big5", "--strict", name)
        self.assertEqual((status, out), (1, b"a\n"))
        self.assertIn("first: line 2, byte 4", message)
        self.assertEqual(run("-f", "big5", "--strict", "-o", "out", name)[0], 1)
        self.assertFalse(os.path.exists("out"))
        self.assertEqual(run("-f", "big5", "--check", "--fail-on-loss", PAGE)[0], 0)

    def test_report(self):
        name = self.write("a", LOSSY)
        header = b"file\tline\tbyte\tbytes\treason\n"
        rows = b"a\t2\t4\t81 41\tundefined\na\t3\t7\t81 3C\tmalformed\n"
        run("-f", "big5", "--report=r", name, name)
        self.assertEqual(self.read("r"), header + rows * 2)
        _, _, message = run("-f", "big5", "--report=r", "--max-reports=1", name, name)
        self.assertEqual(self.read("r"), header + (rows[:rows.index(b"\n") + 1]) * 2)
        self.assertEqual(message.count("2 of 7 characters lost"), 2)
        odd = self.write("a\tb\n\\c", b"\xff")
        self.assertEqual(run("-f", "big5", "--check", "--report=-", odd)[1],
                         header + b"a\\tb\\n\\\\c\t1\t0\tFF\tmalformed\n")

    def test_encoding_is_found_or_refused(self):
        text = "體\n"
        for data in [text.encode("utf-8"), text.encode("utf-8-sig"), text.encode("utf-16"),
                     b"\xfe\xff" + text.encode("utf-16-be"), b"~{Le~}\n"]:
            self.assertEqual(run(data=data)[:2], (0, b"\xcc\xe5\n"), data)
        self.assertEqual(run("-f", "UTF-16", data=text.encode("utf-16-le"))[1], b"\xcc\xe5\n")
        self.assertEqual(run(data=b"~/path ~{ and ~}\n")[1], b"~/path ~{ and ~}\n")
        status, out, message = run(data=LOSSY)
        self.assertEqual((status, out), (3, b""))
        self.assertIn("as big5 2 of 7", message)
        self.assertEqual(run(data=text.encode("utf-32"))[:2], (3, b""))
        late = b"x" * (2 << 20) + b"\n" + LOSSY
        self.assertEqual(run("-o", "out", data=late)[0], 3)
        self.assertEqual(run("-o", "out", self.write("good", b"a\n"), "-", data=late)[0], 3)
        self.assertFalse(os.path.exists("out"))

    def test_usage(self):
        for mistake in [["--nonsense"], ["-x"], ["-f"], ["-f", "klingon"], ["-t", "hz"],
                        ["-f", "big5", "--no-simplify"], ["-t", "gbk-wide", "-W"],
                        ["-i", "-o", "x", "y"], ["-o", ""], ["--report="], ["-i", "-"],
                        ["-i"], ["--truncate=0"],
                        ["--truncate=9x"], ["--max-reports=-1"], ["--progress=now"],
                        ["--explain=\udcff"]]:
            status, out, message = run(*mistake, env={"LC_ALL": "C.UTF-8"})
            self.assertEqual((status, out), (2, b""), mistake)
            self.assertIn("Try 'sgbk --help'", message)
        for name in ["BIG5", "big-5", "CP950", "Big5-HKSCS:2008"]:
            self.assertEqual(run("-f", name, data=b"\xc5\xe9")[1], b"\xcc\xe5")

    def test_what_it_tells_about_itself(self):
        out = run("--version")[1]
        images = os.path.join(BUILD, "data", "images")
        check = subprocess.run(["sha256sum", "-c"], cwd=images, capture_output=True,
                               input=out[out.index(b"\n") + 1:])
        self.assertEqual((check.returncode, check.stdout.count(b"OK")), (0, 4))
        facts = run("--explain=體著𠀀", env={"LC_ALL": "C.UTF-8"})[1].decode()
        for fact in ["U+9AD4 體\n  unicode -> gbk CCE5 体: simplified form\n",
                     "gbk F377 體 -> big5 C5E9 體: its own code\n",
                     "big5 B5DB -> gbk D7C5 着: choice of this table alone\n",
                     "unicode -> nothing: beyond the table, lost\n"]:
            self.assertIn(fact, facts)
        options = re.findall(r"--([a-z-]+)", run("--help")[1].decode().split("Exit status")[0])
        self.assertGreater(len(options), 20)
        manual = self.read(os.path.join(SOURCE, "cli", "sgbk.1")).decode()
        for option in options:
            self.assertRegex(manual, r"(?m)^\.It .*Fl Fl " + option + r"\b")
        lint = subprocess.run(["mandoc", "-Tlint", os.path.join(SOURCE, "cli", "sgbk.1")],
                              capture_output=True).stdout.decode()
        # Whether the manuals that it refers to are installed is not its matter.
        self.assertEqual([line for line in lint.splitlines() if "referenced manual" not in line], [])

    def test_completion(self):
        scripts = os.path.join(BUILD, "cli", "completions")
        words = "source sgbk.bash; COMP_WORDS=(sgbk %s); COMP_CWORD=%d; _sgbk; echo ${COMPREPLY[*]}"
        for typed, at, completed in [("--from = ut", 3, b"utf-8\n"), ("-t gbk-", 2, b"gbk-wide\n"),
                                     ("--en", 1, b"--entities\n"), ("-o x", 2, b"\n")]:
            done = subprocess.run(["bash", "-c", words % (typed, at)], cwd=scripts, capture_output=True)
            self.assertEqual((done.stdout, done.stderr), (completed, b""))


class Parallel(Test):
    def test_parts_are_the_whole(self):
        text = "".join(f"{i} 第{i}行，體育新聞<b>Ａ</b> &lt; 😀\n" for i in range(5000))
        big5 = text.encode("big5", "replace")
        dice = random.Random(1)
        noise = bytes(dice.choice(b"\n\n a<\x80\xff\xe4\xb8\xad\xc5\xe9\xa1\x81\xf0~{}")
                      for _ in range(100000))
        hz = text.replace("體", "体").encode("hz", "ignore")
        cases = [("big5", big5), ("big5", noise), ("gbk", text.encode("gb18030")), ("gbk", noise),
                 ("utf-8", text.encode()), ("utf-8", noise), ("hz", hz), ("hz", noise),
                 ("ucs-2le", text.encode("utf-16-le"))]
        for source, data in cases:
            for more in [[], ["-EPC", "-t", "big5", "--truncate=30"]]:
                command = [SGBK, "-q", "-f", source, *more]
                ends = ["--recend", r"\n\0"] if source == "ucs-2le" else []
                parts = subprocess.run(["parallel", "--pipe", "--keep-order", "--block", "40k", *ends,
                                        *command], input=data, capture_output=True, timeout=120,
                                       env={**os.environ, "HOME": self.folder})
                self.assertEqual(parts.stderr, b"")
                self.assertEqual(parts.stdout, run(*command[1:], data=data)[1], (source, more))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[4:])
