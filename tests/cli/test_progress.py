"""The status line that shows progress on a terminal."""
import os
import pty
import re
import subprocess
import threading
import time
import unittest

from command import Folder, VRN

LINE = re.compile(rb"Reading: [^\r]*")
REMOVED = re.compile(rb"Reading: [^\r\n]*\r\x1b\[K")


class Progress(Folder):
    def in_terminal(self, *arguments, most=0.0):
        """Returns what the command writes to standard output and to a terminal on standard error. Feeds it valid input
        for `most` seconds, or until the terminal shows something, and then an error."""
        terminal, theirs = pty.openpty()
        self.addCleanup(os.close, terminal)
        process = subprocess.Popen([VRN, *arguments], cwd=self.folder, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                   stderr=theirs)
        os.close(theirs)
        shown = []
        listening = threading.Thread(target=self.listen, args=(terminal, shown))
        listening.start()
        end = time.monotonic() + most
        while not shown and time.monotonic() < end:
            process.stdin.write(b"t a; ")
            process.stdin.flush()
            time.sleep(0.1)
        output = process.communicate(b"oops" if most else None, timeout=100)[0]
        listening.join()
        return output, b"".join(shown)

    @staticmethod
    def listen(terminal, shown):
        try:
            while piece := os.read(terminal, 65536):
                shown.append(piece)
        except OSError:  # the other end is closed
            pass

    def test_a_pipe_shows_the_bytes_read(self):
        for command in (["check"], ["info"], ["dump", "--compact"]):
            output, shown = self.in_terminal(*command, "-", most=60)
            self.assertTrue(output)
            lines = LINE.findall(shown)
            self.assertTrue(lines, command)
            for line in lines:
                self.assertRegex(line, rb"^Reading: \d+ bytes, \d+ bytes/s$")

    def test_is_removed_before_anything_is_printed(self):
        self.file("a.vrn", "oops")
        _, shown = self.in_terminal("info", "-", "a.vrn", most=60)
        self.assertEqual(len(REMOVED.findall(shown)), shown.count(b"Reading: "))
        self.assertRegex(
            REMOVED.sub(b"", shown).decode(),
            r"^<stdin>:1:\d+: error: [^\r]*\r\n.*t a; oops\r\n +\^\r\na\.vrn:0:0: error: [^\r]*\r\n$",
        )

    def test_files_show_their_total_size(self):
        text = "t a; " + "a.x = float[3] {1.25 2.5 3.75};\n" * 20_000
        self.file("a.vrn", text)
        lines = []
        for count in (4, 16, 64, 256, 1024, 4096):  # until reading takes long enough
            output, shown = self.in_terminal("check", "-j2", *["a.vrn"] * count)
            self.assertIn(f"{count} files checked: 0 errors".encode(), output)
            size = count * len(text)
            if lines := LINE.findall(shown):
                break
        self.assertTrue(lines)
        unit, name = (10**6, b"MB") if size < 10**9 else (10**9, b"GB")
        total = rb"%d\.%d %s" % (size // unit, size * 10 // unit % 10, name)
        for line in lines:
            self.assertRegex(line, rb"^Reading: [\d.]+ [kMG]B of " + total + rb", [\d.]+ [kMG]B/s, \d+ (s|min) left$")

    def test_models_show_their_total_size(self):
        for count in (10**5, 10**6, 3 * 10**6, 10**7):  # until reading takes long enough
            text = "v 0.5 0.25 0.125\n" * count + "f 1 2 3\n"
            self.file("a.obj", text)
            _, shown = self.in_terminal("convert", "a.obj", "a.vrn")
            if b" of " in shown:
                break
        self.assertIn(b" of ", shown)
        total = b"%d.%d MB" % (len(text) // 10**6, len(text) // 10**5 % 10)
        for line in LINE.findall(shown):
            self.assertRegex(line, rb"^Reading: ([\d.]+ [kM]B of " + total + rb", [\d.]+ [kM]B/s, \d+ (s|min) left|"
                                   + total + rb", \d+ (s|min) so far)$")
        self.assertEqual(shown.count(b"ing: "), shown.count(b"\r\x1b[K"))

    def test_writing_shows_the_time(self):
        for count in (10**6, 10**7, 10**8):  # until reading takes long enough
            self.file("a.vrn", f"t a;\na.b = byte[{count}] {{}};\n")
            _, shown = self.in_terminal("convert", "a.vrn", "a.json")
            if b"Writing: " in shown:
                break
        self.assertRegex(shown, rb"(Writing: \d+ (s|min) so far\r\x1b\[K)+$")

    def test_quiet_and_short_show_nothing(self):
        self.assertEqual(self.in_terminal("check", "--quiet", "-", most=1.5)[1], b"")
        self.file("a.vrn", "t a;")
        self.assertEqual(self.in_terminal("check", "a.vrn")[1], b"")

    def test_only_a_terminal_shows_it(self):
        process = subprocess.Popen([VRN, "check", "-"], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE)
        for _ in range(15):
            process.stdin.write(b"t a; ")
            process.stdin.flush()
            time.sleep(0.1)
        self.assertEqual(process.communicate(timeout=100)[1], b"")


if __name__ == "__main__":
    unittest.main()
