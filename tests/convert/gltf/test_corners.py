"""Tests corners of the conversion of glTF that small models of one feature each do not have."""
import base64
import json
import pathlib
import struct
import sys
import unittest

sys.path += [str(pathlib.Path(__file__).resolve().parents[2] / "cli"), str(pathlib.Path(__file__).resolve().parents[1])]

from command import Folder
from geometry import inputs_of

FLOAT, UINT16 = 5126, 5123
SIZES = {"SCALAR": 1, "VEC2": 2, "VEC3": 3, "VEC4": 4}


class Model:
    """A glTF file with a triangle at the origin, to which tests add."""

    def __init__(self):
        self.bytes = b""
        self.json = {"asset": {"version": "2.0"}, "accessors": [], "bufferViews": [], "scene": 0}
        self.attributes = {"POSITION": self.floats("VEC3", 0, 0, 0, 1, 0, 0, 0, 1, 0)}
        self.primitive = {"attributes": self.attributes}
        self.json |= {"meshes": [{"primitives": [self.primitive]}], "nodes": [{"mesh": 0}], "scenes": [{"nodes": [0]}]}

    def view(self, data):
        self.json["bufferViews"].append({"buffer": 0, "byteOffset": len(self.bytes), "byteLength": len(data)})
        self.bytes += data + b"\0" * (-len(data) % 4)
        return len(self.json["bufferViews"]) - 1

    def accessor(self, kind, component, data, count):
        self.json["accessors"].append({"bufferView": self.view(data), "componentType": component, "count": count,
                                       "type": kind})
        return len(self.json["accessors"]) - 1

    def floats(self, kind, *numbers):
        return self.accessor(kind, FLOAT, struct.pack(f"<{len(numbers)}f", *numbers), len(numbers) // SIZES[kind])

    def integers(self, kind, *numbers):
        return self.accessor(kind, UINT16, struct.pack(f"<{len(numbers)}H", *numbers), len(numbers) // SIZES[kind])

    def text(self):
        uri = "data:application/octet-stream;base64," + base64.b64encode(self.bytes).decode()
        return json.dumps({**self.json, "buffers": [{"byteLength": len(self.bytes), "uri": uri}]})


class Corners(Folder):
    def setUp(self):
        super().setUp()
        self.model = Model()

    def convert(self, *arguments, status=0):
        self.file("in.gltf", self.model.text())
        result = self.run_here("convert", *arguments)
        self.assertEqual(result.returncode, status, result.stderr)
        return [line.split("lost: ")[-1] for line in result.stderr.decode().splitlines()]

    def refused(self, place):
        message, = self.convert("in.gltf", "out.vrn", status=1)
        self.assertIn(f"in.gltf: {place}: ", message)

    def meshes(self, file):
        nodes = json.loads(self.run_here("dump", file).stdout)["nodes"]
        return [inputs_of(n) for n in nodes if n["type"] == "mesh"]

    def gltf(self, name):
        return json.loads((self.folder / name).read_text())

    def test_compressed_meshes_without_points(self):
        empty = b"DRACO" + bytes([2, 2, 1, 0, 0, 0, 0, 0, 1, 0])
        self.model.attributes["JOINTS_0"] = self.model.integers("VEC4", *[0] * 4000)
        self.model.primitive["extensions"] = {"KHR_draco_mesh_compression": {"bufferView": self.model.view(empty),
                                                                             "attributes": {}}}
        self.refused("/meshes/0/primitives/0/extensions/KHR_draco_mesh_compression")

    def test_primitives_without_a_whole_face_are_left_out(self):
        self.model.primitive["indices"] = self.model.integers("SCALAR", 0, 1)
        for mode in (4, 5, 6):
            self.model.primitive["mode"] = mode
            self.assertEqual(self.convert("in.gltf", "out.vrn"),
                             ["meshes without whole faces: 1 (/meshes/0/primitives/0)"])
            self.assertEqual(self.meshes("out.vrn"), [])

    def test_uvsets_after_a_gap_are_named(self):
        self.model.attributes["TEXCOORD_1"] = self.model.floats("VEC2", 0, 0, 1, 0, 0, 1)
        self.assertEqual(self.convert("in.gltf", "out.vrn"),
                         ["member TEXCOORD_1: 1 (/meshes/0/primitives/0/attributes)"])

    def test_weights_without_a_skin_are_kept(self):
        self.model.attributes["JOINTS_0"] = self.model.integers("VEC4", *[1, 0, 0, 0] * 3)
        self.model.attributes["WEIGHTS_0"] = self.model.floats("VEC4", *[1, 0, 0, 0] * 3)
        self.assertEqual(self.convert("in.gltf", "out.gltf"), [])
        self.assertIn("JOINTS_0", self.gltf("out.gltf")["meshes"][0]["primitives"][0]["attributes"])

    def test_target_names_are_extras_without_targets(self):
        for extras in ({"targetNames": ["a"], "k": 1}, {"targetNames": {"x": 1}}, "text", {}):
            with self.subTest(extras):
                self.model.json["meshes"][0]["extras"] = extras
                self.assertEqual(self.convert("in.gltf", "out.gltf"), [])
                self.assertEqual(self.gltf("out.gltf")["meshes"][0]["extras"], extras)

    def test_a_scene_that_lists_a_node_twice(self):
        self.model.json["nodes"].append({})
        self.model.json["scenes"] = [{"nodes": [0, 0]}]
        self.refused("/scenes/0/nodes/1")

    def test_a_node_with_a_matrix_and_its_parts(self):
        self.model.json["nodes"][0] |= {"matrix": [1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1], "scale": [1, 1, 2]}
        self.refused("/nodes/0/matrix")

    def test_instances_of_different_numbers(self):
        attributes = {"TRANSLATION": self.model.floats("VEC3", 0, 0, 0, 1, 1, 1), "_ID": self.model.floats("SCALAR", 1)}
        self.model.json["nodes"][0]["extensions"] = {"EXT_mesh_gpu_instancing": {"attributes": attributes}}
        self.refused("/nodes/0/extensions/EXT_mesh_gpu_instancing/attributes/_ID")

    def test_scaled_scenes_keep_their_nodes(self):
        self.model.json["nodes"].append({"name": "b"})
        self.model.json["scenes"] = [{"name": "first", "nodes": [0]}, {"name": "second", "nodes": [0, 1]}]
        self.assertEqual(self.convert("--scale", "2", "in.gltf", "out.gltf"), [])
        document = self.gltf("out.gltf")
        first, second = document["scenes"]
        self.assertEqual((len(first["nodes"]), len(second["nodes"])), (1, 2))
        self.assertEqual(first["nodes"], second["nodes"][:1])
        self.assertEqual(document["nodes"][first["nodes"][0]]["scale"], [2, 2, 2])

    def test_scaled_parts_are_shown_once(self):
        self.model.json["meshes"][0]["primitives"].append(dict(self.model.primitive))
        for options in ([], ["--scale", "2"]):
            self.convert(*options, "in.gltf", "out.obj")
            lines = (self.folder / "out.obj").read_text().splitlines()
            self.assertEqual(sum(line.startswith("f ") for line in lines), 2, options)

    def test_parts_without_a_first_mesh_are_shown(self):
        self.file("in.vrn", "mesh m; m.points = vec3f[3] {0 0 0 1 0 0 0 1 0}; instance i; i.parts[0] = m;")
        self.assertEqual(self.convert("in.vrn", "out.gltf"), [])
        self.assertEqual([node.get("mesh") for node in self.gltf("out.gltf")["nodes"]], [0])

    def test_large_matrices_are_not_sheared_by_rounding(self):
        matrix = [struct.unpack("f", struct.pack("f", n))[0] for n in
                  (866.0254, 500, 0, 0, -500, 866.0254, 0, 0, 0, 0, 1000, 0, 0, 0, 0, 1)]
        self.model.json["nodes"][0]["matrix"] = matrix
        self.assertEqual(self.convert("in.gltf", "out.gltf"), [])

    def test_joints_beyond_16_bits_are_named(self):
        self.file("in.vrn", "mesh m; m.points = vec3f[1] {0 0 0}; m.topology = \"points\";"
                            "m.skin.joints = vec4u[1] {70000 0 0 0}; m.skin.weights = vec4f[1] {1 0 0 0};")
        self.assertEqual(self.convert("in.vrn", "out.gltf"), ["joints of meshes with numbers above 65535: 1 (m)"])


if __name__ == "__main__":
    unittest.main()
