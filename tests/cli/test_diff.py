"""`vrn diff`."""
import json
import unittest

from command import ROOT, Folder, run

FIRST = ROOT / "examples" / "first_scene.vrn"


class Diff(Folder):
    def diff(self, before, after, *options):
        self.file("a.vrn", before)
        self.file("b.vrn", after)
        result = self.run_here("diff", *options, "a.vrn", "b.vrn")
        self.assertEqual(result.stderr, b"")
        self.assertEqual(result.returncode, 1 if result.stdout else 0)
        return result.stdout.decode().splitlines()

    def test_examples_are_the_same_as_themselves(self):
        for path in sorted((ROOT / "examples").glob("*.vrn")):
            result = run("diff", path, path)
            self.assertEqual((result.returncode, result.stdout, result.stderr), (0, b"", b""), path)

    def test_how_a_scene_is_written_is_no_difference(self):
        self.assertEqual(
            self.diff("t a; a.x = 1.0; a.y.z = 2;u b;\n", "t a:\n.y.z = 2; .x = 1.; t unused; remove unused; u b;"), []
        )

    def test_each_kind_of_difference_is_reported(self):
        before = FIRST.read_text()
        after = before
        for old, new in (
            ("version: 1", "version: 2"),
            ("time: 2026-02-03", "time: 2026-02-04"),
            ("fov = 45.0", "fov = 50.0"),
            ("cam1.target = null", "cam1.target = box"),
            ("(0.5, -0.5, -0.5)", "(0.75, -0.5, -0.5)"),
            (".smooth = false;", ""),
            ("checker.outColor", "checker.outAlpha"),
            ("paint glass:", "paint mirror:"),
            ("checker 4x2", "checker 4x3"),
            ("boxB.material |= glass.outColor;", "boxB.material |= mirror.outColor; boxB.visible = true;"),
            ("-1.25 0.5 0 1", "-1.25 0.75 0 1"),
            ('world.tags[1] = "boxes";', ""),
            ("light key;", "lamp key;"),
            ("key.samples = 16;", "key.samples = 16.5;"),
        ):
            self.assertIn(old, after)
            after = after.replace(old, new, 1)
        self.assertEqual(
            self.diff(before, after),
            [
                "~ version: 1 -> 2",
                '~ time: "2026-02-03 18:45" -> "2026-02-04 18:45"',
                '~ comments: from 0: "# version: 1" -> "# version: 2"',
                "~ cam1.fov: 45 -> 50",
                "~ cam1.target: reference none -> box",
                "~ box.points: 1 of 8 elements differs, largest difference 0.25 at 1, first at 1",
                "- box.smooth: Bool = false",
                "~ red.colorMap: connection checker.outColor -> checker.outAlpha",
                "- glass (paint)",
                '~ checker.file: "C:\\\\textures\\\\checker 4x2.png" -> "C:\\\\textures\\\\checker 4x3.png"',
                "~ boxA.transform: 1 of 16 numbers differs, largest difference 0.25 at 13, first at 13",
                "~ boxB.material: connection glass.outColor -> mirror.outColor",
                "+ boxB.visible: Bool = true",
                "~ world.tags: 2 -> 1 elements",
                "~ key: type light -> lamp",
                "~ key.samples: type Int -> Real",
                "+ mirror (paint)",
            ],
        )

    def test_definitions(self):
        self.assertEqual(self.diff("define a; t b;", "t a; define b;"),
                         ["~ a: type a -> t", "~ a: definition -> node", "~ b: type t -> b", "~ b: node -> definition"])
        self.assertEqual(self.diff("define a;", ""), ["- a (definition)"])

    def test_order_of_nodes_is_reported_once(self):
        self.assertEqual(self.diff("t a; t b; t c; t d;", "t new; t a; t d; t c; t b;"),
                         ["~ order of nodes: first b -> d", "+ new (t)"])
        self.assertEqual(self.diff("t a; t b; t c;", "t a; t c;"), ["- b (t)"])

    def test_arrays_and_objects(self):
        self.assertEqual(
            self.diff("t a; a.w[0] = 1; a.w[1] = 2; a.o.p.q = 1; a.o.r = 1; a.e = [];",
                      "t a; a.w[0] = 1; a.w[1] = 3; a.w[2] = 4; a.o.p.q = 2; a.o.s = 1; a.e[0] = 1;"),
            ["~ a.w: 2 -> 3 elements", "~ a.w[1]: 2 -> 3", "~ a.o.p.q: 1 -> 2", "- a.o.r: Int = 1", "+ a.o.s: Int = 1",
             "~ a.e: element type Null -> Int", "~ a.e: 0 -> 1 elements"],
        )

    def test_tolerance_is_for_real_numbers(self):
        before = "t a; a.r = 1.0; a.v = vec3(1 2 3); a.f = float[3] {1 2 3}; a.d = vec2d[2] {1 2 3 4}; a.i = 1; a.b = int32[1] {1};"
        after = "t a; a.r = 1.25; a.v = vec3(1 2 3.25); a.f = float[3] {1 2.25 3.125}; a.d = vec2d[2] {1 2 3 4.25}; a.i = 2; a.b = int32[1] {2};"
        self.assertEqual(
            self.diff(before, after),
            ["~ a.r: 1 -> 1.25", "~ a.v: 1 2 3 -> 1 2 3.25",
             "~ a.f: 2 of 3 elements differ, largest difference 0.25 at 1, first at 1",
             "~ a.d: 1 of 2 elements differs, largest difference 0.25 at 1, first at 1",
             "~ a.i: 1 -> 2", "~ a.b: 1 of 1 elements differs, largest difference 1 at 0, first at 0"],
        )
        self.assertEqual(len(self.diff(before, after, "--tolerance", "0.24")), 6)
        self.assertEqual([line.split(":")[0] for line in self.diff(before, after, "--tolerance", "0.25")],
                         ["~ a.i", "~ a.b"])
        for wrong in ("-1", "x", "nan"):
            self.assertEqual(self.run_here("diff", "--tolerance", wrong, "a.vrn", "b.vrn").returncode, 2, wrong)

    def test_special_numbers(self):
        same = "t a; a.r = -nan; a.z = %s; a.f = float[3] {nan inf %s}; a.v = vec2(nan %s);"
        self.assertEqual(self.diff(same % ("0.0", "0", "0"), same % ("-0.0", "-0", "-0")), [])
        self.assertEqual(self.diff("t a; a.r = -nan; a.f = float[2] {1 inf};", "t a; a.r = 1.0; a.f = float[2] {nan inf};",
                                   "--tolerance", "1000"),
                         ["~ a.r: nan -> 1", "~ a.f: 1 of 2 elements differs, largest difference inf at 0, first at 0"])
        self.assertEqual(self.diff("t a; a.r = 1.0e999;", "t a; a.r = -inf;"), ["~ a.r: inf -> -inf"])

    def test_buffers_of_all_integers_at_their_limits(self):
        limits = {"byte": (0, 255), "char": (-128, 127), "int16": (-32768, 32767), "uint64": (0, 18446744073709551615),
                  "int64": (-9223372036854775808, 9223372036854775807)}
        for kind, (least, most) in limits.items():
            line, = self.diff(f"t a; a.b = {kind}[1] {{{least}}};", f"t a; a.b = {kind}[1] {{{most}}};")
            shown = line.split("largest difference ")[1].split(" ")[0]
            self.assertEqual(float(shown), float(most - least), kind)

    def test_buffers_of_other_lengths_and_types(self):
        self.assertEqual(
            self.diff("t a; a.b = byte[3] {1 2 3}; a.c = float[1] {1};", "t a; a.b = byte[2] {1 3}; a.c = double[1] {1};"),
            ["~ a.b: 3 -> 2 elements", "~ a.b: 1 of 2 elements differs, largest difference 1 at 1, first at 1",
             "~ a.c: element type float -> double"],
        )

    def test_long_strings_are_shown_where_they_differ(self):
        line, = self.diff(f't a; a.s = "{"ä" * 200}x";', f't a; a.s = "{"ä" * 200}y";')
        self.assertTrue(line.startswith('~ a.s: from byte 400: "...ä'), line)
        self.assertIn('äx" -> ', line)
        self.assertTrue(line.endswith('äy"'), line)
        line, = self.diff('t a; a.s = "short";', f't a; a.s = "short{"y" * 200}";')
        self.assertTrue(line.startswith('~ a.s: from byte 5: "short" -> "shorty'), line)

    def test_nothing_that_a_terminal_obeys_is_printed(self):
        lines = self.diff("# \x1b[31m\nt a; a.s = \"\x1b\";", "# \x07\nt a; a.s = \"\x07\";")
        self.assertEqual(lines, ['~ comments: from 0: "# \\x1B[31m" -> "# \\x07"', '~ a.s: "\\x1B" -> "\\x07"'])

    def test_json_is_one_object_a_line(self):
        lines = self.diff("# version: 1\nt a; a.x = 1; a.r = -nan; a.b = byte[2] {1 2}; a.w[0] = 1; a.l |= a.o; t gone;",
                          "# version: 2\nt a; a.x = 2; a.r = 1.0e999; a.b = byte[2] {1 4}; a.w[1] = 1; a.l |= null; u new;",
                          "--format", "json")
        self.assertEqual(
            [json.loads(line) for line in lines],
            [
                {"change": "changed", "aspect": "version", "before": 1, "after": 2},
                {"change": "changed", "aspect": "comments", "index": 0, "before": "# version: 1", "after": "# version: 2"},
                {"change": "changed", "aspect": "value", "path": "a.x", "before": 1, "after": 2},
                {"change": "changed", "aspect": "value", "path": "a.r", "before": "nan", "after": "inf"},
                {"change": "changed", "aspect": "elements", "path": "a.b", "differing": 1, "compared": 2, "first": 1,
                 "largestAt": 1, "largest": 2},
                {"change": "changed", "aspect": "count", "path": "a.w", "before": 1, "after": 2},
                {"change": "changed", "aspect": "value", "path": "a.w[0]", "before": 1, "after": 0},
                {"change": "changed", "aspect": "connection", "path": "a.l", "before": "a.o", "after": None},
                {"change": "removed", "aspect": "node", "path": "gone", "type": "t"},
                {"change": "added", "aspect": "node", "path": "new", "type": "u"},
            ],
        )

    def test_deep_nesting(self):
        path = ".a" * 100000
        line, = self.diff(f"t n; n{path} = 1;", f"t n; n{path} = 2;")
        self.assertTrue(line.endswith(".a.a: 1 -> 2"))
        self.assertLess(len(line), 1100)

    def test_trouble(self):
        self.file("ok.vrn", "t a;")
        self.file("bad.vrn", "t a; a.x = ;")
        for pair in (("ok.vrn", "bad.vrn"), ("bad.vrn", "ok.vrn")):
            result = self.run_here("diff", *pair)
            self.assertEqual((result.returncode, result.stdout), (2, b""))
            self.assertIn(b"bad.vrn:1:12: error: BAD TOKEN", result.stderr)
        for pair in (("ok.vrn", "nowhere"), ("nowhere", "ok.vrn"), ("-", "-"), ("ok.vrn",), (".", "ok.vrn")):
            result = self.run_here("diff", *pair)
            self.assertEqual((result.returncode, result.stdout), (2, b""))
            self.assertTrue(result.stderr.startswith(b"vrn: "), result.stderr)
        self.assertEqual(self.run_here("diff", "-", "ok.vrn", stdin=b"t a;").returncode, 0)
        self.assertEqual(self.run_here("diff", "ok.vrn", "-", stdin=b"t b;").returncode, 1)


if __name__ == "__main__":
    unittest.main()
