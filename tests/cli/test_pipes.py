"""SIGPIPE ends the command silently."""
import signal
import subprocess
import unittest

from command import ROOT, VRN

SCENES = [ROOT / "examples" / "spot.vrn"] * 20


class Pipes(unittest.TestCase):
    def first_line(self, **more):
        """Reads one line of a large output and closes the pipe; returns the exit status and standard error."""
        with subprocess.Popen([VRN, "dump", *SCENES], stdout=subprocess.PIPE, stderr=subprocess.PIPE, **more) as vrn:
            self.assertEqual(vrn.stdout.readline(), b"{\n")
            vrn.stdout.close()
            errors = vrn.stderr.read()
            return vrn.wait(timeout=60), errors

    def test_output_is_larger_than_the_buffer_of_a_pipe(self):
        output = subprocess.run([VRN, "dump", *SCENES], capture_output=True, check=True).stdout
        self.assertGreater(len(output), 1 << 21)

    def test_end_is_quiet(self):
        self.assertEqual(self.first_line(), (-signal.SIGPIPE, b""))

    def test_end_is_quiet_where_the_parent_ignores_the_signal(self):
        before = signal.signal(signal.SIGPIPE, signal.SIG_IGN)
        self.addCleanup(signal.signal, signal.SIGPIPE, before)
        self.assertEqual(self.first_line(restore_signals=False), (-signal.SIGPIPE, b""))

    def test_shells_see_no_error_either(self):
        line = subprocess.run(["bash", "-c", '"$@" | head -n 1', "bash", VRN, "dump", *SCENES], capture_output=True)
        self.assertEqual((line.stdout, line.stderr), (b"{\n", b""))


if __name__ == "__main__":
    unittest.main()
