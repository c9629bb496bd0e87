"""The commands check, dump and info, and the arguments of the program."""
import json
import os
import pathlib
import shlex
import subprocess
import tempfile
import unittest

from command import Folder, ROOT, VRN, run

DATA = ROOT / "tests" / "data"
TEXTS = sorted(DATA.glob("accept/*.vrn")) + sorted(DATA.glob("reject/*.vrn"))


class Check(Folder):
    def test_examples_have_no_diagnostics(self):
        files = sorted((ROOT / "examples").glob("*.vrn"))
        self.assertGreaterEqual(len(files), 13)
        result = run("check", *files)
        self.assertEqual(result.returncode, 0)
        self.assertEqual(result.stdout.decode(), f"{len(files)} files checked: 0 errors, 0 warnings\n")
        self.assertEqual(result.stderr, b"")

    def test_text_shows_the_line_and_a_caret(self):
        self.file("bad.vrn", "t c;\n\tc.x = float[2] {1};\nc.a = \"\u00e4\u00f6\" 5;\n")
        result = self.run_here("check", "bad.vrn")
        self.assertEqual(result.returncode, 1)
        self.assertEqual(
            result.stdout.decode(),
            "bad.vrn:2:12: warning: Too few elements (1) for float[2] buffer, remainder set to zero.\n"
            "\tc.x = float[2] {1};\n"
            "\t          ^\n"
            "bad.vrn:3:14: error: BAD TOKEN (3,14): expected ';', found '5'.\n"
            "c.a = \"\u00e4\u00f6\" 5;\n"
            "           ^\n"
            "1 file checked: 1 error, 1 warning\n",
        )

    def test_position_unknown_has_no_line(self):
        result = run("check", "-", stdin=b"x = 5;")
        self.assertEqual(
            result.stdout.decode(),
            "<stdin>:0:0: error: PARSE ERROR (0,0): unrecognized token 'x'..\n1 file checked: 1 error, 0 warnings\n",
        )

    def test_caret_at_the_start_and_after_the_end_of_a_line(self):
        self.assertIn(b"<stdin>:1:0: error: INVALID TOKEN (1,0): '?'\n?\n^\n", run("check", "-", stdin=b"?").stdout)
        self.assertIn(
            b"<stdin>:1:6: error: INVALID TOKEN (1,6): '?'\nt a;\n    ^\n", run("check", "-", stdin=b"t a;\r\n?").stdout
        )

    def test_long_lines_are_cut_around_the_caret(self):
        line = b"t a; a.long = float[1000] {" + b"1 " * 1000 + b"}" + b" " * 500 + b"5" + b";" * 1000
        lines = run("check", "-", stdin=line).stdout.decode().split("\n")
        self.assertTrue(lines[1].startswith("...") and lines[1].endswith("..."))
        self.assertLessEqual(len(lines[1]), 200)
        self.assertEqual(lines[1][lines[2].index("^")], "5")

    def test_cut_lines_keep_whole_characters(self):
        line = "t a; a.s = \"" + "\u00e4" * 300 + "\"   5; # " + "\u20ac" * 300
        lines = run("check", "-", stdin=line.encode()).stdout.decode().split("\n")
        self.assertNotIn("\\x", lines[1])
        self.assertEqual(lines[1][lines[2].index("^")], "5")

    def test_control_characters_are_escaped(self):
        result = run("check", "-", stdin=b"t a; a.s = \"\x1b[31m\" \x07 \"\x1b]0;x\x07%n%s\";")
        self.assertEqual(
            result.stdout.decode().split("\n")[0],
            "<stdin>:1:33: error: BAD TOKEN (1,33): expected ';', found '\"\\x1B]0;x\\x07%n%s\"'.",
        )
        lines = result.stdout.decode().split("\n")
        self.assertEqual(lines[1], "t a; a.s = \"\\x1B[31m\" \\x07 \"\\x1B]0;x\\x07%n%s\";")
        self.assertEqual(lines[1][lines[2].index("^")], "\"")
        self.assertNotIn(b"\x1b", result.stdout)

    def test_many_diagnostics_on_one_line_each_have_their_caret(self):
        text = b"t a;" + b" a.b = true; a.b = 5;" * 300
        lines = run("check", "-", stdin=text).stdout.decode().split("\n")
        self.assertEqual(lines[-2], "1 file checked: 0 errors, 300 warnings")
        for i in range(0, 900, 3):
            self.assertEqual(lines[i + 1][lines[i + 2].index("^")], ";")

    def test_json_is_one_line_a_file(self):
        self.file("a.vrn", "t a;")
        self.file("b.vrn", b"t a; a.f = float[2] {1};\na.x = \"\xc4\";?")
        result = self.run_here("check", "--format", "json", "a.vrn", "b.vrn")
        self.assertEqual(result.returncode, 1)
        lines = result.stdout.decode().splitlines()
        self.assertEqual(lines[0], '{"file":"a.vrn","ok":true,"diagnostics":[]}')
        self.assertEqual(
            json.loads(lines[1]),
            {
                "file": "b.vrn",
                "ok": False,
                "diagnostics": [
                    {
                        "severity": "warning",
                        "message": "Too few elements (1) for float[2] buffer, remainder set to zero.",
                        "line": 1,
                        "column": 16,
                    },
                    {"severity": "error", "message": "INVALID TOKEN (2,10): '?'", "line": 2, "column": 10},
                ],
            },
        )

    ODD = "t a; a.x = 1; a.y = b;\na.y = a;\nu a;\n"

    def test_notices_are_warnings(self):
        result = run("check", "-", stdin=self.ODD.encode())
        self.assertEqual(
            result.stdout.decode(),
            "<stdin>:2:7: warning: an earlier link of a.y is replaced [check]\na.y = a;\n      ^\n"
            "<stdin>:3:4: warning: node a is declared as a u but stays a t [check]\nu a;\n   ^\n"
            "1 file checked: 0 errors, 2 warnings\n",
        )
        self.assertEqual(result.returncode, 0)
        self.assertEqual(run("check", "--werror", "-", stdin=self.ODD.encode()).returncode, 1)
        silent = run("check", "--werror", "--no-lint", "-", stdin=self.ODD.encode())
        self.assertEqual((silent.returncode, silent.stdout), (0, b"1 file checked: 0 errors, 0 warnings\n"))

    def test_json_marks_notices(self):
        text = b"t a; a.b = float[2] {1};\nu a;"
        line = json.loads(run("check", "--format", "json", "-", stdin=text).stdout)
        self.assertEqual(
            [(d["severity"], d.get("source"), d["line"], d["column"]) for d in line["diagnostics"]],
            [("warning", None, 1, 16), ("warning", "check", 2, 4)],
        )
        self.assertTrue(line["ok"])

    def test_only_check_shows_notices(self):
        self.assertEqual(run("dump", "-", stdin=self.ODD.encode()).stderr, b"")
        self.assertIn(b"0 errors, 0 warnings", run("info", "-", stdin=self.ODD.encode()).stdout)

    def test_limits_can_be_set(self):
        for command in ("check", "dump", "info"):
            for option, text, problem in (("--max-array=4", b"t a; a.x[4] = 1;", "invalid input array index: 4"),
                                          ("--max-unnamed=4", b"t a; a.x[5] = 1;", "invalid input array index: 5"),
                                          ("--max-buffer-bytes=7", b"t a; a.x = float[2] {};",
                                           "invalid buffer element count: [2]")):
                result = run(command, option, "-", stdin=text)
                self.assertEqual(result.returncode, 1)
                self.assertIn(problem, (result.stdout + result.stderr).decode())
                self.assertEqual(run(command, option.replace("4", "5").replace("7", "8"), "-", stdin=text).returncode, 0)
        for wrong in ("--max-array=-1", "--max-array=x", "--max-buffer-bytes=-1", "--max-array=9999999999"):
            self.assertEqual(run("check", wrong, "-").returncode, 2, wrong)

    def test_json_has_no_control_characters(self):
        text = b"t a; a.x = \"\x1b\x7f\xc2\x9b31m \xc2\xa0\"; a.x = 5 \"\x1b\x7f\xc2\x9b\";"
        for command in (["check", "--format", "json"], ["dump"], ["dump", "--compact"]):
            output = run(*command, "-", stdin=text).stdout
            for control in (b"\x1b", b"\x7f", b"\xc2\x9b"):
                self.assertNotIn(control, output, command)
            self.assertTrue("\x7f\x9b" in json.loads(output)["diagnostics"][0]["message"] if "json" in command else
                            json.loads(output)["nodes"][0]["inputs"][0]["value"] == "\x1b\x7f\x9b31m \xa0")

    def test_json_replaces_bytes_that_are_not_utf8(self):
        result = run("check", "--format", "json", "-", stdin=b"t a; a.x = 1 \"\xc4\";")
        self.assertIn("found '\"\ufffd\"'", json.loads(result.stdout)["diagnostics"][0]["message"])

    def test_error_thrown_at_the_start_counts_as_one(self):
        result = run("check", "--format", "json", "-", stdin=b" ?")
        self.assertEqual(result.returncode, 1)
        self.assertEqual(
            json.loads(result.stdout),
            {
                "file": "-",
                "ok": False,
                "diagnostics": [
                    {"severity": "error", "message": "INVALID TOKEN (1,1): '?'", "line": 1, "column": 1}
                ],
            },
        )

    def test_exit_statuses(self):
        self.file("ok.vrn", "t a;")
        self.file("warning.vrn", "# version: x")
        self.file("logged.vrn", "t a; a.b = true; a.b = 1.5;")
        self.file("failed.vrn", "oops")
        self.assertEqual(self.run_here("check", "ok.vrn").returncode, 0)
        self.assertEqual(self.run_here("check", "warning.vrn").returncode, 0)
        self.assertEqual(self.run_here("check", "--werror", "warning.vrn", "ok.vrn").returncode, 1)
        self.assertEqual(self.run_here("check", "logged.vrn").returncode, 1)
        self.assertEqual(self.run_here("check", "failed.vrn", "ok.vrn").returncode, 1)

    def test_running_out_of_memory_in_one_file_does_not_affect_the_others(self):
        self.file("large.vrn", "t a; " + "".join(f"a.b{i} = mat4d[1000000] {{1}};" for i in range(40)))
        self.file("ok.vrn", "t a;")
        if b"asan" in pathlib.Path(VRN).read_bytes():
            self.skipTest("the sanitizers need more memory than the test allows")
        limited = ["sh", "-c", 'ulimit -v 1000000; exec "$0" "$@"', VRN, "check", "large.vrn", "ok.vrn"]
        result = subprocess.run(limited, cwd=self.folder, capture_output=True, timeout=60)
        self.assertEqual(result.returncode, 1)
        self.assertIn(b"invalid buffer element count: [1000000]", result.stdout)
        self.assertIn(b"2 files checked: 1 error, ", result.stdout)

    def test_unreadable_files_are_reported_and_the_others_checked(self):
        self.file("ok.vrn", "t a; a.b = true; a.b = 1.5;")
        result = self.run_here("check", "nowhere\x1b.vrn", "ok.vrn/x", "ok.vrn")
        self.assertEqual(result.returncode, 2)
        self.assertEqual(
            result.stderr.decode(),
            "vrn: nowhere\\x1B.vrn: No such file or directory\nvrn: ok.vrn/x: Not a directory\n",
        )
        self.assertIn("1 file checked: 1 error, 0 warnings; 2 files could not be read\n", result.stdout.decode())
        result = self.run_here("check", "--format", "json", "nowhere.vrn", "ok.vrn")
        lines = [json.loads(line) for line in result.stdout.splitlines()]
        self.assertEqual([(line["file"], line["ok"], line.get("error")) for line in lines],
                         [("nowhere.vrn", False, "No such file or directory"), ("ok.vrn", True, None)])

    def test_pipes_are_read_once_and_show_their_lines(self):
        os.mkfifo(self.folder / "pipe")
        writer = subprocess.Popen(["sh", "-c", "printf 't a; a.b = ;' > pipe"], cwd=self.folder)
        self.addCleanup(writer.wait)
        result = self.run_here("check", "pipe")
        self.assertIn(b"\nt a; a.b = ;\n           ^\n", result.stdout)

    def test_file_names_may_look_like_anything(self):
        for name in ("[q]", "[a,b]", "-x.vrn", "a b", "%s"):
            self.file(name, "oops")
            result = self.run_here("check", "--", name)
            self.assertTrue(result.stdout.decode().startswith(name + ":0:0: error: "), result)


