"""Tests what vrn convert reads of models other than FBX: nothing is misread, and the options that concern models."""
import json
import pathlib
import re
import resource
import struct
import subprocess
import sys
import unittest

sys.path += [str(pathlib.Path(__file__).resolve().parents[1] / "cli")]

from command import VRN
from geometry import inputs_of
from importing import Importing
from mesh_files import Obj, Ply
from world import World, channels

OBJ = "v 1 0 0\nv 0 2 0\nv 0 0 3\nf 1 2 3\n"
# Assimp looks for the end of this forever.
CUT_OGEX = 'Metric (key = "distance") {float {1.0}}\nGeometryNode $n\n{\n\tName {string {"n"}}\n\tObjectRe'
TRIANGLE = "mesh m; m.points = vec3f[3] {1 0 0 0 2 0 0 0 3}; m.indices = int32[3] {0 1 2};\n"
CORNERS = [(1, 0, 0), (0, 2, 0), (0, 0, 3)]
IS_ASAN = b"asan" in pathlib.Path(VRN).read_bytes()


class Models(Importing):
    def convert(self, *arguments, status=0, **more):
        """Returns the lines on standard error."""
        result = self.run_here("convert", *arguments, **more)
        self.assertEqual(result.returncode, status, result.stderr.decode())
        return result.stderr.decode().splitlines()

    def read(self, name, *options):
        self.lines = self.convert(*options, name, "out.json")
        return json.loads((self.folder / "out.json").read_text())

    def refused(self, name, message):
        self.assertEqual(self.convert(name, "out.json", status=1), [f"vrn: {name}: {message}"])
        self.assertFalse((self.folder / "out.json").exists())

    def mesh(self, scene):
        (mesh,) = [inputs_of(node) for node in scene["nodes"] if node["type"] == "mesh"]
        return mesh

    def assert_points(self, scene, expected):
        (found,) = World(scene).points().values()
        for point, other in zip(found, expected, strict=True):
            for number, wanted in zip(point, other):
                self.assertAlmostEqual(number, wanted, 6, (found, expected))


