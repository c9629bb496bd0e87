"""The schema of catalogues accepts and rejects what the reader of catalogues does. Node and npm provide a validator, the
same as for SARIF; without them the test is skipped."""
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

VRN = os.environ["VRN"]
HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parents[1]
SCHEMA = ROOT / "catalogues" / "catalogue.schema.json"
sys.path.insert(0, str(ROOT / "tests" / "sarif"))
sys.dont_write_bytecode = True
import test_schema as sarif  # noqa: E402


def with_input(described):
    return {"types": {"t": {"inputs": {"points": {"type": "Buffer"}, "i": described}}}}


GOOD = [
    {},
    {"$schema": "catalogue.schema.json", "types": {"t": {}}},
    {"types": {"t": {"open": True, "root": False, "outputs": ["a", "b"], "renamedInputs": {"a": "b"}}}},
    with_input({"type": "Real", "min": 0, "max": "inf", "default": "nan"}),
    with_input({"type": "Vec3", "default": [1, 2.5, "-inf"], "optional": True}),
    with_input({"type": "Buffer", "dataType": "Vec3f", "indexes": "points", "countOf": ["points", "sum(points)*2"]}),
    with_input({"type": "Array", "elementType": "Object", "members": {
        "a": {"type": "Buffer"}, "b": {"type": "Buffer", "indexes": ["i[].a"], "countOf": "numbers(i[].a)"}}}),
    with_input({"type": "Node", "accepts": ["t", "u"], "hierarchy": "parent"}),
    with_input({"type": "Array", "accepts": "t", "hierarchy": "children"}),
    with_input({"type": "String", "file": True, "embeddedIn": ["points"], "enum": ["a"]}),
]
BAD = [
    [],
    {"kinds": {}},
    {"types": {"": {}}},
    {"types": {"t": {"outputs": ["a", "a"]}}},
    {"types": {"t": {"open": 1}}},
    {"types": {"t": {"inputs": {"i": {}}}}},
    with_input({"type": "Float"}),
    with_input({"type": "Int", "color": 1}),
    with_input({"type": "Int", "enum": ["a"]}),
    with_input({"type": "Int", "dataType": "Float"}),
    with_input({"type": "Int", "elementType": "Int"}),
    with_input({"type": "Int", "indexes": "points"}),
    with_input({"type": "Buffer", "indexes": "points["}),
    with_input({"type": "Buffer", "countOf": "points*0"}),
    with_input({"type": "Int", "countOf": "points"}),
    with_input({"type": "Node", "hierarchy": "child"}),
    with_input({"type": "Node", "accepts": [1]}),
    with_input({"type": "Node", "min": 1}),
    with_input({"type": "Real", "max": "x"}),
    with_input({"type": "String", "embeddedIn": "points"}),
    with_input({"type": "Real", "file": True}),
    with_input({"type": "Real", "members": {}, "locked": 1}),
    with_input({"type": "Real", "members": {"a": {"type": "Int"}}}),
    with_input({"type": "Object", "members": {"a": {"type": "Int", "x": 1}}}),
]


class Schema(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        for tool in ("node", "npm"):
            if not shutil.which(tool):
                raise unittest.SkipTest(tool + " is not installed")
        sarif.install()

    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)

    def invalid(self, paths):
        """The numbers of the files, from 0, that the schema rejects."""
        result = subprocess.run(["node", HERE / "validate.js", SCHEMA, *paths], capture_output=True, timeout=100,
                                env={**os.environ, "NODE_PATH": str(sarif.TOOLS / "node_modules")})
        found = re.findall(r"^catalogue (\d+): ", result.stderr.decode(), re.M)
        self.assertEqual(result.returncode, 1 if found else 0, result.stderr)
        return {int(number) - 1 for number in found}

    def files(self, catalogues):
        paths = [self.folder / f"{i}.json" for i in range(len(catalogues))]
        for path, catalogue in zip(paths, catalogues):
            path.write_text(json.dumps(catalogue))
        return paths

    def test_shipped_catalogue_is_valid(self):
        documented = re.search(r"^```json\n(.*?)^```$", (ROOT / "docs/catalogue.md").read_text(), re.M | re.S).group(1)
        self.assertEqual(self.invalid([ROOT / "catalogues/scene.json", *self.files([json.loads(documented)])]), set())

    def test_agrees_with_the_command(self):
        paths = self.files(GOOD + BAD)
        bad = set(range(len(GOOD), len(GOOD + BAD)))
        self.assertEqual(self.invalid(paths), bad)
        for i, path in enumerate(paths):
            result = subprocess.run([VRN, "info", "--types", path, "-"], input=b"t a;", capture_output=True)
            self.assertEqual(result.returncode, 2 if i in bad else 0, (path.read_text(), result.stderr))

    def test_lists_every_type(self):
        header = (ROOT / "scene/AttrType.h").read_text()
        names = re.findall(r"^    (\w+),$", header[header.index("enum class AttrType"):header.index("attrTypeCount")], re.M)
        self.assertEqual(json.loads(SCHEMA.read_text())["definitions"]["attrType"]["enum"], names)


if __name__ == "__main__":
    unittest.main()
