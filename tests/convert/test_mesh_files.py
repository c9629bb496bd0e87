"""Tests the OBJ, PLY and STL files that vrn convert writes, with readers of their own and numbers worked out here."""
import math
import pathlib
import struct
import sys
import unittest

sys.path += [str(pathlib.Path(__file__).resolve().parents[1] / "cli")]

from importing import Importing
from mesh_files import Obj, Ply, materials, stl

SQUARE = (
    "mesh m; m.points = vec3f[4] {0 0 0 1000 0 0 1000 1000 0 0 1000 0}; m.faceCounts = int32[1] {4};\n"
    "m.faceIndices = int32[4] {0 1 2 3};\n"
)
TRIANGLE = "mesh m; m.points = vec3f[3] {0 0 0 1 0 0 0 1 0}; m.indices = int32[3] {0 1 2};\n"


def float32(number):
    return struct.unpack("<f", struct.pack("<f", number))[0]


def cross(a, b):
    return (a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0])


def facet_normal(corners):
    """Of length 1."""
    edges = [tuple(p - q for p, q in zip(corner, corners[0])) for corner in corners[1:3]]
    normal = cross(*edges)
    size = math.hypot(*normal)
    return tuple(number / size for number in normal)


class MeshFiles(Importing):
    def convert(self, text, target, *options):
        """Converts a scene; returns the reported losses."""
        self.file("in.vrn", text)
        result = self.run_here("convert", *options, "in.vrn", target)
        self.assertEqual(result.returncode, 0, result.stderr.decode())
        start = f"vrn: {target}: lost: "
        return [line[len(start) :] for line in result.stderr.decode().splitlines()]

    def obj(self, text, *lost):
        self.assertEqual(self.convert(text, "out.obj"), list(lost))
        return Obj(self.folder / "out.obj")

    def ply(self, text, *lost):
        """The file, which is the same as text."""
        self.assertEqual(self.convert(text, "out.ply"), list(lost))
        self.assertEqual(self.convert(text, "text.ply", "--ascii"), list(lost))
        binary, ascii_form = Ply(self.folder / "out.ply"), Ply(self.folder / "text.ply")
        self.assertEqual((binary.format, ascii_form.format), ("binary_little_endian", "ascii"))
        self.assertEqual(binary.elements, ascii_form.elements)
        return binary

    def stl(self, text, *lost):
        """The facets, which are the same as text."""
        self.assertEqual(self.convert(text, "out.stl"), list(lost))
        self.assertEqual(self.convert(text, "text.stl", "--ascii"), list(lost))
        self.assertFalse((self.folder / "out.stl").read_bytes().startswith(b"solid"))
        facets = stl(self.folder / "out.stl")
        as_text = [(tuple(map(float32, n)), [tuple(map(float32, c)) for c in cs])
                   for n, cs in stl(self.folder / "text.stl")]
        self.assertEqual(as_text, [(n, [tuple(c) for c in cs]) for n, cs in facets])
        return facets