class Obj_(Models):
    def test_missing_elements(self):
        for face, message in (
            ("f 1 2 9", "line 4 refers to vertex 9"),
            ("f 1 2 0", "line 4 refers to vertex 0"),
            ("f -1 -2 -4", "line 4 refers to vertex -4"),
            ("f 1/1 2/1 3/2\nvt 0 0", "line 4 refers to texture coordinate 2"),
            ("f 1/-1 2/-1 3/-1\nvt 0 0", "line 4 refers to texture coordinate -1"),
            ("f 1//1 2//1 3//2\nvn 0 0 1", "line 4 refers to normal 2"),
            ("l 1 5", "line 4 refers to vertex 5"),
        ):
            with self.subTest(face):
                self.file("in.obj", "v 1 0 0\nv 0 2 0\nv 0 0 3\n" + face + "\n")
                self.refused("in.obj", message + ", which the file does not have")

    def test_elements_may_follow(self):
        self.file("in.obj", "f 1 2 3\nv 1 0 0\nv 0 2 0\nv 0 0 3\n")
        self.assert_points(self.read("in.obj"), CORNERS)

    def test_numbers_of_vertices(self):
        further = "vrn: out.json: lost: further numbers of vertices: 1 (in.obj line 1)"
        for vertex, lines in (
            ("1 0 0 # 5", []),
            ("1 .0 .0e1", []),
            ("1\t0 \\\n 0", []),
            ("1 0 0 1", []),
            ("1 0 0 0.5", [further]),
            ("1 0 0 1 1", [further]),
        ):
            with self.subTest(vertex):
                self.file("in.obj", f"v {vertex}\nv 0 2 0\nv 0 0 3\nv 4 4 4\nf 1 2 3\n")
                self.assert_points(self.read("in.obj"), CORNERS)
                self.assertEqual(self.lines, lines)

    def test_vertices_that_are_not_three_numbers(self):
        for line, message in (
            ("v 1 2", "line 4 has 2 numbers in place of three coordinates"),
            ("v", "line 4 has 0 numbers in place of three coordinates"),
            ("v 1 2 x", "line 4 has x in place of a number"),
        ):
            with self.subTest(line):
                self.file("in.obj", OBJ.replace("f", line + "\nf"))
                self.refused("in.obj", message)

    def test_colours_of_some_vertices(self):
        self.file("in.obj", "v 1 0 0\nv 0 2 0 0 1 0\nv 0 0 3 0 0 1 0.5\nf 1 2 3\n")
        colors = self.mesh(self.read("in.obj"))["colors"]["data"]
        self.assertEqual(colors, [1, 1, 1, 1, 0, 1, 0, 1, 0, 0, 1, 1])
        self.assertEqual(self.lines, [
            "vrn: out.json: lost: further numbers of vertices: 1 (in.obj line 3)",
            "vrn: out.json: lost: missing colours of vertices beside others (read as white): 1 (in.obj line 1)",
        ])

    def test_attributes_of_some_corners(self):
        points = "v 1 0 0\nv 0 2 0\nv 0 0 3\nvt 0 0\nvn 0 0 1\n"
        for faces, expected in (
            ("f 1/1/1 2/1/1 3/1/1\nf 1/1/1 2/1/1 \\\n 3/1/1\nl 1 2\n", []),
            ("f 1 2 3\nf 1//1 2//1 3//1\nf 3//1 2//1 1//1", ["missing normal of corners", "line 7"]),
            ("f 1/1 2/1 3/1\nf 1/1 2 3/1\n", ["missing texture coordinate of corners", "line 7"]),
            ("f 1 2 3\no b\nf 1//1 2//1 3//1\ng c\nf 1/1 2/1 3/1\nusemtl d\nf 1 2 3\n", []),
        ):
            with self.subTest(faces):
                self.file("in.obj", points + faces)
                lines = self.convert("in.obj", "out.json")
                lost = [line for line in lines if "read as 0" in line]
                self.assertEqual(len(lost), 1 if expected else 0, lines)
                for part in expected:
                    self.assertIn(part, lost[0])

    def test_short_texture_coordinates(self):
        for coordinates, expected in ((".25 .5", [0.25, 0.5]), ("-.25", [-0.25, 1]), ("1 0 .5", [1, 1])):
            self.file("in.obj", f"vt {coordinates}\nv 1 0 0\nv 0 2 0\nv 0 0 3\nf 1/1 2/1 3/1\n")
            (uvset,) = self.mesh(self.read("in.obj"))["uvsets"]["elements"]
            self.assertEqual(inputs_of(uvset)["coords"]["data"], expected * 3)

    def test_faces_of_two_corners(self):
        self.file("in.obj", OBJ + "f 1 2\n")
        self.assertEqual(self.mesh(self.read("in.obj"))["faceIndices"]["data"], [0, 1, 2])
        self.assertEqual(len(self.lines), 1)
        self.assertIn("lost: lines and points in meshes with larger faces: 1", self.lines[0])

    def test_free_form(self):
        self.file("in.obj", OBJ + "curv 0 1 1 2 3\n")
        self.read("in.obj")
        self.assertEqual(self.lines, ["vrn: out.json: lost: free-form curves and surfaces: 1 (in.obj line 5)"])

    def test_utf_16(self):
        text = "mtllib m.mtl\nusemtl gr\u00fcn \U0001f332\n" + OBJ
        library = "newmtl gr\u00fcn \U0001f332\nKd 0 1 0\n"
        for coding, mark in (("utf-16-le", b"\xff\xfe"), ("utf-16-be", b"\xfe\xff")):
            self.file("in.obj", mark + text.encode(coding))
            self.file("m.mtl", mark + library.encode(coding))
            scene = self.read("in.obj")
            self.assertEqual(len(self.mesh(scene)["points"]["data"]), 9)
            (material,) = [inputs_of(node) for node in scene["nodes"] if node["type"] == "material"]
            self.assertEqual(material["name"]["value"], "gr\u00fcn \U0001f332")
            self.assertEqual(material["baseColor"]["value"], [0, 1, 0, 1])
        self.file("in.obj", text.encode("utf-16-le"))
        self.assertEqual(self.run_here("convert", "in.obj", "no.json").returncode, 1)

    def test_texture_transforms(self):
        # v' = 2 v + 0.25 from the lower edge is 1 - (2 (1 - v) + 0.25) = 2 v - 1.25 from the upper one.
        self.file("in.obj", "mtllib m.mtl\nvt 0 0\nusemtl a\nv 1 0 0\nv 0 2 0\nv 0 0 3\nf 1/1 2/1 3/1\n")
        for options, offset, scale in (
            ("-o 0.5 0.25 0 -s 3 2 1", [0.5, -1.25], [3, 2]),
            ("-s 3 2 -clamp on -o 0.5 0.25", [0.5, -1.25], [3, 2]),
            ("-o 0.5", [0.5, 0], [1, 1]),
        ):
            self.file("m.mtl", f"newmtl a\nmap_Kd {options} my wood.png\n")
            nodes = {node["type"]: inputs_of(node) for node in self.read("in.obj")["nodes"]}
            self.assertEqual(nodes["texture"]["file"]["value"], "my wood.png")
            xform = inputs_of(nodes["material"]["baseColorXform"])
            self.assertEqual((xform["offset"]["value"], xform["scale"]["value"]), (offset, scale), options)
            self.assertFalse([line for line in self.lines if "material properties" not in line])
        self.file("m.mtl", "newmtl a\nmap_Kd -t 1 1 1 -mm 0 2 wood.png\n")
        self.read("in.obj")
        self.assertIn("vrn: out.json: lost: turbulence of textures: 1 (a)", self.lines)
        self.assertIn("vrn: out.json: lost: changes of the values of textures (-mm): 1 (a)", self.lines)

    def test_equal_vertices_are_welded(self):
        # Two triangles with a common edge; the third one has other coordinates on it.
        self.file("in.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 1 1 0\nvt 0 0\nvt 1 0\n"
                            "f 1/1 2/1 3/1\nf 3/1 2/1 4/1\nf 3/2 2/2 4/1\n")
        mesh = self.mesh(self.read("in.obj"))
        self.assertEqual(mesh["points"]["count"], 6)
        self.assertEqual(mesh["indices"]["data"], [0, 1, 2, 2, 1, 3, 4, 5, 3])
        (uvset,) = mesh["uvsets"]["elements"]
        self.assertEqual(inputs_of(uvset)["coords"]["data"], [0, 1, 0, 1, 0, 1, 0, 1, 1, 1, 1, 1])

    def test_points_are_not_welded(self):
        self.file("in.ply", "ply\nformat ascii 1.0\nelement vertex 2\nproperty float x\nproperty float y\n"
                            "property float z\nend_header\n1 2 3\n1 2 3\n")
        self.assertEqual(self.mesh(self.read("in.ply"))["points"]["count"], 2)

    def test_triangulation(self):
        # An arrow whose notch is at (0, 0).
        self.file("in.obj", "v 0 1 0\nv -1 -1 0\nv 0 0 0\nv 1 -1 0\nf 2 3 4 1\n")
        self.assertIn("faceIndices", self.mesh(self.read("in.obj")))
        mesh = self.mesh(self.read("in.obj", "--triangulate"))
        self.assertEqual(mesh["topology"]["value"], "triangles")
        data, indices = mesh["points"]["data"], mesh["indices"]["data"]
        areas = []
        for corners in zip(indices[::3], indices[1::3], indices[2::3]):
            (ax, ay), (bx, by), (cx, cy) = (data[3 * i : 3 * i + 2] for i in corners)
            areas.append((bx - ax) * (cy - ay) - (by - ay) * (cx - ax))
        self.assertEqual(areas, [1, 1])


