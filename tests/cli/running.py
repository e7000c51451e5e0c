"""The command, its surroundings and the checks that all its tests share.

A test is called with the paths of BINARY, SOURCE_FOLDER and BUILD_FOLDER, then unittest's arguments.
"""

import contextlib
import os
import re
import subprocess
import sys
import tempfile
import unittest
from subprocess import PIPE

SGBK, SOURCE, BUILD = map(os.path.abspath, sys.argv[1:4])
LOSSY = b"a\n\xc5\xe9\x81\x41\n\x81<\n"  # one undefined, one malformed, in Big5
CLEAN = b"a\n\xcc\xe5\xa1\xa1\n<\n"


def read(name):
    with open(name, "rb") as file:
        return file.read()


def write(name, data):
    with open(name, "wb") as file:
        file.write(data)


def tree():
    """The contents of all files here; None for links that lead nowhere."""
    names = (os.path.relpath(os.path.join(folder, name))
             for folder, _, names in os.walk(".") for name in names)
    return {name: read(name) if os.path.exists(name) else None for name in names}


def run(*arguments, data=b"", under=(), **more):
    """Runs the command, under another one if given; returns its status, output and messages."""
    done = subprocess.run([*under, SGBK, *arguments], input=None if "stdin" in more else data, timeout=60,
                          **{"stdout": PIPE, "stderr": PIPE, **more})
    return done.returncode, done.stdout, (done.stderr or b"").decode()


def big5(*arguments, **more):
    return run("-f", "big5", *arguments, **more)


# Sanitizers keep memory of their own and want to be loaded first.
IS_SANITIZED = re.search(b"__[at]san_init", read(SGBK))


class Test(unittest.TestCase):
    """Runs in a folder of its own, in memory if possible, with the file "in"."""

    def setUp(self):
        memory = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
        folder = self.enterContext(tempfile.TemporaryDirectory(dir=memory))
        self.enterContext(contextlib.chdir(folder))
        os.chmod(".", 0o755)
        write("in", LOSSY)

    def assertRefused(self, *command_lines, status=3, told="", **more):
        """That these conversions from Big5 end so, and leave every file as it was."""
        before = tree()
        for words in command_lines:
            ended, _, message = big5(*words.split(), **more)
            self.assertEqual((ended, tree()), (status, before), words)
            self.assertIn(told, message)


def main():
    unittest.main(argv=sys.argv[:1] + sys.argv[4:])
