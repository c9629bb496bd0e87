"""`vrn graph`, and the pictures that dot renders from its output."""
import html
import json
import os
import re
import subprocess
import unittest
import xml.etree.ElementTree

from command import ROOT, Folder, run

FIRST = ROOT / "examples" / "first_scene.vrn"


def graph(*arguments, stdin=b""):
    return run("graph", *arguments, stdin=stdin)


def shown_text(text):
    """The text of a label as it appears in the picture."""
    return html.unescape(text).replace("\\\\", "\\")


def names(dot):
    """The names of the nodes by identifier."""
    labels = re.findall(r"^  (n\d+) \[label=<.*?<B>(.*?)</B>", dot, re.M | re.S)
    return {identifier: shown_text(name) for identifier, name in labels}


def links(dot):
    """(from, output or None, to, input, attributes) of each edge, with the names in the rows of the tables."""
    rows = {}
    for identifier, label in re.findall(r"^  (n\d+) \[label=<(.*?)>\];$", dot, re.M | re.S):
        for port, text in re.findall(r'PORT="(\w+)"[^>]*><FONT[^>]*>(.*?)</FONT>', label):
            rows[identifier + ":" + port] = shown_text(text)
    nodes = names(dot)
    return [(nodes[a], rows.get(f"{a}:{p}"), nodes[b], rows[f"{b}:{q}"], rest)
            for a, p, b, q, rest in re.findall(r"^  (n\d+):(\w+):e -> (n\d+):(\w+):w \[(.*)\];$", dot, re.M)]


class Dot(Folder):
    def test_every_link_of_the_examples_is_a_line(self):
        for path in sorted((ROOT / "examples").glob("*.vrn")):
            with self.subTest(path.name):
                result = graph(path)
                self.assertEqual((result.returncode, result.stderr), (0, b""))
                shown = links(result.stdout.decode())
                info = run("info", path).stdout.decode()
                connections, references = map(int, re.search(r"(\d+) connections?, (\d+) references?", info).groups())
                self.assertEqual(sum("dashed" not in rest for *_, rest in shown), connections)
                self.assertEqual(sum(("dashed" in rest) + ("both" in rest) for *_, rest in shown), references)
                canonical = subprocess.run(["dot", "-Tcanon"], input=result.stdout, capture_output=True)
                self.assertEqual((canonical.returncode, canonical.stderr), (0, b""))

    def test_links_lead_from_what_is_used_to_who_uses_it(self):
        dot = graph(FIRST).stdout.decode()
        self.assertEqual(
            [link[:4] for link in links(dot)],
            [("red", "outColor", "box", "material"), ("checker", "outColor", "red", "colorMap"),
             ("box", None, "boxA", "geometry"), ("box", None, "boxB", "geometry"),
             ("glass", "outColor", "boxB", "material"), ("boxA", None, "world", "children[0]"),
             ("boxB", None, "world", "children[1]"), ("world", None, "key", "target")],
        )
        self.assertEqual(len(names(dot)), 10)

    def test_two_that_refer_to_each_other_share_a_line(self):
        text = b"g top; i a; i b; a.parent = top; b.parent = top; top.kids[0] = a; top.kids[1] = b; a.self = a; b.also = top;"
        shown = links(graph("-", stdin=text).stdout.decode())
        self.assertEqual(
            [link[:4] + ("both" in link[4],) for link in shown],
            [("top", "kids[0]", "a", "parent", True), ("top", "kids[1]", "b", "parent", True), ("a", None, "a", "self", False),
             ("top", None, "b", "also", False)],
        )

    def test_a_type_has_the_same_colour_everywhere(self):
        def fill(text, name):
            return re.search(rf'BGCOLOR="([0-9. ]+)"><B>{name}<', graph("-", stdin=text).stdout.decode()).group(1)

        self.assertEqual(fill(b"mesh a;", "a"), fill(b"camera z; light y; mesh b;", "b"))
        self.assertNotEqual(fill(b"mesh a;", "a"), fill(b"camera a;", "a"))

    def test_many_links_share_the_last_row(self):
        text = "t hub; t a; " + "".join(f"hub.x{i} |= a.o{i};" for i in range(100))
        dot = graph("-", stdin=text.encode()).stdout.decode()
        shown = links(dot)
        self.assertEqual(len(shown), 100)
        self.assertEqual(shown[39][:4], ("a", "o39", "hub", "x39"))
        self.assertEqual(shown[99][:4], ("a", "... 60 more", "hub", "... 60 more"))

    def test_names_may_hold_anything(self):
        odd = "<b>&\"\\N\x1b\u00e4 " + "x" * 100
        catalogue = {"types": {"t": {"inputs": {odd: {"type": "Node"}}, "outputs": [odd]}}}
        types = self.file("types.json", json.dumps(catalogue))
        text = f"t a; t b; {'y' * 100} c; u {'z' * 1000}; {'z' * 1000}.l = a;".encode()
        for ending in ("svg", "dot"):
            result = self.run_here("graph", "--types", types, "-o", "out." + ending, "-", stdin=text)
            self.assertEqual((result.returncode, result.stderr), (0, b""))
        self.assertNotIn(b"\x1b", (self.folder / "out.dot").read_bytes())
        svg = (self.folder / "out.svg").read_text()
        xml.etree.ElementTree.fromstring(svg)
        self.assertIn("z" * 40 + "...", svg)
        self.assertNotIn("z" * 41, svg)

    def test_odd_names_of_inputs_and_outputs(self):
        odd = "<b>&\"\\N\x1b\u00e4]"
        catalogue = {"types": {"t": {"inputs": {"old": {"type": "Node"}}, "outputs": [odd],
                                     "renamedOutputs": {"out": odd}}}}
        types = self.file("types.json", json.dumps(catalogue))
        result = self.run_here("graph", "--types", types, "-", stdin=b"t a; t b; b.old |= a.out;")
        self.assertEqual(links(result.stdout.decode())[0][:4], ("a", "<b>&\"\\N\\x1B\u00e4]", "b", "old"))
        drawn = subprocess.run(["dot", "-Tsvg"], input=result.stdout, capture_output=True)
        self.assertEqual((drawn.returncode, drawn.stderr), (0, b""))
        texts = [t.text for t in xml.etree.ElementTree.fromstring(drawn.stdout).iter("{http://www.w3.org/2000/svg}text")]
        self.assertIn("<b>&\"\\N\\x1B\u00e4]", texts)

    def test_long_names_cost_once(self):
        text = b"t " + b"n" * 1000000 + b":" + b"".join(b".x%d |= a.o;" % i for i in range(5000)) + b"t a;"
        self.assertLess(len(graph("-", stdin=text).stdout), 1000000)

    def test_empty_and_deep_scenes(self):
        self.assertEqual(names(graph("-").stdout.decode()), {})
        result = graph("-", stdin=b"t a; a" + b".b" * 100000 + b" = a;")
        self.assertEqual(len(links(result.stdout.decode())), 1)
        self.assertLess(len(result.stdout), 2000)

    def test_scene_with_an_error_is_drawn_up_to_the_error(self):
        result = graph("-", stdin=b"t a; t b; a.x = b; b.y |= c.o; oops")
        self.assertEqual(result.returncode, 1)
        self.assertIn(b"unrecognized token 'oops'", result.stderr)
        self.assertEqual(list(names(result.stdout.decode()).values()), ["a", "b"])
        self.assertEqual(graph("nowhere").returncode, 2)


