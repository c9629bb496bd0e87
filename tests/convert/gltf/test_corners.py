"""Tests corners of the conversion of glTF that small models of one feature each do not have."""
import base64
import json
import pathlib
import struct
import sys
import unittest

sys.path += [str(pathlib.Path(__file__).resolve().parents[2] / "cli"), str(pathlib.Path(__file__).resolve().parents[1])]

from geometry import inputs_of
from importing import Importing

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


CATALOGUE = {name: kind["inputs"] for name, kind in json.loads(
    (pathlib.Path(__file__).resolve().parents[3] / "catalogues" / "scene.json").read_text())["types"].items()}
TRIANGLE = "mesh {0}; {0}.points = vec3f[3] {{0 0 0 1 0 0 0 1 0}};"


def minimal(kind, name):
    """The text of a node that is written, and of the nodes that this needs."""
    mesh = TRIANGLE.format("m" + name)
    if kind == "mesh":
        return TRIANGLE.format(name)
    if kind == "instance":
        return f"{mesh} instance {name}; {name}.geometry = m{name};"
    if kind == "skin": # only those that deform a mesh are read
        return (f"{mesh} m{name}.skin.joints = vec4u[3] {{0 0 0 0 0 0 0 0 0 0 0 0}};"
                f"m{name}.skin.weights = vec4f[3] {{1 0 0 0 1 0 0 0 1 0 0 0}}; skin {name}; {name}.joints[0] = g;"
                f"instance i{name}; i{name}.geometry = m{name}; i{name}.skin = {name};")
    return f"{kind} {name};"


def value_paths(inputs, prefix=""):
    """The paths of all inputs that do not take a link, each list with one element."""
    for name, declared in inputs.items():
        path, kind = prefix + name, declared["type"]
        takes_link = kind in ("Null", "Node")
        if not takes_link:
            yield path
        if kind == "Array" and declared.get("elementType") == "String":
            yield path + "[0]"
        yield from value_paths(declared.get("members", {}), path + ("[0]." if kind == "Array" else "."))


