"""Folders, and parallel reading."""
import json
import os
import pathlib
import subprocess
import unittest

from command import Folder, ROOT, VRN, run

FORMATS = ("text", "json", "sarif", "github")


def merged(*arguments, **more):
    """The exit status and the interleaved output of both streams."""
    result = subprocess.run([VRN, *map(str, arguments)], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=300,
                            **more)
    return result.returncode, result.stdout


class Folders(Folder):
    def scene(self, name):
        (self.folder / name).parent.mkdir(parents=True, exist_ok=True)
        self.file(name, "t a;")

    def checked(self, *arguments):
        """The files that are checked, and standard error."""
        result = self.run_here("check", "--format", "json", *arguments)
        return [json.loads(line)["file"] for line in result.stdout.splitlines()], result.stderr.decode()

    def test_stand_for_all_scenes_below_sorted_by_path(self):
        for name in ("s/b.vrn", "s/a/z.vrn", "s/a-b/c.vrn", "s/a/deep/er/y.vrn", "s/c.txt", "s/d.vrn.bak", "s/-x.vrn"):
            self.scene(name)
        expected = ["s/-x.vrn", "s/a/deep/er/y.vrn", "s/a/z.vrn", "s/a-b/c.vrn", "s/b.vrn"]
        self.assertEqual(self.checked("s"), (expected, ""))
        self.assertEqual(self.checked("s/"), (expected, ""))
        self.assertEqual(self.checked("."), (["./" + name for name in expected], ""))
        self.assertEqual(run("info", "s", cwd=self.folder).stdout.count(b"\n  version"), 5)

    def test_are_read_in_the_order_of_the_arguments_even_twice(self):
        self.scene("a.vrn")
        self.scene("s/b.vrn")
        self.assertEqual(self.checked("s", "a.vrn", "s", "a.vrn")[0], ["s/b.vrn", "a.vrn", "s/b.vrn", "a.vrn"])

    def test_hidden_ones_are_left_out_unless_named(self):
        for name in ("s/a.vrn", "s/.hidden/b.vrn", "s/.c.vrn"):
            self.scene(name)
        self.assertEqual(self.checked("s"), (["s/a.vrn"], ""))
        self.assertEqual(self.checked("s/.hidden", "s/.c.vrn"), (["s/.hidden/b.vrn", "s/.c.vrn"], ""))

    def test_links_to_folders_are_not_followed_unless_named(self):
        self.scene("s/a.vrn")
        self.scene("elsewhere/b.vrn")
        os.symlink("..", self.folder / "s" / "loop")
        os.symlink("../elsewhere", self.folder / "s" / "other")
        os.symlink("../elsewhere/b.vrn", self.folder / "s" / "file.vrn")
        self.assertEqual(self.checked("s"), (["s/a.vrn", "s/file.vrn"], ""))
        self.assertEqual(self.checked("s/other"), (["s/other/b.vrn"], ""))

    def test_dangling_links_are_reported(self):
        self.scene("s/a.vrn")
        os.symlink("nowhere", self.folder / "s" / "b.vrn")
        self.assertEqual(self.checked("s"), (["s/a.vrn", "s/b.vrn"], "vrn: s/b.vrn: No such file or directory\n"))

    def test_pipes_are_skipped(self):
        self.scene("s/a.vrn")
        os.mkfifo(self.folder / "s" / "b.vrn")
        self.assertEqual(self.checked("s"), (["s/a.vrn"], ""))

    def test_without_a_scene_are_trouble_and_the_others_are_read(self):
        self.scene("a.vrn")
        self.scene("empty/x.txt")
        for more in ([], ["-j", "4"]):
            result = self.run_here("check", "empty", "a.vrn", *more)
            self.assertEqual(result.returncode, 2)
            self.assertEqual(result.stderr, b"vrn: empty: no *.vrn file in this folder or below it\n")
            self.assertEqual(result.stdout, b"1 file checked: 0 errors, 0 warnings; 1 file could not be read\n")
        self.assertEqual(self.run_here("info", "empty").returncode, 2)

    def test_that_cannot_be_read_are_trouble(self):
        self.scene("s/a.vrn")
        name = "n" * 200
        folder = os.open(self.folder / "s", os.O_RDONLY)
        for _ in range(25):  # until the path is too long
            os.mkdir(name, dir_fd=folder)
            inner = os.open(name, os.O_RDONLY, dir_fd=folder)
            os.close(folder)
            folder = inner
        os.close(folder)
        result = self.run_here("check", "s")
        self.assertEqual(result.returncode, 2)
        self.assertRegex(result.stderr.decode(), r"^vrn: s/n+[n/]*: File name too long\n$")
        self.assertIn(b"1 file checked", result.stdout)


