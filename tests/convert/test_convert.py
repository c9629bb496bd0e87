"""Tests vrn convert with round trips and the glTF validator (node_programs.py)."""
import base64
import json
import os
import pathlib
import re
import signal
import struct
import subprocess
import sys
import time
import unittest

sys.path += [str(pathlib.Path(__file__).resolve().parents[1] / "cli")]

import node_programs
from command import ROOT, VRN, run
from geometry import inputs_of, meshes
from importing import Importing

HERE = pathlib.Path(__file__).resolve().parent
EXAMPLES = sorted((ROOT / "examples").glob("*.vrn"))
SCENES = [path for path in EXAMPLES if path.name != "all_types.vrn"]  # which shows nothing
CATALOGUE = ROOT / "catalogues" / "scene.json"


class Converting(Importing):
    def convert(self, source, target, *options):
        """Converts successfully; returns the reported losses."""
        result = self.run_here("convert", *options, source, target)
        self.assertEqual(result.returncode, 0, result.stderr.decode())
        self.assertEqual(result.stdout, b"")
        lines = result.stderr.decode().splitlines()
        start = f"vrn: {target}: lost: "
        for line in lines:
            self.assertTrue(line.startswith(start), line)
        return [line[len(start) :] for line in lines]

    def scene(self, path):
        dumped = self.run_here("dump", "--compact", path)
        self.assertEqual(dumped.returncode, 0, dumped.stderr.decode())
        return json.loads(dumped.stdout)

    def gltf(self, path):
        content = (self.folder / path).read_bytes()
        if path.endswith(".gltf"):
            return json.loads(content)
        length = struct.unpack("<I", content[12:16])[0]
        return json.loads(content[20 : 20 + length])

    def validate(self, *files):
        answer = node_programs.ask(HERE / "validate.js", [str(self.folder / file) for file in files])
        reports = dict(zip(files, answer, strict=True))
        for file, report in reports.items():
            errors = [m for m in report["issues"]["messages"] if m["severity"] == 0]
            self.assertEqual(report["issues"]["numErrors"], 0, (file, errors))
        return reports


class Examples(Converting):
    def test_gltf_output_is_valid(self):
        self.assertGreaterEqual(len(SCENES), 12)
        files = []
        for path in SCENES:
            for extension in (".glb", ".gltf"):
                self.convert(path, path.stem + extension)
                files.append(path.stem + extension)
        reports = self.validate(*files)
        for path in SCENES:
            triangles = reports[path.stem + ".glb"]["info"]["totalTriangleCount"]
            self.assertEqual(triangles > 0, b"\nmesh " in path.read_bytes(), path.name)
            self.assertEqual(triangles, reports[path.stem + ".gltf"]["info"]["totalTriangleCount"])

    def test_the_catalogue_changes_nothing(self):
        older = self.file("older.vrn", "mesh m; m.points = vec3f[3] {0 0 0 1 0 0 0 1 0}; m.material |= r.outColor;\n"
                          "material r; r.color = rgba(1 0 0 0.5); r.emission.color = rgba(0 1 0 1); r.sheen.color = vec3(0 0 1);")
        for path in (*SCENES, older):
            with self.subTest(path.name):
                lost = self.convert(path, "out.gltf")
                plain = self.gltf("out.gltf")
                self.assertLessEqual(set(self.convert(path, "out.gltf", "--types", "builtin")), set(lost))
                self.assertEqual(self.gltf("out.gltf"), plain)

    def test_geometry_round_trips_bit_for_bit(self):
        compared = 0
        for path in SCENES:
            for extension in (".glb", ".gltf"):
                with self.subTest(path.name + extension):
                    self.convert(path, "converted" + extension)
                    self.convert("converted" + extension, "back.vrn")
                    originals = {mesh.name: mesh for mesh in meshes(self.scene(path))}
                    back = meshes(self.scene("back.vrn"))
                    self.assertEqual({mesh.name for mesh in back}, set(originals))
                    for mesh in back:
                        self.assert_same(originals[mesh.name], mesh)
                        compared += 1
        self.assertGreater(compared, 60)

    def assert_same(self, original, mesh):
        self.assertEqual(mesh.uvsets, original.uvsets)
        self.assertEqual(mesh.triangles(), original.triangles())
        if set(original.faces) == {3}:
            self.assertEqual(mesh.corners, original.corners, mesh.name)
        else:
            self.assertEqual(set(mesh.corners), set(original.corners), mesh.name)
        if original.uvsets == 0 or len(mesh.points) == len(original.points):
            self.assertEqual(mesh.points, original.points)

    def test_second_round_trip_changes_nothing(self):
        for path in SCENES:
            with self.subTest(path.name):
                self.convert(path, "1.glb")
                self.convert("1.glb", "1.vrn")
                self.convert("1.vrn", "2.glb")
                self.convert("2.glb", "2.vrn")
                self.assertEqual(
                    [(n["name"], n["type"]) for n in self.scene("1.vrn")["nodes"]],
                    [(n["name"], n["type"]) for n in self.scene("2.vrn")["nodes"]],
                )
                first, second = meshes(self.scene("1.vrn")), meshes(self.scene("2.vrn"))
                self.assertEqual([m.corners for m in first], [m.corners for m in second])

    def test_catalogue_matches_and_changes_nothing(self):
        # tests/cli/test_check_types.py lists the findings of these kinds.
        ignored = ("--ignore", "missingFile", "--ignore", "unknownType", "--ignore", "badCount")
        checked = run("check", "--types", CATALOGUE, *ignored, *EXAMPLES)
        self.assertEqual(checked.stdout.decode(), f"{len(EXAMPLES)} files checked: 0 errors, 0 warnings\n")
        for path in SCENES:
            with self.subTest(path.name):
                self.convert(path, "without.glb")
                self.convert(path, "with.glb", "--types", CATALOGUE)
                without, having = (self.folder / name for name in ("without.glb", "with.glb"))
                self.assertEqual(without.read_bytes(), having.read_bytes())

    def test_written_vrn_has_no_diagnostics(self):
        for path in SCENES:
            self.convert(path, path.stem + ".glb")
            self.convert(path.stem + ".glb", path.stem + ".vrn")
        texts = sorted(self.folder.glob("*.vrn"))
        checked = run("check", "--types", CATALOGUE, "--ignore", "missingFile", *texts)
        self.assertEqual(checked.stdout.decode(), f"{len(SCENES)} files checked: 0 errors, 0 warnings\n")

    def test_mesh_formats(self):
        for path in EXAMPLES:
            for extension in (".obj", ".ply", ".stl"):
                with self.subTest(path.name + extension):
                    result = self.run_here("convert", path, "out" + extension)
                    if b"\nmesh " not in path.read_bytes():
                        self.assertEqual(result.returncode, 1)
                        self.assertIn(b"the scene has no mesh that can be written", result.stderr)
                        continue
                    self.assertEqual(result.returncode, 0)
                    self.convert("out" + extension, "back.vrn")
                    back = meshes(self.scene("back.vrn"))
                    self.assertGreater(sum(mesh.triangles() for mesh in back), 0)

    def test_vrn_and_json_are_lossless(self):
        for path in EXAMPLES:
            self.assertEqual(self.convert(path, "copy.vrn"), [])
            self.assertEqual(self.convert(path, "copy.json"), [])
            self.assertEqual(self.scene("copy.vrn"), self.scene(path))
            self.assertEqual(json.loads((self.folder / "copy.json").read_text()), self.scene(path))


TRIANGLE = "mesh m; m.points = vec3f[3] {0 0 0 1 0 0 0 1 0}; m.indices = int32[3] {0 1 2};\n"


def triangle(name):
    return TRIANGLE.replace("mesh m", f"mesh {name}").replace("m.", f"{name}.")


