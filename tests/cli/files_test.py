#!/usr/bin/env python3
"""What the command does with files: nothing is lost, and nothing is guessed wrong in silence."""

import contextlib
import os
import resource
import shutil
import subprocess
import threading
import unittest
from functools import partial

from running import CLEAN, LOSSY, SGBK, Test, big5, main, read, run, tree, write

IS_ROOT = os.geteuid() == 0
NOBODY = 65534


class InPlace(Test):
    def test_backups(self):
        for name in "abc":
            write(name, LOSSY)
        write("b.bak", b"older\n")
        # The backup of b is there already; that of a is a name that was given, too.
        status, _, message = big5("-i.bak", "a", "b", "a.bak", "c", "a")
        self.assertEqual(status, 3)
        self.assertIn("sgbk: b: b.bak exists already\n", message)
        self.assertEqual(tree(), {**dict.fromkeys(["in", "b", "a.bak", "c.bak"], LOSSY),
                                  **dict.fromkeys("ac", CLEAN), "b.bak": b"older\n"})
        os.symlink("nowhere", "b.old")
        self.assertRefused("-i.old b")
        self.assertEqual(big5("-i.new", "--report=./b.new", "b")[0], 3)

    def test_another_encoding_is_noticed(self):
        text = "今天的體育新聞：冠軍賽在首都舉行，觀眾一共三萬人，門票早已售完。\n" * 2
        simplified = "今天的体育新闻：冠军赛在首都举行，观众一共三万人，门票早已售完。\n" * 2
        for codec in ["utf-8", "utf-16", "gbk", "hz"]:
            before = simplified.encode(codec)
            write("in", before)
            self.assertRefused("-i in", "-i.bak -v in", status=1,
                               told="left as it was: it looks like")
            self.assertEqual(big5("-qi", "--force", "in"), (0, b"", ""))
            self.assertEqual(read("in") == before, codec == "hz")
        # Fewer than eight characters cannot be told apart.
        write("in", "第一行\n".encode("utf-8"))
        self.assertEqual(big5("-i", "in")[0], 0)
        for source, codec in [("big5", "big5"), ("utf-16", "utf-16"), ("auto", "utf-8"),
                              ("hz", "hz")]:
            write("in", (simplified if codec == "hz" else text).encode(codec))
            self.assertEqual(run("-f", source, "-i", "in")[::2], (0, ""), (source, codec))
            for again, status in [("auto", 0), ("utf-8", 1)]:
                self.assertEqual(run("-f", again, "-i", "in")[0], status)
                self.assertEqual(read("in"), simplified.encode("gbk"))
        self.assertEqual(run("-i", "in")[0], 2)

    def test_what_the_new_file_takes_over(self):
        os.chmod("in", 0o640)
        os.mkdir("links")
        os.symlink("../in", "links/soft")
        self.assertRefused("-i --fail-on-loss in", "-i --strict in", status=1)
        # Converting once more what is in GBK already would destroy it.
        self.assertEqual(big5("-i.bak", "links/soft", "./in")[0], 3)
        self.assertEqual((read("in"), read("links/soft.bak")), (CLEAN, LOSSY))
        self.assertTrue(os.path.islink("links/soft"))
        big5("-o", "new", "in", umask=0o027)
        for name in ["in", "new"]:
            self.assertEqual(os.stat(name).st_mode & 0o7777, 0o640)
        if not IS_ROOT:
            return
        os.chmod(".", 0o777)
        # The rights of an owner or a group are not lent in the name of another one.
        for user, groups, kept in [(0, [], (12345, 54321, 0o6666)),
                                   (NOBODY, [54321], (NOBODY, 54321, 0o2666)),
                                   (NOBODY, [], (NOBODY, NOBODY, 0o666))]:
            write("in", LOSSY)
            os.chown("in", 12345, 54321)
            os.chmod("in", 0o6666)
            self.assertEqual(big5("-i", "in", user=user, group=user, extra_groups=groups)[0], 0)
            status = os.stat("in")
            self.assertEqual((status.st_uid, status.st_gid, status.st_mode & 0o7777), kept)

    def test_goes_on_after_what_cannot_be_written(self):
        os.mkdir("closed")
        for name, mode in [("closed/in", 0o666), ("kept", 0o444), ("good", 0o666)]:
            write(name, LOSSY)
            os.chmod(name, mode)
        os.chmod("closed", 0o555)
        os.chmod(".", 0o777)
        more = {"user": NOBODY, "group": NOBODY, "extra_groups": []} if IS_ROOT else {}
        names = ["closed/in", "kept", "missing", "good"]
        status, _, message = big5("-qi", "--report=r", *names, **more)
        self.assertEqual((status, read("good"), read("closed/in")), (3, CLEAN, LOSSY))
        self.assertEqual(message, "sgbk: closed/in: cannot make a new file in its folder, closed/: "
                         "Permission denied\nsgbk: kept: cannot be written: Permission denied\n"
                         "sgbk: missing: No such file or directory\n")
        self.assertEqual((read("kept"), read("r").count(b"good\t")), (LOSSY, 2))
        # It does not go on when the report is lost, nor with a file that is being written.
        write("much", LOSSY * 9999)
        write("lossless", b"\xc5\xe9\n")
        self.assertRefused("-qi --force --report=/dev/full much lossless")
        with open("good", "rb+") as both:
            self.assertRefused("-qi good", stdout=both)