class Jobs(Folder):
    def test_output_is_the_same_for_any_number(self):
        arguments = [ROOT / "tests/data", "nowhere", ROOT / "examples", ROOT / "tests/data/reject", "/dev/null", "."]
        for command in (["info"], *(["check", "--format", name] for name in FORMATS)):
            one = merged(*command, *arguments, cwd=self.folder)
            self.assertEqual(one[0], 2)
            self.assertGreater(len(one[1]), 2000)
            for jobs in ("-j2", "-j8", "--jobs=0", "-j256"):
                with self.subTest(jobs=jobs, command=command):
                    self.assertEqual(merged(*command, jobs, *arguments, cwd=self.folder), one)

    def test_a_slow_file_does_not_change_the_order(self):
        self.file("large.vrn", "t a;" + "a.x = float[300000] {" + "1.5 " * 300000 + "}; a.y = true; a.y = 1.5;")
        for i in range(50):
            self.file(f"small{i:02}.vrn", f"t a; oops{i}")
        one = merged("check", ".", cwd=self.folder)
        self.assertIn(b"51 files checked: 51 errors, 0 warnings", one[1])
        self.assertEqual(merged("check", "-j4", ".", cwd=self.folder), one)

    def test_what_can_be_read_once_is_read_in_order(self):
        for _ in range(10):
            result = run("check", "--format=json", "-j8", "-", "/dev/stdin", "-", stdin=b"t a; oops")
            self.assertEqual([len(json.loads(line)["diagnostics"]) for line in result.stdout.splitlines()], [1, 0, 0])

    def test_running_out_of_memory_in_one_file_does_not_affect_the_others(self):
        if b"asan" in pathlib.Path(VRN).read_bytes():
            self.skipTest("the sanitizers need more memory than the test allows")
        self.file("a.vrn", "t a; oops")
        self.file("b.vrn", "t b; b.x[16000000] = 1;")
        self.file("c.vrn", "t c; oops")
        for jobs in ("-j1", "-j2"):
            for name in FORMATS if jobs == "-j2" else ["text"]:
                limited = ["sh", "-c", 'ulimit -v 400000; exec "$0" "$@"', VRN, "check", jobs, "--format", name]
                result = subprocess.run([*limited, "a.vrn", "b.vrn", "c.vrn"], cwd=self.folder, capture_output=True,
                                        timeout=100)
                self.assertEqual((result.returncode, result.stderr), (2, b"vrn: b.vrn: out of memory\n"), (jobs, name))
                self.assertEqual(result.stdout.count(b"unrecognized token 'oops'"), 2)
                self.assertIn({"text": b"2 files checked: 2 errors, 0 warnings; 1 file could not be read\n",
                               "json": b'{"file":"b.vrn","ok":false,"error":"out of memory","diagnostics":[]}\n',
                               "github": b"::error file=b.vrn,title=vrn check::out of memory\n",
                               "sarif": b'"executionSuccessful":false'}[name], result.stdout)

    def test_catalogue_that_cannot_be_read_ends_all(self):
        for name in FORMATS:
            result = run("check", "-j4", "--format", name, "--types", "nowhere.json", ROOT / "examples")
            self.assertEqual((result.returncode, result.stdout), (2, b""))

    def test_fewer_threads_than_asked_for_do_as_well(self):
        if b"asan" in pathlib.Path(VRN).read_bytes():
            self.skipTest("the sanitizers need more memory than the test allows")
        # Memory for the stack of one more thread.
        limits = 'ulimit -s 1000000 && ulimit -v 1600000 && exec "$0" "$@"'
        command = ["sh", "-c", limits, VRN, "check", "-j256", ROOT / "tests/data/reject"]
        result = subprocess.run(command, capture_output=True, timeout=100)
        self.assertEqual(result.stderr, b"")
        self.assertEqual(result.stdout, run("check", ROOT / "tests/data/reject").stdout)

    def test_wrong_numbers(self):
        for wrong in ("-1", "x", "257", "1.5"):
            self.assertEqual(run("check", "--jobs", wrong, "-").returncode, 2, wrong)


if __name__ == "__main__":
    unittest.main()