class ToGltf(Converting):
    def to_gltf(self, text, *lost):
        self.file("in.vrn", text)
        self.assertEqual(self.convert("in.vrn", "out.glb"), list(lost))
        self.validate("out.glb")
        return self.gltf("out.glb")

    def test_mesh_without_instance_gets_a_node(self):
        self.assertEqual(self.to_gltf(TRIANGLE)["nodes"], [{"name": "m", "mesh": 0}])

    def test_transforms(self):
        gltf = self.to_gltf(
            TRIANGLE
            + "group g; g.translation = vec3(1 2 3); g.scale = vec3(2 2 2);\n"
            "instance i; i.geometry = m; i.parent = g; i.rotation = quat(0 0 1 0);\n"
            "instance j; j.geometry = m; g.children[*] = j;\n"
            "j.transform = mat4(0 1 0 0 -1 0 0 0 0 0 1 0 5 6 7 1);\n"
        )
        group, first, second = gltf["nodes"]
        self.assertEqual(group, {"name": "g", "children": [1, 2], "translation": [1, 2, 3], "scale": [2, 2, 2]})
        self.assertEqual(first, {"name": "i", "rotation": [0, 0, 1, 0], "mesh": 0})
        self.assertEqual(second["mesh"], 0)
        self.assertEqual(gltf["scenes"], [{"nodes": [0]}])
        self.assertEqual(len(gltf["meshes"]), 1)
        self.assertEqual(second["matrix"], [0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 5, 6, 7, 1])

    def test_shear_perspective_and_flat_matrices_are_decomposed(self):
        gltf = self.to_gltf(
            TRIANGLE + "instance i; i.geometry = m; i.transform = mat4(1 0 0 0 1 1 0 0 0 0 1 0 0 0 0 1);\n"
            "instance j; j.geometry = m; j.transform = mat4(0 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1);\n"
            "instance k; k.geometry = m; k.transform = mat4(-1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1);\n"
            "instance p; p.geometry = m; p.transform = mat4(1 0 0 0.5 0 1 0 0 0 0 1 0 0 0 0 1);\n",
            "shear or perspective of transforms: 2 (first i)",
        )
        self.assertNotIn("matrix", gltf["nodes"][0])
        self.assertEqual(gltf["nodes"][1]["scale"], [0, 1, 1])
        self.assertNotIn("matrix", gltf["nodes"][3])

    def test_parent_cycles_and_second_parents_are_cut(self):
        gltf = self.to_gltf(
            "group a; group b; group c; group d; a.parent = b; b.parent = c; c.parent = a; d.parent = d;\n"
            "group x; group y; group z; x.children[*] = z; y.children[*] = z; z.children[*] = z;\n",
            "further parents of nodes: 2 (first y.children[0])",
            "parents that close a cycle: 2 (first c)",
        )
        self.assertEqual(len(gltf["scenes"][0]["nodes"]), 4)

    def test_a_chain_of_100_000_nodes(self):
        count = 100_000
        lines = [TRIANGLE, "group g0;"] + [f"group g{i}; g{i}.parent = g{i - 1};" for i in range(1, count)]
        self.file("in.vrn", "\n".join(lines) + f"instance i; i.geometry = m; i.parent = g{count - 1};")
        lost = "nodes nested more than 1000 levels deep (written, but rejected by many readers): 1 (g1001)"
        self.assertEqual(self.convert("in.vrn", "out.glb"), [lost])
        self.assertEqual(len(self.gltf("out.glb")["nodes"]), count + 1)
        result = self.run_here("convert", "out.glb", "back.vrn")
        self.assertEqual(result.returncode, 1)
        self.assertIn(b"out.glb: /nodes/1001: the nodes are nested more than 1000 levels deep", result.stderr)
        self.convert("in.vrn", "out.stl")

    def test_normals(self):
        ns = "m.normals = vec3f[3] {0 0 %s 0 1 0 1 0 0};"
        self.to_gltf(TRIANGLE + ns % "1.001")
        self.to_gltf(TRIANGLE + ns % "2", "lengths of normals (set to 1): 1 (m)")
        self.to_gltf(TRIANGLE + ns % "0", "normals of meshes with normals of length 0: 1 (m)")
        self.to_gltf(TRIANGLE + ns % "nan", "attributes that do not match the points of their mesh: 1 (m.normals)")
        tangents = "m.tangents = vec4f[3] {1 0 0 %s 1 0 0 1 0 1 0 -1};"
        self.to_gltf(TRIANGLE + ns % "1" + tangents % "1")
        lost = "tangents without normals, of a length other than 1 or without a sign: 1 (m)"
        self.to_gltf(TRIANGLE + tangents % "1", lost)
        self.to_gltf(TRIANGLE + ns % "1" + tangents % "0.5", lost)

    def test_invalid_meshes_are_left_out(self):
        points = "mesh m; m.points = vec3f[3] {0 0 0 1 0 0 0 1 0};"
        for text, reason in (
            ("mesh m;", "no points"),
            ("mesh m; m.points = float[3] {1 2 3};", "no points"),
            ("mesh m; m.points = vec3f[3] {0 0 0 1 0 nan 0 1 0};", "points that are not finite"),
            ("mesh m; m.points = vec3d[3] {0 0 0 1 0 0 0 1.0e300 0};", "points that are not finite"),
            (points + "m.indices = int32[3] {0 1 3};", "indices that are out of range or not integers"),
            (points + "m.indices = int64[3] {0 1 -1};", "indices that are out of range or not integers"),
            (points + "m.indices = float[3] {0 1 2};", "indices that are out of range or not integers"),
            (points + "m.indices = byte[4] {0 1 2 0};", "an incomplete last face"),
            (points + "m.faceIndices = byte[3] {0 1 2};", "polygons without valid faceCounts"),
            (points + "m.faceIndices = byte[3] {0 1 2}; m.faceCounts = byte[1] {4};",
             "faceCounts that do not sum to the number of faceIndices"),
            (points + "m.faceIndices = byte[3] {0 1 2}; m.faceCounts = byte[2] {2 1};",
             "polygons with fewer than three corners"),
            (points + 'm.topology = "patches";', "an unknown topology"),
            (points + 'm.topology = "volumes";', "an unknown topology"),
        ):
            with self.subTest(text):
                self.file("in.vrn", "group g;" + text)
                self.assertIn(f"meshes with {reason}: 1 (m)", self.convert("in.vrn", "out.glb"))
                self.assertNotIn("meshes", self.gltf("out.glb"))
                self.validate("out.glb")

    def test_vertices_split_where_texture_coordinates_differ(self):
        gltf = self.to_gltf(
            "mesh m; m.points = vec3f[4] {0 0 0 1 0 0 1 1 0 0 1 0}; m.triangles = vec3u[2] {0 1 2 0 2 3};\n"
            "m.uvsets[*].coords = vec2f[3] {0 0 1 0 1 1}; m.uvsets[0].indices = int32[6] {0 1 2 0 1 2};\n"
        )
        counts = {a["type"]: a["count"] for a in gltf["accessors"]}
        self.assertEqual(counts, {"SCALAR": 6, "VEC3": 5, "VEC2": 5})

    def test_concave_polygons(self):
        # An arrow whose notch a fan around its first corner would fill.
        self.file(
            "in.vrn",
            "mesh m; m.points = vec3f[4] {0 1 0 -1 -1 0 0 0 0 1 -1 0};\n"
            "m.faceIndices = byte[4] {1 2 3 0}; m.faceCounts = byte[1] {4};",
        )
        self.assertEqual(
            self.convert("in.vrn", "out.glb"), ["polygons with more than three corners (triangulated): 1 (m)"]
        )
        self.convert("out.glb", "back.vrn")
        indices = meshes(self.scene("back.vrn"))[0].indices
        area = 0
        points = [(0, 1), (-1, -1), (0, 0), (1, -1)]
        for a, b, c in zip(indices[::3], indices[1::3], indices[2::3]):
            (ax, ay), (bx, by), (cx, cy) = points[a], points[b], points[c]
            twice = (bx - ax) * (cy - ay) - (by - ay) * (cx - ax)
            self.assertGreater(twice, 0)
            area += twice
        self.assertEqual(area, 2)

    def test_lines_and_points(self):
        gltf = self.to_gltf(
            'mesh l; l.topology = "lines"; l.points = vec3f[3] {0 0 0 1 0 0 0 1 0}; l.indices = byte[4] {0 1 1 2};\n'
            'mesh p; p.topology = "points"; p.points = vec3f[2] {0 0 0 1 0 0};'
        )
        self.assertEqual([mesh["primitives"][0]["mode"] for mesh in gltf["meshes"]], [1, 0])
        self.convert("out.glb", "back.vrn")
        lines, points = [inputs_of(n) for n in self.scene("back.vrn")["nodes"] if n["type"] == "mesh"]
        self.assertEqual((lines["topology"]["value"], lines["indices"]["data"]), ("lines", [0, 1, 1, 2]))
        self.assertEqual((points["topology"]["value"], points["points"]["count"]), ("points", 2))
        self.file("in.vrn", 'mesh p; p.topology = "points"; p.points = vec3f[2] {0 0 0 1 0 0};' + TRIANGLE)
        self.assertEqual(self.convert("in.vrn", "out.stl"), ["meshes with lines or points instead of faces: 1 (p)"])

    def test_materials_and_textures(self):
        gltf = self.to_gltf(
            TRIANGLE
            + "m.uvsets[*].coords = vec2f[3] {0 0 1 0 0 1}; m.material |= red.outColor;\n"
            'material red; red.baseColor = rgba(1 0 0 0.5); red.roughness = 0.25; red.metallic = 1.5; red.shine = 3;\n'
            'red.baseColorMap |= t.outColor; red.baseColorXform.offset = vec2(0.5 0.25); red.doubleSided = true;\n'
            'texture t; t.file = "..\\\\my maps\\\\w\u00f6od.png"; t.wrapU = "clamp"; t.wrapV = "mirror"; t.filter = 9728;\n'
            "paint blue; blue.color = rgba(0 0 1); instance i; i.geometry = m; i.material |= blue.outColor;\n"
            "instance j; j.geometry = m;",
            "numbers outside 0 to 1 (clamped): 1 (red.metallic)",
            "input shine of material: 1 (red.shine)",
        )
        blue, red = gltf["materials"]
        self.assertEqual(blue["pbrMetallicRoughness"]["baseColorFactor"], [0, 0, 1, 1])
        self.assertEqual(red["alphaMode"], "BLEND")
        self.assertTrue(red["doubleSided"])
        self.assertEqual(
            red["pbrMetallicRoughness"],
            {
                "baseColorFactor": [1, 0, 0, 0.5],
                "metallicFactor": 1,
                "roughnessFactor": 0.25,
                "baseColorTexture": {
                    "index": 0,
                    "extensions": {"KHR_texture_transform": {"offset": [0.5, 0.25], "scale": [1, 1]}},
                },
            },
        )
        self.assertEqual(gltf["images"], [{"name": "t", "uri": "../my%20maps/w%C3%B6od.png"}])
        self.assertEqual(gltf["samplers"], [{"wrapS": 33071, "wrapT": 33648, "minFilter": 9728}])
        self.assertEqual([node["mesh"] for node in gltf["nodes"]], [0, 1])
        self.convert("out.glb", "back.vrn")
        nodes = {n["name"]: inputs_of(n) for n in self.scene("back.vrn")["nodes"]}
        self.assertEqual(nodes["t"]["file"]["value"], "../my maps/w\u00f6od.png")
        self.assertEqual(nodes["t"]["filter"]["value"], 9728)
        self.assertEqual(nodes["red"]["baseColor"]["value"], [1, 0, 0, 0.5])
        self.assertEqual(inputs_of(nodes["red"]["baseColorXform"])["offset"]["value"], [0.5, 0.25])
        self.assertEqual(nodes["red"]["baseColorMap"]["connection"], "t.outColor")

    def test_textures_without_a_transform(self):
        for inputs, transform in (("", None), ("red.baseColorXform.offset = vec2(-0.5 0);", {"offset": [-0.5, 0], "scale": [1, 1]}),
                                  ("red.baseColorXform.scale = vec2(1 2);", {"offset": [0, 0], "scale": [1, 2]})):
            with self.subTest(inputs):
                gltf = self.to_gltf(TRIANGLE + "m.uvsets[*].coords = vec2f[3] {0 0 1 0 0 1}; instance i; i.geometry = m;"
                                    "i.material |= red.outColor; material red; red.baseColorMap |= t.outColor;"
                                    'texture t; t.file = "a.png";' + inputs)
                texture = gltf["materials"][0]["pbrMetallicRoughness"]["baseColorTexture"]
                self.assertEqual(texture.get("extensions", {}).get("KHR_texture_transform"), transform)
                self.assertEqual("extensionsUsed" in gltf, transform is not None)

    def test_opacity_maps(self):
        unused = "opacity maps other than the alpha of the base colour map: 1 (c.opacityMap)"
        gltf = self.to_gltf(TRIANGLE + "m.uvsets[*].coords = vec2f[3] {0 0 1 0 0 1};"
                            'texture t; t.file = "a.png"; texture u; u.file = "b.png";'
                            "material a; a.baseColorMap |= t.outColor; a.opacityMap |= t.outAlpha;"
                            "material b; b.baseColorMap |= u.outColor; b.opacityMap |= u.outAlpha;"
                            "material c; c.opacityMap |= u.outAlpha; c.baseColor = vec3(0.5 0.25 0);"
                            "instance i; i.geometry = m; i.material |= a.outColor;"
                            "instance j; j.geometry = m; j.material |= b.outColor;"
                            "instance k; k.geometry = m; k.material |= c.outColor;", unused)
        materials = {m["name"]: m for m in gltf["materials"]}
        self.assertEqual({name: m.get("alphaMode", "OPAQUE") for name, m in materials.items()},
                         {"a": "BLEND", "b": "BLEND", "c": "OPAQUE"})
        self.assertEqual(materials["c"]["pbrMetallicRoughness"]["baseColorFactor"], [0.5, 0.25, 0, 1])

    def test_embedded_images_are_written(self):
        image = bytes.fromhex(
            "89504e470d0a1a0a0000000d49484452000000010000000108060000001f15c4890000000d49444154789c6364f8cf500f000386"
            "01805a347d6b0000000049454e44ae426082"
        )
        numbers = " ".join(map(str, image))
        gltf = self.to_gltf(
            TRIANGLE + "m.uvsets[*].coords = vec2f[3] {0 0 1 0 0 1}; m.material |= red.outColor; material red;\n"
            f"red.baseColorMap |= t.outColor; texture t; t.encoded = byte[{len(image)}] {{{numbers}}};"
        )
        self.assertEqual(gltf["images"][0]["mimeType"], "image/png")
        self.assertEqual(self.convert("out.glb", "back.vrn"), [])
        texture = [n for n in self.scene("back.vrn")["nodes"] if n["type"] == "texture"][0]
        self.assertEqual(bytes(inputs_of(texture)["encoded"]["data"]), image)

    def test_cameras(self):
        self.file(
            "in.vrn",
            "camera a; a.fov = 90; a.position = pos3(0 0 5); a.lookAt = pos3(0 0 0); a.clip = vec2(0.5 50);\n"
            'camera b; b.projection = "orthographic"; b.size = vec2(2 3); b.worldMatrix |= t.outMatrix; transform t;\n'
            "camera c; c.position = pos3(0 9 0); c.target = g; group g; camera d; d.near = -1.0; d.fov = 500;\n",
        )
        lost = self.convert("in.vrn", "out.glb")
        self.assertEqual(len(lost), 2, lost)
        gltf = self.gltf("out.glb")
        self.validate("out.glb")
        nodes = {node["name"]: node for node in gltf["nodes"]}
        self.assertEqual(nodes["a"], {"name": "a", "translation": [0, 0, 5], "camera": 0})
        self.assertEqual(nodes["t"], {"name": "t", "camera": 1})
        self.assertNotIn("b", nodes)
        self.assertEqual(gltf["cameras"][1]["orthographic"]["ymag"], 3)
        self.assertAlmostEqual(gltf["cameras"][0]["perspective"]["yfov"], 1.5707963267948966)
        matrix = nodes["c"]["matrix"] if "matrix" in nodes["c"] else None
        rotation = nodes["c"].get("rotation")
        self.assertTrue(matrix or rotation)
        if matrix:
            self.assertEqual(matrix[8:11], [0, 1, 0])  # +Z is up: it looks down at the group

    def test_lights(self):
        gltf = self.to_gltf(
            'light a; a.direction = vec3(0 -1 0); a.color = rgba(1 0.5 0.25); a.intensity = 3.0;\n'
            'light b; b.kind = "spot"; b.position = pos3(0 5 0); b.innerAngle = 10.0; b.outerAngle = 20.0; b.range = 9.0;\n'
            'light c; c.kind = "point"; c.worldMatrix |= t.outMatrix; transform t; t.translation = vec3(1 2 3);\n'
            'light d; d.kind = "area"; d.samples = 4;',
            "unknown kinds of lights: 1 (d)",
            "input samples of light: 1 (d.samples)",
        )
        lights = gltf["extensions"]["KHR_lights_punctual"]["lights"]
        self.assertEqual([light["type"] for light in lights], ["directional", "spot", "point", "directional"])
        self.assertAlmostEqual(lights[1]["spot"]["outerConeAngle"], 0.3490658503988659)
        self.assertEqual(self.convert("out.glb", "back.vrn"), [])
        back = [inputs_of(n) for n in self.scene("back.vrn")["nodes"] if n["type"] == "light"]
        back = {light["name"]["value"]: light for light in back}
        self.assertEqual(back["a"]["intensity"]["value"], 3)
        self.assertEqual(back["a"]["color"]["value"], [1, 0.5, 0.25, 1])
        self.assertEqual(back["b"]["range"]["value"], 9)

    SKIN = (
        "mesh m; m.points = vec3f[3] {0 0 0 1 0 0 0 1 0}; m.indices = int32[3] {0 1 2};\n"
        "m.skin.joints = vec4u[3] {0 1 0 0 0 1 0 0 1 %d 0 0}; m.skin.weights = vec4f[3] {1 0 0 0 0.5 %s 0 0 1 0 0 0};\n"
        "instance i; i.geometry = m; i.skin = s; transform a; transform b; b.parent = a;\n"
        "skin s; s.joints[*] = a; s.joints[*] = %s;\n"
    )

    def test_skins(self):
        gltf = self.to_gltf(self.SKIN % (0, "0.5", "b"))
        (skin,) = gltf["skins"]
        self.assertEqual((skin["name"], skin["joints"]), ("s", [1, 2]))
        self.assertEqual(gltf["accessors"][skin["inverseBindMatrices"]]["count"], 2)
        self.assertEqual(self.convert("out.glb", "back.vrn"), [])
        back = [inputs_of(n) for n in self.scene("back.vrn")["nodes"] if n["type"] == "skin"]
        self.assertEqual(back[0]["inverseBind"]["data"], [1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1] * 2)
        self.assertIn("WEIGHTS_0", gltf["meshes"][0]["primitives"][0]["attributes"])
        self.to_gltf(self.SKIN % (0, "0.75", "b"), "skin weights that do not sum to 1 (scaled): 1 (m)")
        self.to_gltf(self.SKIN % (7, "0.5", "b"), "skins with fewer joints than the mesh uses: 1 (i)")
        self.to_gltf(self.SKIN % (0, "0.5", "a"), "skins with duplicate joints: 1 (s)")
        self.to_gltf(self.SKIN % (0, "0.5", "m"), "skins with joints without a transform: 1 (s)")
        matrices = "s.inverseBind = mat4f[2] {1 0 0 %d 0 1 0 0 0 0 1 0 0 0 0 1 1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1};"
        self.to_gltf(self.SKIN % (0, "0.5", "b") + matrices % 0)
        lost = "skins with inverseBind matrices that do not match the joints: 1 (s)"
        self.to_gltf(self.SKIN % (0, "0.5", "b") + matrices % 1, lost)

    def test_animations(self):
        channel = (
            "group g; g.transform = mat4(1 0 0 0 0 1 0 0 0 0 1 0 1 2 3 1);\n"
            "animation a; a.channels[*].target = g; a.channels[0].path = \"%s\"; a.channels[0].times = float[2] {%s};\n"
            "a.channels[0].values = vec3f[2] {0 0 0 1 1 1};"
        )
        gltf = self.to_gltf(channel % ("translation", "0 1"))
        self.assertEqual(gltf["nodes"][0], {"name": "g", "translation": [1, 2, 3]})
        target = {"node": 0, "path": "translation"}
        self.assertEqual(gltf["animations"][0]["channels"], [{"sampler": 0, "target": target}])
        empty = "animations without channels: 1 (a)"
        prefix = "animation channels with "
        for path, times, reason in (
            ("translation", "1 0", "times that are missing, negative or not increasing"),
            ("weights", "0 1", "a path other than translation, rotation, scale, and weights of a mesh with targets"),
        ):
            self.to_gltf(channel % (path, times), f"{prefix}{reason}: 1 (a.channels[0])", empty)
        lost = self.convert_text(channel % ("rotation", "0 1"))
        self.assertIn(prefix + "values that do not match the times and the path: 1 (a.channels[0])", lost)

    def test_step_animations(self):
        self.file(
            "in.vrn",
            'group g; animation a; a.channels[*].target = g; a.channels[0].path = "scale";\n'
            'a.channels[0].interpolation = "step"; a.channels[0].times = float[2] {0 1};\n'
            "a.channels[0].values = vec3f[2] {1 1 1 2 2 2};",
        )
        self.assertEqual(self.convert("in.vrn", "out.glb"), [])
        self.validate("out.glb")
        self.assertEqual(self.gltf("out.glb")["animations"][0]["samplers"][0]["interpolation"], "STEP")
        self.assertEqual(self.convert("out.glb", "back.vrn"), [])
        animation = [inputs_of(n) for n in self.scene("back.vrn")["nodes"] if n["type"] == "animation"][0]
        channel = inputs_of(animation["channels"]["elements"][0])
        self.assertEqual(channel["interpolation"]["value"], "step")
        self.assertEqual(channel["times"]["data"], [0, 1])
        self.assertEqual(channel["values"]["data"], [1, 1, 1, 2, 2, 2])

    def test_nodes_with_the_same_name(self):
        gltf = self.to_gltf(
            'group a; a.name = "x"; group b; b.name = "x"; camera c; c.worldMatrix |= a.outMatrix;\n'
            'animation v; v.channels[*].target = b; v.channels[0].path = "scale";\n'
            "v.channels[0].times = float[1] {0}; v.channels[0].values = vec3f[1] {2 2 2};",
        )
        self.assertEqual([node["name"] for node in gltf["nodes"]], ["x", "x"])

    def test_numbers_beyond_the_range_of_a_float(self):
        product = "transforms whose product exceeds the range of a float: 1 (g)"
        matrix = "mat4(1e38 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1)"
        self.to_gltf(f"group g; g.scale = vec3(1e38 1 1); g.transform = {matrix};", product)
        large = "numbers beyond the range of a float: 1 (%s)"
        self.to_gltf("group g; g.scale = vec3(1e200 1 1);", large % "g.scale")
        self.to_gltf("camera c; c.position = pos3(1e308 0 0);", large % "c.position")
        self.to_gltf('camera c; c.projection = "orthographic"; c.near = 1.7e308;', large % "c.near")
        self.to_gltf("camera c; c.position = pos3(0 0 0); c.lookAt = pos3(0 0 5e-324);")
        gltf = self.to_gltf('camera c; c.projection = "orthographic"; c.near = 1.0e30;')["cameras"][0]["orthographic"]
        self.assertGreater(gltf["zfar"], gltf["znear"])
        self.to_gltf("group g; g.rotation = quat(1e308 0 0 1);", large % "g.rotation")
        normalized = "lengths of rotations (set to 1): 1 (g)"
        gltf = self.to_gltf("group g; g.rotation = quat(5e-324 5e-324 0 0);", normalized)
        self.assertAlmostEqual(gltf["nodes"][0]["rotation"][0], 0.5**0.5)

    def test_values_out_of_range(self):
        range_of = "numbers out of range (clamped): %d (first %s)"
        type_of = "values of the wrong type: %d (first %s)"
        self.to_gltf(
            "light l; l.kind = \"spot\"; l.intensity = -5; l.range = -1.0; l.outerAngle = 120; l.innerAngle = 200;"
            "camera c; c.aspect = -3; c.projection = \"panoramic\";",
            range_of % (5, "l.intensity"),
            "unknown projections of cameras: 1 (c)",
        )
        gltf = self.to_gltf(
            TRIANGLE + "m.uvsets[*].coords = vec2f[3] {0 0 1 0 0 1}; m.material |= r.outColor; material r;\n"
            'r.baseColorMap |= t.outColor; r.doubleSided = 1; r.alpha.cutoff = -2; texture t; t.file = "a.png";\n'
            "t.filter = 9987.0; t.wrapU = 5;",
            type_of % (2, "t.wrapU"),
            "numbers out of range (clamped): 1 (r.alpha.cutoff)",
        )
        self.assertEqual(gltf["samplers"][0]["minFilter"], 9987)
        self.to_gltf(
            'group g; animation a; a.channels[*].target = g; a.channels[0].path = "scale"; a.duration = 5;\n'
            "a.channels[0].times = float[1] {1}; a.channels[0].values = vec3f[1] {2 2 2};",
            "durations of animations other than the time of the last key: 1 (a)",
        )

    def test_components_beyond_those_of_an_input(self):
        further = "further components of vectors and colours: 1 (%s)"
        wrong = "values of the wrong type: 1 (%s)"
        material = "m.material |= r.outColor; material r; "
        mapped = TRIANGLE + "m.uvsets[*].coords = vec2f[3] {0 0 1 0 0 1};" + material + 'r.baseColorMap |= t.outColor; texture t; t.file = "a.png"; r.baseColorXform.'
        for text, lost in (
            ("group g; g.translation = vec4(1 2 3 4);", further % "g.translation"),
            ("group g; g.scale = vec4(1 2 3 1);", further % "g.scale"),
            ("group g; g.scale = quat(1 2 3 1);", further % "g.scale"),
            ("group g; g.translation = vec4(1 2 3 inf);", further % "g.translation"),
            ("group g; g.scale = mat3(1 2 3 4 5 6 7 8 9);", wrong % "g.scale"),
            ("group g; g.rotation = mat3(1 0 0 0 1 0 0 0 1);", wrong % "g.rotation"),
            ("camera c; c.position = vec4(1 2 3 4); c.lookAt = pos3(1 2 0);", further % "c.position"),
            ("camera c; c.clip = vec3(1 2 3);", further % "c.clip"),
            ("light l; l.color = rgba(1 1 0 0.5);", further % "l.color"),
            ("light l; l.color = vec4(1 1 0 1);", None),
            ("light l; l.color = rgba(1 1 0 1);", None),
            ("light l; l.direction = vec4(0 1 0 1);", further % "l.direction"),
            (TRIANGLE + material + "r.emission.color = rgba(1 1 0 0.5);", further % "r.emission.color"),
            (TRIANGLE + material + "r.emission.color = rgba(1 1 0);", None),
            (TRIANGLE + material + "r.sheen.color = vec4(1 1 0 0);", further % "r.sheen.color"),
            (TRIANGLE + material + "r.sheen.color = rgba(1 1 0 1);", None),
            (TRIANGLE + material + "r.baseColor = mat4(1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1);", wrong % "r.baseColor"),
            (mapped + "offset = vec3(0 1 2);", further % "r.baseColorXform.offset"),
            ("camera c; c.far = 9007199254740993;", "digits beyond float precision: 1 (c.far)"),
            ("camera c; c.far = 9223372036854775807;", "digits beyond float precision: 1 (c.far)"),
            ("camera c; c.far = 9007199254740992;", None),
            (mapped + "uvset = 0.5;", "fractions of the numbers of uvsets: 1 (r.baseColorXform.uvset)"),
        ):
            with self.subTest(text):
                self.assertEqual(self.convert_text(text), [lost] if lost else [])
        self.assertEqual(self.to_gltf("group g; g.scale = mat3(1 2 3 4 5 6 7 8 9);", wrong % "g.scale")["nodes"],
                         [{"name": "g"}])
        node = self.to_gltf("group g; g.translation = vec4(1 2 3 inf);", further % "g.translation")["nodes"][0]
        self.assertEqual(node["translation"], [1, 2, 3])

    def test_alpha_of_base_colours(self):
        for name in ("baseColor", "color"):
            for value, color in (
                ("rgba(1 0.5 0 0.25)", [1, 0.5, 0, 0.25]),
                ("vec4(1 0.5 0 0.25)", [1, 0.5, 0, 0.25]),
                ("vec3(1 0.5 0)", [1, 0.5, 0, 1]),
            ):
                with self.subTest(name, value=value):
                    gltf = self.to_gltf(TRIANGLE + f"m.material |= r.outColor; material r; r.{name} = {value};")
                    self.assertEqual(gltf["materials"][0]["pbrMetallicRoughness"]["baseColorFactor"], color)

    def test_morph_targets_without_attributes(self):
        gltf = self.to_gltf(TRIANGLE + 'm.targets[*].name = "a"; m.weights = float[1] {0.5};')
        target = gltf["meshes"][0]["primitives"][0]["targets"][0]
        self.assertEqual(gltf["accessors"][target["POSITION"]]["max"], [0, 0, 0])

    def test_buffers_of_hues(self):
        wrong = "values of the wrong type: 1 (m.targets[0].colors)"
        self.to_gltf(TRIANGLE + "m.colors = rgbaf[3] {1 1 1 1 1 1 1 1 1 1 1 1};\n"
                     "m.targets[*].colors = hsvf[3] {0.5 1 1 0.5 1 1 0.5 1 1};", wrong)

    def test_texture_uris(self):
        text = (
            TRIANGLE + "m.uvsets[*].coords = vec2f[3] {0 0 1 0 0 1}; m.material |= r.outColor; material r;\n"
            'r.baseColorMap |= t.outColor; texture t; t.file = "%s";'
        )
        for file, uri in (
            ("data:zz\\nb c", "data%3Azz%0Ab%20c"),
            ("wood:oak light%.png", "wood%3Aoak%20light%25.png"),
            ("https://a.b/c d%20e.png", "https://a.b/c%20d%20e.png"),
            ("C:\\\\wood.png", "file:///C:/wood.png"),
        ):
            self.assertEqual(self.to_gltf(text % file)["images"][0]["uri"], uri)

    def convert_text(self, text):
        self.file("in.vrn", text)
        return self.convert("in.vrn", "out.glb")

    def test_loss_kinds_are_bounded(self):
        lost = self.convert_text("group g;" + "".join(f"g.a{i} = {i};" for i in range(1000)))
        self.assertLess(len(lost), 210)
        self.assertEqual(lost[-1], "other kinds: 800 (first g.a200)")

    def test_wrong_types_and_non_finite_numbers(self):
        lost = self.convert_text(
            'group g; g.translation = "here"; g.scale = vec3(inf 1 1); camera c; c.fov = "wide"; c.near = -nan;'
        )
        self.assertEqual(
            lost,
            [
                "numbers that are not finite: 2 (first c.near)",
                "values of the wrong type: 2 (first c.fov)",
            ],
        )
        self.validate("out.glb")


