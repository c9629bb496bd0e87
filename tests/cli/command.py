"""Helpers of the tests of the command. The variable VRN is the path of the program."""
import os
import pathlib
import subprocess
import tempfile
import unittest

VRN = os.environ["VRN"]
ROOT = pathlib.Path(__file__).resolve().parents[2]


def run(*arguments, stdin=b"", **more):
    return subprocess.run([VRN, *map(str, arguments)], input=stdin, capture_output=True, timeout=300, **more)


class Folder(unittest.TestCase):
    """A test with a temporary folder."""

    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)

    def file(self, name, content):
        path = self.folder / name
        path.write_bytes(content if isinstance(content, bytes) else content.encode())
        return path

    def run_here(self, *arguments, **more):
        return run(*arguments, cwd=self.folder, **more)