class Ways(unittest.TestCase):
    """Files and standard input give the same results."""

    def test_standard_input_gives_the_same(self):
        self.assertGreater(len(TEXTS), 50)
        for path in TEXTS:
            with self.subTest(path.name):
                text = path.read_bytes()
                by_file = run("check", "--format", "json", path)
                by_input = run("check", "--format", "json", "-", stdin=text)
                self.assertEqual(by_file.stdout.replace(str(path).encode(), b"-"), by_input.stdout)
                self.assertEqual(by_file.returncode, by_input.returncode)
                self.assertEqual(run("dump", path).stdout, run("dump", "-", stdin=text).stdout)

    def test_golden_scenes_and_logs(self):
        for path in TEXTS:
            with self.subTest(path.name):
                dumped = run("dump", path)
                self.assertEqual(dumped.stdout.decode(), path.with_suffix(".json").read_text())
                log = path.with_suffix(".log").read_text()
                self.assertEqual(dumped.returncode, 1 if "error " in log or "result true" not in log else 0)

    def test_compact_and_indented_are_the_same_scene(self):
        for path in TEXTS:
            with self.subTest(path.name):
                compact = run("dump", "--compact", path).stdout
                self.assertEqual(compact.count(b"\n"), 1)
                self.assertEqual(json.loads(compact), json.loads(run("dump", path).stdout))