class Ply_(Models):
    HEADER = (
        "ply\nformat binary_little_endian 1.0\nelement vertex 3\nproperty uchar red\nproperty uchar green\n"
        "property float x\nproperty float y\nproperty float z\nelement face 1\n"
        "property list uchar int vertex_indices\nend_header\n"
    )

    def test_data_that_begin_with_line_ends(self):
        for first in (b"\n\n", b"\nA", b"\n\r", b"\r\n", b"\r\r", b"A\n", b" \t"):
            data = b"".join(first + struct.pack("<3f", *point) for point in CORNERS) + struct.pack("<B3i", 3, 0, 1, 2)
            for header in (self.HEADER, self.HEADER.replace("\n", "\r\n")):
                with self.subTest(first=first, header=header[:8]):
                    self.check_data(header, data, first)

    def check_data(self, header, data, first):
        self.file("in.ply", header.encode() + data)
        scene = self.read("in.ply")
        self.assert_points(scene, CORNERS)
        self.assertAlmostEqual(self.mesh(scene)["colors"]["data"][0], first[0] / 255)

    def test_what_is_not_read(self):
        def text(vertex="", value="", elements="", data=""):
            return ("ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\nproperty float z\n"
                    + vertex + "element face 1\nproperty list uchar int vertex_indices\n" + elements + "end_header\n"
                    + "".join(f"{x} {y} {z}{value}\n" for x, y, z in CORNERS) + "3 0 1 2\n" + data)

        self.file("in.ply", text("property float quality\n", " 5"))
        self.assert_points(self.read("in.ply"), CORNERS)
        self.assertIn("vrn: out.json: lost: properties without an equivalent: 1 (vertex.quality)", self.lines)
        edges = "element edge 1\nproperty int vertex1\nproperty int vertex2\n"
        self.file("in.ply", text(elements=edges, data="0 1\n"))
        self.read("in.ply")
        self.assertIn("vrn: out.json: lost: elements other than vertices and faces: 1 (edge)", self.lines)

    def test_names_of_properties_that_are_not_read(self):
        for names in (("diffuse_red", "diffuse_green", "diffuse_blue"), ("s0", "t0"), ("s1", "t1")):
            properties = "".join(f"property float {name}\n" for name in names)
            self.file("in.ply", "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\n"
                                f"property float z\n{properties}element face 1\nproperty list uchar int vertex_index\n"
                                "end_header\n" + ("1 0 0" + " 1" * len(names) + "\n") * 3 + "3 0 1 2\n")
            self.assertEqual([name for name in ("colors", "uvsets") if name in self.mesh(self.read("in.ply"))], [])
            self.assertIn(f"vrn: out.json: lost: properties without an equivalent: {len(names)} "
                          f"(first vertex.{names[0]})", self.lines)

    def test_files_that_are_cut_off(self):
        header = ("element vertex 3\nproperty float x\nproperty double y\nproperty short z\nelement face 2\n"
                  "property uchar flags\nproperty list ushort int vertex_indices\nend_header\n")
        text = "".join(f"{x} {y} {z}\n" for x, y, z in CORNERS) + "7 3 0 1 2\n\n7 3 2 1 0\n"
        files = {"ascii": (text, range(0, len(text) - 2))}
        for order, name in (("<", "binary_little_endian"), (">", "binary_big_endian")):
            data = b"".join(struct.pack(order + "fdh", *point) for point in CORNERS)
            data += struct.pack(order + "BHiii", 7, 3, 0, 1, 2) + struct.pack(order + "BHiii", 7, 3, 2, 1, 0)
            files[name] = (data, range(0, len(data)))
        for name, (data, lengths) in files.items():
            start = f"ply\nformat {name} 1.0\n{header}"
            whole = data if isinstance(data, bytes) else data.encode()
            self.file("in.ply", start.encode() + whole + b"\n")
            self.assertEqual(self.mesh(self.read("in.ply"))["indices"]["data"], [0, 1, 2, 2, 1, 0])
            for length in lengths:
                with self.subTest(name, length=length):
                    self.file("in.ply", start.encode() + whole[:length])
                    (line,) = self.convert("in.ply", "out.json", status=1)
                    self.assertRegex(line, r"number [123] of the [23] elements (vertex|face) is incomplete")

    def test_counts_beyond_all_files(self):
        start = "element vertex 3\nproperty float x\nproperty float y\nproperty float z\nelement none 999999999999999\n"
        self.file("in.ply", f"ply\nformat ascii 1.0\n{start}end_header\n1 0 0\n0 2 0\n0 0 3\n")
        self.convert("in.ply", "out.json")
        lists = "element more 1\nproperty list double double values\nend_header\n"
        points = b"".join(struct.pack("<3f", *point) for point in CORNERS)
        self.file("in.ply", f"ply\nformat binary_little_endian 1.0\n{start}{lists}".encode() + points + b"\0" * 7 + b"\x20")
        self.assertIn("is incomplete", self.convert("in.ply", "out.json", status=1)[0])

    def test_triangle_strips(self):
        self.file("in.ply", "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\n"
                            "property float z\nelement tristrips 1\nproperty list int int vertex_indices\nend_header\n"
                            "0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n")
        self.refused("in.ply", "it has triangle strips, which are not read; save it with single faces")