class Corners(Importing):
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

    def to_gltf(self, text, *lost):
        self.file("in.vrn", text)
        self.assertEqual(self.convert("in.vrn", "out.gltf"), list(lost))
        return self.gltf("out.gltf")

    def test_attributes_of_the_same_name(self):
        one = 'm.attributes[%d].name = "_A"; m.attributes[%d].values = float[1] {%d};'
        mesh = "mesh m; m.points = vec3f[1] {0 0 0}; m.topology = \"points\";"
        self.to_gltf(mesh + one % (0, 0, 1) + one % (1, 1, 2),
                     "attributes with the name of another: 1 (m.attributes[1])")
        one = one.replace("m.attr", "i.instances.attr")
        self.to_gltf(mesh + "instance i; i.geometry = m;" + one % (0, 0, 1) + one % (1, 1, 2),
                     "attributes with the name of another: 1 (i.instances.attributes[1])")

    def test_uvsets_keep_their_numbers(self):
        document = self.to_gltf("mesh m; m.points = vec3f[1] {0 0 0}; m.topology = \"points\";"
                                "m.uvsets[0].coords = vec2f[1] {nan 0}; m.uvsets[1].coords = vec2f[1] {1 1};",
                                "attributes that do not match the points of their mesh: 1 (m.uvsets[0].coords)",
                                "uvsets after one that is left out: 1 (m.uvsets[1])")
        self.assertEqual(list(document["meshes"][0]["primitives"][0]["attributes"]), ["POSITION"])

    def test_colorsets_without_colors(self):
        self.to_gltf("mesh m; m.points = vec3f[1] {0 0 0}; m.topology = \"points\";"
                     "m.colorsets[0].colors = rgbaf[1] {1 1 1 1};", "colorsets of meshes without colors: 1 (m)")

    def test_more_joints_without_the_first(self):
        self.to_gltf("mesh m; m.points = vec3f[1] {0 0 0}; m.topology = \"points\";"
                     "m.skin.more[0].joints = vec4u[1] {1 0 0 0}; m.skin.more[0].weights = vec4f[1] {1 0 0 0};",
                     "joints without weights, or weights without joints: 1 (m.skin)")

    def test_scenes_that_list_a_node_twice(self):
        document = self.to_gltf("group a; scene s; s.nodes[0] = a; s.nodes[1] = a;")
        self.assertEqual(document["scenes"][0]["nodes"], [0])

    def test_meshes_outside_the_scene_that_is_shown(self):
        self.model.json["nodes"] = [{"name": "a", "mesh": 0}, {"name": "b", "mesh": 0}, {"name": "c", "mesh": 0}]
        self.model.json["scenes"] = [{"nodes": [0]}, {"nodes": [1]}]
        self.model.json["scene"] = 1
        for extension in ("obj", "ply", "stl"):
            self.assertEqual([line for line in self.convert("in.gltf", "out." + extension) if "outside" in line],
                             ["nodes outside the scene that is shown first: 2 (first a)"])
        self.convert("in.gltf", "out.obj")
        lines = (self.folder / "out.obj").read_text().splitlines()
        self.assertEqual([line for line in lines if line.startswith("o ")], ["o b"])

    def test_merged_variants_keep_their_names(self):
        for name in ("red", "blue"):
            model = Model()
            model.json["materials"] = [{"name": name}]
            model.json["extensions"] = {"KHR_materials_variants": {"variants": [{"name": name}]}}
            model.primitive["extensions"] = {"KHR_materials_variants": {"mappings": [{"material": 0, "variants": [0]}]}}
            self.file(name + ".gltf", model.text())
        self.convert("red.gltf", "blue.gltf", "-o", "out.gltf")
        document = self.gltf("out.gltf")
        names = [variant["name"] for variant in document["extensions"]["KHR_materials_variants"]["variants"]]
        for mesh in document["meshes"]:
            mapping, = mesh["primitives"][0]["extensions"]["KHR_materials_variants"]["mappings"]
            self.assertEqual([names[i] for i in mapping["variants"]],
                             [document["materials"][mapping["material"]]["name"]])

    def test_merged_files_are_all_shown(self):
        self.file("plain.gltf", Model().text())
        self.model.json["nodes"] = [{"name": "b", "mesh": 0}]
        self.model.json["scenes"] = [{"name": "other", "nodes": []}, {"name": "first", "nodes": [0]}]
        self.model.json["scene"] = 1
        for files in (["plain.gltf", "in.gltf"], ["in.gltf", "plain.gltf"]):
            self.convert(*files, "-o", "out.gltf")
            scenes = {scene["name"]: scene.get("nodes", []) for scene in self.gltf("out.gltf")["scenes"]}
            self.assertEqual((len(scenes["other"]), len(scenes["first"])), (0, 2), files)

    def test_addresses_of_images_keep_their_escapes(self):
        uri = "http://x.example/a%2520b%26c.png?q=1%232"
        self.model.json |= {"images": [{"uri": uri}], "textures": [{"source": 0}]}
        self.convert("in.gltf", "out.gltf")
        self.assertEqual(self.gltf("out.gltf")["images"][0]["uri"], uri)

    def test_channels_that_point_nowhere(self):
        times, values = self.model.floats("SCALAR", 0, 1), self.model.floats("SCALAR", 0, 1)
        self.model.json["animations"] = [{"samplers": [{"input": times, "output": values}],
                                          "channels": [{"sampler": 0, "target": {"path": "pointer"}}]}]
        self.assertEqual(self.convert("in.gltf", "out.vrn"), ["animation channels without a target node: 1 (animation)"])

    def test_instances_of_too_many_points(self):
        self.model.json["accessors"] += [{"componentType": FLOAT, "count": 100000, "type": "VEC3"}] * 2
        self.model.primitive |= {"mode": 0, "attributes": {"POSITION": 1}}
        self.model.json["nodes"][0]["extensions"] = {"EXT_mesh_gpu_instancing": {"attributes": {"TRANSLATION": 2}}}
        messages = self.convert("in.gltf", "out.obj", status=1)
        self.assertIn("instances", messages[-1])
        self.assertFalse((self.folder / "out.obj").exists())

    def test_bounds_contain_parts_and_instances(self):
        self.file("in.vrn", "mesh m; m.points = vec3f[3] {0 0 0 1 0 0 0 1 0}; mesh n; n.points = vec3f[3] {0 0 5 1 0 5 0 1 5};"
                            "instance i; i.geometry = m; i.parts[0] = n;"
                            "i.instances.translation = vec3f[2] {0 0 0 10 0 0};")
        bounds = json.loads(self.run_here("info", "--format", "json", "in.vrn").stdout)["bounds"]
        self.assertEqual((bounds["min"], bounds["max"]), ([0, 0, 0], [11, 1, 5]))

    def test_files_beside_embedded_images(self):
        image = "texture t; t.encoded = byte[5] {137 80 78 71 13}; t.file = \"a.png\"; group g;"
        self.to_gltf(image, "files of textures beside embedded images: 1 (t.file)")

    def test_descriptions_of_the_wrong_type_are_named(self):
        for place, value in (("/asset/generator", 5), ("/extensionsUsed", {}), ("/extensionsUsed", [5]),
                             ("/accessors/0/min", [None] * 3), ("/accessors/0/max", 5), ("/accessors/0/name", {}),
                             ("/bufferViews/0/name", 1), ("/bufferViews/0/target", "x")):
            with self.subTest(place):
                self.model = Model()
                *path, member = place.split("/")[1:]
                parent = self.model.json
                for step in path:
                    parent = parent[int(step) if step.isdigit() else step]
                parent[member] = value
                self.assertEqual(self.convert("in.gltf", "out.vrn"), [f"descriptions of the wrong type: 1 ({place})"])

    def test_extensions_of_the_wrong_type(self):
        self.model.json["materials"] = [{"extensions": {"KHR_materials_unlit": 5}}]
        self.refused("/materials/0/extensions/KHR_materials_unlit")

    def test_types_of_images_of_the_wrong_type(self):
        self.model.json |= {"images": [{"uri": "a", "mimeType": 5}], "textures": [{"source": 0}]}
        self.refused("/images/0/mimeType")

    def test_inputs_of_the_wrong_type_are_named(self):
        point = "mesh m; m.points = vec3f[1] {0 0 0}; m.topology = \"points\"; instance i; i.geometry = m;"
        wrong = "values of the wrong type: 1 (%s)"
        for text, place in (("m.name = 5;", "m.name"), ("i.name = vec2(1, 2);", "i.name"), ("i.parent = 5;", "i.parent"),
                            ("i.material = \"red\";", "i.material"), ("i.skin = 1.5;", "i.skin"),
                            ("i.children = 5;", "i.children"), ("i.parts[0] = 5;", "i.parts[0]"),
                            ("m.normals = 5;", "m.normals"), ("m.uvsets[0].name = 5; m.uvsets[0].coords = vec2f[1] {0 0};",
                                                              "m.uvsets[0].name"),
                            ("m.indices = 3;", "m.indices"), ("material r; r.normalMap = 5;", "r.normalMap"),
                            ("texture t; t.encoded = 5; t.file = \"a.png\";", "t.encoded"),
                            ("texture t; t.imageName = 5; t.file = \"a.png\";", "t.imageName"),
                            ("camera c; c.position = 5; c.lookAt = pos3(0 0 5);", "c.position"),
                            ("m.bounds.min = 5;", "m.bounds.min"), ("m.uvsets = 5;", "m.uvsets"),
                            ("texture t; t.samplerName = 5; t.file = \"a.png\";", "t.samplerName"),
                            ("camera c; c.target = 5;", "c.target"), ("scene s; s.nodes = 5;", "s.nodes"),
                            ("variants v; v.names[0] = 5;", "v.names[0]"), ("asset a; a.copyright = 5;", "a.copyright")):
            with self.subTest(text):
                self.file("in.vrn", point + text)
                self.assertEqual(self.convert("in.vrn", "out.gltf"), [wrong % place])

    def test_links_in_place_of_values_are_named(self):
        nodes = TRIANGLE.format("m") + "instance i; i.geometry = m; group g; light l; camera c;"
        for text, place in (("l.intensity = 2; l.intensity |= g.outMatrix;", "l.intensity"),
                            ("l.intensity |= g.outMatrix;", "l.intensity"), ("m.name |= g.outMatrix;", "m.name"),
                            ("m.normals = g;", "m.normals"), ("m.topology = g;", "m.topology"),
                            ("m.skin.weights = g;", "m.skin.weights"), ("g.children = i;", "g.children"),
                            ("m.points |= g.outMatrix;", "m.points"), ("c.lookAt = g;", "c.lookAt"),
                            ("m.attributes[0].name = \"_A\"; m.attributes[0].values = float[1] {1};"
                             "m.attributes[0].matrices = g;", "m.attributes[0].matrices"),
                            ("m.variants[0].material |= r.outColor; m.variants[0].variant = g; material r;"
                             "variants v; v.names[0] = \"a\";", "m.variants[0].variant"),
                            ("m.extras = g;", "m.extras"), ("texture t; t.encoded = g;", "t.encoded"),
                            ("variants v; v.names[0] = g;", "v.names[0]"), ("scene s; s.nodes = g;", "s.nodes")):
            with self.subTest(text):
                self.file("in.vrn", nodes + text)
                losses = self.convert("in.vrn", "out.gltf")
                self.assertEqual([loss for loss in losses if place in loss], [f"links in place of values: 1 ({place})"])

    def test_every_link_in_place_of_a_value_is_named_once(self):
        for kind, inputs in CATALOGUE.items():
            # Without these, the whole node is left out.
            needed = {"mesh": "points", "skin": "joints"}.get(kind)
            paths = [path for path in value_paths(inputs) if path != needed]
            for link in (" = g", " |= g.outMatrix"):
                with self.subTest(kind + link):
                    # A file has one asset.
                    groups = [[path] for path in paths] if kind == "asset" else [paths]
                    self.assertEqual(sum(self.named_links(kind, some, link) for some in groups), len(paths))

    def named_links(self, kind, paths, link):
        """The number of links that are named as lost, of nodes of which each has one."""
        nodes = "".join(minimal(kind, f"n{i}") + f"n{i}.{path}{link};\n" for i, path in enumerate(paths))
        self.file("in.vrn", "group g;\n" + nodes)
        lines = self.run_here("convert", "--losses", "json", "in.vrn", "out.glb").stderr.decode().splitlines()
        losses = [json.loads(line) for line in lines]
        return sum(loss["count"] for loss in losses
                   if loss["what"] == "links in place of values" or loss["what"].startswith("input "))

    def test_what_other_kinds_of_lights_and_cameras_have_is_named(self):
        self.to_gltf("light l; l.kind = \"point\"; l.innerAngle = 10; l.outerAngle = 20;",
                     "input innerAngle of light: 1 (l.innerAngle)", "input outerAngle of light: 1 (l.outerAngle)")
        self.to_gltf("light l; l.kind = \"spot\"; l.innerAngle = 10; l.outerAngle = 20;")
        self.to_gltf("camera c; c.projection = \"orthographic\"; c.fov = 30; c.aspect = 2;",
                     "input fov of camera: 1 (c.fov)", "input aspect of camera: 1 (c.aspect)")
        self.to_gltf("camera c; c.size = vec2(2, 3);", "input size of camera: 1 (c.size)")

    def test_deep_extras_are_read_back_or_named(self):
        for depth in (995, 996):
            extras = "[" * depth + "]" * depth
            text = f"group g; g.extras = \"{extras}\";"
            if depth == 995:
                self.there_and_back(text)
                self.assertIn(extras, (self.folder / "back.vrn").read_text())
            else:
                self.to_gltf(text, "extras nested more than 995 levels deep: 1 (g.extras)")

    def test_extras_are_read_wherever_they_are_written(self):
        extras = "[" * 995 + "]" * 995
        self.there_and_back(f"mesh m; m.points = vec3f[1] {{0 0 0}}; m.topology = \"points\";"
                            f"m.partExtras = \"{extras}\"; light l; l.extras = \"{extras}\";")

    def there_and_back(self, text):
        self.file("in.vrn", text)
        self.assertEqual(self.convert("in.vrn", "out.gltf"), [])
        self.assertEqual(self.convert("out.gltf", "back.vrn"), [])

    def test_types_of_files_without_an_extension(self):
        image = b"RIFF\x04\0\0\0WEBPVP8 "
        (self.folder / "maps").mkdir()
        self.file("maps/photo", image)
        self.model.json |= {"extensionsUsed": ["EXT_texture_webp"],
                            "images": [{"uri": "maps/photo", "mimeType": "image/webp"}],
                            "textures": [{"extensions": {"EXT_texture_webp": {"source": 0}}}]}
        self.assertEqual(self.convert("in.gltf", "out.vrn"), [])
        self.to_out("out.vrn", {"uri": "maps/photo", "mimeType": "image/webp"})
        self.to_out("in.gltf", {"uri": "maps/photo", "mimeType": "image/webp"})
        self.to_out("in.gltf", {"uri": "copies/photo.webp"}, "--copy-textures", "copies")
        self.assertEqual((self.folder / "copies/photo.webp").read_bytes(), image)
        self.to_out("in.gltf", {"mimeType": "image/webp", "bufferView": 2}, "--embed")

    def to_out(self, source, image, *options):
        """Converts to a glTF file with one texture, whose image is in the WebP extension."""
        self.assertEqual(self.convert(*options, source, "out.gltf"), [])
        document = self.gltf("out.gltf")
        written, = document["images"]
        self.assertEqual({k: v for k, v in written.items() if k != "name"}, image)
        self.assertEqual(document["textures"][0]["extensions"], {"EXT_texture_webp": {"source": 0}})

    def test_the_first_corner_of_a_fan_comes_last(self):
        self.model.attributes["POSITION"] = self.model.floats("VEC3", 0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0)
        self.model.primitive["mode"] = 6
        self.assertEqual(self.convert("in.gltf", "out.vrn"), [])
        self.assertEqual(self.meshes("out.vrn")[0]["indices"]["data"], [1, 2, 0, 2, 3, 0])

    def test_weights_of_the_same_joint_are_added(self):
        document = self.to_gltf("mesh m; m.points = vec3f[1] {0 0 0}; m.topology = \"points\";"
                                "m.skin.joints = vec4u[1] {1 1 0 0}; m.skin.weights = vec4f[1] {0.25 0.75 0 0};")
        attributes = document["meshes"][0]["primitives"][0]["attributes"]
        accessor = document["accessors"][attributes["WEIGHTS_0"]]
        offset = document["bufferViews"][accessor["bufferView"]]["byteOffset"]
        self.assertEqual(struct.unpack_from("<4f", (self.folder / "out.bin").read_bytes(), offset), (1, 0, 0, 0))

    def test_normalized_indices(self):
        self.model.primitive["indices"] = self.model.integers("SCALAR", 0, 1, 2)
        self.model.json["accessors"][-1]["normalized"] = True
        self.refused("/accessors/1/componentType")

    def test_the_binary_chunk_is_the_second_one(self):
        def chunk(kind, data):
            return struct.pack("<I4s", len(data), kind) + data
        self.model.json["buffers"] = [{"byteLength": len(self.model.bytes)}]
        text = json.dumps(self.model.json).encode()
        text += b" " * (-len(text) % 4)
        parts = [chunk(b"JSON", text), chunk(b"BIN\0", self.model.bytes), chunk(b"ODD\0", b"")]
        for order, status in (((0, 1, 2), 0), ((0, 2, 1), 1)):
            body = b"".join(parts[i] for i in order)
            self.file("in.glb", b"glTF" + struct.pack("<II", 2, 12 + len(body)) + body)
            result = self.run_here("convert", "in.glb", "out.vrn")
            self.assertEqual(result.returncode, status, result.stderr)

    def test_small_matrices_are_kept(self):
        self.model.attributes["_M"] = self.model.accessor("MAT2", FLOAT, struct.pack("<12f", *range(12)), 3)
        self.assertEqual(self.convert("in.gltf", "out.vrn"), [])
        self.assertRegex((self.folder / "out.vrn").read_text(), r"vec4f\[3\] \{\s*0 1 2 3\s+4 5 6 7\s+8 9 10 11")
        self.assertEqual(self.convert("out.vrn", "out.gltf"), [])
        document = self.gltf("out.gltf")
        index = document["meshes"][0]["primitives"][0]["attributes"]["_M"]
        self.assertEqual((document["accessors"][index]["type"], document["accessors"][index]["count"]), ("MAT2", 3))

    def test_matrices_of_other_numbers(self):
        mesh = "mesh m; m.points = vec3f[1] {0 0 0}; m.topology = \"points\"; m.attributes[0].name = \"_A\";"
        self.to_gltf(mesh + "m.attributes[0].values = vec3f[1] {1 2 3}; m.attributes[0].matrices = true;",
                     "matrices in attributes without four components: 1 (m.attributes[0].matrices)")
        self.to_gltf(mesh + "m.attributes[0].values = vec4f[1] {1 2 3 4}; m.attributes[0].matrices = 5;",
                     "values of the wrong type: 1 (m.attributes[0].matrices)")

    def test_very_many_attributes(self):
        accessor = self.model.floats("SCALAR", 1, 2, 3)
        self.model.attributes |= {f"_A{i}": accessor for i in range(20000)}
        self.assertEqual(self.convert("in.gltf", "out.vrn"), [])
        self.assertEqual((self.folder / "out.vrn").read_text().count('= "_A'), 20000)

    def test_too_many_parts(self):
        self.model.json["meshes"][0]["primitives"] *= 3000
        self.model.json["nodes"] = [{"mesh": 0}] * 3000
        self.model.json["scenes"] = [{"nodes": list(range(3000))}]
        self.refused("/nodes/1333")

    def test_too_many_instances_of_parts(self):
        self.model.json["accessors"].append({"componentType": FLOAT, "count": 3000, "type": "VEC3"})
        self.model.json["meshes"][0]["primitives"] *= 3000
        self.model.json["nodes"][0]["extensions"] = {"EXT_mesh_gpu_instancing": {"attributes": {"TRANSLATION": 1}}}
        messages = self.convert("in.gltf", "out.stl", status=1)
        self.assertIn("the instances of its meshes have more than 4000000 meshes together; convert to .glb", messages[-1])

    def test_extras_of_variants_are_named(self):
        self.model.json["materials"] = [{}]
        self.model.json["extensions"] = {"KHR_materials_variants": {"variants": [{"name": "red", "extras": {"a": 1}}]}}
        self.model.primitive["extensions"] = {"KHR_materials_variants": {"mappings": [
            {"material": 0, "variants": [0], "extras": 5, "name": "m"}]}}
        self.assertEqual(self.convert("in.gltf", "out.vrn"),
                         ["extras of objects without a counterpart: 2 (first /meshes/0/primitives/0/extensions/"
                          "KHR_materials_variants/mappings/0)",
                          "member name: 1 (/meshes/0/primitives/0/extensions/KHR_materials_variants/mappings/0)"])

    def test_texts_with_zero_characters_are_named(self):
        self.model.json["nodes"][0]["name"] = "a\0b"
        self.model.json["asset"]["copyright"] = "c\0"
        self.assertEqual(self.convert("in.gltf", "out.gltf"), ["characters from U+0000 on in texts: 2 (first /nodes/0/name)"])
        self.assertEqual(self.gltf("out.gltf")["nodes"][0]["name"], "a")

    def test_zero_characters_in_extras_are_kept(self):
        self.model.json["nodes"][0]["extras"] = {"a\0b": "c\0d"}
        self.assertEqual(self.convert("in.gltf", "out.gltf"), [])
        self.assertEqual(self.gltf("out.gltf")["nodes"][0]["extras"], {"a\0b": "c\0d"})


if __name__ == "__main__":
    unittest.main()