class Dump(Folder):
    def test_scene_is_printed_also_when_the_parse_failed(self):
        self.file("bad.vrn", "t a; a.x = 1; oops")
        result = self.run_here("dump", "--compact", "bad.vrn")
        self.assertEqual(result.returncode, 1)
        self.assertEqual(json.loads(result.stdout)["nodes"][0]["inputs"], [{"name": "x", "type": "Int", "value": 1}])
        self.assertIn(b"bad.vrn:1:13: error: PARSE ERROR (1,13): unrecognized token 'oops'..\n", result.stderr)

    def test_data_may_be_left_out(self):
        result = run("dump", "--no-data", "-", stdin=b"t a; a.x = byte[2] {1 2};")
        self.assertEqual(
            json.loads(result.stdout)["nodes"][0]["inputs"],
            [{"name": "x", "type": "Buffer", "dataType": "Byte", "count": 2}],
        )

    def test_several_files_follow_each_other(self):
        self.file("a.vrn", "t a;")
        self.file("b.vrn", "t b;")
        result = self.run_here("dump", "--compact", "a.vrn", "nowhere.vrn", "b.vrn")
        self.assertEqual(result.returncode, 2)
        names = [json.loads(line)["nodes"][0]["name"] for line in result.stdout.splitlines()]
        self.assertEqual(names, ["a", "b"])

    def test_full_device_is_reported(self):
        with open("/dev/full", "wb") as full:
            result = subprocess.run([VRN, "dump", ROOT / "examples" / "spot.vrn"], stdout=full, stderr=subprocess.PIPE)
        self.assertEqual(result.returncode, 2)
        self.assertEqual(result.stderr.decode(), "vrn: standard output: No space left on device\n")


    def test_folder_is_no_scene(self):
        result = self.run_here("dump", ".")
        self.assertEqual((result.returncode, result.stderr), (2, b"vrn: .: Is a directory\n"))