class OtherFormats(Converting):
    OBJ = (
        "v 0 0 0\nv 1 0 0\nv 1 1 0.1\nv 0 1 0\nv 2 0.33333334 0\n"
        "vt 0 0\nvt 1 0\nvt 1 1\nvt 0.25 0.75\nvn 0 0 1\nf 1/1/1 2/2/1 3/3/1 4/4/1\nf 2/2/1 5/1/1 3/3/1\n"
    )
    PLY = (
        "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\nproperty float z\n"
        "property uchar red\nproperty uchar green\nproperty uchar blue\nproperty uchar alpha\n"
        "element face 1\nproperty list uchar int vertex_indices\nend_header\n"
        "0 0 0 255 0 0 255\n1 0 0 0 255 0 255\n0 1 0.1 0 0 255 255\n3 0 1 2\n"
    )
    STL = (
        "solid s\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0.1\nendloop\nendfacet\n"
        "endsolid s\n"
    )

    def gltf_file(self):
        points = (0, 0, 0, 1, 0, 0, 0, 1, 0.1)
        coordinates = (0.1, 0.3, 0.7, 0.9, 1e-8, 0.6)
        self.file("made.bin", struct.pack("<9f6f3H", *points, *coordinates, 0, 1, 2))
        views = [(0, 36), (36, 24), (60, 6)]
        accessors = [(0, 5126, 3, "VEC3"), (1, 5126, 3, "VEC2"), (2, 5123, 3, "SCALAR")]
        keys = ("bufferView", "componentType", "count", "type")
        document = {
            "asset": {"version": "2.0"},
            "scene": 0,
            "scenes": [{"nodes": [0]}],
            "nodes": [{"name": "float", "mesh": 0, "translation": [0.1, 0.2, 0.3]}],
            "meshes": [{"primitives": [{"attributes": {"POSITION": 0, "TEXCOORD_0": 1}, "indices": 2}]}],
            "buffers": [{"uri": "made.bin", "byteLength": 66}],
            "bufferViews": [{"buffer": 0, "byteOffset": o, "byteLength": n} for o, n in views],
            "accessors": [dict(zip(keys, a)) for a in accessors],
        }
        document["accessors"][0].update(min=[0, 0, 0], max=[1, 1, struct.unpack("<f", struct.pack("<f", 0.1))[0]])
        self.file("made.gltf", json.dumps(document))
        self.validate("made.gltf")

    def corners(self, path):
        found = []
        for mesh in meshes(self.scene(path)):
            found += [corner[0] for corner in mesh.corners]
        return [struct.unpack("<3f", point) for point in found]

    def test_obj(self):
        self.file("in.obj", self.OBJ)
        self.assertEqual(self.convert("in.obj", "converted.vrn"), [])
        mesh = meshes(self.scene("converted.vrn"))[0]
        self.assertEqual(mesh.faces, [4, 3])
        self.assertEqual(struct.unpack("<2f", mesh.corners[3][2]), (0.25, 0.25))  # v is flipped
        lost = self.convert("converted.vrn", "back.obj")
        self.convert("back.obj", "again.vrn")
        self.assertEqual(meshes(self.scene("again.vrn"))[0].corners, mesh.corners)
        self.assertEqual(lost, ["nodes without a mesh: 1 (in_obj)", "parents of nodes: 1 (defaultobject_2)"])

    def test_obj_with_a_material_library(self):
        self.file("in.obj", "mtllib in.mtl\nusemtl wood\n" + self.OBJ)
        self.file("in.mtl", "newmtl wood\nKd 0.8 0.5 0.25\nmap_Kd my wood.png\n")
        self.convert("in.obj", "converted.vrn")
        self.convert("converted.vrn", "back.obj")
        self.assertIn("mtllib back.mtl", (self.folder / "back.obj").read_text())
        self.assertIn("map_Kd my wood.png", (self.folder / "back.mtl").read_text())
        self.convert("back.obj", "again.vrn")
        material = [inputs_of(n) for n in self.scene("again.vrn")["nodes"] if n["type"] == "material"][0]
        self.assertEqual(material["baseColor"]["value"], [0.8, 0.5, 0.25, 1])

    def test_ply(self):
        self.file("in.ply", self.PLY)
        self.convert("in.ply", "converted.vrn")
        mesh = [inputs_of(n) for n in self.scene("converted.vrn")["nodes"] if n["type"] == "mesh"][0]
        self.assertEqual(mesh["colors"]["data"], [1, 0, 0, 1, 0, 1, 0, 1, 0, 0, 1, 1])
        self.convert("converted.vrn", "back.ply")
        self.convert("back.ply", "again.vrn")
        self.assertEqual(self.corners("again.vrn"), self.corners("converted.vrn"))
        self.convert("converted.vrn", "converted.glb")
        self.validate("converted.glb")

    def test_stl(self):
        self.file("in.stl", self.STL)
        self.convert("in.stl", "converted.vrn")
        self.assertEqual(len(self.corners("converted.vrn")), 3)
        self.convert("converted.vrn", "back.stl")
        self.convert("back.stl", "again.vrn")
        self.assertEqual(self.corners("again.vrn"), self.corners("converted.vrn"))

    def test_gltf(self):
        self.gltf_file()
        self.assertEqual(self.convert("made.gltf", "converted.vrn"), [])
        scene = self.scene("converted.vrn")
        mesh = meshes(scene)[0]
        exact = struct.unpack("<6f", b"".join(corner[1] for corner in mesh.corners))
        self.assertEqual(exact, struct.unpack("<6f", struct.pack("<6f", 0.1, 0.3, 0.7, 0.9, 1e-8, 0.6)))
        node = [inputs_of(n) for n in scene["nodes"] if n["type"] == "instance"][0]
        self.assertEqual(node["translation"]["value"], [0.1, 0.2, 0.3])
        self.assertIn("float_", [n["name"] for n in scene["nodes"]])  # keywords are not valid names
        self.convert("converted.vrn", "back.gltf")
        self.validate("back.gltf")
        self.convert("back.gltf", "again.vrn")
        self.assertEqual(meshes(self.scene("again.vrn"))[0].corners, mesh.corners)

    def test_gltf_with_embedded_buffer(self):
        self.gltf_file()
        document = self.gltf("made.gltf")
        data = base64.b64encode((self.folder / "made.bin").read_bytes()).decode()
        document["buffers"][0]["uri"] = "data:application/octet-stream;base64," + data
        self.file("one.gltf", json.dumps(document))
        self.assertEqual(self.convert("one.gltf", "one.vrn"), [])
        self.convert("made.gltf", "made.vrn")
        self.assertEqual(meshes(self.scene("one.vrn"))[0].corners, meshes(self.scene("made.vrn"))[0].corners)

    def test_gltf_with_shared_cameras_lights_and_names(self):
        lights = "KHR_lights_punctual"
        light = {"extensions": {lights: {"light": 0}}, "name": "same", "camera": 0}
        self.file("in.gltf", json.dumps({
            "asset": {"version": "2.0"},
            "extensionsUsed": [lights],
            "extensions": {lights: {"lights": [{"type": "point", "range": 4}]}},
            "cameras": [{"type": "perspective", "perspective": {"yfov": 1, "znear": 0.5}}],
            "scene": 0,
            "scenes": [{"nodes": [0, 1]}, {"nodes": [0]}],
            "nodes": [{**light, "translation": [1, 0, 0]}, {**light, "translation": [2, 0, 0]}],
        }))
        self.assertEqual(self.convert("in.gltf", "out.vrn"), [])
        nodes = self.scene("out.vrn")["nodes"]
        transforms = [n["name"] for n in nodes if n["type"] == "transform"]
        for kind in ("camera", "light"):
            of_kind = [inputs_of(n) for n in nodes if n["type"] == kind]
            self.assertEqual([n["name"] for n in nodes if n["type"] == kind],
                             [f"same_{kind}", f"same_2_{kind}"])
            connected = {n["worldMatrix"]["connection"] for n in of_kind}
            self.assertEqual(connected, {f"{t}.outMatrix" for t in transforms})
            self.assertNotIn("far", of_kind[0])

    def test_mesh_with_several_skins(self):
        skin = (
            "skin s%s; s%s.joints[*] = j%s; transform j%s; j%s.parent = g;\n"
            "instance i%s; i%s.geometry = m; i%s.skin = s%s;\n"
        )
        self.file(
            "in.vrn",
            TRIANGLE + "group g; m.skin.joints = vec4u[3] {0 0 0 0 0 0 0 0 0 0 0 0};\n"
            "m.skin.weights = vec4f[3] {1 0 0 0 1 0 0 0 1 0 0 0};\n"
            + skin.replace("%s", "a")
            + skin.replace("%s", "b"),
        )
        self.convert("in.vrn", "out.glb")
        self.convert("out.glb", "back.vrn")
        nodes = {n["name"]: inputs_of(n) for n in self.scene("back.vrn")["nodes"]}
        for name in "ab":
            used = nodes[nodes["i" + name]["skin"]["value"]]
            self.assertEqual(used["joints"]["elements"][0]["value"], "j" + name)
        document = self.gltf("out.glb")
        for one in document["skins"]:
            del one["inverseBindMatrices"]
        text = json.dumps(document).encode()
        text += b" " * (-len(text) % 4)
        content = (self.folder / "out.glb").read_bytes()
        rest = content[20 + struct.unpack("<I", content[12:16])[0] :]
        header = struct.pack("<III", 2, 20 + len(text) + len(rest), len(text))
        self.file("without.glb", b"glTF" + header + b"JSON" + text + rest)
        self.validate("without.glb")
        self.assertEqual(self.convert("without.glb", "back.vrn"), [])

    def test_gltf_file_name_with_a_space(self):
        self.file("in.vrn", TRIANGLE)
        self.convert("in.vrn", "my spot.gltf")
        self.assertEqual(self.convert("my spot.gltf", "back.vrn"), [])
        self.assertEqual(meshes(self.scene("back.vrn"))[0].triangles(), 1)

    def test_texture_paths_are_rebased(self):
        for folder in ("in", "out"):
            (self.folder / folder).mkdir()
        text = (
            TRIANGLE + "m.uvsets[*].coords = vec2f[3] {0 0 1 0 0 1}; m.material |= r.outColor; material r;\n"
            'r.baseColorMap |= t.outColor; texture t; t.file = "%s";'
        )
        for file, moved, back in (
            ("maps\\\\a b.png", "../in/maps/a b.png", "in/maps/a b.png"),
            ("../a.png", "../a.png", "a.png"),
            ("/maps/a.png", "/maps/a.png", "/maps/a.png"),
            ("https://a.b/c.png", "https://a.b/c.png", "https://a.b/c.png"),
        ):
            self.file("in/in.vrn", text % file)
            self.convert("in/in.vrn", "out/out.glb")
            self.convert("out/out.glb", "out/out.vrn")
            self.convert("out/out.glb", "back.vrn")
            at = [self.scene(p)["nodes"] for p in ("out/out.vrn", "back.vrn")]
            near, far = ([inputs_of(n) for n in nodes if n["type"] == "texture"][0]["file"]["value"] for nodes in at)
            self.assertEqual((near, far), (moved, back))

    def test_emission_map_transform(self):
        self.file(
            "in.vrn",
            TRIANGLE + "m.uvsets[*].coords = vec2f[3] {0 0 1 0 0 1}; m.material |= r.outColor; material r;\n"
            'r.emission.color = vec3(1 1 1); r.emission.map |= t.outColor; texture t; t.file = "a.png";\n'
            "r.emissionXform.offset = vec2(0.5 0.25); r.emissionXform.scale = vec2(2 2);",
        )
        self.convert("in.vrn", "out.glb")
        self.convert("out.glb", "back.vrn")
        material = [inputs_of(n) for n in self.scene("back.vrn")["nodes"] if n["type"] == "material"][0]
        self.assertEqual(inputs_of(material["emissionXform"])["offset"]["value"], [0.5, 0.25])

    def test_obj_names_are_unique_and_escaped(self):
        self.file(
            "in.vrn",
            TRIANGLE + triangle("n") + "n.material |= p.outColor;\n"
            + triangle("o") + "o.material |= q.outColor;\n"
            'material p; p.name = "x\\nKd 9 9 9"; p.baseColor = rgba(1 0 0 1); p.baseColorMap |= t.outColor;\n'
            'material q; q.name = "x\\nKd 9 9 9"; texture t; t.file = "a\\nillum 9";',
        )
        lost = self.convert("in.vrn", "out.obj")
        self.assertIn("names that are not unique, begin or end with spaces, or contain control characters: 2 (first p)", lost)
        self.assertIn("paths of textures that begin or end with spaces, or contain control characters: 1 (t)", lost)
        library = (self.folder / "out.mtl").read_text().splitlines()
        names = [line for line in library if line.startswith("newmtl")]
        self.assertEqual(len(set(names)), 3)
        self.assertNotIn("Kd 9 9 9", library)
        self.assertNotIn("illum 9", library)
        self.convert("out.obj", "back.vrn")
        back = [inputs_of(n) for n in self.scene("back.vrn")["nodes"] if n["type"] == "mesh"]
        self.assertEqual(sum("material" in mesh for mesh in back), 2)

    def test_transformed_points_that_overflow(self):
        self.file("in.vrn", TRIANGLE.replace("1 0 0", "1e30 0 0") + triangle("n")
                  + "instance i; i.geometry = m; i.scale = vec3(1e30 1 1);")
        lost = self.convert("in.vrn", "out.obj")
        self.assertIn("meshes whose transformed points exceed the range of a float: 1 (i)", lost)
        self.assertNotIn("inf", (self.folder / "out.obj").read_text())