class WithoutMeshes(Models):
    def test_motion_of_a_skeleton(self):
        # The hips move by 1 a frame; the knee turns by 90 degrees about Z, which takes the foot from -Y to +X.
        self.file("in.bvh", "HIERARCHY\nROOT hips\n{\nOFFSET 0 0 0\n"
                            "CHANNELS 6 Xposition Yposition Zposition Zrotation Yrotation Xrotation\nJOINT knee\n{\nOFFSET 0 -1 0\nCHANNELS 3 Zrotation Yrotation Xrotation\n"
                            "JOINT foot\n{\nOFFSET 0 -2 0\nCHANNELS 0\nEnd Site\n{\nOFFSET 0 0 1\n}\n}\n}\n}\n"
                            "MOTION\nFrames: 2\nFrame Time: 0.5\n0 0 0 0 0 0 0 0 0\n1 0 0 0 0 0 90 0 0\n")
        scene = self.read("in.bvh")
        for time, foot in ((0, (0, -3, 0)), (1, (3, -1, 0))):
            poses = {}
            for (node, path), (_, times, values) in channels(scene).items():
                self.assertIn(times, ([0], [0, 0.5]))
                poses.setdefault(node, {})[path] = values[min(time, len(values) - 1)]
            for number, wanted in zip(World(scene, poses).matrix("foot")[12:15], foot):
                self.assertAlmostEqual(number, wanted, 6)

    def test_motion_without_rotations(self):
        self.file("in.bvh", "HIERARCHY\nROOT hips\n{\nOFFSET 0 0 0\nCHANNELS 3 Xposition Yposition Zposition\n"
                            "End Site\n{\nOFFSET 0 0 1\n}\n}\nMOTION\nFrames: 1\nFrame Time: 0.5\n1 2 3\n")
        self.refused("in.bvh", "line 5 has positions without three rotations, which are not read")

    def test_points_without_elements(self):
        self.file("in.obj", "o cloud\nv 1 0 0\nv 0 2 0\n")
        self.refused("in.obj", "nothing in it can be read")