class Types(Folder):
    CATALOGUE = '{"types": {"camera": {"inputs": {"fov": {"type": "Real", "default": 45}}, "outputs": ["image"]}}}'

    def test_nodes_follow_the_catalogue(self):
        self.file("types.json", self.CATALOGUE)
        for command in ("check", "dump", "info"):
            result = self.run_here(command, "--types", "types.json", "-", stdin=b"camera c; camera d; d.x |= c.sound;")
            self.assertEqual(result.returncode, 0, command)
            self.assertIn(b"Cannot connect nonexistent output c.sound to d.x.", result.stdout + result.stderr)
        dumped = self.run_here("dump", "--types", "types.json", "-", stdin=b"camera c;")
        self.assertEqual(
            json.loads(dumped.stdout)["nodes"][0]["inputs"], [{"name": "fov", "type": "Real", "value": 45}]
        )

    def test_bad_catalogue_is_refused_whole(self):
        self.file("types.json", '{"types": {"a": {},\n"a": {}}}')
        for command in ("check", "dump", "info"):
            result = self.run_here(command, "--types", "types.json", "-", stdin=b"t a;")
            self.assertEqual(result.returncode, 2)
            self.assertEqual(result.stdout, b"")
            self.assertEqual(
                result.stderr.decode(),
                'types.json:2:3: error: key "a" is repeated; expected each key once\n',
            )
        result = self.run_here("check", "--types", "nowhere.json", "-")
        self.assertEqual((result.returncode, result.stderr), (2, b"vrn: nowhere.json: No such file or directory\n"))