class Folder(Test):
    def test_tree(self):
        names = ["a", "./deep/b", "deep/er/../c", "/etc/passwd", "../x", "missing", "a", "deep"]
        os.mkdir("deep")
        for name in ["a", "deep/b", "deep/c", "new\nline", "-"]:
            write(name, LOSSY)
        for end, last in [("\0", "new\nline"), ("\n", "-")]:
            status, out, message = big5("-q", "--files-from=-", "--output-dir=out/new", "in",
                                        data=end.join([*names, last]).encode())
            self.assertEqual((status, out), (3, b""))
            self.assertEqual(message.count("neither absolute paths nor '..'"), 3)
            self.assertIn("sgbk: missing: No such file or directory\n", message)
            with contextlib.chdir("out/new"):
                self.assertEqual(tree(), dict.fromkeys(["in", "a", "deep/b", last], CLEAN))
            shutil.rmtree("out")

    def test_refusals(self):
        os.mkdir("sub")
        write("sub/in", CLEAN)
        self.assertEqual(big5("--output-dir=sub", "in", "sub/in")[0], 3)
        self.assertRefused("--output-dir=. in", told="use -i to replace it")
        self.assertRefused("--output-dir=new --report=new/in in",
                           "--output-dir=in sub/in", "--files-from=missing")
        self.assertEqual(read("sub/in"), CLEAN)
        # An empty list is no list of standard input.
        self.assertEqual(big5("--files-from=-"), (0, b"", ""))


class Outputs(Test):
    def test_that_is_an_input(self):
        os.symlink("in", "soft")
        os.link("in", "hard")
        write("other", b"x\n")
        for same in ["in", "./in", os.path.abspath("in"), "soft", "hard"]:
            self.assertRefused(f"-o {same} in", f"-o {same} other soft", f"--report={same} in",
                               f"-i --report={same} in", told="would be destroyed")
        with open("in", "rb+") as both:
            self.assertRefused("-o hard", stdin=both)
            self.assertRefused("other in", stdout=both)
        self.assertRefused("-o new --report=./new in", status=2)
        os.symlink("loop", "loop")
        self.assertRefused("-o loop in")

    def test_stay_as_they_were(self):
        write("good", b"\xc5\xe9\n")
        write("out", b"old")
        status, out, message = big5(".", "good", "missing", "/proc/self/mem", "good")
        self.assertEqual((status, out), (3, b"\xcc\xe5\n" * 2))
        self.assertEqual(message, "sgbk: .: Is a directory\n"
                         "sgbk: missing: No such file or directory\n"
                         "sgbk: /proc/self/mem: Input/output error\n")
        told = "out: not put in place"
        for inputs in ["missing", "missing good", "good missing"]:
            self.assertRefused(f"-o out {inputs}", told=told)
        self.assertRefused("-o out --strict in", status=1, told=told)
        self.assertRefused("-i missing . /dev/null")

    def test_streams_by_name(self):
        for name in ["/dev/stdout", "-"]:
            self.assertEqual(big5("-q", "-o", name, "in"), (0, CLEAN, ""))
        self.assertIn("byte\tbytes", big5("-q", "--report=/dev/stderr", "in")[2])
        for words in ["--report=-", "--report=/dev/stdout", "--report=- -o -", "--report=/dev/fd/1"]:
            self.assertEqual(big5(*words.split(), "in")[:2], (2, b""))
        said = big5("--report=/dev/stderr", "in", stderr=subprocess.STDOUT)[1]
        self.assertIn(b"same file: /dev/stderr", said)
        self.assertNotIn(CLEAN, said)
        write("log", b"old\n")
        with open("log", "ab") as end:
            self.assertRefused("--report=log in", "--report=/dev/stdout -o log in", status=2,
                               stdout=end)
            self.assertEqual(big5("-q", "--report=/dev/null", "-o", "/dev/null", "in")[0], 0)
            big5("-q", "-o", "/dev/stdout", "in", stdout=end)
            number = end.fileno()
            big5("-q", "-o", f"/dev/fd/{number}", "in", pass_fds=[number])
        self.assertEqual(read("log"), b"old\n" + CLEAN + CLEAN)


class Inputs(Test):
    def test_pipes_are_opened_once(self):
        os.mkfifo("pipe")
        writer = threading.Thread(target=write, args=("pipe", LOSSY))
        writer.start()
        self.assertEqual(big5("-q", "--progress=always", "pipe")[:2], (0, CLEAN))
        writer.join()

    def test_folders_leave_no_descriptors(self):
        prepare = partial(resource.setrlimit, resource.RLIMIT_NOFILE, (20, 20))
        self.assertEqual(big5("-q", *["."] * 40, "in", preexec_fn=prepare)[:2], (3, CLEAN))

    def test_names_do_not_speak_to_the_terminal(self):
        name = "a\x1b[31m\t\n\x7f\u009b\\"
        write(name, LOSSY)
        shown = r"a\x1B[31m\t\n\x7F\xC2\x9B\\"
        _, rows, message = big5("--check", "--report=-", name)
        self.assertTrue(message.startswith(f"sgbk: {shown}: 2 of 8 "), message)
        self.assertEqual(rows.count(shown.encode() + b"\t"), 2)
        self.assertIn(rf"unknown option '--\x1B'", run("--\x1b")[2])


if __name__ == "__main__":
    main()