class Dxf_(Models):
    LINE = ["0", "LINE", "8", "0", "10", "1", "20", "0", "30", "0", "11", "0", "21", "2", "31", "0"]

    def check(self, entities, *expected, end=("0", "EOF")):
        self.file("in.dxf", "\n".join(["0", "SECTION", "2", "ENTITIES", *entities, "0", "ENDSEC", *end, ""]))
        self.assertEqual(self.mesh(self.read("in.dxf"))["points"]["data"], [1, 0, 0, 0, 2, 0])
        self.assertEqual(self.lines, list(expected))

    def test_entities_that_are_not_read(self):
        circle = ["  0", "CIRCLE", "8", "0", "10", "0", "20", "0", "30", "0", "40", "1"]
        self.check(self.LINE)
        self.check([*self.LINE, *circle, *circle],
                   "vrn: out.json: lost: entities of type CIRCLE: 2 (first in.dxf line 22)")

    def test_missing_end(self):
        self.check(self.LINE, "vrn: in.dxf: warning: the end of the file is missing: it may be cut off", end=())


class Stl_(Models):
    FACET = "facet normal 0 0 1\nouter loop\nvertex 1 0 0\nvertex 0 2 0\nvertex 0 0 3\nendloop\nendfacet\n"

    def test_keywords_in_upper_case(self):
        upper = self.FACET.upper()
        for text in (
            f"SOLID Wheel\n{upper}{upper}ENDSOLID Wheel\n",
            f"solid Wheel\n{self.FACET}{upper}ENDSOLID Wheel\n",
            f"solid Wheel\n{self.FACET}\t{upper.replace('0', '0E0')}endsolid\n",
        ):
            with self.subTest(text):
                self.file("in.stl", text)
                mesh = self.mesh(self.read("in.stl"))
                self.assertEqual(mesh["name"]["value"], "Wheel")
                self.assertEqual(mesh["indices"]["data"], [0, 1, 2] * 2)
                self.assertEqual(self.lines, [])

    def test_binary_file_that_begins_like_text(self):
        corners = struct.pack("<12f", 0, 0, 1, 1, 0, 0, 0, 2, 0, 0, 0, 3)
        self.file("in.stl", b"SOLID FACET".ljust(80, b" ") + struct.pack("<I", 1) + corners + b"AB")
        self.assert_points(self.read("in.stl"), CORNERS)