class Around(Folder):
    def around(self, *arguments, scene=FIRST):
        return sorted(names(graph("--around", *arguments, scene).stdout.decode()).values())

    def test_hops_go_in_any_direction(self):
        self.assertEqual(self.around("red", "--hops", "0"), ["red"])
        self.assertEqual(self.around("red", "--hops", "1"), ["box", "checker", "red"])
        self.assertEqual(self.around("red"), ["box", "boxA", "boxB", "checker", "red"])
        self.assertEqual(self.around("red", "--hops", "99"),
                         ["box", "boxA", "boxB", "checker", "glass", "key", "red", "world"])
        self.assertEqual(self.around("cam1"), ["cam1"])

    def test_links_between_those_shown_stay(self):
        self.assertEqual(len(links(graph("--around", "red", FIRST).stdout.decode())), 4)

    def test_a_node_that_is_not_there_is_near_another(self):
        result = graph("--around", "boxC", FIRST)
        self.assertEqual((result.returncode, result.stdout), (2, b""))
        self.assertEqual(result.stderr, b"vrn: boxC: the scene has no such node; did you mean box or boxA or boxB?\n")
        self.assertEqual(graph("--around", "CHEKER", FIRST).stderr,
                         b"vrn: CHEKER: the scene has no such node; did you mean checker?\n")
        for far in ("quaternion\x1b", "x" * 100000):
            error = graph("--around", far, FIRST).stderr
            self.assertTrue(error.endswith(b": the scene has no such node\n"), error[-100:])
            self.assertNotIn(b"\x1b", error)


