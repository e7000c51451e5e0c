#!/usr/bin/env python3
"""Every call that touches a file fails once, is interrupted, and the command is killed at it."""

import os
import re
import shutil
import signal
import unittest

from running import IS_SANITIZED, Test, big5, main, read, tree, write

PAGES = {name: b"%s\n\xc5\xe9\x81\x41 \xa4\xa4\n" % name.encode() for name in ["a", "b"]}
MANY = {f"m{i}": b"%d\xc5\xe9\n" % i for i in range(7)}
# Command lines, and the files that are there beside the old report.
MODES = {
    "replaced": ("-i --report=r a b", PAGES),
    "kept": ("-i.bak --report=r a b", PAGES),
    "written": ("-o out --report=r a b", {**PAGES, "out": b"old\n"}),
    "tree": ("--output-dir=out/tree --report=r a b", {**PAGES, "out/tree/b": b"old\n"}),
    "many": (f"-i.bak --force --report=r {' '.join(MANY)}", MANY),
}
CALLS = "/^(open|read$|write$|close$|f?sync|link|rename|mkdir|fchmod|fchown|unlink)"
# With which error a call fails, which calls do, and how that ends. Owners cannot always be kept,
# backups can be renamed, and inputs need no success in closing.
TO_FAIL = [
    ("EIO", r"(?!unlink|write\(2|fchown|link|close)", 3),
    ("EIO", "fchown|link", 0),
    ("EIO", "close", None),
    ("EINTR", "(open|read|write|close|f?sync)(?!.*O_EXCL)", 0),
    ("EINVAL", "renameat2", 0),
]
CAUGHT = [signal.SIGTERM, signal.SIGXFSZ, signal.SIGPIPE, signal.SIGRTMAX]


@unittest.skipIf(IS_SANITIZED, "no leaks can be looked for while something else traces")
class Faults(Test):
    def begin(self, mode):
        """Lays out the files as they are before the command runs; returns the command line."""
        for name in os.listdir("."):
            shutil.rmtree(name) if os.path.isdir(name) else os.unlink(name)
        words, files = MODES[mode]
        for name, text in {**files, "r": b"old report\n"}.items():
            os.makedirs(os.path.dirname(name) or ".", exist_ok=True)
            write(name, text)
        return words.split()

    def strike(self, mode, *options, log="/dev/null"):
        strace = ["strace", "-fqqq", f"--trace={CALLS}", "-o", log, *options]
        return big5(*self.begin(mode), under=strace)

    def check(self, before, after, done):
        """That every file is old or new; returns those that are old."""
        status, _, message = done
        found = tree()
        temporary = {name for name in found if ".sgbk-" in name}
        if status != -signal.SIGKILL:
            self.assertFalse(temporary)
        # The report tells of what could be read.
        if status != 0 and found["r"] != before["r"]:
            self.assertLessEqual({*found["r"].splitlines()}, {*after["r"].splitlines()})
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
            status, _, message = self.strike(mode, log="log")
            self.assertEqual(status, 0, message)
            calls = re.findall(r"(?m)^\d+ +(.*)", read("log").decode())
            os.unlink("log")
            # What the loader does comes before; then the new report is made.
            first = next(at for at, call in enumerate(calls) if "O_EXCL" in call)
            self.assertGreater(len(calls) - first, 25)
            after = tree()
            self.begin(mode)
            before = tree()
            counts = {}
            for at, call in enumerate(calls):
                name = call[:call.index("(")]
                counts[name] = counts.get(name, 0) + 1
                if at < first:
                    continue
                signals = [signal.SIGKILL, CAUGHT[at % len(CAUGHT)]]
                faults = [(f"signal={int(number)}", -number) for number in signals]
                faults += [(f"error={error}", status) for error, pattern, status in TO_FAIL
                           if re.match(pattern, call)]
                for fault, expected in faults:
                    with self.subTest(mode=mode, at=at, call=call, fault=fault):
                        inject = f"--inject={name}:{fault}:when={counts[name]}"
                        # With a filter, it is quicker but sends no signals.
                        quick = ["--seccomp-bpf"] if "error" in fault else []
                        done = self.strike(mode, inject, *quick)
                        old = self.check(before, after, done)
                        self.assertIn(done[0], [expected] if expected is not None else [0, 3])
                        # An error spoils one file, unless it is the first call, for the report, or
                        # many wait for it.
                        if quick and at != first and mode != "many":
                            self.assertLessEqual(sum(not name.endswith(".bak") for name in old), 1)
            if mode == "many":
                self.assertLess(sum("sync" in call for call in calls), len(MANY))

    def test_file_that_somebody_else_makes_meanwhile(self):
        # It is there, but the calls that look for it do not see it yet.
        for mode, name in [("kept", "a.bak"), ("tree", "out/tree/a")]:
            words = self.begin(mode)
            write(name, b"theirs\n")
            unseen = ["--trace=%%stat", "--inject=%%stat:error=ENOENT", "-P", name]
            status = big5(*words, under=["strace", "-qqq", "-o/dev/null", *unseen])[0]
            self.assertEqual((status, read("a"), read(name)), (3, PAGES["a"], b"theirs\n"))


if __name__ == "__main__":
    main()