class Placement(Models):
    def dae(self, unit, up):
        self.file("in.dae", f"""<?xml version="1.0"?>
<COLLADA xmlns="http://www.collada.org/2005/11/COLLADASchema" version="1.4.1">
<asset><unit name="u" meter="{unit}"/><up_axis>{up}</up_axis></asset>
<library_cameras><camera id="c"><optics><technique_common><perspective><xfov>60</xfov><aspect_ratio>1</aspect_ratio>
<znear>2</znear><zfar>400</zfar></perspective></technique_common></optics></camera></library_cameras>
<library_geometries><geometry id="g"><mesh><source id="p"><float_array id="a" count="9">1 0 0 0 2 0 0 0 3</float_array>
<technique_common><accessor source="#a" count="3" stride="3"><param name="X" type="float"/><param name="Y" type="float"/>
<param name="Z" type="float"/></accessor></technique_common></source>
<vertices id="v"><input semantic="POSITION" source="#p"/></vertices>
<triangles count="1"><input semantic="VERTEX" source="#v" offset="0"/><p>0 1 2</p></triangles></mesh></geometry>
</library_geometries>
<library_visual_scenes><visual_scene id="s"><node id="n" name="n"><instance_geometry url="#g"/></node>
<node id="k" name="k"><instance_camera url="#c"/></node></visual_scene></library_visual_scenes>
<scene><instance_visual_scene url="#s"/></scene></COLLADA>
""")

    Z_UP = [(1, 0, 0), (0, 0, -2), (0, 3, 0)]
    X_UP = [(0, 1, 0), (-2, 0, 0), (0, 0, 3)]

    def scaled(self, points, factor):
        return [tuple(factor * number for number in point) for point in points]

    def test_collada(self):
        for up, points in (("Y_UP", CORNERS), ("Z_UP", self.Z_UP), ("X_UP", self.X_UP)):
            self.dae(0.01, up)
            scene = self.read("in.dae")
            self.assert_points(scene, self.scaled(points, 0.01))
            (camera,) = [inputs_of(node) for node in scene["nodes"] if node["type"] == "camera"]
            self.assertAlmostEqual(camera["near"]["value"], 0.02)
            self.assertAlmostEqual(camera["far"]["value"], 4)
        self.dae(0.01, "Z_UP")
        self.assert_points(self.read("in.dae", "--up", "Y"), self.scaled(CORNERS, 0.01))
        self.assert_points(self.read("in.dae", "--units", "m"), self.Z_UP)
        self.assert_points(self.read("in.dae", "--scale", "5"), self.scaled(self.Z_UP, 0.05))

    def test_formats_that_say_nothing(self):
        self.file("in.obj", OBJ)
        self.assert_points(self.read("in.obj"), CORNERS)
        self.assert_points(self.read("in.obj", "--up", "Z", "--units", "in"), self.scaled(self.Z_UP, 0.0254))
        self.assert_points(self.read("in.obj", "--up", "X"), self.X_UP)

    def test_scenes(self):
        # The mesh without an instance gets one; the camera stays where its host is.
        self.file("in.vrn", TRIANGLE + "group g; camera c; c.near = 2.0; c.far = 3; c.worldMatrix |= g.outMatrix;\n"
                  "light l; l.range = 4.0; group h; h.parent = g; group k; g.children[*] = k;")
        scene = self.read("in.vrn", "--up", "Z", "--units", "cm")
        self.assert_points(scene, self.scaled(self.Z_UP, 0.01))
        nodes = {node["name"]: inputs_of(node) for node in scene["nodes"]}
        parents = {name: inputs["parent"]["value"] for name, inputs in nodes.items() if "parent" in inputs}
        self.assertEqual(parents, {"g": "root", "h": "g", "l": "root", "m_instance": "root"})
        self.assertEqual((nodes["c"]["near"]["value"], nodes["l"]["range"]["value"]), (0.02, 0.04))
        self.assertEqual(self.lines, ["vrn: out.json: lost: distances in whole numbers (not scaled): 1 (c.far)"])
        self.convert("in.vrn", "same.json")
        self.assertNotIn("root", (self.folder / "same.json").read_text())

    def test_outputs(self):
        self.file("in.vrn", TRIANGLE)
        self.convert("in.vrn", "out.obj", "--to-up", "Z", "--to-units", "mm")
        self.assertEqual(Obj(self.folder / "out.obj").points, [(1000, 0, 0), (0, 0, 2000), (0, -3000, 0)])
        self.convert("out.obj", "back.json", "--up", "Z", "--units", "mm")
        self.assert_points(json.loads((self.folder / "back.json").read_text()), CORNERS)
        self.convert("in.vrn", "out.ply", "--to-up", "X")
        self.assertEqual(Ply(self.folder / "out.ply").points(), [(0, -1, 0), (2, 0, 0), (0, 0, 3)])
        for name in ("out.glb", "out.gltf", "out.json", "out.vrn"):
            (line,) = self.convert("in.vrn", name, "--to-up", "Z", status=2)
            self.assertIn("this format is always Y up and in metres", line)


