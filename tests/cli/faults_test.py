#!/usr/bin/env python3
"""Every call that touches a file fails once, is interrupted, and the command is killed after it."""

import errno
import os
import re
import shutil
import signal
import subprocess
import unittest

from running import BUILD, IS_SANITIZED, SGBK, Test, main, read, run, tree, write

SHIM = os.path.join(BUILD, "tests", "cli", "libfaults.so")
PAGES = {name: b"%s\n\xc5\xe9\x81\x41 \xa4\xa4\n" % name.encode() for name in ["a", "b", "c"]}
# Command lines; {} stands for the files to convert.
MODES = {
    "replaced": "-i --report=r {}",
    "kept": "-i.bak --report=r {}",
    "written": "-o out --report=r {}",
    "tree": "--output-dir=out/tree --report=r {}",
    "many": "-i.bak --report=r " + " ".join(f"m{i}" for i in range(7)),
}
TO_FAIL = {  # after which error, and whether the disk stays full
    errno.EACCES: ("", r"open|mkostemp|link|rename|mkdir|fchmod|fchown"),
    errno.EIO: ("", r"read|fsync|syncfs|close|renameat2"),
    errno.ENOSPC: ("+", r"write|mkostemp|link|mkdir|fsync|syncfs|close"),
}
CAUGHT = [signal.SIGTERM, signal.SIGXFSZ, signal.SIGPIPE, signal.SIGRTMAX]
# Owners cannot always be kept, backups can be renamed, and inputs need no success in closing.
CALLS_TO_DO_WITHOUT = {"fchown", "link", "close"}


@unittest.skipIf(IS_SANITIZED, "the sanitizer has to be loaded first")
class Faults(Test):
    def begin(self, mode):
        """Lays out the files as they are before the command runs."""
        for name in os.listdir("."):
            shutil.rmtree(name) if os.path.isdir(name) else os.unlink(name)
        files = dict(PAGES, r=b"old report\n")
        if mode == "many":
            files.update({f"m{i}": b"%d\xc5\xe9\n" % i for i in range(7)})
        elif mode == "written":
            files["out"] = b"old output\n"
        for name, text in files.items():
            write(name, text)
        if mode == "tree":
            os.makedirs("out/tree")
            write("out/tree/b", b"old output\n")

    def strike(self, mode, fault, **more):
        self.begin(mode)
        environment = {**os.environ, "LD_PRELOAD": SHIM, "FAULT": fault, **more}
        return run("-f", "big5", *MODES[mode].format("a b c").split(), env=environment)

    def calls(self, mode):
        log = os.path.abspath("log")
        self.addCleanup(lambda: os.path.exists(log) and os.unlink(log))
        self.strike(mode, "0:0:0", FAULT_LOG=log)
        calls = read(log).decode().split()
        os.unlink(log)
        return calls

    def check(self, mode, before, after, done):
        """That every file is old or new; returns how many are old."""
        status, _, message = done
        found = tree()
        temporary = {name for name in found if ".sgbk-" in name}
        if status != -signal.SIGKILL:
            self.assertFalse(temporary)
        # The report tells of what could be read.
        rows = found["r"].splitlines(True)
        if status != 0 and found["r"] != before["r"]:
            self.assertLessEqual(set(rows), set(after["r"].splitlines(True)))
            found["r"] = after["r"]
        for name in {*before, *after, *found} - temporary:
            self.assertIn(found.get(name), [before.get(name), after.get(name)], name)
            # A new file has its backup, and no other does unless it could not be taken back.
            if f"{name}.bak" in after:
                is_new, is_kept = found[name] == after[name], f"{name}.bak" in found
                self.assertTrue(is_kept or not is_new)
                self.assertTrue(is_new or not is_kept or status == -signal.SIGKILL)
        old = [name for name in after if found.get(name) != after[name]]
        if status == 0:
            self.assertFalse(old)
        else:
            self.assertTrue(message or status < 0)
        return old

    def test_every_call(self):
        for mode in MODES:
            calls = self.calls(mode)
            self.assertGreater(len(calls), 25)
            after = tree()
            self.begin(mode)
            before = tree()

            def struck(fault):
                """How it ends, and the files that are old then."""
                done = self.strike(mode, fault)
                return done[0], self.check(mode, before, after, done)

            self.assertEqual(struck("short"), (0, []))
            for at, call in enumerate(calls, 1):
                for number in [signal.SIGKILL, CAUGHT[at % len(CAUGHT)]]:
                    with self.subTest(mode=mode, at=at, call=call, signal=number):
                        self.assertEqual(struck(f"{at}:{number}:0")[0], -number)
                for error, (goes_on, pattern) in TO_FAIL.items():
                    if not re.fullmatch(pattern, call):
                        continue
                    with self.subTest(mode=mode, at=at, call=call, error=error):
                        status, old = struck(f"{at}:0:{error}:{goes_on}")
                        if call not in CALLS_TO_DO_WITHOUT:
                            self.assertEqual(status, 3)
                        # What fails once spoils one file, unless it is the first call, for the
                        # report, or many wait for it.
                        if not goes_on and at != 1 and mode != "many":
                            spoilt = [name for name in old if not name.endswith(".bak")]
                            self.assertLessEqual(len(spoilt), 1)

    def test_many_are_brought_to_the_disk_at_once(self):
        self.assertLess(sum("sync" in call for call in self.calls("many")), 7)

    def test_file_that_somebody_else_makes_meanwhile(self):
        for mode, call, name in [("kept", "link", "a.bak"), ("tree", "renameat2", "out/tree/a")]:
            at = self.calls(mode).index(call)  # the call before it
            self.begin(mode)
            environment = {**os.environ, "LD_PRELOAD": SHIM, "FAULT": f"{at}:{signal.SIGSTOP}:0"}
            words = MODES[mode].format("a b c").split()
            with subprocess.Popen([SGBK, "-qfbig5", *words], env=environment,
                                  stderr=subprocess.DEVNULL) as child:
                os.waitid(os.P_PID, child.pid, os.WSTOPPED)
                write(name, b"theirs\n")
                child.send_signal(signal.SIGCONT)
            self.assertEqual((child.returncode, read("a"), read(name)),
                             (3, PAGES["a"], b"theirs\n"))


if __name__ == "__main__":
    main()