class Picture(Folder):
    STARTS = {"svg": b"<?xml", "png": b"\x89PNG", "pdf": b"%PDF", "dot": b"digraph scene {"}

    def test_formats(self):
        for ending, start in self.STARTS.items():
            result = self.run_here("graph", "-o", "out." + ending, FIRST)
            self.assertEqual((result.returncode, result.stdout, result.stderr), (0, b"", b""))
            self.assertTrue((self.folder / ("out." + ending)).read_bytes().startswith(start), ending)
        self.assertEqual(len(list(self.folder.iterdir())), 4)
        for name in ("out", "out.jpg", ".", "dot"):
            result = self.run_here("graph", "-o", name, FIRST)
            self.assertEqual(result.returncode, 2)
            self.assertIn(b"unknown picture format; use a name that ends in .dot, .svg, .png or .pdf", result.stderr)

    def test_examples_become_pictures(self):
        for name in ("material_gallery", "character", "city_block"):
            path = self.folder / (name + ".svg")
            self.assertEqual(graph("-o", path, ROOT / "examples" / (name + ".vrn")).returncode, 0)
            drawn = xml.etree.ElementTree.parse(path).getroot()
            nodes = [g for g in drawn.iter("{http://www.w3.org/2000/svg}g") if g.get("class") == "node"]
            count = len(json.loads(run("dump", "--no-data", ROOT / "examples" / (name + ".vrn")).stdout)["nodes"])
            self.assertEqual(len(nodes), count)

    def program(self, script):
        """An environment in which `dot` is the given script."""
        folder = self.folder / "bin"
        folder.mkdir(exist_ok=True)
        path = folder / "dot"
        path.write_text("#!/bin/sh\n" + script)
        path.chmod(0o755)
        return {**os.environ, "PATH": f"{folder}:/bin:/usr/bin"}

    def test_a_missing_program_is_named_with_its_package(self):
        result = self.run_here("graph", "-o", "out.svg", FIRST, env={**os.environ, "PATH": "/nowhere"})
        self.assertEqual(result.returncode, 2)
        self.assertEqual(result.stderr.decode(), "vrn: out.svg: the program dot is not installed; install the package "
                                                 "graphviz, or write a .dot file\n")
        self.assertEqual(list(self.folder.iterdir()), [])

    def test_a_failure_leaves_the_old_picture_alone(self):
        old = self.file("out.svg", "old")
        for script in ("exit 3\n", "echo half; kill -9 $$\n", "exec <&-; echo half; exit 1\n"):
            result = self.run_here("graph", "-o", "out.svg", FIRST, env=self.program(script))
            self.assertEqual(result.returncode, 2)
            self.assertIn(b"vrn: out.svg: the program dot failed", result.stderr)
            self.assertEqual(old.read_text(), "old")
            self.assertEqual(sorted(p.name for p in self.folder.iterdir()), ["bin", "out.svg"])

    def test_names_are_not_passed_to_a_shell(self):
        name = "$(touch bad); `touch bad`.svg"
        self.assertEqual(self.run_here("graph", "-o", name, FIRST).returncode, 0)
        self.assertEqual([p.name for p in self.folder.iterdir()], [name])

    def test_places_that_cannot_be_written(self):
        (self.folder / "folder.svg").mkdir()
        os.mkfifo(self.folder / "pipe.svg")
        for name, reason in (("nowhere/out.svg", b"No such file or directory"), ("folder.svg", b"Is a directory"),
                             ("pipe.svg", b"not supported")):
            result = self.run_here("graph", "-o", name, FIRST)
            self.assertEqual(result.returncode, 2)
            self.assertIn(reason, result.stderr)
        with open("/dev/full", "wb") as full:
            result = subprocess.run([os.environ["VRN"], "graph", FIRST], stdout=full, stderr=subprocess.PIPE, timeout=60)
        self.assertEqual(result.returncode, 2)

    def test_large_scenes_are_text_or_parts(self):
        text = b"".join(b"t n%d;" % i for i in range(2001)) + b"n1.x = n2;"
        path = self.file("large.vrn", text)
        result = graph("-o", self.folder / "out.png", path)
        self.assertEqual(result.returncode, 2)
        self.assertIn(b"too large for a picture (2001 nodes, 1 link); select a part with --around NODE", result.stderr)
        self.assertFalse((self.folder / "out.png").exists())
        self.assertEqual(len(names(graph(path).stdout.decode())), 2001)
        self.assertEqual(graph("-o", self.folder / "out.png", "--around", "n1", path).returncode, 0)
        result = graph("--around", "n1", "--hops", "18446744073709551615", path)
        self.assertEqual(list(names(result.stdout.decode()).values()), ["n1", "n2"])


if __name__ == "__main__":
    unittest.main()