class Limits(Models):
    def test_memory(self):
        if IS_ASAN:
            self.skipTest("the sanitizer ends a process without memory")
        self.file("large.off", "OFF\n2000000000 1 0\n0 0 0\n")
        (line,) = self.convert("large.off", "out.json", status=2)
        self.assertEqual(line, "vrn: large.off: out of memory: its reader may have 2048 MiB; set another limit with "
                               "--max-memory")
        self.file("in.obj", OBJ * 20_000)
        self.convert("in.obj", "out.json", "--max-memory", "1", status=2)
        self.convert("in.obj", "out.json", "--max-memory", "1000")

    def test_time(self):
        self.file("in.obj", OBJ)
        self.convert("in.obj", "out.json", "--timeout", "100")
        # Nothing arrives through the pipe.
        with subprocess.Popen([VRN, "convert", "--from", "obj", "-", "out.vrn", "--timeout", "1"], cwd=self.folder,
                              stdin=subprocess.PIPE, stderr=subprocess.PIPE) as command:
            self.assertEqual(command.wait(30), 2)
            self.assertEqual(command.stderr.read(), b"vrn: <stdin>: its reader needs more time than 1 s (--timeout)\n")
        self.assertFalse((self.folder / "out.vrn").exists())

    def test_time_of_the_processor(self):
        self.file("large.obj", OBJ + "#" * (5 << 20))
        for arguments, seconds in (
            (["-"], b"660"), (["large.obj", "-"], b"665"), (["-", "--timeout", "100"], b"unlimited"),
        ):
            with self.subTest(arguments=arguments):
                # Nothing arrives through the pipe while the limit is looked at.
                command = subprocess.Popen([VRN, "convert", "--from", "obj", *arguments, "-o", "out.vrn"],
                                           cwd=self.folder, stdin=subprocess.PIPE, stderr=subprocess.DEVNULL)
                self.assertEqual(self.limit_of_reader(command.pid), seconds)
                command.communicate(OBJ.encode())
                self.assertEqual(command.returncode, 0)

    @staticmethod
    def limit_of_reader(parent):
        """The seconds of the processor that the only child of a process may use."""
        while True:
            children = pathlib.Path(f"/proc/{parent}/task/{parent}/children").read_bytes().split()
            if children:
                limits = pathlib.Path(f"/proc/{int(children[0])}/limits").read_bytes()
                if not re.search(rb"Max address space +unlimited", limits):  # it is set last
                    return re.search(rb"Max cpu time +(\w+)", limits)[1]

    def test_a_file_whose_reading_never_ends(self):
        self.file("in.ogex", CUT_OGEX)
        hard = resource.getrlimit(resource.RLIMIT_CPU)[1]
        # The time of the shell counts, also if a time is given.
        for options in ([], ["--timeout", "100"]):
            result = subprocess.run([VRN, "convert", "in.ogex", "out.vrn", *options], cwd=self.folder,
                                    stderr=subprocess.PIPE,
                                    preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_CPU, (1, hard)))
            self.assertEqual(result.stderr, b"vrn: in.ogex: its reader needs more time of the processor than it may have "
                                            b"(--timeout and ulimit -t set other limits)\n")
            self.assertEqual(result.returncode, 2)