class Document(Converting):
    def test_console_examples_match(self):
        text = (ROOT / "docs" / "convert.md").read_text()
        sessions = re.findall(r"^```console\n\$ vrn convert (\S+) (\S+)\n(.*?)^```$", text, re.M | re.S)
        self.assertEqual(len(sessions), 1)
        for source, target, expected in sessions:
            result = self.run_here("convert", ROOT / source, target)
            self.assertEqual(result.stderr.decode(), expected)

    def test_all_types_and_inputs_of_the_catalogue_are_documented(self):
        text = (ROOT / "docs" / "scene-types.md").read_text()
        for name, described in json.loads(CATALOGUE.read_text())["types"].items():
            self.assertIn(f"`{name}`", text)
            for word in described["inputs"]:
                known = re.search(rf"`{word}[`.\[]", text) or (word.endswith("Xform") and "Xform" in text)
                self.assertTrue(known, (name, word))


class Failures(Converting):
    def fails(self, status, message, *arguments):
        before = sorted(self.folder.iterdir())
        result = self.run_here("convert", *arguments)
        self.assertEqual(result.returncode, status, result.stderr.decode())
        self.assertIn(message, result.stderr.decode())
        self.assertEqual(sorted(self.folder.iterdir()), before, "no file is left over")

    def test_extensions(self):
        self.file("in.vrn", "t a;")
        known = ".vrn .json .gltf .glb .obj .ply .stl"
        self.fails(2, "vrn: out.xyz: no format with this extension can be written; supported: " + known, "in.vrn", "out.xyz")
        self.fails(2, "vrn: out: no format with this extension can be written", "in.vrn", "out")
        self.fails(2, "vrn: in.xyz: no format with this extension can be read; supported: .vrn .3d", "in.xyz", "out.glb")
        self.fails(2, "vrn: OUT: name the file to write after the file to read", "in.vrn")
        self.file("IN.VRN", "t a;")
        self.convert("IN.VRN", "OUT.JSON")

    def test_files(self):
        self.file("in.vrn", TRIANGLE)
        (self.folder / "folder.glb").mkdir()
        for name in ("nowhere.vrn", "nowhere.obj", "nowhere.glb"):
            self.fails(2, f"vrn: {name}: No such file or directory", name, "out.glb")
        self.fails(2, "vrn: folder.glb: Is a directory", "folder.glb", "out.vrn")
        self.fails(2, "vrn: folder.glb: Is a directory", "in.vrn", "folder.glb")
        self.fails(2, "vrn: no/such/out.glb: No such file or directory", "in.vrn", "no/such/out.glb")
        os.mkfifo(self.folder / "pipe.glb")
        self.fails(2, "vrn: pipe.glb: Operation not supported", "in.vrn", "pipe.glb")
        self.fails(2, "vrn: pipe.glb: only regular files can be converted", "pipe.glb", "out.vrn")
        os.mkfifo(self.folder / "pipe.mtl")
        self.file("piped.obj", "mtllib pipe.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n")
        self.convert("piped.obj", "piped.vrn")
        mesh = '"meshes":[{"primitives":[{"attributes":{"POSITION":0}}]}],"nodes":[{"mesh":0}],"scenes":[{"nodes":[0]}],'
        for uri in ("/dev/zero", "pipe.glb"):
            self.file("endless.gltf", '{"asset":{"version":"2.0"},' + mesh + '"scene":0,"accessors":[{"bufferView":0,'
                      '"componentType":5126,"count":3,"type":"VEC3"}],"bufferViews":[{"buffer":0,"byteLength":36}],'
                      '"buffers":[{"byteLength":36,"uri":"' + uri + '"}]}')
            self.fails(1, "vrn: endless.gltf: ", "endless.gltf", "out.vrn")

    def test_invalid_models(self):
        self.file("empty.glb", b"")
        self.file("text.glb", "this is not glTF")
        self.file("cut.glb", b"glTF" + struct.pack("<III", 2, 5000, 4000) + b"JSON{")
        self.file("wrong.obj", "f 1 2 3\n")
        self.file("wrong.ply", "ply\nformat odd 7.0\n")
        self.file("wrong.stl", b"\x00" * 50)
        start = '{"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],"nodes":'
        self.file("circle.gltf", start + '[{"children":[1]},{"children":[0]}]}')
        self.file("shared.gltf", start + '[{"children":[2,2]},{},{}]}')
        self.file("deep.gltf", '{"asset":{"version":"2.0"},"extras":' + "[" * 100000 + "]" * 100000 + "}")
        def nested(levels):
            return start + "[" + "".join(f'{{"children":[{i + 1}]}},' for i in range(levels)) + "{}]}"
        self.file("nested.gltf", nested(1001))
        self.file("not_too_deep.gltf", nested(1000))
        self.convert("not_too_deep.gltf", "out.vrn")
        for path in ("nested.gltf", "empty.glb", "text.glb", "cut.glb", "wrong.obj", "wrong.ply", "wrong.stl", "deep.gltf",
                     "circle.gltf", "shared.gltf"):
            with self.subTest(path):
                self.fails(1, f"vrn: {path}: ", path, "out.vrn")

    def test_model_that_crashes_assimp(self):
        if b"asan" in pathlib.Path(VRN).read_bytes():
            self.skipTest("the sanitizers report the stack overflow themselves")
        count = 200_000
        self.file(
            "deep.dae",
            '<?xml version="1.0"?><COLLADA xmlns="http://www.collada.org/2005/11/COLLADASchema" version="1.4.1">'
            '<library_visual_scenes><visual_scene id="s">'
            + "<node>" * count
            + "</node>" * count
            + '</visual_scene></library_visual_scenes><scene><instance_visual_scene url="#s"/></scene></COLLADA>',
        )
        self.fails(1, "vrn: deep.dae: its reader crashed: it is malformed, or its reader has a fault", "deep.dae", "out.vrn")

    def test_reader_process_ends_with_the_command(self):
        self.file("large.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\n" + "f 1 2 3\n" * 300_000)
        command = subprocess.Popen([VRN, "convert", "large.obj", "out.vrn"], cwd=self.folder)
        children = pathlib.Path(f"/proc/{command.pid}/task/{command.pid}/children")
        while not (found := children.read_text().split()):
            self.assertIsNone(command.poll(), "the command ended too early")
        time.sleep(0.03)  # reading has started
        os.kill(int(found[0]), signal.SIGSTOP)
        command.terminate()
        command.wait()
        deadline = time.monotonic() + 30
        while self.runs(found[0]):
            self.assertLess(time.monotonic(), deadline, "the reader process is still running")
            time.sleep(0.01)

    @staticmethod
    def runs(process):
        try:
            return pathlib.Path("/proc", process, "stat").read_text().split()[2] != "Z"
        except OSError:
            return False

    def test_scenes_without_anything_to_write(self):
        self.file("in.vrn", "t a; mesh m;")
        for extension in ("glb", "gltf", "obj", "ply", "stl"):
            self.fails(1, f"vrn: out.{extension}: the scene has no ", "in.vrn", "out." + extension)

    def test_scenes_with_errors_are_not_converted(self):
        self.file("bad.vrn", TRIANGLE + "m.b = true; m.b = 1.5;")
        self.fails(1, "bad.vrn:2:22: error: TYPE ERROR", "bad.vrn", "out.glb")
        self.fails(1, "vrn: bad.vrn: not converted, because of the errors above", "bad.vrn", "out.vrn")
        self.file("warned.vrn", TRIANGLE + "m.b = float[2] {1};")
        result = self.run_here("convert", "warned.vrn", "out.json")
        self.assertEqual(result.returncode, 0)
        self.assertIn(b"warning: Too few elements", result.stderr)

    def test_terminal_output_is_escaped(self):
        self.file("in.vrn", TRIANGLE + 'm.name = "\x1b[31m"; m.odd = 1;')
        self.file("\x1b.vrn", "t a;")
        result = self.run_here("convert", "\x1b.vrn", "\x1b.glb")
        self.assertNotIn(b"\x1b", result.stderr)
        self.assertIn(b"lost: nodes of type t: 1 (a)", result.stderr)

    def test_output_replaces_a_file_atomically(self):
        self.file("in.vrn", TRIANGLE)
        self.file("bad.vrn", "oops")
        self.file("out.glb", "older")
        os.chmod(self.folder / "out.glb", 0o640)
        os.symlink("out.glb", self.folder / "link.glb")
        self.fails(1, "error: ", "bad.vrn", "out.glb")
        self.assertEqual((self.folder / "out.glb").read_text(), "older")
        self.convert("in.vrn", "link.glb")
        self.assertTrue((self.folder / "link.glb").is_symlink())
        self.assertEqual((self.folder / "out.glb").read_bytes()[:4], b"glTF")
        self.assertEqual((self.folder / "out.glb").stat().st_mode & 0o777, 0o640)

    def test_input_and_output_may_be_the_same_file(self):
        self.file("in.vrn", TRIANGLE)
        before = self.scene("in.vrn")
        self.convert("in.vrn", "in.vrn")
        self.assertEqual(self.scene("in.vrn"), before)


if __name__ == "__main__":
    unittest.main()