class Places(MeshFiles):
    MOVED = "transforms of nodes (applied to the points): 1 (i)"

    def assert_points(self, found, expected):
        self.assertEqual(len(found), len(expected))
        for point, wanted in zip(found, expected):
            self.assertEqual(tuple(map(float32, point)), tuple(map(float32, wanted)))

    def test_small_turns_are_kept(self):
        angle = math.radians(0.5)
        quaternion = f"quat(0 0 {math.sin(angle / 2)!r} {math.cos(angle / 2)!r})"
        text = SQUARE + f"instance i; i.geometry = m; i.rotation = {quaternion};"
        c, s = 1000 * math.cos(angle), 1000 * math.sin(angle)
        expected = [(0, 0, 0), (c, s, 0), (c - s, s + c, 0), (-s, c, 0)]
        for point, wanted in zip(self.obj(text, self.MOVED).points, expected):
            for number, exact in zip(point, wanted):
                self.assertAlmostEqual(number, exact, delta=1e-4)
        self.assert_points(self.ply(text, self.MOVED).points(), Obj(self.folder / "out.obj").points)

    def test_places_are_multiplied_with_doubles(self):
        text = (
            "mesh m; m.points = vec3f[3] {1 0 0 0 1 0 0 0 1}; m.indices = int32[3] {0 1 2};\n"
            "transform t; t.translation = vec3(1e9 0 0); instance i; i.geometry = m; i.parent = t;\n"
            "i.translation = vec3(-1e9 0 0);"
        )
        self.assert_points(self.obj(text, "nodes without a mesh: 1 (t)", "parents of nodes: 1 (i)").points,
                           [(1, 0, 0), (0, 1, 0), (0, 0, 1)])

    def test_mirrored_instances_are_not_inside_out(self):
        text = SQUARE + "instance i; i.geometry = m; i.scale = vec3(-1 1 1);"
        self.assertEqual(facet_normal(self.obj(text, self.MOVED).triangles()[0]), (0, 0, 1))
        ply = self.ply(text, self.MOVED)
        face = ply.elements["face"][0]["vertex_indices"]
        self.assertEqual(sorted(face), [0, 1, 2, 3])
        self.assertEqual(facet_normal([ply.points()[i] for i in face]), (0, 0, 1))
        for normal, corners in self.stl(text, "polygons with more than three corners (triangulated): 1 (m)", self.MOVED):
            self.assertEqual(normal, (0, 0, 1))
            self.assertEqual(facet_normal(corners), (0, 0, 1))

    def test_normals_are_transformed(self):
        text = (
            TRIANGLE + "m.normals = vec3f[3] {0.6 0 0.8 0.6 0 0.8 0.6 0 0.8};\n"
            "instance i; i.geometry = m; i.scale = vec3(2 1 1);"
        )
        size = math.hypot(0.3, 0.8)
        for normal in self.obj(text, self.MOVED).normals:
            for number, exact in zip(normal, (0.3 / size, 0, 0.8 / size)):
                self.assertAlmostEqual(number, exact, delta=1e-7)

    def test_mirrored_normals_stay_on_their_side(self):
        text = (
            TRIANGLE + "m.normals = vec3f[3] {0 0 1 0 0 1 0 0 1};\n"
            "instance i; i.geometry = m; i.scale = vec3(-1 1 1);"
        )
        obj = self.obj(text, self.MOVED)
        self.assertEqual(set(obj.normals), {(0, 0, 1)})
        self.assertEqual(facet_normal(obj.triangles()[0]), (0, 0, 1))

    def test_untransformed_numbers_are_exact(self):
        numbers = ["0.1", "-3.14159274", "1e-30", "123456.789", "3.4028235e+38", "5e-06"]
        text = (
            f"mesh m; m.points = vec3f[2] {{{' '.join(numbers)}}}; m.topology = \"points\";"
        )
        expected = [float32(float(number)) for number in numbers]
        self.assertEqual([float32(n) for p in self.obj(text).points for n in p], expected)
        self.assertEqual([n for p in self.ply(text).points() for n in p], expected)


