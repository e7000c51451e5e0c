#!/usr/bin/env python3
"""The real binary: its surroundings, statuses, messages, and promises to other programs."""

import os
import pty
import re
import resource
import signal
import subprocess
import time
import unittest
from subprocess import PIPE

from running import (BUILD, CLEAN, IS_SANITIZED, LOSSY, SGBK, SOURCE, Test, big5, main, read, run,
                     tree, write)

MANUAL = os.path.join(SOURCE, "cli", "sgbk.1")
PAGE = os.path.join(SOURCE, "examples", "page.big5.html")


class Surroundings(Test):
    def test_full_disk(self):
        for words in [["-f", "big5", PAGE, PAGE], ["--help"]]:
            with open("/dev/full", "wb") as full:
                self.assertEqual(run(*words, stdout=full), (3, None, (
                    "sgbk: standard output: write error: No space left on device\n")))

    def test_closed_streams(self):
        script = "".join(f'"$0" -f big5 {words}; echo $?; '
                         for words in ["-o out in 2>&-", "- <&-", "- <.", "in >&-",
                                       "-o /dev/stdout in >&-"])
        done = subprocess.run(["sh", "-c", script, SGBK], capture_output=True, timeout=60)
        self.assertEqual(done.stdout, b"0\n3\n3\n3\n3\n")
        self.assertEqual(done.stderr.decode(), "sgbk: standard input: Bad file descriptor\n"
                         "sgbk: standard input: Is a directory\n"
                         "sgbk: standard output: write error: Bad file descriptor\n"
                         "sgbk: /dev/stdout: cannot be written: Is a directory\n")
        # The messages must not end up in a file that got the number of standard error.
        self.assertEqual(read("out"), CLEAN)

    def test_reader_that_goes_away(self):
        write("big", read(PAGE) * 400)
        for handling, status in [("-", 128 + signal.SIGPIPE), ("''", 3)]:
            script = f'(trap {handling} PIPE; "$0" -f big5 big; echo $? >&2) | head -c 9'
            done = subprocess.run(["sh", "-c", script, SGBK], capture_output=True, timeout=60)
            self.assertEqual(done.stderr.decode(), f"{status}\n")

    def test_short_reads_and_writes(self):
        def prepare():
            os.set_blocking(0, False)
            os.set_blocking(1, False)

        write("big", read(PAGE) * 400)
        whole = big5("big")
        self.assertEqual(big5(data=read("big"), preexec_fn=prepare), whole)
        self.assertEqual(big5("big", preexec_fn=prepare), whole)

    def test_memory_stays_small(self):
        def prepare():
            if not IS_SANITIZED:
                resource.setrlimit(resource.RLIMIT_DATA, (16 << 20, 16 << 20))

        endless = (b"\xc5\xe9" * 2048 + b"a " * 2048) * (64 if IS_SANITIZED else 4096)
        words = "-qEWCP -t big5 --truncate=99999".split()
        self.assertEqual(big5(*words, data=endless, stdout=subprocess.DEVNULL, preexec_fn=prepare),
                         (0, None, ""))


HAS_TERMINALS = os.path.exists("/dev/pts/ptmx")
if not HAS_TERMINALS:
    print("Skipped: what it does on a terminal; needs /dev/pts to be mounted")


@unittest.skipUnless(HAS_TERMINALS, "no /dev/pts")
class Terminal(Test):
    def test_progress(self):
        cases = [("stderr", [], rb"\r[0-9]+ B, [0-9]+ B/s.*\r\x1b\[K$"),
                 ("stderr", ["--progress=never"], b"^$"),
                 ("stdout stderr", [], b"^a\r\na\r\na\r\n$"), ("", [], b"^$")]
        running = []
        for streams, options, _ in cases:
            leader, follower = pty.openpty()
            to = {name: follower if name in streams else PIPE for name in ["stdout", "stderr"]}
            child = subprocess.Popen([SGBK, "-f", "big5", *options], bufsize=0, stdin=PIPE, **to)
            running.append((child, leader, follower))
        for _ in range(3):
            for child, _, _ in running:
                child.stdin.write(b"a\n")
            time.sleep(0.6)  # the first line of progress comes after a second
        for (child, leader, follower), (streams, _, expected) in zip(running, cases):
            out, told = child.communicate()
            self.assertIn(out, [None, b"a\n" * 3])
            self.assertFalse(told)
            os.write(follower, b"|")
            shown = b"".join(iter(lambda: os.read(leader, 1), b"|"))
            self.assertRegex(shown, expected)

    def test_terminal_input_is_announced(self):
        leader, follower = pty.openpty()
        os.write(leader, b"a\n\x04")
        self.assertEqual(big5(stdin=follower), (
            0, b"a\n", "sgbk: reading from the terminal; end with Ctrl-D\n"))


