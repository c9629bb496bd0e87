"""Converting models when memory runs out or the importer process is killed."""
import os
import pathlib
import pty
import resource
import signal
import subprocess
import sys
import time
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "cli"))
from command import Folder, VRN  # noqa: E402


def children_of(process):
    try:
        return pathlib.Path(f"/proc/{process.pid}/task/{process.pid}/children").read_text().split()
    except OSError:
        return []


class Conversion(Folder):
    def model(self, vertices):
        with (self.folder / "model.obj").open("w") as out:
            out.writelines(f"v {i} 0.5 0.25\n" for i in range(vertices))
            out.writelines(f"f {i} {i + 1} {i + 2}\n" for i in range(1, vertices - 1))

    def assert_nothing_is_left(self):
        self.assertEqual([path.name for path in self.folder.iterdir()], ["model.obj"])

    def test_says_that_memory_ran_out(self):
        self.model(300_000)
        for limit in range(256 << 20, 0, -(16 << 20)):  # until it is too little
            process = self.run_here("convert", "model.obj", "out.vrn",
                                    preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (limit, limit)))
            if process.returncode != 0:
                break
            self.assertEqual(process.stderr, b"")
            (self.folder / "out.vrn").unlink()
        self.assertEqual(process.returncode, 2, limit)
        self.assertRegex(process.stderr, rb"^vrn: (model.obj: )?out of memory.*\n$")
        self.assert_nothing_is_left()

    def test_shows_progress_without_a_thread(self):
        self.model(100)
        terminal, theirs = pty.openpty()
        self.addCleanup(os.close, terminal)
        self.addCleanup(os.close, theirs)
        # Too little address space for the stack of a thread.
        limits = 'ulimit -s 1000000 && ulimit -v 900000 && exec "$0" "$@"'
        for output in ("out.vrn", "out.json"):
            result = subprocess.run(["sh", "-c", limits, VRN, "convert", "model.obj", output], cwd=self.folder,
                                    stderr=theirs, timeout=100)
            self.assertEqual(result.returncode, 0)
            self.assertTrue((self.folder / output).exists())

    def test_says_that_the_reader_was_killed(self):
        for vertices in (300_000, 3_000_000):  # a larger one if the first was converted too fast
            self.model(vertices)
            process = subprocess.Popen([VRN, "convert", "model.obj", "out.vrn"], cwd=self.folder,
                                       stderr=subprocess.PIPE)
            while process.poll() is None and not (children := children_of(process)):
                time.sleep(0.001)
            if process.poll() is None:
                subprocess.run(["kill", f"-{signal.SIGKILL}", *children], check=False)
            errors = process.communicate(timeout=100)[1]
            if process.returncode != 0:
                break
            (self.folder / "out.vrn").unlink()
        self.assertEqual((process.returncode, errors),
                         (2, b"vrn: model.obj: its reader was killed, perhaps for lack of memory\n"))
        self.assert_nothing_is_left()


if __name__ == "__main__":
    unittest.main()
