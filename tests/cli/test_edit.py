"""`vrn edit`."""
import os
import stat
import unittest

from command import Folder, ROOT, run

SCENE = "camera cam1:  # the camera\n    .fov = 45.0;\n\nmesh box;\nbox.owner = cam1;\n"


def after(*changes):
    text = SCENE
    for old, new in changes:
        assert old in text
        text = text.replace(old, new)
    return text


class Edit(Folder):
    def edit(self, *arguments, stdin=SCENE):
        """Edits a text from standard input; returns the exit status, the text and the errors."""
        result = run("edit", "-", *arguments, stdin=stdin.encode())
        return result.returncode, result.stdout.decode(), result.stderr.decode()

    def test_each_kind_of_edit(self):
        for arguments, expected in (
            (["--set", "cam1.fov=50"], after(("45.0", "50.0"))),
            (["--set=cam1.fov=50.50"], after(("45.0", "50.50"))),
            (["--set", "cam1.fov = -5.0 "], after(("45.0", "-5.0"))),
            (["--set", 'box.name="a = b"'], after(("cam1;\n", 'cam1;\nbox.name = "a = b";\n'))),
            (["--set", "box.owner=null"], after(("= cam1", "= null"))),
            (["--link", "cam1.in=box.out"], after(("45.0;\n", "45.0;\n    .in |= box.out;\n"))),
            (["--add", "light  key"], SCENE + "\nlight key;\n"),
            (["--rename", "cam1=main"], after(("camera cam1", "camera main"), ("= cam1", "= main"))),
            (["--remove", "cam1.fov"], after(("    .fov = 45.0;\n", ""))),
            (["--remove", "box"], "camera cam1:  # the camera\n    .fov = 45.0;\n"),
        ):
            with self.subTest(arguments):
                self.assertEqual(self.edit(*arguments), (0, expected, ""))

    def test_edits_are_made_in_the_order_of_the_command_line(self):
        expected = after(("camera cam1", "camera c"), ("45.0;", "50;\n    .x = 1;"), ("= cam1", "= c"))
        edits = ("--remove", "cam1.fov", "--set", "cam1.fov=50", "--rename", "cam1=c", "--set", "c.x=1")
        self.assertEqual(self.edit(*edits), (0, expected, ""))
        self.assertEqual(self.edit("--set", "cam1.fov=50", "--remove", "cam1.fov")[1], after(("    .fov = 45.0;\n", "")))

    def test_in_place_keeps_mode_and_links_and_files_without_change(self):
        path = self.file("a.vrn", SCENE)
        path.chmod(0o640)
        (self.folder / "link.vrn").symlink_to("a.vrn")
        same = self.file("same.vrn", SCENE.replace("45.0", "50.0"))
        untouched = same.stat()
        result = self.run_here("edit", "-i", "link.vrn", "same.vrn", "--set", "cam1.fov=50")
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, b"", b""))
        self.assertEqual(path.read_text(), after(("45.0", "50.0")))
        self.assertEqual(stat.S_IMODE(path.stat().st_mode), 0o640)
        self.assertTrue((self.folder / "link.vrn").is_symlink())
        self.assertEqual((same.stat().st_ino, same.stat().st_mtime_ns), (untouched.st_ino, untouched.st_mtime_ns))
        self.assertEqual(sorted(os.listdir(self.folder)), ["a.vrn", "link.vrn", "same.vrn"])

    def test_each_file_changes_whole_or_not_at_all(self):
        good = self.file("good.vrn", SCENE)
        bad = self.file("bad.vrn", "camera cam1;\n")
        result = self.run_here("edit", "-i", "bad.vrn", "none.vrn", "good.vrn", "--set", "cam1.x=1", "--remove", "box")
        self.assertEqual(result.returncode, 2)
        self.assertEqual(result.stderr.decode(), "bad.vrn: error: there is no node 'box'; not edited (--remove box)\n"
                                                 "vrn: none.vrn: No such file or directory\n")
        self.assertEqual(bad.read_text(), "camera cam1;\n")
        self.assertIn(".x = 1", good.read_text())

    def test_writes_to_another_file(self):
        self.file("a.vrn", SCENE)
        self.assertEqual(self.run_here("edit", "a.vrn", "-o", "b.vrn", "--remove", "box").returncode, 0)
        self.assertEqual((self.folder / "b.vrn").read_text(), "camera cam1:  # the camera\n    .fov = 45.0;\n")
        self.assertEqual((self.folder / "a.vrn").read_text(), SCENE)
        self.assertIn(b"camera cam1", self.run_here("edit", "a.vrn", "-o", "-", "--remove", "box").stdout)
        result = self.run_here("edit", "a.vrn", "-o", "none/b.vrn", "--remove", "box")
        self.assertEqual((result.returncode, result.stderr), (2, b"vrn: none/b.vrn: No such file or directory\n"))
        result = self.run_here("edit", "a.vrn", "-o", "c.vrn", "--remove", "cam1")
        self.assertEqual(result.returncode, 1)
        self.assertFalse((self.folder / "c.vrn").exists())

    def test_refusals_name_every_place(self):
        self.file("a\x1b.vrn", SCENE)
        result = self.run_here("edit", "a\x1b.vrn", "--rename", "box=cam1")
        self.assertEqual((result.returncode, result.stdout), (1, b""))
        self.assertEqual(result.stderr.decode(),
                         "a\\x1B.vrn:1:8: error: the name 'cam1' is in use; not edited (--rename box=cam1)\n"
                         "a\\x1B.vrn:5:13: note: also here\n")
        self.assertEqual(self.edit("--set", 'box.x="\x1b"', "--remove", "\x1b")[2],
                         "<stdin>: error: there is no node '\\x1B'; not edited (--remove \\x1B)\n")

    def test_reads_with_a_catalogue_and_limits(self):
        self.file("types.json", '{"types": {"mesh": {"inputs": {"size": {"type": "Real"}}}}}')
        self.file("a.vrn", SCENE)
        result = self.run_here("edit", "--types", "types.json", "--set", "box.size=2", "a.vrn")
        self.assertIn(b"\nbox.size = 2.0;\n", result.stdout)
        result = self.run_here("edit", "--max-array", "2", "--set", "box.l[5]=2", "a.vrn")
        self.assertIn(b"invalid input array index: 5", result.stderr)
        self.assertEqual(self.run_here("edit", "--types", "none.json", "--remove", "box", "a.vrn").returncode, 2)

    def test_misuse(self):
        self.file("a.vrn", SCENE)
        for arguments, message in (
            (["a.vrn"], "vrn: no edit given; use --set, --link, --add, --rename or --remove\n"),
            (["-i", "-o", "b.vrn", "a.vrn", "--remove", "box"], "vrn: --output and --in-place exclude each other\n"),
            (["-o", "b.vrn", "a.vrn", "a.vrn", "--remove", "box"],
             "vrn: --output takes one file; use --in-place for several\n"),
            (["a.vrn", "--set", "a.x"], "vrn: --set: 'a.x' is not of the form PATH=VALUE\n"),
            (["a.vrn", "--set", "=1"], "vrn: --set: '=1' is not of the form PATH=VALUE\n"),
            (["a.vrn", "--rename", "a="], "vrn: --rename: 'a=' is not of the form OLD=NEW\n"),
            (["a.vrn", "--add", "camera"], "vrn: --add: 'camera' is not of the form TYPE NAME\n"),
        ):
            with self.subTest(arguments):
                result = self.run_here("edit", *arguments)
                self.assertEqual((result.returncode, result.stderr.decode()), (2, message))
                self.assertEqual(os.listdir(self.folder), ["a.vrn"])

    def test_examples_are_edited_in_one_place(self):
        for path in sorted((ROOT / "examples").glob("*.vrn")):
            old = path.read_bytes()
            new = run("edit", path, "--add", "zzz zzz").stdout
            self.assertEqual(run("edit", "-", "--remove", "zzz", stdin=new).stdout.rstrip(), old.rstrip(), path)
            self.assertEqual(len(new.splitlines()) - len(old.splitlines()) in (1, 2), True, path)


if __name__ == "__main__":
    unittest.main()
