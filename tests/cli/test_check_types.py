"""`vrn check` with a catalogue. The reports on one mistake of each kind are golden files in tests/cli/golden;
VRN_UPDATE_GOLDENS=1 overwrites them."""
import json
import os
import pathlib
import re
import unittest

from command import Folder, ROOT, run

GOLDEN = pathlib.Path(__file__).resolve().parent / "golden"
CATALOGUE = ROOT / "catalogues" / "scene.json"
MISTAKES = "mistakes.vrn"


def kinds():
    """The names of all kinds of findings."""
    return re.findall(r"MESSAGE\((\w+), \"", (ROOT / "check/Messages.h").read_text())


def check(*arguments, **more):
    return run("check", *arguments, **more)


def names_in(result):
    """The kinds that a report in JSON names, in its order."""
    return [d["rule"] for line in result.stdout.splitlines() for d in json.loads(line)["diagnostics"] if "rule" in d]


class Reports(unittest.TestCase):
    def report(self, form):
        result = check("--types", "builtin", "--pedantic", "--format", form, MISTAKES, cwd=GOLDEN)
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        return re.sub(r'("name":"vrn","version":)"[^"]*"', r'\1"0"', result.stdout.decode())

    def test_are_as_written(self):
        for form in ("text", "json", "sarif", "github"):
            path = GOLDEN / ("mistakes." + form)
            report = self.report(form)
            if os.environ.get("VRN_UPDATE_GOLDENS"):
                path.write_text(report)
            with self.subTest(form):
                self.assertEqual(report, path.read_text())

    def test_golden_scene_has_every_mistake_once(self):
        found = [d["rule"] for d in json.loads(self.report("json"))["diagnostics"]]
        self.assertEqual(sorted(found), sorted(kinds()))
        rules = json.loads(self.report("sarif"))["runs"][0]["tool"]["driver"]["rules"]
        self.assertEqual(sorted(rule["id"] for rule in rules), sorted(kinds()))

    def test_scene_without_mistakes_has_none(self):
        result = check("--types", "builtin", "--pedantic", "right.vrn", cwd=GOLDEN)
        self.assertEqual(result.stdout, b"1 file checked: 0 errors, 0 warnings\n")


class Options(Folder):
    def golden(self, *arguments):
        return check("--types", "builtin", *arguments, MISTAKES, cwd=GOLDEN)

    def test_each_kind_can_be_ignored(self):
        for kind in kinds():
            with self.subTest(kind):
                found = names_in(self.golden("--pedantic", "--format", "json", "--ignore", kind))
                self.assertEqual(sorted(found), sorted(set(kinds()) - {kind}))
        options = [option for kind in kinds() for option in ("--ignore", kind)]
        self.assertEqual(self.golden(*options, "--werror").returncode, 0)

    def test_unknown_kinds_are_refused(self):
        result = self.golden("--ignore", "badIndx")
        self.assertEqual((result.returncode, result.stdout), (2, b""))
        self.assertEqual(result.stderr.decode(),
                         f"vrn: --ignore: badIndx is not one of {', '.join(kinds())}; did you mean badIndex?\n"
                         "See vrn check --help.\n")
        self.assertIn("did you mean sarif?", check("--format", "sarf", "-").stderr.decode())

    def test_unused_nodes_are_for_pedants(self):
        self.assertEqual(set(kinds()) - set(names_in(self.golden("--format", "json"))), {"unused"})

    def test_findings_are_warnings(self):
        self.assertEqual([self.golden().returncode, self.golden("--werror").returncode], [0, 1])

    def test_rules_require_a_catalogue(self):
        for option in (["--pedantic"], ["--ignore", "badIndex"]):
            result = check(*option, "-")
            self.assertEqual((result.returncode, result.stdout, result.stderr), (
                2, b"", b"vrn: --ignore and --pedantic require a catalogue: --types, or VRN_TYPES\n"))
            self.assertEqual(check(*option, "-", env={**os.environ, "VRN_TYPES": "builtin"}).returncode, 0)

    def test_scenes_with_errors_are_not_checked(self):
        self.file("a.vrn", "mesh m; m.colours = 1; lamp l; m.x = ;")
        report = json.loads(self.run_here("check", "--types", "builtin", "--format", "json", "a.vrn").stdout)
        self.assertEqual([d["severity"] for d in report["diagnostics"]], ["error"])

    def test_strings_that_are_not_listed_are_reported_once(self):
        self.file("types.json", '{"types": {"t": {"inputs": {"s": {"type": "String", "enum": ["a"]}}}}}')
        text = b't n;\nn.s = "b";'
        result = self.run_here("check", "--types", "types.json", "-", stdin=text).stdout.decode()
        self.assertEqual(result, '<stdin>:2:3: warning: n.s is "b"; expected "a" [notListed]\n'
                                 'n.s = "b";\n  ^\n1 file checked: 0 errors, 1 warning\n')
        ignored = self.run_here("check", "--types", "types.json", "--ignore", "notListed", "-", stdin=text)
        self.assertEqual(ignored.stdout, b"1 file checked: 0 errors, 0 warnings\n")
        self.assertIn(b"ENUM WARNING", self.run_here("dump", "--types", "types.json", "-", stdin=text).stderr)

    def test_files_are_relative_to_the_scene(self):
        (self.folder / "sub").mkdir()
        self.file("sub/a.png", "a")
        self.file("b.png", "b")
        self.file("sub/a.vrn", 'texture a; a.file = "a.png"; texture b; b.file = "../b.png"; texture c; c.file = "b.png";')
        report = self.run_here("check", "--types", "builtin", "--format", "json", "sub").stdout
        self.assertEqual([d["message"] for d in json.loads(report)["diagnostics"]],
                         ['the file "b.png" of c.file does not exist'])
        on_stdin = self.run_here("check", "--types", "builtin", "--werror", "-", stdin=b'texture b; b.file = "b.png";')
        self.assertEqual(on_stdin.returncode, 0, on_stdin.stdout)

    def test_text_of_the_scene_is_escaped(self):
        text = b'texture t; t.file = "\x1b[2J"; t.wrapU = "\x1b";'
        result = check("--types", "builtin", "-", stdin=text)
        self.assertIn(b'"\\x1B[2J"', result.stdout)
        self.assertIn(b't.wrapU is "\\x1B"', result.stdout)
        self.assertNotIn(b"\x1b", result.stdout)

    def test_jobs_change_nothing(self):
        arguments = ("--types", CATALOGUE, "--pedantic", "--format", "json", ROOT / "examples", GOLDEN)
        self.assertEqual(check(*arguments).stdout, check("-j4", *arguments).stdout)