class Info(Folder):
    # A square of one polygon that two nodes show, one of them below a parent, and meshes that no node shows.
    MESHES = (
        b"mesh m; m.points = vec3f[4] {0 0 0  1 0 0  1 1 0  0 1 0}; m.faceCounts = int32[1] {4};"
        b"m.faceIndices = int32[4] {0 1 2 3};\n"
        b"instance i; i.geometry = m; i.translation = vec3(10 0 0); i.scale = vec3(2 3 1);\n"
        b"group g; g.rotation = quat(0 0 0.70710678118654752 0.70710678118654752);\n"
        b"instance j; j.geometry = m; j.parent = g; j.translation = vec3(0 0 5);\n"
        b"mesh t; t.points = vec3f[3] {0 0 0  0.1 0 0  0 -7 0}; t.triangles = vec3u[1] {0 1 2};\n"
        b"mesh l; l.points = vec3f[2] {0 0 0  0 0 -1}; l.indices = int32[2] {0 1}; l.topology = \"lines\";\n"
        b"mesh bad; bad.points = vec3f[1] {0 0 0}; bad.triangles = vec3u[1] {0 1 2};\n"
    )

    def test_measures_meshes(self):
        text = run("info", "-", stdin=self.MESHES).stdout.decode()
        self.assertIn("\n  meshes       4 (9 points, 2 faces, 3 triangles)\n  bounds       (-1 -7 -1) to (12 3 5)\n", text)

    def test_writes_json(self):
        self.file("a.vrn", self.MESHES)
        self.file("b\x1b.vrn", b"# version: 3\n# time: noon\ndefine d; d t; d.x = 1; t.b = byte[2] {1 2}; t.r = t; t.i |= t.o; t.b = 1;")
        result = self.run_here("info", "--format", "json", "a.vrn", "b\x1b.vrn")
        self.assertEqual(result.returncode, 1)
        self.assertNotIn(b"\x1b", result.stdout)
        a, b = map(json.loads, result.stdout.decode().splitlines())
        self.assertEqual(a["bounds"], {"min": [-1, -7, -1], "max": [12, 3, 5]})
        square = {"min": [0, 0, 0], "max": [1, 1, 0]}
        expected = [
            {"name": "m", "valid": True, "topology": "polygons", "points": 4, "faces": 1, "triangles": 2, "bounds": square},
            {"name": "t", "valid": True, "topology": "triangles", "points": 3, "faces": 1, "triangles": 1,
             "bounds": {"min": [0, -7, 0], "max": [0.1, 0, 0]}},
            {"name": "l", "valid": True, "topology": "lines", "points": 2, "faces": 0, "triangles": 0,
             "bounds": {"min": [0, 0, -1], "max": [0, 0, 0]}},
            {"name": "bad", "valid": False},
        ]
        self.assertEqual(a["meshes"], expected)
        self.assertEqual(b, {
            "file": "b\x1b.vrn", "version": 3, "time": "noon", "comments": 2, "definitions": 1, "nodes": 1,
            "types": {"d": 1}, "inputs": 4, "buffers": {"count": 1, "elements": 2, "bytes": 2},
            "links": {"connections": 1, "references": 1}, "meshes": [], "bounds": None,
            "diagnostics": {"errors": 1, "warnings": 0}})

    def test_summarises(self):
        result = run("info", "-", stdin=b"# version: 3\n# time: noon \x1b\ndefine d; d t; d.x = 1; t.b = byte[2] {1 2}; t.r = t; t.i |= t.o;")
        self.assertEqual(
            result.stdout.decode(),
            "<stdin>\n"
            "  version      3\n"
            "  time         noon \\x1B\n"
            "  comments     2\n"
            "  definitions  1\n"
            "  nodes        1\n"
            "               d: 1\n"
            "  inputs       4\n"
            "  buffers      1 (2 elements, 2 bytes)\n"
            "  links        1 connection, 1 reference\n"
            "  diagnostics  0 errors, 0 warnings\n",
        )
        self.assertEqual(result.returncode, 0)

    def test_exit_statuses(self):
        self.assertEqual(run("info", "-", stdin=b"oops").returncode, 1)
        self.assertEqual(run("info", "nowhere").returncode, 2)


