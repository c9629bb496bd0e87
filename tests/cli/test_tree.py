"""`vrn tree`."""
import os
import pty
import subprocess
import unittest

from command import ROOT, VRN, Folder, run

FIRST = ROOT / "examples" / "first_scene.vrn"


def tree(*arguments, stdin=b"", **more):
    return run("tree", *arguments, "-", stdin=stdin, **more).stdout.decode()


def run_on_a_terminal(*arguments, **environment):
    """Returns what the command writes to a terminal."""
    ours, theirs = pty.openpty()
    process = subprocess.Popen([VRN, *arguments], stdout=theirs, env={**os.environ, **environment})
    os.close(theirs)
    written = b""
    try:
        while part := os.read(ours, 65536):
            written += part
    except OSError:  # the other end is closed
        pass
    os.close(ours)
    process.wait(60)
    return written


class Tree(Folder):
    def test_draws_every_kind_of_value(self):
        text = """define paint; paint.rough = 0.5;
            paint red;
            mesh m: .points = vec3f[2] {1 2 3 4 5 6}; .name = "a\\n\\"b\\""; .empty = []; .none |= null; .o = {};
            .uv[0].name = "u"; .on = TRUE; .n = 7u; .material |= red.outColor; .to = red; .from = null;
            m.material2 |= red.x; m.frame = mat3(1 0 0 0 1 0 0 0 1);
            m.w[0] = 1.5; m.w[1] = 2.5;"""
        self.assertEqual(
            tree(stdin=text.encode()),
            "<stdin>\n"
            "├── paint (definition)\n"
            "│   └── rough: Real = 0.5\n"
            "├── red (paint)\n"
            "│   └── rough: Real = 0.5\n"
            "└── m (mesh)\n"
            "    ├── points: vec3f[2]\n"
            "    ├── name: String = \"a\\n\\\"b\\\"\"\n"
            "    ├── empty: Array[0]\n"
            "    ├── none: Null\n"
            "    ├── o: {0 members}\n"
            "    ├── uv: Object[1]\n"
            "    │   └── [0]: {1 member}\n"
            "    │       └── name: String = \"u\"\n"
            "    ├── on: Bool = true\n"
            "    ├── n: UInt = 7\n"
            "    ├── material: Null -> red.outColor\n"
            "    ├── to: Node -> red\n"
            "    ├── from: Node = null\n"
            "    ├── material2: Null -> red.x\n"
            "    ├── frame: Mat3 = 1 0 0 0 1 0 0 0 1\n"
            "    └── w: Real[2]\n"
            "        ├── [0]: Real = 1.5\n"
            "        └── [1]: Real = 2.5\n",
        )

    def test_a_connected_input_shows_its_own_value_too(self):
        text = b"t a; a.c = rgba(1 0 0); a.c |= a.out; a.n = a; a.n |= a.out;"
        self.assertEqual(
            tree(stdin=text),
            "<stdin>\n└── a (t)\n    ├── c: Rgba = 1 0 0 1 -> a.out\n    └── n: Node -> a -> a.out\n",
        )

    def test_filters_by_name_and_type(self):
        def nodes(*arguments):
            lines = run("tree", "--depth", "0", *arguments, FIRST).stdout.decode().splitlines()[1:]
            return [line.split(" ")[1] for line in lines]

        self.assertEqual(len(nodes()), 10)
        self.assertEqual(nodes("--name", "box*"), ["box", "boxA", "boxB"])
        self.assertEqual(nodes("--name", "box?"), ["boxA", "boxB"])
        self.assertEqual(nodes("--type", "paint"), ["paint", "red", "glass"])
        self.assertEqual(nodes("--type", "in*", "--name", "*A"), ["boxA"])
        self.assertEqual(nodes("--name", "nothing"), [])

    def test_long_values_and_arrays_are_cut_and_say_so(self):
        text = f't a; a.s = "{"x" * 100}"; a.u = "{"ä" * 100}"; ' + "".join(f"a.w[{i}] = {i}; " for i in range(100))
        lines = tree(stdin=text.encode()).splitlines()
        self.assertEqual(lines[2], '    ├── s: String = "' + "x" * 60 + '..."')
        self.assertEqual(lines[3], '    ├── u: String = "' + "ä" * 30 + '..."')
        self.assertEqual(lines[4], "    └── w: Int[100]")
        self.assertEqual(lines[-2:], ["        ├── [9]: Int = 9", "        └── ... 90 more"])
        lines = tree("--elements", "100", stdin=text.encode()).splitlines()
        self.assertEqual(lines[-1], "        └── [99]: Int = 99")

    def test_depth_counts_levels_of_inputs(self):
        text = b"t a; a.b.c.d = 1;"
        self.assertEqual(tree("--depth", "1", stdin=text).splitlines()[1:], ["└── a (t)", "    └── b: {1 member}"])
        self.assertEqual(len(tree("--depth", "3", stdin=text).splitlines()), 5)

    def test_deep_nesting(self):
        text = b"t n; n" + b".a" * 100000 + b" = 1;"
        for depth, lines in (([], 66), (["--depth", "1000"], 1002)):
            self.assertEqual(len(tree(*depth, stdin=text).splitlines()), lines)

    def test_control_characters_are_escaped(self):
        output = tree(stdin=b't a; a.s = "\x1b[31m\x07\xc2\x9b\xc4";')
        self.assertEqual(output.splitlines()[2], '    └── s: String = "\\x1B[31m\\x07\\xC2\\x9B\\xC4"')

    def test_scene_with_an_error_is_drawn_up_to_the_error(self):
        result = run("tree", "-", stdin=b"t a; a.x = 1; oops")
        self.assertEqual(result.returncode, 1)
        self.assertIn(b"unrecognized token 'oops'", result.stderr)
        self.assertIn("x: Int = 1", result.stdout.decode())
        self.assertEqual(run("tree", "nowhere").returncode, 2)

    def test_all_examples_are_drawn(self):
        for path in sorted((ROOT / "examples").glob("*.vrn")):
            result = run("tree", path)
            self.assertEqual((result.returncode, result.stderr), (0, b""), path)
            self.assertGreater(len(result.stdout.splitlines()), 5, path)


class Colour(unittest.TestCase):
    def test_is_for_terminals_alone(self):
        self.assertNotIn(b"\x1b", run("tree", FIRST).stdout)
        self.assertIn(b"\x1b[", run_on_a_terminal("tree", FIRST, NO_COLOR=""))
        self.assertNotIn(b"\x1b", run_on_a_terminal("tree", FIRST, NO_COLOR="1"))

    def test_can_be_demanded_and_refused(self):
        coloured = run("tree", "--color", "always", FIRST).stdout
        self.assertIn(b"\x1b[1mcam1\x1b[0m (\x1b[36mcamera\x1b[0m)", coloured)
        self.assertNotIn(b"\x1b", run_on_a_terminal("tree", "--color", "never", FIRST, NO_COLOR=""))
        self.assertEqual(run("tree", "--color", "maybe", FIRST).returncode, 2)


if __name__ == "__main__":
    unittest.main()