class Examples(unittest.TestCase):
    """The findings in the examples are true: these textures are not shipped, these types are made up, and the uvset of
    first_scene.vrn has one coordinate for each corner of one face only."""

    EXPECTED = {"all_types": ["unknownType"], "first_scene": ["badCount"], "material_gallery": ["unknownType"]}

    def test_have_no_other_findings(self):
        for path in sorted((ROOT / "examples").glob("*.vrn")):
            with self.subTest(path.name):
                result = check("--types", "builtin", "--format", "json", "--ignore", "missingFile", path)
                self.assertEqual(names_in(result), self.EXPECTED.get(path.stem, []))


class Catalogues(Folder):
    def test_builtin_is_the_shipped_one(self):
        arguments = ("-", "--compact")
        text = b"camera c; light l; mesh m; material p; texture t; skin s; animation a; instance i; group g;"
        builtin = run("dump", "--types", "builtin", *arguments, stdin=text)
        self.assertEqual(builtin.stdout, run("dump", "--types", CATALOGUE, *arguments, stdin=text).stdout)
        self.assertIn(b'"name":"fov"', builtin.stdout)

    def commands(self):
        """A call of each command that takes --types, whose output depends on the catalogue."""
        self.file("a.vrn", "camera c; mesh m; m.points = vec3f[3] {0 0 0 1 0 0 0 1 0};")
        self.file("b.vrn", "camera c; mesh m; m.points = vec3f[3] {0 0 0 1 0 0 0 1 0}; c.fov = 45.0;")
        return {"check": ["a.vrn", "b.vrn", "--werror", "--pedantic"], "info": ["a.vrn"], "tree": ["a.vrn"],
                "query": ["a.vrn", "c.fov"], "graph": ["a.vrn"], "diff": ["a.vrn", "b.vrn"],
                "dump": ["a.vrn"], "convert": ["a.vrn", "a.glb"], "edit": ["a.vrn", "--set", "c.fov=50"]}

    def test_every_command_takes_them(self):
        commands = self.commands()
        with_types = {line.split()[0] for line in run("--help").stdout.decode().splitlines()
                      if line.startswith("  ") and line.split() and
                      b"--types" in run(line.split()[0], "--help").stdout}
        self.assertEqual(set(commands), with_types)
        variable = {**os.environ, "VRN_TYPES": "builtin"}
        for command, arguments in commands.items():
            with self.subTest(command):
                by_option = self.run_here(command, "--types", "builtin", *arguments)
                by_file = self.run_here(command, "--types", CATALOGUE, *arguments)
                by_variable = self.run_here(command, *arguments, env=variable)
                self.assertEqual((by_option.returncode, by_option.stdout, by_option.stderr),
                                 (by_file.returncode, by_file.stdout, by_file.stderr))
                self.assertEqual((by_option.returncode, by_option.stdout, by_option.stderr),
                                 (by_variable.returncode, by_variable.stdout, by_variable.stderr))

    def test_the_option_has_precedence(self):
        self.file("types.json", '{"types": {"t": {"inputs": {"a": {"type": "Int", "default": 5}}}}}')
        for types, option, value in (("builtin", ["--types", "types.json"], b"5\n"), ("types.json", [], b"5\n"),
                                     ("", [], None)):
            result = self.run_here("query", *option, "-", "n.a", stdin=b"t n;", env={**os.environ, "VRN_TYPES": types})
            self.assertEqual(result.stdout if value else result.returncode, value or 1, types)

    def test_an_unreadable_one_is_reported(self):
        for types in ("nowhere.json", "builtn"):
            result = self.run_here("check", "-", env={**os.environ, "VRN_TYPES": types})
            self.assertEqual((result.returncode, result.stderr.decode()),
                             (2, f"vrn: {types}: No such file or directory\n"))
        self.file("builtin", '{"types": {"t": {"inputs": {"a": {"type": "Int", "default": 5}}}}}')
        result = self.run_here("query", "--types", "./builtin", "-", "n.a", stdin=b"t n;")
        self.assertEqual(result.stdout, b"5\n")


if __name__ == "__main__":
    unittest.main()
