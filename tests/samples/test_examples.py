"""The example scenes match the summaries in tests/data/expected, which were produced independently of the reader."""
import json
import math
import os
import pathlib
import subprocess
import unittest

VRN = os.environ["VRN"]
ROOT = pathlib.Path(__file__).resolve().parents[2]
EXPECTED = sorted((ROOT / "tests" / "data" / "expected").glob("*.json"))


class Scene:
    """A dumped scene in the form of the summaries."""

    def __init__(self, dumped):
        self.dumped = dumped
        self.scalars, self.buffers, self.arrays = {}, {}, {}
        self.connections, self.references, self.untyped = {}, {}, set()
        for node in dumped["nodes"]:
            for item in node["inputs"]:
                self.add(node["name"] + "." + item["name"], item)

    def add(self, path, item):
        kind = item["type"]
        if "connection" in item:
            self.connections[path] = item["connection"]
        if kind == "Node":
            self.references[path] = item["value"]
        elif kind == "Null":
            self.untyped.add(path)
        elif kind == "Buffer":
            self.buffers[path] = item
        elif kind == "Array":
            self.arrays[path] = len(item["elements"])
            for i, element in enumerate(item["elements"]):
                self.add(f"{path}[{i}]", element)
        elif kind == "Object":
            for member in item["members"]:
                self.add(path + "." + member["name"], member)
        else:
            self.scalars[path] = {"type": kind, "value": item["value"]}

    def nodes(self, definitions):
        return {n["name"]: n["type"] for n in self.dumped["nodes"] if n.get("definition", False) == definitions}


def summary(buffer):
    data = [float("nan") if n == "nan" else float(n) if isinstance(n, str) else n for n in buffer["data"]]
    return {"type": buffer["dataType"], "count": buffer["count"], "components": len(data), "data": data}


class Examples(unittest.TestCase):
    def assert_buffer(self, path, actual, expected):
        mine = summary(actual)
        for key in ("type", "count", "components"):
            self.assertEqual(mine[key], expected[key], path)
        if all(isinstance(n, int) for n in mine["data"]) and isinstance(expected["sum"], int):
            self.assertEqual(sum(mine["data"]), expected["sum"], path)
        else:
            self.assertTrue(math.isclose(math.fsum(mine["data"]), expected["sum"], rel_tol=1e-6, abs_tol=1e-3), path)
        for key, part in (("first", mine["data"][:3]), ("last", mine["data"][-3:])):
            self.assertEqual(len(part), len(expected[key]), path)
            for a, b in zip(part, expected[key]):
                self.assertTrue(math.isclose(a, b, rel_tol=1e-6, abs_tol=1e-45), (path, key, a, b))

    def test_there_are_examples(self):
        scenes = {path.stem for path in (ROOT / "examples").glob("*.vrn")}
        self.assertEqual(scenes, {path.stem for path in EXPECTED})
        self.assertGreaterEqual(len(EXPECTED), 13)


def test_of(path):
    def test(self):
        expected = json.loads(path.read_text())
        source = ROOT / "examples" / expected["file"]
        self.assertEqual(source.stat().st_size, expected["bytes"])
        check = subprocess.run([VRN, "check", "--format", "json", source], capture_output=True)
        report = json.loads(check.stdout)
        self.assertEqual(report["ok"], expected["result"])
        self.assertEqual([d["message"] for d in report["diagnostics"]], expected["log"])
        scene = Scene(json.loads(subprocess.run([VRN, "dump", "--compact", source], capture_output=True).stdout))

        self.assertEqual(scene.dumped["version"], expected["version"])
        self.assertEqual(scene.dumped["time"], expected["time"])
        self.assertEqual(len(scene.dumped["comments"]), expected["comment_count"])
        self.assertEqual(scene.dumped["comments"], expected["comments"])
        nodes = scene.nodes(definitions=False)
        self.assertEqual(nodes, expected["nodes"])
        self.assertEqual(len(nodes), expected["node_count"])
        self.assertEqual(sorted(scene.nodes(definitions=True)), sorted(expected["defines"]))
        for gone in expected["removed"]:
            self.assertNotIn(gone, nodes)
        # Nodes of a definition start with its inputs; the summaries list only those that the file sets.
        inherited = {d: {k.split(".", 1)[1] for k in scene.scalars if k.split(".")[0] == d} for d in expected["defines"]}
        for key, value in expected["scalars"].items():
            self.assertEqual(scene.scalars[key], value, key)
        extra = set(scene.scalars) - set(expected["scalars"])
        for key in extra:
            node, name = key.split(".", 1)
            self.assertIn(name, inherited.get(nodes.get(node), set()), key)
        self.assertEqual(set(scene.buffers), set(expected["buffers"]))
        for key, value in expected["buffers"].items():
            self.assert_buffer(key, scene.buffers[key], value)
        self.assertEqual(scene.arrays, expected["array_sizes"])
        self.assertEqual(
            scene.connections, {c["input"]: c["source"] for c in expected["connections"] if c["source"] is not None}
        )
        for connection in expected["connections"]:
            if connection["source"] is None:
                self.assertIn(connection["input"], scene.untyped)
        self.assertEqual(scene.references, {r["input"]: r["node"] for r in expected["references"]})

    return test


for each in EXPECTED:
    setattr(Examples, "test_" + each.stem, test_of(each))

if __name__ == "__main__":
    unittest.main()