class Command(Models):
    def test_pipes(self):
        vrn = self.run_here("convert", "--from", "obj", "-", "--to", "vrn", "-", stdin=OBJ.encode())
        self.assertEqual((vrn.returncode, vrn.stderr), (0, b""))
        self.assertIn(b"mesh ", vrn.stdout)
        glb = self.run_here("convert", "--from", "vrn", "-", "--to", "glb", "-", stdin=vrn.stdout)
        self.assertEqual(glb.stdout[:4], b"glTF")
        self.assertEqual(sorted(self.folder.iterdir()), [])
        for arguments, message in (
            (("-", "out.vrn"), "vrn: -: no format with this extension can be read"),
            (("--from", "obj", "-", "-"), "vrn: -: no format with this extension can be written"),
            (("--from", "vrn", "-", "--to", "gltf", "-"), "vrn: -: this format consists of several files"),
            (("--from", "obj", "-", "-", "-o", "a.vrn"), "vrn: -: standard input can be read only once"),
        ):
            (line,) = self.convert(*arguments, status=2)
            self.assertTrue(line.startswith(message), line)
        (line,) = self.convert("--from", "obj", "-", "out.vrn", status=1, stdin=b"f 1 2 3\n")
        self.assertEqual(line, "vrn: <stdin>: line 1 refers to vertex 3, which the file does not have")

    def test_formats_of_files(self):
        self.file("model.txt", OBJ)
        self.convert("--from", "obj", "model.txt", "--to", "ply", "out.dat")
        (self.folder / "out.dat").unlink()
        self.convert("--from", "OBJ", "model.txt", "--to", "Ply", "out.dat")
        self.assertEqual(Ply(self.folder / "out.dat").points(), CORNERS)

    def test_several_inputs(self):
        self.file("a.vrn", "define lamp; lamp.power = 1.0;\n" + TRIANGLE + "lamp l; l.target = m; l.in |= m.out;\n"
                  'texture t; t.file = "a.png";')
        (self.folder / "sub").mkdir()
        self.file("sub/b.vrn", "define lamp; lamp.power = 2.0; lamp.list[*] = 7; lamp l; l.list[*] = 8;\n"
                  'mesh m; l.target = m; l.in |= m.out; texture t; t.file = "b.png"; l.o.p = "x";')
        self.file("c.obj", OBJ)
        lines = self.convert("a.vrn", "sub/b.vrn", "c.obj", "-o", "all.json")
        lost = "vrn: all.json: lost: names of nodes that another file has, too (numbered): 4 (first lamp_2)"
        self.assertEqual(lines, [lost])
        nodes = {node["name"]: node for node in json.loads((self.folder / "all.json").read_text())["nodes"]}
        second = inputs_of(nodes["l_2"])
        self.assertEqual((nodes["l_2"]["type"], nodes["l"]["type"]), ("lamp_2", "lamp"))
        self.assertEqual((second["power"]["value"], second["target"]["value"]), (2, "m_2"))
        self.assertEqual(second["in"]["connection"], "m_2.out")
        self.assertEqual([e["value"] for e in second["list"]["elements"]], [7, 8])
        self.assertEqual(inputs_of(nodes["l"])["target"]["value"], "m")
        files = [inputs_of(nodes[name])["file"]["value"] for name in ("t", "t_2")]
        self.assertEqual(files, ["a.png", "sub/b.png"])
        self.assertIn("c_obj", nodes)
        (line,) = self.convert("a.vrn", "c.obj", "all.json", status=2)
        self.assertEqual(line, "vrn: all.json: several files are read only if -o OUT names the file to write")
        self.file("bad.vrn", "oops")
        self.convert("a.vrn", "bad.vrn", "-o", "none.json", status=1)
        self.assertFalse((self.folder / "none.json").exists())

    def test_strict(self):
        self.file("in.vrn", TRIANGLE + "m.odd = 1;")
        before = sorted(self.folder.iterdir())
        for name in ("out.glb", "out.gltf", "out.stl"):
            lines = self.convert("--strict", "in.vrn", name, status=1)
            self.assertEqual(lines, [f"vrn: {name}: lost: input odd of mesh: 1 (m.odd)",
                                     f"vrn: {name}: not written, because of the lines above (--strict)"])
        self.assertEqual(sorted(self.folder.iterdir()), before)
        self.assertEqual(self.convert("--strict", "in.vrn", "out.vrn"), [])
        piped = self.run_here("convert", "--strict", "in.vrn", "--to", "glb", "-")
        self.assertEqual((piped.returncode, piped.stdout), (1, b""))

    def test_losses_as_json(self):
        self.file("in.vrn", TRIANGLE + 'm.odd = 1; mesh n; n.odd = 2; n.points = vec3f[1] {1 2 3}; n.indices = byte[3] {0 0 0};')
        lines = self.convert("--losses", "json", "in.vrn", "out.glb")
        self.assertEqual([json.loads(line) for line in lines], [
            {"file": "out.glb", "kind": "loss", "what": "input odd of mesh", "count": 2, "first": "m.odd"}])
        self.file("in.ply", "ply\nformat ascii 1.0\nelement vertex 4\nproperty float x\nproperty float y\n"
                            "property float z\nelement face 1\nproperty list uchar int vertex_indices\nend_header\n"
                            "0 0 0\n1 0 0\n0 1 0\n5 5 5\n3 0 1 2\n")
        first = json.loads(self.convert("--losses", "json", "in.ply", "out.json")[0])
        self.assertEqual(first, {"file": "in.ply", "kind": "warning", "what": "There are unreferenced vertices",
                                 "count": 1})
        self.assertIn("vrn: in.ply: warning: There are unreferenced vertices", self.convert("in.ply", "out.json"))

    def test_triangulation_of_scenes(self):
        self.file("in.vrn", TRIANGLE)
        (line,) = self.convert("--triangulate", "in.vrn", "out.obj", status=2)
        self.assertEqual(line, "vrn: in.vrn: --triangulate is for models, not for .vrn files")


if __name__ == "__main__":
    unittest.main()