class Elements(MeshFiles):
    POINTS = 'mesh m; m.points = vec3f[3] {0 0 0 1 0 0 0 1 0}; m.topology = "points";\n'
    LINES = 'mesh l; l.points = vec3f[3] {5 0 0 6 0 0 7 0 0}; l.topology = "lines"; l.indices = int32[4] {0 1 1 2};\n'

    def test_points(self):
        self.assertEqual(self.obj(self.POINTS).singles, [0, 1, 2])
        ply = self.ply(self.POINTS)
        self.assertEqual(ply.points(), [(0, 0, 0), (1, 0, 0), (0, 1, 0)])
        self.assertNotIn("face", ply.elements)
        self.assertEqual(self.run_here("convert", "in.vrn", "out.stl").returncode, 1)

    def test_indexed_points(self):
        text = self.POINTS + "m.indices = int32[3] {2 0 2};"
        self.assertEqual(self.obj(text).singles, [2, 0, 2])
        self.assertEqual(self.ply(text).points(), [(0, 1, 0), (0, 0, 0), (0, 1, 0)])

    def test_lines(self):
        text = TRIANGLE + self.LINES
        self.assertEqual(self.obj(text).lines, [[3, 4], [4, 5]])
        ply = self.ply(text)
        self.assertEqual(ply.elements["edge"], [{"vertex1": 3, "vertex2": 4}, {"vertex1": 4, "vertex2": 5}])
        self.assertEqual(ply.elements["face"], [{"vertex_indices": [0, 1, 2]}])

    def test_polygons(self):
        self.assertEqual([c[0] for c in self.obj(SQUARE).faces[0][1]], [0, 1, 2, 3])
        self.assertEqual(self.ply(SQUARE).elements["face"], [{"vertex_indices": [0, 1, 2, 3]}])

    def test_large_polygons(self):
        count = 300
        points = " ".join(f"{i} {i * i} 0" for i in range(count))
        text = (
            f"mesh m; m.points = vec3f[{count}] {{{points}}}; m.faceCounts = int32[1] {{{count}}};\n"
            f"m.faceIndices = int32[{count}] {{{' '.join(map(str, range(count)))}}};"
        )
        self.assertEqual(self.ply(text).elements["face"], [{"vertex_indices": list(range(count))}])

    def test_ply_data_never_begins_with_a_line_break(self):
        """Assimp takes that for the end of the header."""
        for byte in (0x0A, 0x0D):
            x = struct.unpack("<f", struct.pack("<I", 0x3F800000 + byte))[0]
            self.convert(TRIANGLE.replace("{0 0 0", f"{{{x!r} 0 0"), "out.ply")
            ply = Ply(self.folder / "out.ply")
            self.assertEqual(ply.format, "binary_big_endian")
            self.assertEqual(ply.points(), [(x, 0, 0), (1, 0, 0), (0, 1, 0)])
            self.run_here("convert", "out.ply", "back.obj")
            self.assertEqual(float32(Obj(self.folder / "back.obj").points[0][0]), x)

    def test_ply_data_that_would_begin_with_a_line_break_in_both_orders_is_text(self):
        x = struct.unpack("<f", struct.pack("<I", 0x0A00000A))[0]
        self.convert(TRIANGLE.replace("{0 0 0", f"{{{x!r} 0 0"), "out.ply")
        self.assertEqual(Ply(self.folder / "out.ply").format, "ascii")

    def test_facet_normals_are_those_of_the_facets(self):
        text = (
            "mesh m; m.points = vec3f[4] {0 0 0 1 0 0 0 1 0 0 0 1};\n"
            "m.indices = int32[12] {0 2 1 0 1 3 0 3 2 1 2 3}; m.normals = vec3f[4] {1 0 0 1 0 0 1 0 0 1 0 0};"
        )
        facets = self.stl(text, "normals of meshes: 1 (m.normals)")
        self.assertEqual(len(facets), 4)
        for normal, corners in facets:
            for number, exact in zip(normal, facet_normal(corners)):
                self.assertAlmostEqual(number, exact, delta=1e-7)

    def test_facets_without_an_area(self):
        self.assertEqual(self.stl(TRIANGLE.replace("0 1 0}", "2 0 0}"))[0][0], (0, 0, 0))