class Account(Test):
    def test_losses_and_statuses(self):
        told = "sgbk: in: %s; first: line 2, byte 4: 81 41\n"
        both = told % "2 of 8 characters lost (1 malformed, 1 undefined)"
        for option, expected in [
                ("-fbig5", (0, CLEAN, both)), ("--quiet", (0, CLEAN, "")),
                ("--fail-on-loss", (1, CLEAN, both)), ("--check", (1, b"", both)),
                ("--strict", (1, b"a\n", told % "1 of 4 characters lost (1 undefined)"))]:
            self.assertEqual(big5(option, "in"), expected)
        self.assertRefused("--strict -o out in", status=1)
        self.assertEqual(big5("--check", "--fail-on-loss", PAGE)[0], 0)
        # What ASCII stands for is no loss.
        text = "a\n©😀".encode()
        self.assertEqual(run("-futf-8", "--check", "-v", data=text[:-4])[::2], (
            0, "sgbk: standard input: utf-8, 3 characters, none lost, 1 replaced by ASCII\n"))
        self.assertEqual(run("-futf-8", "--fail-on-loss", data=text), (
            1, b"a\n(C)", "sgbk: standard input: 1 of 4 characters lost (1 not in the target), 1 "
            "replaced by ASCII; first: line 2, byte 4: F0 9F 98 80 (U+1F600)\n"))

    def test_report(self):
        rows = [b"file\tline\tbyte\tbytes\treason\tcode point\n",
                b"in\t2\t4\t81 41\tundefined\t\n", b"in\t3\t7\t81\tmalformed\t\n"]
        for more, expected in [("-v", rows + rows[1:]), ("--max-reports=1", rows[:2] + rows[1:2])]:
            _, _, message = big5("--report=r", more, "in", "in")
            self.assertEqual(read("r"), b"".join(expected))
            self.assertEqual(message.count("2 of 8 characters lost"), 2)
        self.assertEqual(
            run("-futf-8", "--check", "--report=-", data="😀™".encode())[1],
            rows[0] + b"standard input\t1\t0\tF0 9F 98 80\tnot in the target\tU+1F600\n"
            b"standard input\t1\t4\tE2 84 A2\treplaced\tU+2122\n")

    def test_encoding_is_found_or_refused(self):
        self.assertEqual(run(data="體\n".encode())[:2], (0, b"\xcc\xe5\n"))
        for data in [b"\xff\x81\x80\n", "體\n".encode("utf-32")]:
            status, out, message = run("-o", "out", "in", "-", data=data)
            self.assertEqual((status, out), (3, b""))
            self.assertIn("sgbk: standard input: ", message)
        self.assertEqual(tree(), {"in": LOSSY})

    def test_text_comes_out_as_it_comes_in(self):
        with subprocess.Popen([SGBK], stdin=PIPE, stdout=PIPE, bufsize=0) as child:
            for line in ["plain\n", "第一行的體育新聞，第二行的體育新聞\n", "©\n"]:
                child.stdin.write(line.encode())
                self.assertTrue(child.stdout.readline().endswith(b"\n"))
            child.stdin.close()
            self.assertEqual(child.stdout.read(), b"")

    def test_usage(self):
        for mistake in ["-x", "-f", "-f klingon", "-t hz", "-f big5 --no-simplify",
                        "-i -o x -f big5 y", "--output=", "--report=", "-i -", "-i", "-i in",
                        "--max-reports=-1", "--progress=now", "--explain=\udcff", "--report=-",
                        "--quiet=3", "--f", "--output-dir=x -o y z", "--output-dir=x",
                        "--check -o x", "-i/ -f big5 in", "-i -f big5 --output-dir=x y",
                        "--files-from=- -"]:
            status, out, message = run(*mistake.split(), env={"LC_ALL": "C.UTF-8"})
            self.assertEqual((status, out), (2, b""), mistake)
            self.assertIn("Try 'sgbk --help'", message)
        for mistake, told in [("--html -qx", "unknown option '-x'"),
                              ("--ex=a --report", "--report needs an argument"),
                              ("--re", "'--re' may be one of --report --replace")]:
            self.assertTrue(run(*mistake.split())[2].startswith(f"sgbk: {told}\n"), mistake)
        for words in ["-c -s --silent --from-code=BIG5//TRANSLIT --to-code=GB2312//IGNORE",
                      "--from-c=big5 -t cp936", "--fro=big5"]:
            self.assertEqual(run(*words.split(), data=b"\xc5\xe9"), (0, b"\xcc\xe5", ""))

    def test_what_it_tells_about_itself(self):
        hashes = run("--version")[1].split(b"\n", 1)[1]
        check = subprocess.run(["sha256sum", "-c"], cwd=os.path.join(BUILD, "data", "images"),
                               capture_output=True, input=hashes)
        self.assertEqual((check.returncode, check.stdout.count(b"OK")), (0, 4))
        facts = run("--explain=體著𠀀", env={"LC_ALL": "C.UTF-8"})[1].decode()
        for fact in ["U+9AD4 體\n  unicode -> gbk CCE5 体: simplified form\n",
                     "gbk F377 體 -> big5 C5E9 體: its own code\n",
                     "big5 B5DB -> gbk D7C5 着: choice of this table alone\n",
                     "gbk CCE5 体 -> big5 C5E9 體: with --traditional\n",
                     "U+20000 𠀀\n  unicode -> nothing: no form, lost; kept in"]:
            self.assertIn(fact, facts)
        options = re.findall(r"--([a-z-]+)", run("--help")[1].decode().split("\nExit status")[0])
        self.assertGreater(len(options), 20)
        manual = read(MANUAL).decode()
        self.assertEqual([option for option in options
                          if not re.search(rf"(?m)^\.It .*Fl Fl {option}\b", manual)], [])
        subprocess.run(["mandoc", "-Tlint", "-Wwarning", MANUAL], check=True)

    def test_completion(self):
        scripts = os.path.join(SOURCE, "cli", "completions")
        path = f"{os.path.dirname(SGBK)}:{os.environ['PATH']}"
        words = "source sgbk.bash; COMP_WORDS=(sgbk %s); COMP_CWORD=%d; _sgbk; echo ${COMPREPLY[*]}"
        for typed, at, completed in [("--from = ut", 3, b"utf-8\n"), ("-t gbk-", 2, b"gbk-wide\n"),
                                     ("--en", 1, b"--entities\n"), ("-o x", 2, b"\n")]:
            done = subprocess.run(["bash", "-c", words % (typed, at)], cwd=scripts,
                                  capture_output=True, env={**os.environ, "PATH": path})
            self.assertEqual((done.stdout, done.stderr), (completed, b""))


if __name__ == "__main__":
    main()
