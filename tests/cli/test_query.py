"""`vrn query`."""
import json
import os
import pty
import subprocess
import unittest

from command import ROOT, VRN, Folder, run

FIRST = ROOT / "examples" / "first_scene.vrn"
SCENE = b"""t cam1: .fov = 45.5; .n = 3u; .on = TRUE; .at = pos3(1 2.5 -3); .s = "two\\nlines\\t"; .none |= null;
t cam2: .fov = 30; .type = "mine"; .ref = cam1; .nobody = null; .link |= cam1.out; .both = 1; .both |= cam1.out;
mesh m: .p = vec3f[4] {0 1 2 3 4 5 6 7 8 9 10 11}; .i = int32[3] {-1 0 1}; .w[0] = 1.5; .w[1] = 2.5; .w[2] = 3.5;
.uv[0].name = "u"; .uv[1].name = "v"; .o.p.q = 7; .deep[1][1] = 5; .e = float[0] {};
"""


def query(*paths):
    result = run("query", "-", *paths, stdin=SCENE)
    return result.stdout.decode(), result.stderr.decode(), result.returncode


class Query(Folder):
    def assert_prints(self, path, *lines):
        self.assertEqual(query(path), ("".join(line + "\n" for line in lines), "", 0), path)

    def test_values_are_bare(self):
        for path, *lines in (
            ("cam1.fov", "45.5"), ("cam1.n", "3"), ("cam1.on", "true"), ("cam1.at", "1 2.5 -3"),
            ("cam1.s", "two", "lines\t"), ("cam1.none", "null"), ("cam2.ref", "cam1"), ("cam2.nobody", "null"),
            ("cam2.link", "cam1.out"), ("cam2.both", "1"), ("m.p", "0 1 2", "3 4 5", "6 7 8", "9 10 11"),
            ("m.i", "-1", "0", "1"), ("m.w", "1.5", "2.5", "3.5"), ("m.w[1]", "2.5"), ("m.uv[1].name", "v"),
            ("m.o.p.q", "7"), ("m.deep[1][1]", "5"), ("m.o", "{1 member}"), ("m.e",), ("m.e[:]",), ("m", "mesh"),
        ):
            with self.subTest(path):
                self.assert_prints(path, *lines)

    def test_slices(self):
        for path, *lines in (
            ("m.i[0]", "-1"), ("m.i[-1]", "1"), ("m.i[1:]", "0", "1"), ("m.i[:1]", "-1"), ("m.i[-2:]", "0", "1"),
            ("m.i[:-2]", "-1"), ("m.i[:]", "-1", "0", "1"), ("m.i[*]", "-1", "0", "1"), ("m.i[0:99]", "-1", "0", "1"),
            ("m.i[2:1]",), ("m.i[5:9]",), ("m.p[1:3]", "3 4 5", "6 7 8"), ("m.p[3]", "9 10 11"),
            ("m.w[0:2]", "1.5", "2.5"), ("m.w[-1]", "3.5"), ("m.w[9:]",), ("m.i[-9223372036854775808:9223372036854775807]",
             "-1", "0", "1"),
        ):
            with self.subTest(path):
                self.assert_prints(path, *lines)

    def test_patterns_say_where(self):
        self.assert_prints("cam*.fov", "cam1.fov\t45.5", "cam2.fov\t30")
        self.assert_prints("cam?.fov", "cam1.fov\t45.5", "cam2.fov\t30")
        self.assert_prints("*", "cam1\tt", "cam2\tt", "m\tmesh")
        self.assert_prints("cam1.o*", "cam1.on\ttrue")
        self.assert_prints("*.uv[*].name", "m.uv[0].name\tu", "m.uv[1].name\tv")
        self.assert_prints("m.uv[1:].name", "m.uv[1].name\tv")
        self.assert_prints("*.i[1:]", "m.i[1]\t0", "m.i[2]\t1")
        self.assert_prints("*.w", "m.w[0]\t1.5", "m.w[1]\t2.5", "m.w[2]\t3.5")
        self.assert_prints("*1.s", "cam1.s\ttwo\\nlines\\t")
        self.assert_prints("m.*.p.*", "m.o.p.q\t7")

    def test_type_and_name_of_nodes_unless_they_are_inputs(self):
        self.assert_prints("*.type", "cam1.type\tt", "cam2.type\tmine", "m.type\tmesh")
        self.assert_prints("*.name", "cam1.name\tcam1", "cam2.name\tcam2", "m.name\tm")
        self.assert_prints("m.type", "mesh")
        self.assertEqual(query("m.o.type")[2], 1)
        self.assertEqual(query("m.type.x")[2], 1)

    def test_counts_of_buffers_and_arrays(self):
        self.assert_prints("m.p.count", "4")
        self.assert_prints("*.*.count", "m.p.count\t4", "m.i.count\t3", "m.w.count\t3", "m.uv.count\t2", "m.deep.count\t2", "m.e.count\t0")
        self.assertEqual(query("m.o.count")[2], 1)

    def test_several_paths_answer_in_their_order(self):
        self.assertEqual(query("m.o.p.q", "cam1.fov")[0], "7\n45.5\n")

    def test_a_path_without_a_match_is_reported_with_its_longest_match(self):
        for path, reason in (
            ("cam9.fov", "not found: the scene has no such node; did you mean cam1 or cam2?"), ("cam1.fvo", "not found below cam1; did you mean fov?"),
            ("*.fvo", "not found below *; did you mean fov?"), ("cma1.fov", "not found: the scene has no such node; did you mean cam1?"),
            ("*.nothing", "not found below *"),
            ("m.o.p.x", "not found below m.o.p"), ("m.i[3]", "not found below m.i"), ("m.i[-4]", "not found below m.i"),
            ("m.w[3]", "not found below m.w"), ("m.o[0]", "not found below m.o"), ("m.w.x", "not found below m.w"),
            ("m.p[0][0]", "not found below m.p"), ("m.p[:][0]", "not found below m.p"), ("x*.y", "not found: the scene has no such node"),
            ("m.i.x", "not found below m.i"), ("m.w.*", "not found below m.w"), ("cam1.fov[0]", "not found below cam1.fov"),
        ):
            with self.subTest(path):
                self.assertEqual(query(path), ("", f"vrn: {path}: {reason}\n", 1))
        self.assertEqual(query("cam9.x", "cam1.fov")[0], "45.5\n")

    def test_malformed_paths_are_rejected_with_the_position(self):
        for path, reason in (
            (".x", "1: expected a name"), ("a..b", "3: expected a name"),
            ("a.", "3: expected a name"), ("a[", "3: expected an index"), ("a[]", "3: expected an index"),
            ("a[x]", "3: expected an index"), ("a[1", "4: expected ]"), ("a[1:2:3]", "6: expected ]"),
            ("a[1]b", "5: expected . or ["), ("a]", "2: expected . or ["), ("[1]", "1: expected a name"),
            ("a[-]", "3: invalid index"), ("a[99999999999999999999]", "3: invalid index"),
            ("a[+1]", "3: expected an index"), ("a[1 ]", "4: expected ]"), ("a\x1b..", "4: expected a name"),
        ):
            with self.subTest(path):
                output, error, status = query(path)
                self.assertEqual((output, status), ("", 2))
                self.assertIn("at byte " + reason, error)
                self.assertNotIn("\x1b", error)

    def test_json(self):
        def lines(*paths):
            return [json.loads(line) for line in run("query", "--format", "json", "-", *paths, stdin=SCENE).stdout.splitlines()]

        self.assertEqual(
            lines("cam*.fov", "m.p[1]", "m.p[2:4]", "m.i", "cam2.both", "m.w[1:]", "m.o", "cam2", "cam1.type", "m.p.count", "m.uv[0].name", "m.deep", "cam1.s"),
            [
                {"path": "cam1.fov", "type": "Real", "value": 45.5},
                {"path": "cam2.fov", "type": "Int", "value": 30},
                {"path": "m.p[1]", "type": "Vec3f", "value": [3, 4, 5]},
                {"path": "m.p[2:4]", "type": "Buffer", "dataType": "Vec3f", "value": [[6, 7, 8], [9, 10, 11]]},
                {"path": "m.i", "type": "Buffer", "dataType": "Int32", "value": [-1, 0, 1]},
                {"path": "cam2.both", "type": "Int", "connection": "cam1.out", "value": 1},
                {"path": "m.w[1:3]", "type": "Array", "value": [2.5, 3.5]},
                {"path": "m.o", "type": "Object", "value": {"p": {"q": 7}}},
                {"path": "cam2", "type": "t", "value": {"fov": 30, "type": "mine", "ref": "cam1", "nobody": None,
                                                         "link": "cam1.out", "both": 1}},
                {"path": "cam1.type", "type": "String", "value": "t"},
                {"path": "m.p.count", "type": "UInt", "value": 4},
                {"path": "m.uv[0].name", "type": "String", "value": "u"},
                {"path": "m.deep", "type": "Array", "value": [[], [0, 5]]},
                {"path": "cam1.s", "type": "String", "value": "two\nlines\t"},
            ],
        )

    def test_values_are_those_of_the_dump(self):
        for path in sorted((ROOT / "examples").glob("*.vrn")):
            nodes = json.loads(run("dump", path).stdout)["nodes"]
            lines = run("query", "--format", "json", path, "*.*").stdout.splitlines()
            answers = {answer["path"]: answer for answer in map(json.loads, lines)}
            inputs = {node["name"] + "." + i["name"]: i for node in nodes for i in node["inputs"]}
            self.assertEqual(list(answers), list(inputs), path)
            for name, i in inputs.items():
                value = answers[name]["value"]
                self.assertEqual(answers[name]["type"], i["type"])
                if i["type"] == "Buffer":
                    flat = [n for e in value for n in e] if value and isinstance(value[0], list) else value
                    self.assertEqual(flat, i["data"], name)
                elif "value" in i:
                    self.assertEqual(value, i["value"], name)

    def test_a_terminal_gets_strings_escaped(self):
        path = self.file("s.vrn", b't a; a.s = "\x1b[31m"; a.w[0] = "\x07";')
        self.assertEqual(run("query", path, "a.s").stdout, b"\x1b[31m\n")
        ours, theirs = pty.openpty()
        os.set_blocking(ours, False)
        process = subprocess.run([VRN, "query", path, "a.s", "a.w"], stdout=theirs, timeout=60)
        self.assertEqual(process.returncode, 0)
        self.assertEqual(os.read(ours, 1000), b"\\x1B[31m\r\n\\x07\r\n")
        os.close(theirs)
        os.close(ours)

    def test_a_scene_with_an_error_can_be_queried(self):
        result = run("query", "-", "a.x", stdin=b"t a; a.x = 1; oops")
        self.assertEqual((result.returncode, result.stdout), (1, b"1\n"))
        self.assertIn(b"unrecognized token 'oops'", result.stderr)
        self.assertEqual(run("query", "nowhere", "a").returncode, 2)
        self.assertEqual(run("query", FIRST).returncode, 2)

    def test_large_and_deep_scenes(self):
        count = 100000
        text = b"t n: " + b"".join(b".i%d = %d;" % (i, i) for i in range(count)) + b"t m;"
        text += b"".join(b"t m%d;" % i for i in range(count))
        path = self.file("large.vrn", text)
        result = run("query", path, "n.*", f"n.i{count - 1}", "*.type", f"m{count - 1}.name")
        self.assertEqual(len(result.stdout.splitlines()), count + 1 + count + 2 + 1)
        path = self.file("deep.vrn", b"t n; n" + b".a" * 60000 + b" = 7;")
        self.assertEqual(run("query", path, "n" + ".a" * 60000).stdout, b"7\n")
        self.assertEqual(run("query", path, "*" + ".a" * 60000 + ".b").returncode, 1)
        self.assertTrue(run("query", "--format", "json", path, "n").stdout.endswith(b"7" + b"}" * 60001 + b"\n"))


if __name__ == "__main__":
    unittest.main()