class Usage(unittest.TestCase):
    def test_help_has_an_example_for_each_command(self):
        overview = run("--help")
        self.assertEqual(overview.returncode, 0)
        for command in ("check", "dump", "info"):
            self.assertIn(f"vrn {command}", overview.stdout.decode())
            text = run(command, "--help")
            self.assertEqual(text.returncode, 0)
            self.assertIn("Example", text.stdout.decode())
            self.assertIn(f"vrn {command} ", text.stdout.decode())
            self.assertIn("Exit status", text.stdout.decode())

    def test_version(self):
        self.assertRegex(run("--version").stdout.decode(), r"^vrn \d+\.\d+\.\d+\n$")

    def test_files_after_two_dashes_may_look_like_options(self):
        with tempfile.TemporaryDirectory() as folder:
            for name in ("-x.vrn", "a.vrn", "--"):
                pathlib.Path(folder, name).write_text("t a;")
            for arguments in (["a.vrn", "--", "-x.vrn"], ["--", "a.vrn", "-x.vrn", "--"], ["--format", "text", "--", "-x.vrn"]):
                result = run("check", *arguments, cwd=folder)
                self.assertEqual(result.returncode, 0, result.stderr)

    def test_help_that_cannot_be_written_is_reported(self):
        for option in ("--help", "--version"):
            with open("/dev/full", "wb") as full:
                result = subprocess.run([VRN, option], stdout=full, stderr=subprocess.PIPE)
            self.assertEqual(result.returncode, 2, option)
            self.assertIn(b"No space left on device", result.stderr)

    def test_invalid_values(self):
        for arguments, said in (
            (["graph", "--around", "", "x.vrn"], b"the value is empty"),
            (["graph", "--hops", "5", "x.vrn"], b"--hops requires --around NODE"),
            (["tree", "--elements", "-1", "x.vrn"], b"-1 is not a whole number"),
            (["check", "--jobs", "300", "x.vrn"], b"300 is not a whole number from 0 to 256"),
            (["diff", "--tolerance", "-1", "a.vrn", "b.vrn"], b"-1 is not a finite number of at least 0"),
            (["diff", "--tolerance", "0.1x", "a.vrn", "b.vrn"], b"0.1x is not a finite number of at least 0"),
        ):
            result = run(*arguments)
            self.assertEqual(result.returncode, 2, arguments)
            self.assertIn(said, result.stderr, arguments)

    def test_invalid_arguments(self):
        misuses = {
            "": b"no command given\nSee vrn --help.\n",
            "check": b"FILE is required: name a file, or - for standard input\nSee vrn check --help.\n",
            "frobnicate": b"vrn: unknown command 'frobnicate'\n",
            "dmup scene.vrn": b"vrn: unknown command 'dmup', did you mean 'dump'?\nSee vrn --help.\n",
            "--bogus": b"--bogus",
            "check --format xml -": b"xml",
            "dump --bogus -": b"--bogus",
            "info --types '' -": b"--types",
        }
        for words, reason in misuses.items():
            arguments = shlex.split(words)
            result = run(*arguments)
            self.assertTrue(result.stderr.startswith(b"vrn: "), result)
            self.assertIn(reason, result.stderr)
            self.assertEqual(result.returncode, 2, arguments)
            self.assertEqual(result.stdout, b"", arguments)


if __name__ == "__main__":
    unittest.main()
