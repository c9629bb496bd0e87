"""`vrn fmt`."""
import os
import stat
import unittest

from command import Folder, ROOT, run

UGLY = "t a:.x=1;  .y = float [2]{1,2};# c\n\n\nu b ;"
NEAT = "t a:\n    .x = 1;\n    .y = float[2] {1 2};  # c\n\nu b;\n"


class Fmt(Folder):
    def test_writes_to_standard_output(self):
        path = self.file("a.vrn", UGLY)
        result = self.run_here("fmt", "a.vrn")
        self.assertEqual((result.returncode, result.stdout.decode(), result.stderr), (0, NEAT, b""))
        self.assertEqual(path.read_text(), UGLY)
        self.assertEqual(run("fmt", "-", stdin=UGLY.encode()).stdout.decode(), NEAT)
        self.assertEqual(run("fmt", "--in-place", "-", stdin=UGLY.encode()).stdout.decode(), NEAT)

    def test_replaces_files_that_change(self):
        ugly = self.file("ugly.vrn", UGLY)
        neat = self.file("neat.vrn", NEAT)
        ugly.chmod(0o640)
        untouched = neat.stat()
        (self.folder / "link.vrn").symlink_to("ugly.vrn")
        result = self.run_here("fmt", "-i", "link.vrn", "neat.vrn")
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, b"", b""))
        self.assertEqual(ugly.read_text(), NEAT)
        self.assertEqual(stat.S_IMODE(ugly.stat().st_mode), 0o640)
        self.assertTrue((self.folder / "link.vrn").is_symlink())
        self.assertEqual((neat.stat().st_ino, neat.stat().st_mtime_ns), (untouched.st_ino, untouched.st_mtime_ns))
        self.assertEqual(sorted(os.listdir(self.folder)), ["link.vrn", "neat.vrn", "ugly.vrn"])

    def test_check_names_what_would_change(self):
        (self.folder / "sub").mkdir()
        self.file("sub/a.vrn", UGLY)
        self.file("sub/b.vrn", NEAT)
        self.file("sub/c.vrn", UGLY)
        for jobs in ([], ["-j", "4"]):
            result = self.run_here("fmt", "--check", *jobs, "sub")
            self.assertEqual((result.returncode, result.stdout), (1, b"sub/a.vrn\nsub/c.vrn\n"))
        self.assertEqual((self.folder / "sub/a.vrn").read_text(), UGLY)
        self.assertEqual(self.run_here("fmt", "--check", "sub/b.vrn").returncode, 0)

    def test_files_that_cannot_be_formatted_do_not_change(self):
        bad = self.file("bad.vrn", "t a;\na.x = ?;\n\n\n")
        result = self.run_here("fmt", "-i", "bad.vrn")
        self.assertEqual(result.returncode, 1)
        self.assertEqual(result.stderr, b"bad.vrn:2:6: error: INVALID TOKEN (2,6): '?'; not formatted\n")
        self.assertEqual(bad.read_text(), "t a;\na.x = ?;\n\n\n")
        self.assertEqual(self.run_here("fmt", "bad.vrn").stdout, b"")

    def test_trouble(self):
        self.file("a.vrn", UGLY)
        result = self.run_here("fmt", "none.vrn", "a.vrn")
        self.assertEqual((result.returncode, result.stdout.decode()), (2, NEAT))
        self.assertEqual(result.stderr, b"vrn: none.vrn: No such file or directory\n")
        self.assertEqual(self.run_here("fmt", "--check", "-i", "a.vrn").returncode, 2)
        (self.folder / "empty").mkdir()
        self.assertEqual(self.run_here("fmt", "empty").returncode, 2)
        self.assertEqual(self.run_here("fmt").returncode, 2)

    @unittest.skipIf(os.geteuid() == 0, "root may write anywhere")
    def test_folder_that_cannot_be_written(self):
        self.file("a.vrn", UGLY)
        self.folder.chmod(0o500)
        self.addCleanup(self.folder.chmod, 0o700)
        self.assertEqual(self.run_here("fmt", "-i", "a.vrn").returncode, 2)

    def test_column(self):
        text = b"n.x = int32[4] {1 2 3 4};\n"
        self.assertEqual(run("fmt", "--column", "0", "-", stdin=text).stdout, text)
        self.assertEqual(run("fmt", "--column", "12", "-", stdin=text).stdout,
                         b"n.x = int32[4] {\n    1 2 3 4\n};\n")

    def test_examples_dump_the_same(self):
        for path in sorted((ROOT / "examples").glob("*.vrn")):
            formatted = self.file("formatted.vrn", run("fmt", path).stdout)
            self.assertEqual(run("dump", "--compact", formatted).stdout, run("dump", "--compact", path).stdout, path)
            self.assertEqual(run("fmt", "--check", formatted).returncode, 0, path)


if __name__ == "__main__":
    unittest.main()
