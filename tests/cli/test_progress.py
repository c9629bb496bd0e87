"""The line that says on a terminal how far the reading has come."""
import os
import pty
import re
import subprocess
import threading
import time
import unittest

from command import Folder, VRN

LINE = re.compile(rb"Reading: [^\r]*")


class Progress(Folder):
    def in_terminal(self, *arguments, pieces=()):
        """What a terminal that is standard error gets while the pieces come slowly through standard input."""
        terminal, theirs = pty.openpty()
        self.addCleanup(os.close, terminal)
        process = subprocess.Popen([VRN, *arguments], cwd=self.folder, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                   stderr=theirs)
        os.close(theirs)
        shown = []
        listening = threading.Thread(target=self.listen, args=(terminal, shown))
        listening.start()
        for piece in pieces:
            process.stdin.write(piece)
            process.stdin.flush()
            time.sleep(0.8)
        output = process.communicate(timeout=100)[0]
        listening.join()
        return output, b"".join(shown)

    @staticmethod
    def listen(terminal, shown):
        try:
            while piece := os.read(terminal, 65536):
                shown.append(piece)
        except OSError:  # the other end is closed
            pass

    PIECES = (b"t a; ", b"a.x = 1; ", b"a.y = 2; oops")

    def test_slow_pipe(self):
        for command in (["check"], ["info"], ["dump", "--compact"]):
            output, shown = self.in_terminal(*command, "-", pieces=self.PIECES)
            self.assertTrue(output)
            self.assertRegex(LINE.findall(shown)[0], rb"^Reading: \d+ bytes, \d+ bytes/s$")
            self.assertRegex(LINE.findall(shown)[-1], rb"^Reading: 27 bytes, \d+ bytes/s$")
            # Every line is taken away before anything follows, the last one, too.
            self.assertEqual(len(re.findall(rb"Reading: [^\r\n]*\r\x1b\[K", shown)), shown.count(b"Reading: "))
            diagnostics = re.sub(rb"Reading: [^\r\n]*\r\x1b\[K", b"", shown)
            self.assertEqual(diagnostics.startswith(b"<stdin>:1:22: error: "), command != ["check"], diagnostics)

    def test_diagnostics_of_earlier_files_do_not_mix_with_it(self):
        self.file("a.vrn", "oops")
        output, shown = self.in_terminal("info", "-", "a.vrn", pieces=self.PIECES)
        rest = re.sub(rb"Reading: [^\r\n]*\r\x1b\[K", b"", shown).decode()
        self.assertRegex(rest, r"^<stdin>:1:22: error: [^\r]*\r\nt a; .*\r\n +\^\r\na\.vrn:0:0: error: [^\r]*\r\n$")

    def test_total_is_known_for_files(self):
        text = "t a; " + "a.x = float[3] {1.25 2.5 3.75};\n" * 200_000
        self.file("a.vrn", text)
        lines = []
        for count in (4, 16, 64, 256, 1024):  # until it takes long enough
            output, shown = self.in_terminal("check", *["a.vrn"] * count)
            self.assertIn(f"{count} files checked: 0 errors".encode(), output)
            size = count * len(text)
            if lines := LINE.findall(shown):
                break
        self.assertTrue(lines)
        for line in lines:
            self.assertRegex(line, rb"^Reading: [\d.]+ [kM]B of %d\.%d MB, [\d.]+ [kMG]B/s, \d+ (s|min) left$" %
                             (size // 10**6, size // 10**5 % 10))

    def test_quiet_and_short(self):
        self.assertEqual(self.in_terminal("check", "--quiet", "-", pieces=self.PIECES)[1], b"")
        self.file("a.vrn", "t a;")
        self.assertEqual(self.in_terminal("check", "a.vrn")[1], b"")

    def test_only_on_a_terminal(self):
        process = subprocess.Popen([VRN, "check", "-"], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE)
        process.stdin.write(b"t a; ")
        process.stdin.flush()
        time.sleep(0.8)
        self.assertEqual(process.communicate(b"t b;", timeout=100)[1], b"")


if __name__ == "__main__":
    unittest.main()