class Attributes(MeshFiles):
    COLORS = "m.colors = rgbaf[3] {1 0 0 1 0 1 0 1 0 0 1 0.5};\n"
    COORDINATES = "m.uvsets[0].coords = vec2f[3] {0 0 0.25 0.5 1 1};\n"
    NORMALS = "m.normals = vec3f[3] {0 0 1 0 0.6 0.8 0 0 1};\n"

    def test_obj(self):
        obj = self.obj(TRIANGLE + self.COORDINATES + self.NORMALS)
        self.assertEqual(obj.coordinates, [(0, 1), (0.25, 0.5), (1, 0)])  # v counts from the lower edge
        self.assertEqual(obj.normals[1], (0, 0.6, 0.8))
        self.assertEqual(obj.faces[0][1], [(0, 0, 0), (1, 1, 1), (2, 2, 2)])

    def test_obj_with_one_of_them(self):
        self.assertEqual(self.obj(TRIANGLE + self.COORDINATES).faces[0][1][2], (2, 2, None))
        self.assertEqual(self.obj(TRIANGLE + self.NORMALS).faces[0][1][2], (2, None, 2))

    def test_obj_with_several_meshes(self):
        other = (TRIANGLE + self.NORMALS).replace("mesh m", "mesh n").replace("m.", "n.")
        obj = self.obj(TRIANGLE + self.COORDINATES + other)
        self.assertEqual(obj.names, ["m", "n"])
        self.assertEqual(obj.faces[1][1], [(3, None, 0), (4, None, 1), (5, None, 2)])

    def test_obj_colours(self):
        obj = self.obj(TRIANGLE + self.COLORS, "alpha of the colours of meshes: 1 (m)")
        self.assertEqual(obj.colors, [(1, 0, 0), (0, 1, 0), (0, 0, 1)])

    def test_obj_colours_of_one_of_several_meshes(self):
        """A reader that counts colours from the first one would give them to other points."""
        other = (TRIANGLE + self.COLORS).replace("mesh m", "mesh n").replace("m.", "n.")
        obj = self.obj(TRIANGLE + other, "missing colours of meshes beside others (written as white): 1 (m)",
                       "alpha of the colours of meshes: 1 (n)")
        self.assertEqual(obj.colors, [(1, 1, 1)] * 3 + [(1, 0, 0), (0, 1, 0), (0, 0, 1)])

    def test_losses_of_a_mesh_are_told_once(self):
        text = TRIANGLE + self.COLORS + "instance i; i.geometry = m; instance j; j.geometry = m;"
        self.obj(text, "alpha of the colours of meshes: 1 (m)")
        self.ply(text, "colour precision beyond 8 bits: 1 (m)")

    def test_points_and_lines_have_no_normals_and_coordinates_in_obj(self):
        text = TRIANGLE + self.COORDINATES + self.NORMALS
        obj = self.obj(text + 'm.topology = "points";', "normals of points and lines: 1 (m)",
                       "texture coordinates of points: 1 (m)")
        self.assertEqual((obj.normals, obj.coordinates, obj.singles), ([], [], [0, 1, 2]))
        lines = text.replace("{0 1 2}", "{0 1 1 2}").replace("int32[3]", "int32[4]") + 'm.topology = "lines";'
        obj = self.obj(lines, "normals of points and lines: 1 (m)")
        self.assertEqual((obj.normals, len(obj.coordinates)), ([], 3))

    def test_many_vertices_keep_their_order(self):
        """More than one part of points, colours and faces, in lines of more than 64 characters."""
        count = 9001
        points = [(float32(i / 7), float32(-i / 3), float32(i * 1.1e-5)) for i in range(count)]
        colors = [(float32(i / count), 0.25, float32(1 - i / count), 1) for i in range(count)]
        flat = lambda rows: " ".join(repr(number) for row in rows for number in row)
        text = (
            f"mesh m; m.points = vec3f[{count}] {{{flat(points)}}}; m.colors = rgbaf[{count}] {{{flat(colors)}}};\n"
            f"m.normals = vec3f[{count}] {{{'0 0 1 ' * count}}};\n"
            f"m.indices = int32[{3 * (count - 2)}] {{{' '.join(f'{i} {i + 1} {i + 2}' for i in range(count - 2))}}};\n"
            "mesh n; n.points = vec3f[3] {0 0 0 1 0 0 0 1 0}; n.indices = int32[3] {0 1 2};\n"
            "n.colors = rgbaf[3] {1 1 1 1 1 1 1 1 1 1 1 1}; n.normals = vec3f[3] {0 1 0 0 1 0 0 1 0};"
        )
        obj = self.obj(text)
        self.assertEqual([tuple(map(float32, p)) for p in obj.points[:count]], points)
        self.assertEqual([tuple(map(float32, c)) for c in obj.colors[:count]], [c[:3] for c in colors])
        faces = [[corner[0] for corner in corners] for _, corners in obj.faces]
        self.assertEqual(faces, [[i, i + 1, i + 2] for i in range(count - 2)] + [[count, count + 1, count + 2]])
        self.assertEqual([corner[2] for corner in obj.faces[-1][1]], [count, count + 1, count + 2])
        ply = self.ply(text, "colour precision beyond 8 bits: 1 (m)")
        self.assertEqual(ply.points()[:count], points)
        self.assertEqual([f["vertex_indices"] for f in ply.elements["face"]], faces)

    def test_mirrored_corners_keep_their_attributes(self):
        obj = self.obj(TRIANGLE + self.COORDINATES + self.NORMALS + "instance i; i.geometry = m; i.scale = vec3(-1 1 1);",
                       Places.MOVED)
        self.assertEqual(obj.faces[0][1], [(0, 0, 0), (2, 2, 2), (1, 1, 1)])

    def test_obj_groups_have_the_names_of_meshes(self):
        text = TRIANGLE.replace("mesh m", "mesh n").replace("m.", "n.")
        obj = self.obj(TRIANGLE + 'm.name = "a mesh"; instance i; i.geometry = m; instance j; j.geometry = m;' + text)
        self.assertEqual((obj.names, obj.groups), (["i", "j", "n"], ["a mesh", "a mesh", "n"]))

    def test_ply(self):
        ply = self.ply(TRIANGLE + self.COLORS + self.COORDINATES + self.NORMALS, "colour precision beyond 8 bits: 1 (m)")
        vertex = ply.elements["vertex"][2]
        self.assertEqual([vertex[name] for name in ("red", "green", "blue", "alpha")], [0, 0, 255, 128])
        self.assertEqual([vertex[name] for name in ("s", "t", "nx", "ny", "nz")], [1, 0, 0, 0, 1])

    def test_ply_fills_what_other_meshes_have(self):
        other = (TRIANGLE + self.NORMALS).replace("mesh m", "mesh n").replace("m.", "n.")
        ply = self.ply(TRIANGLE + other, "missing normals of meshes beside others (written as 0): 1 (m)")
        self.assertEqual([v["nz"] for v in ply.elements["vertex"]], [0, 0, 0, 1, float32(0.8), 1])

    def test_inexact_coordinates_are_reported(self):
        lost = "last digits of texture coordinates (v is flipped): 1 (m)"
        self.obj(TRIANGLE + "m.uvsets[0].coords = vec2f[3] {0 1e-9 0 0 0 0};", lost)
        self.ply(TRIANGLE + "m.uvsets[0].coords = vec2f[3] {0 1e-9 0 0 0 0};", lost)


class Materials(MeshFiles):
    TEXT = (
        TRIANGLE + "m.uvsets[0].coords = vec2f[3] {0 0 1 0 0 1}; m.material |= p.outColor;\n"
        'material p; p.name = "oak wood"; p.baseColor = rgba(0.8 0.5 0.25 0.75); p.metallic = 0.5; p.roughness = 0.25;\n'
        "p.emission.color = vec3(0.1 0.2 0.3); p.baseColorMap |= t.outColor;\n"
        'texture t; t.file = "my wood.png";\n'
    )

    def library(self):
        return materials(self.folder / "out.mtl")

    def test_colours(self):
        obj = self.obj(self.TEXT)
        self.assertEqual(obj.library, "out.mtl")
        self.assertEqual(obj.faces[0][0], "oak wood")
        self.assertEqual(
            self.library()["oak wood"],
            {"Kd": "0.8 0.5 0.25", "d": "0.75", "Ke": "0.1 0.2 0.3", "Pr": "0.25", "Pm": "0.5",
             "map_Kd": "my wood.png", "map_d": "-imfchan m my wood.png"},
        )

    def test_maps(self):
        self.obj(
            self.TEXT + "p.metallicRoughnessMap |= t.outColor; p.normalMap |= t.outColor; p.emission.map |= t.outColor;\n"
            'p.baseColorXform.offset = vec2(0.5 0.25); p.baseColorXform.scale = vec2(2 4); t.wrapU = "clamp";\n'
            't.wrapV = "clamp";'
        )
        of = self.library()["oak wood"]
        # v' = 0.25 + 4 v from the upper edge is 1 - v' = (1 - 0.25 - 4) + 4 (1 - v) from the lower one.
        self.assertEqual(of["map_Kd"], "-clamp on -o 0.5 -3.25 0 -s 2 4 1 my wood.png")
        self.assertEqual(of["map_Pr"], "-imfchan g -clamp on my wood.png")
        self.assertEqual(of["map_Pm"], "-imfchan b -clamp on my wood.png")
        self.assertEqual((of["norm"], of["map_Ke"]), ("-clamp on my wood.png",) * 2)

    def test_losses(self):
        lost = self.convert(
            self.TEXT + "p.occlusionMap |= t.outColor; p.doubleSided = true; t.filter = 9729;", "out.obj"
        )
        self.assertEqual(
            sorted(lost),
            ["filters and wrap modes of textures other than repeat and clamp: 1 (t)",
             "materials that show both sides: 1 (p)", "occlusion maps of materials: 1 (p)"],
        )

    def test_alpha_modes(self):
        for mode, alpha, expected, lost in (
            ("opaque", 0.5, "1", ["alpha of opaque materials: 1 (p)"]), ("opaque", 1, "1", []), ("blend", 0.5, "0.5", []),
            ("mask", 0.5, "0.5", ["alpha cutoffs of materials: 1 (p)"]),
        ):
            with self.subTest(mode):
                text = self.TEXT.replace("0.75)", f"{alpha})") + f'p.alpha.mode = "{mode}";'
                self.obj(text.replace("p.baseColorMap |= t.outColor;", ""), "nodes of type texture: 1 (t)", *lost)
                self.assertEqual(self.library()["oak wood"]["d"], expected)
        self.obj(self.TEXT + 'p.alpha.mode = "blend";')
        self.assertEqual(self.library()["oak wood"]["map_d"], "-imfchan m my wood.png")

    def test_names_and_paths_survive_readers_that_trim(self):
        other = TRIANGLE.replace("mesh m", "mesh n").replace("m.", "n.")
        lost = self.convert(
            self.TEXT + other + 'n.material |= q.outColor; material q; q.name = "oak wood ";\n'
            'q.baseColorMap |= u.outColor; texture u; u.file = "-o a.png";', "out.obj"
        )
        self.assertEqual(lost, ["names that are not unique, begin or end with spaces, or contain control characters: 1 (q)"])
        self.assertEqual([m for m, _ in Obj(self.folder / "out.obj").faces], ["oak wood", "oak wood_1"])
        self.assertEqual(self.library()["oak wood_1"]["map_Kd"], "./-o a.png")

    def test_unknown_wrap_modes_and_offsets_beyond_floats(self):
        lost = self.convert(
            self.TEXT + 't.wrapU = "border"; t.wrapV = "border"; p.baseColorXform.offset = vec2(0 3e38);\n'
            "p.baseColorXform.scale = vec2(1 3e38);", "out.obj"
        )
        self.assertEqual(sorted(lost), ["filters and wrap modes of textures other than repeat and clamp: 1 (t)",
                                        "transforms of textures beyond the range of a float: 2 (first t)"])
        self.assertNotIn("inf", (self.folder / "out.mtl").read_text())

    def test_a_library_that_cannot_be_written(self):
        (self.folder / "out.mtl").mkdir()
        self.file("in.vrn", self.TEXT)
        self.assertEqual(self.run_here("convert", "in.vrn", "out.obj").returncode, 2)
        self.assertFalse((self.folder / "out.obj").exists())

    def test_a_mesh_without_a_material_after_one_with(self):
        other = TRIANGLE.replace("mesh m", "mesh n").replace("m.", "n.")
        obj = self.obj(self.TEXT + other)
        self.assertEqual([material for material, _ in obj.faces], ["oak wood", "DefaultMaterial"])
        self.assertEqual(self.library()["DefaultMaterial"], {})

    def test_without_materials_there_is_no_library(self):
        self.assertIsNone(self.obj(TRIANGLE).library)
        self.assertFalse((self.folder / "out.mtl").exists())


class Options(MeshFiles):
    def test_ascii_is_refused_for_formats_with_one_form(self):
        self.file("in.vrn", TRIANGLE)
        for name in ("out.glb", "out.obj", "out.vrn"):
            result = self.run_here("convert", "--ascii", "in.vrn", name)
            self.assertEqual(result.returncode, 2)
            self.assertIn(b"only .ply and .stl files have a text form", result.stderr)
            self.assertFalse((self.folder / name).exists())


if __name__ == "__main__":
    unittest.main()
