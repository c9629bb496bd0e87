"""Tests the import of FBX files, in binary form and as text, with numbers worked out by hand.

All models show a triangle with the corners A, B and C. Turns by 90 degrees about X, Y and Z take (x, y, z) to
(x, -z, y), (z, y, -x) and (-y, x, z). The transform of a model, applied from right to left with an inverted post
rotation, is T Roff Rp Rpre R Rpost' Rp' Soff Sp S Sp'.
"""
import json
import math
import pathlib
import struct
import sys
import unittest

sys.path += [str(pathlib.Path(__file__).resolve().parents[1] / "cli")]

from fbx_files import Array, Fbx, element, prop, vector
from geometry import inputs_of
from importing import Importing
from world import World, channels

A, B, C = (1, 0, 0), (0, 2, 0), (0, 0, 3)
CONSTANT, LINEAR, AUTOMATIC, CUBIC = 2, 4, 8, 8 + 0x400  # cubic: with slopes of the user
ACTIVE = prop("RotationActive", "bool", 1)


def order(number):
    return prop("RotationOrder", "enum", number)


class FbxFiles(Importing):
    def read(self, fbx, *options, is_binary=True):
        fbx.write(self.folder / "in.fbx", is_binary)
        result = self.run_here("convert", *options, "in.fbx", "out.json")
        self.assertEqual(result.returncode, 0, result.stderr.decode())
        self.lost = [line for line in result.stderr.decode().splitlines() if "metadata of nodes" not in line]
        return json.loads((self.folder / "out.json").read_text())

    def assert_close(self, found, expected, places=5):
        self.assertEqual(len(found), len(expected), (found, expected))
        for point, other in zip(found, expected):
            for number, wanted in zip(point, other):
                self.assertAlmostEqual(number, wanted, places, (found, expected))

    def assert_points(self, fbx, expected, *options):
        """`expected`: the corners of the meshes by the names of their instances."""
        for is_binary in (True, False):
            with self.subTest(is_binary=is_binary):
                found = World(self.read(fbx, *options, is_binary=is_binary)).points()
                self.assertEqual(found.keys(), expected.keys())
                for name, points in expected.items():
                    self.assert_close(found[name], points)
                self.assertEqual(self.lost, [])


class Transforms(FbxFiles):
    def one(self, *properties, settings=Fbx.METRES, template=()):
        fbx = Fbx(settings, template)
        fbx.model("n", fbx.mesh([A, B, C]), properties)
        return fbx

    def test_translation_rotation_scale(self):
        # A: scaled (2, 0, 0), turned (0, 2, 0), moved (10, 2, 0); and so on.
        fbx = self.one(vector("Lcl Translation", (10, 0, 0)), vector("Lcl Rotation", (0, 0, 90)),
                       vector("Lcl Scaling", (2, 1, 1)))
        self.assert_points(fbx, {"n": [(10, 2, 0), (8, 0, 0), (10, 0, 3)]})

    def test_compressed_arrays(self):
        fbx = Fbx()
        fbx.model("n", fbx.mesh([A, B, C], is_compressed=True))
        self.assert_points(fbx, {"n": [A, B, C]})

    def test_geometry_transform(self):
        # The geometry is scaled, turned and moved before the model; the child only moves with the model.
        # A: (2, 0, 0), (0, 2, 0), (10, 2, 0), with the model (10, 2, 5). B: (0, 4, 0), (-4, 0, 0), (6, 0, 0).
        fbx = Fbx()
        mesh = fbx.mesh([A, B, C])
        parent = fbx.model("n", mesh, [
            vector("Lcl Translation", (0, 0, 5)), vector("GeometricTranslation", (10, 0, 0)),
            vector("GeometricRotation", (0, 0, 90)), vector("GeometricScaling", (2, 2, 2)),
        ])
        fbx.model("child", mesh, [vector("Lcl Translation", (1, 0, 0))], parent)
        self.assert_points(fbx, {"n_mesh": [(10, 2, 5), (6, 0, 5), (10, 0, 11)],
                                 "child": [(2, 0, 5), (1, 2, 5), (1, 0, 8)]})

    def test_geometry_rotations_ignore_the_rotation_order(self):
        # X before Y. A: (1, 0, 0), (0, 0, -1). B: (0, 0, 2), (2, 0, 0). C: (0, -3, 0), (0, -3, 0).
        fbx = self.one(ACTIVE, order(5), vector("GeometricRotation", (90, 90, 0)))
        self.assert_points(fbx, {"n_mesh": [(0, 0, -1), (2, 0, 0), (0, -3, 0)]})

    def test_instances_with_geometry_transforms(self):
        fbx = Fbx()
        mesh = fbx.mesh([A, B, C])
        fbx.model("x", mesh, [vector("GeometricTranslation", (10, 0, 0))])
        fbx.model("y", mesh, [vector("GeometricTranslation", (0, 20, 0))])
        fbx.model("z", mesh)
        self.assert_points(fbx, {"x_mesh": [(11, 0, 0), (10, 2, 0), (10, 0, 3)],
                                 "y_mesh": [(1, 20, 0), (0, 22, 0), (0, 20, 3)], "z": [A, B, C]})

    def test_rotation_order(self):
        # 90 degrees about each axis, in the order of the name; for XYZ, A: (1, 0, 0), (0, 0, -1), (0, 0, -1).
        fbx = Fbx()
        mesh = fbx.mesh([A, B, C])
        expected = {
            "XYZ": [(0, 0, -1), (0, 2, 0), (3, 0, 0)],
            "XZY": [(0, 1, 0), (2, 0, 0), (0, 0, -3)],
            "YZX": [(0, 1, 0), (-2, 0, 0), (0, 0, 3)],
            "YXZ": [(-1, 0, 0), (0, 0, 2), (0, 3, 0)],
            "ZXY": [(1, 0, 0), (0, 0, 2), (0, -3, 0)],
            "ZYX": [(0, 0, 1), (0, -2, 0), (3, 0, 0)],
        }
        for number, name in enumerate(expected):
            fbx.model(name, mesh, [ACTIVE, order(number), vector("Lcl Rotation", (90, 90, 90))])
        self.assert_points(fbx, expected)

    def test_post_rotation(self):
        # The inverse post rotation, (x, z, -y), comes before the turn about Z. B: (0, 0, -2). C: (0, 3, 0), (-3, 0, 0).
        fbx = self.one(ACTIVE, vector("PostRotation", (90, 0, 0)), vector("Lcl Rotation", (0, 0, 90)))
        self.assert_points(fbx, {"n": [(0, 1, 0), (0, 0, -2), (-3, 0, 0)]})

    def test_pre_and_post_rotation(self):
        # As before, and then a turn about Y.
        fbx = self.one(ACTIVE, vector("PreRotation", (0, 90, 0)), vector("PostRotation", (90, 0, 0)),
                       vector("Lcl Rotation", (0, 0, 90)))
        self.assert_points(fbx, {"n": [(0, 1, 0), (-2, 0, 0), (0, 0, 3)]})

    def test_rotation_space(self):
        # Without an active rotation space, the order is XYZ and only the rotation itself counts.
        space = [order(5), vector("PreRotation", (0, 90, 0)), vector("PostRotation", (90, 0, 0)),
                 vector("Lcl Rotation", (90, 90, 90))]
        plain = [(0, 0, -1), (0, 2, 0), (3, 0, 0)]
        inactive = prop("RotationActive", "bool", 0)
        limits = prop("RotationSpaceForLimitOnly", "bool", 1)
        self.assert_points(self.one(inactive, *space), {"n": plain})
        self.assert_points(self.one(ACTIVE, limits, *space), {"n": plain})
        self.assert_points(self.one(*space, template=[inactive]), {"n": plain})
        # ZYX of A: (0, 0, 1); of the inverse post rotation of B, (0, 0, -2): (0, 0, -2), (-2, 0, 0), (-2, 0, 0); of C,
        # (0, 3, 0): (-3, 0, 0), (0, 0, 3), (0, -3, 0). Then the turn about Y.
        turned = [(1, 0, 0), (0, 0, 2), (0, -3, 0)]
        self.assert_points(self.one(*space), {"n": turned})
        self.assert_points(self.one(ACTIVE, *space, template=[inactive]), {"n": turned})

    def test_pivots_and_offsets(self):
        # B is the scaling pivot: (0, 2, 0); offset by (0, 0, -3), relative to the rotation pivot (-1, 2, -3), turned
        # (-2, -1, -3), back (-1, -1, -3), offset (-1, -1, -2), moved (9, -1, -2).
        fbx = self.one(vector("RotationPivot", (1, 0, 0)), vector("RotationOffset", (0, 0, 1)),
                       vector("ScalingPivot", (0, 2, 0)), vector("ScalingOffset", (0, 0, -3)),
                       vector("Lcl Scaling", (2, 2, 2)), vector("Lcl Rotation", (0, 0, 90)),
                       vector("Lcl Translation", (10, 0, 0)))
        self.assert_points(fbx, {"n": [(13, 1, -2), (9, -1, -2), (13, -1, 4)]})

    def test_visibility(self):
        hidden, shown = (prop("Visibility", "Visibility", value) for value in (0.0, 1.0))
        for properties, template, expected in (((hidden,), (), False), ((), (hidden,), False), ((shown,), (hidden,), None)):
            for is_binary in (True, False):
                scene = self.read(self.one(*properties, template=template), is_binary=is_binary)
                (node,) = [inputs_of(node) for node in scene["nodes"] if node["name"] == "n"]
                self.assertEqual(node.get("visible", {"value": None})["value"], expected)

    def test_units(self):
        inches = self.one(settings=[prop("UnitScaleFactor", "double", 2.54)])
        self.assert_points(inches, {"n": [(0.0254, 0, 0), (0, 0.0508, 0), (0, 0, 0.0762)]})
        unstated = self.one(settings=[])  # centimetres
        self.assert_points(unstated, {"n": [(0.01, 0, 0), (0, 0.02, 0), (0, 0, 0.03)]})
        self.assert_points(unstated, {"n": [(0.001, 0, 0), (0, 0.002, 0), (0, 0, 0.003)]}, "--units", "mm")
        self.assert_points(unstated, {"n": [(0.1, 0, 0), (0, 0.2, 0), (0, 0, 0.3)]}, "--scale", "10")

    def axes(self, up, up_sign, front, front_sign, right, right_sign):
        numbers = {"UpAxis": up, "UpAxisSign": up_sign, "FrontAxis": front, "FrontAxisSign": front_sign,
                   "CoordAxis": right, "CoordAxisSign": right_sign}
        return [*Fbx.METRES, *(prop(name, "int", number) for name, number in numbers.items())]

    def test_axes(self):
        z_up = self.one(settings=self.axes(2, 1, 1, -1, 0, 1))
        self.assert_points(z_up, {"n": [(1, 0, 0), (0, 0, -2), (0, 3, 0)]})
        self.assert_points(z_up, {"n": [A, B, C]}, "--up", "Y")
        x_up = self.one(settings=self.axes(0, 1, 2, 1, 1, -1))
        self.assert_points(x_up, {"n": [(0, 1, 0), (-2, 0, 0), (0, 0, 3)]})
        left_handed = self.one(settings=self.axes(1, 1, 2, -1, 0, 1))
        self.assert_points(left_handed, {"n": [(1, 0, 0), (0, 2, 0), (0, 0, -3)]})

    def test_values_without_meaning(self):
        self.read(self.one(settings=[*self.axes(1, 1, 1, 1, 0, 1), prop("UnitScaleFactor", "double", 100.0)]))
        self.assertEqual(self.lost, [
            "vrn: out.json: lost: axes that are not X, Y and Z (read as Y up): 1 (UpAxis)"
        ])
        self.read(self.one(ACTIVE, order(6)))
        self.assertEqual(self.lost, [
            "vrn: out.json: lost: spherical rotations (read as rotations about X, Y and Z): 1 (n)"
        ])

    def test_units_that_are_no_lengths(self):
        for unit in (-1.0, math.inf, math.nan):
            self.read(self.one(settings=[prop("UnitScaleFactor", "double", unit)]))
            self.assertEqual(self.lost, ["vrn: out.json: lost: units of length that are not positive and finite (read as "
                                         "centimetres): 1 (UnitScaleFactor)"], unit)

    def test_inherited_scale(self):
        for inheritance, scale, lost in ((1, (2, 1, 1), 0), (0, (2, 2, 2), 0), (0, (2, 1, 1), 1), (2, (2, 2, 2), 1)):
            fbx = Fbx()
            parent = fbx.model("parent", None, [vector("Lcl Scaling", scale)])
            fbx.model("n", fbx.mesh([A, B, C]), [prop("InheritType", "enum", inheritance)], parent)
            self.read(fbx)
            self.assertEqual(len(self.lost), lost, (inheritance, scale))

    def test_inherited_scale_of_the_template(self):
        fbx = Fbx(model_template=[prop("InheritType", "enum", 2)])
        fbx.model("n", fbx.mesh([A, B, C]), parent=fbx.model("parent", None, [vector("Lcl Scaling", (2, 2, 2))]))
        self.read(fbx)
        self.assertEqual(len(self.lost), 1)

    def test_inherited_scale_that_is_animated(self):
        for inheritance, scale, lost in ((1, 2, 0), (0, 1, 0), (0, 2, 1), (2, 2, 1)):
            fbx = Fbx()
            parent = fbx.model("parent")
            fbx.model("n", fbx.mesh([A, B, C]), [prop("InheritType", "enum", inheritance)], parent)
            keys = [(0, 1, LINEAR, 0, 0), (1, scale, LINEAR, 0, 0)]
            fbx.animate(fbx.layer(fbx.stack("take")), parent, "Lcl Scaling", (1, 1, 1), {"X": keys})
            self.read(fbx)
            self.assertEqual(len(self.lost), lost, (inheritance, scale, self.lost))


class Skins(FbxFiles):
    def test_geometry_transforms_come_before_the_joints(self):
        fbx = Fbx()
        mesh = fbx.mesh([A, B, C])
        fbx.model("n", mesh, [vector("GeometricTranslation", (10, 0, 0))])
        joint = fbx.model("joint", None, [vector("Lcl Translation", (0, -5, 0))])
        to_joint = [1.0, 0.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 5.0, 0.0, 1.0]
        fbx.skin(mesh, joint, [0, 1, 2], to_joint)
        for is_binary in (True, False):
            nodes = {node["type"]: inputs_of(node) for node in self.read(fbx, is_binary=is_binary)["nodes"]}
            bound = nodes["skin"]["inverseBind"]["data"]
            self.assertEqual(bound, [1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 10, 5, 0, 1])
            self.assertEqual([e["value"] for e in nodes["skin"]["joints"]["elements"]], ["joint"])
            self.assertEqual(inputs_of(nodes["mesh"]["skin"])["weights"]["data"], [1, 0, 0, 0] * 3)


class Animations(FbxFiles):
    def animated(self, curves, properties=(), name="Lcl Rotation", rest=(0, 0, 0), stack=(), layers=1, more=()):
        fbx = Fbx()
        model = fbx.model("n", fbx.mesh([A, B, C]), properties)
        take = fbx.stack("take", stack)
        for _ in range(layers):
            fbx.animate(fbx.layer(take), model, name, rest, curves, more)
        return fbx

    def pose(self, found, time):
        """The values of the channels of the node at a time, which must be one of their keys."""
        values = {}
        for (_, path), (_, times, rows) in found.items():
            nearest = min(range(len(times)), key=lambda i: abs(times[i] - time))
            self.assertAlmostEqual(times[nearest], time, 5)
            values[path] = rows[nearest]
        return {"n": values}

    def test_turn_about_a_pivot(self):
        # At 45 degrees B, (-1, 2, 0) from the pivot, is at (-3, 1, 0) / sqrt(2) from it.
        fbx = self.animated({"Z": [(0, 0, LINEAR, 0, 0), (1, 90, LINEAR, 0, 0)]}, [vector("RotationPivot", (1, 0, 0))])
        for is_binary in (True, False):
            scene = self.read(fbx, is_binary=is_binary)
            found = channels(scene)
            self.assertEqual(self.lost, [])
            self.assertEqual(set(found), {("n", "translation"), ("n", "rotation")})
            half = math.sqrt(0.5)
            for time, point in ((0, B), (0.5, (1 - 3 * half, half, 0)), (1, (-1, -1, 0))):
                if time == 0.5:
                    found.pop(("n", "rotation"), None)  # it has no key there
                    pose = {"n": {**self.pose(found, time)["n"], "rotation": [0, 0, math.sin(math.pi / 8),
                                                                             math.cos(math.pi / 8)]}}
                else:
                    pose = self.pose(channels(scene), time)
                self.assert_close([World(scene, pose).points()["n"][1]], [point])

    def test_linear_curves_keep_their_keys(self):
        curves = {"Y": [(0, 0, LINEAR, 0, 0), (0.25, 5, LINEAR, 0, 0), (2, 6, LINEAR, 0, 0)]}
        found = channels(self.read(self.animated(curves, name="Lcl Translation", rest=(7, 0, 0))))
        self.assertEqual(found, {("n", "translation"): ("linear", [0, 0.25, 2], [[7, 0, 0], [7, 5, 0], [7, 6, 0]])})

    def test_steps(self):
        curves = {"X": [(0, 1, CONSTANT, 0, 0), (1, 2, CONSTANT, 0, 0), (2, 4, CONSTANT, 0, 0)]}
        found = channels(self.read(self.animated(curves, name="Lcl Scaling", rest=(1, 1, 1))))
        self.assertEqual(found, {("n", "scale"): ("step", [0, 1, 2], [[1, 1, 1], [2, 1, 1], [4, 1, 1]])})

    def test_cubic_curves(self):
        # From 0 to 10 with slopes of 0: 10 (3 t^2 - 2 t^3), at a fifth 1.04. With slopes of 30 and 0, t (1 - t)^2 30
        # is added: 3.84.
        for slope, value in ((0, 1.04), (30, 1.04 + 3.84)):
            curves = {"X": [(0, 0, CUBIC, slope, 0), (1, 10, CUBIC, 0, 0)]}
            for is_binary in (True, False):
                found = channels(self.read(self.animated(curves, name="Lcl Translation"), is_binary=is_binary))
                interpolation, times, rows = found["n", "translation"]
                self.assertEqual((interpolation, len(times)), ("linear", 31))
                self.assertAlmostEqual(self.pose(found, 0.2)["n"]["translation"][0], value, 4)

    def test_automatic_tangents(self):
        # Keys at 0, 1 and 3. In the middle, the slope is the mean of (6 - 0) / 3 = 2 and of the slopes beside, 3 and
        # 1.5, with 2/3 and 1/3: 2.5, that is 2.25. At 0, it is that to the next key, 3. At 0.5 the Hermite polynomial
        # is 3 / 2 + (3 - 2.25) / 8.
        for flags, value in ((AUTOMATIC, 1.59375), (AUTOMATIC + 0x2000, 1.5 + (3 - 2) / 8), (AUTOMATIC + 0x4000, None)):
            curves = {"X": [(0, 0, flags, 0, 0), (1, 3, flags, 0, 0), (3, 6, flags, 0, 0)]}
            found = channels(self.read(self.animated(curves, name="Lcl Translation")))
            if value is None:
                value = 1.5 + (0 - 2.25) / 8  # flat at the ends
            self.assertAlmostEqual(self.pose(found, 0.5)["n"]["translation"][0], value, 5, flags)

    def test_weights_of_tangents(self):
        # Flat tangents of a quarter of the length: at the parameter 0.2 the time is 0.75 u v^2 + 2.25 u^2 v + u^3, with
        # v = 0.8: 0.096 + 0.072 + 0.008 = 0.176, and the value 10 (3 u^2 - 2 u^3) = 1.04. The key after 88 / 0.176 / 30
        # seconds makes that the time of the 88th sample.
        flags = CUBIC + 0x3000000
        curves = {"X": [(0, 0, flags, 0, 0, 0.25), (88 / 0.176 / 30, 10, flags, 0, 0, 0.25)]}
        found = channels(self.read(self.animated(curves, name="Lcl Translation")))
        self.assertAlmostEqual(self.pose(found, 88 / 30)["n"]["translation"][0], 1.04, 4)

    def test_a_whole_turn(self):
        curves = {"Z": [(0, 0, LINEAR, 0, 0), (1, 360, LINEAR, 0, 0)]}
        scene = self.read(self.animated(curves))
        quarter = self.pose(channels(scene), 1 / 3)  # 120 degrees
        self.assert_close([World(scene, quarter).points()["n"][0]], [(-0.5, math.sqrt(0.75), 0)])

    def test_rotation_space(self):
        # At the second key as in the test of pre and post rotations.
        curves = {"Z": [(0, 0, LINEAR, 0, 0), (1, 90, LINEAR, 0, 0)]}
        space = [ACTIVE, vector("PreRotation", (0, 90, 0)), vector("PostRotation", (90, 0, 0))]
        scene = self.read(self.animated(curves, space))
        found = channels(scene)
        self.assertEqual(found["n", "rotation"][1], [0, 1])
        points = World(scene, self.pose(found, 1)).points()["n"]
        self.assert_close(points, [(0, 1, 0), (-2, 0, 0), (0, 0, 3)])

    def test_times_begin_where_the_stack_begins(self):
        ticks = 46186158000
        span = [prop("LocalStart", "KTime", ticks), prop("LocalStop", "KTime", 3 * ticks)]
        curves = {"X": [(0, 0, LINEAR, 0, 0), (4, 8, LINEAR, 0, 0)]}
        scene = self.read(self.animated(curves, name="Lcl Translation", stack=span))
        self.assertEqual(channels(scene), {("n", "translation"): ("linear", [0, 2], [[2, 0, 0], [6, 0, 0]])})
        (take,) = [node for node in scene["nodes"] if node["type"] == "animation"]
        self.assertEqual((take["name"], inputs_of(take)["duration"]["value"]), ("take", 2))

    def test_long_motions_are_sampled_to_their_end(self):
        hours = 12 * 3600
        curves = {"X": [(0, 0, AUTOMATIC, 0, 0), (hours / 2, 10, AUTOMATIC, 0, 0), (hours, 0, AUTOMATIC, 0, 0)]}
        scene = self.read(self.animated(curves, name="Lcl Translation"))
        _, times, _ = channels(scene)["n", "translation"]
        self.assertLessEqual(len(times), 1000002)
        self.assertLess(max(b - a for a, b in zip(times, times[1:])), 0.1)

    def test_what_is_lost(self):
        keys = [(0, 0, LINEAR, 0, 0), (1, 1, LINEAR, 0, 0)]
        self.read(self.animated({"X": keys}, name="Visibility"))
        lost = "vrn: out.json: lost: animations of other properties than translation, rotation and scale: 1 (take)"
        self.assertEqual(self.lost, [lost])
        biased = [(0, 0, AUTOMATIC, 100, 0), (1, 1, AUTOMATIC, 0, 0)]
        self.read(self.animated({"X": biased}))
        self.assertEqual(self.lost, ["vrn: out.json: lost: biases, tension and continuity of tangents of animation "
                                     "curves: 1 (take)"])
        self.read(self.animated({"X": [(1, 0, LINEAR, 0, 0), (0, 1, LINEAR, 0, 0)]}))
        self.assertIn("vrn: out.json: lost: animation curves without valid keys: 1 (take)", self.lost)
        for slopes in ((math.nan, 0), (0, math.inf)):
            self.read(self.animated({"X": [(0, 0, CUBIC, *slopes), (1, 1, CUBIC, 0, 0)]}))
            self.assertIn("vrn: out.json: lost: animation curves without valid keys: 1 (take)", self.lost, slopes)
        for kind, lost in (("C", 0), ("R", 1)):
            more = [element("Post-Extrapolation", children=[element("Type", kind)])]
            for is_binary in (True, False):
                self.read(self.animated({"X": keys}, more=more), is_binary=is_binary)
                self.assertEqual(len(self.lost), lost)
        self.assertEqual(self.lost, ["vrn: out.json: lost: motions beyond the keys of animation curves: 1 (take)"])
        self.read(self.animated({"X": keys}, layers=2))
        self.assertEqual(self.lost, ["vrn: out.json: lost: further layers of animations: 1 (take)"])


class Losses(FbxFiles):
    LOST = "vrn: out.json: lost: "

    def assert_lost(self, fbx, *expected):
        for is_binary in (True, False):
            self.read(fbx, is_binary=is_binary)
            self.assertEqual(self.lost, [self.LOST + loss for loss in expected])

    def triangle(self, *layers):
        fbx = Fbx()
        mesh = fbx.mesh([A, B, C])
        fbx.objects[-1][2].extend(layers)
        fbx.model("n", mesh)
        return fbx

    def test_objects_that_are_not_read(self):
        fbx = self.triangle()
        fbx.object("Geometry", "curve\0\1Geometry", "NurbsCurve", [])
        fbx.object("Geometry", "line\0\1Geometry", "Line", [])
        fbx.object("NodeAttribute", "null\0\1NodeAttribute", "Null", [])
        fbx.object("NodeAttribute", "level\0\1NodeAttribute", "LodGroup", [])
        fbx.object("Audio", "noise\0\1Audio", "", [])
        self.assert_lost(fbx, "objects of type Geometry NurbsCurve: 1 (curve)", "objects of type Geometry Line: 1 (line)",
                         "objects of type NodeAttribute LodGroup: 1 (level)", "objects of type Audio: 1 (noise)")

    def test_models_outside_of_the_scene(self):
        fbx = self.triangle()
        fbx.model("away", parent=12345)
        fbx.model("below", parent=1002)
        self.assert_lost(fbx, "models outside of the scene: 2 (first away)")

    def test_subdivision(self):
        for smoothness, expected in ((0, []), (1, []), (2, ["subdivision of meshes: 1 (shape)"])):
            self.assert_lost(self.triangle(element("Smoothness", smoothness)), *expected)
        self.assert_lost(self.triangle(element("LayerElementEdgeCrease", 0, children=[])),
                         "LayerElementEdgeCrease of meshes: 1 (shape)")

    def test_smoothing_groups(self):
        smoothing = element("LayerElementSmoothing", 0, children=[])
        normals = element("LayerElementNormal", 0, children=[
            element("MappingInformationType", "ByPolygonVertex"), element("ReferenceInformationType", "Direct"),
            element("Normals", Array("d", [0.0, 0.0, 1.0] * 3)),
        ])
        self.assert_lost(self.triangle(smoothing), "LayerElementSmoothing of meshes: 1 (shape)")
        self.assert_lost(self.triangle(smoothing, normals))

    def test_textures_and_properties_of_one_program(self):
        fbx = self.triangle()
        material = fbx.object("Material", "gold\0\1Material", "", [
            element("Version", 102), element("ShadingModel", "phong"),
            element("Properties70", children=[prop("3dsMax|main|shine", "Number", 1.0), prop("Shine", "Number", 1.0)]),
        ])
        fbx.connect(material, 1001)
        for name in ("DiffuseColor", "3dsMax|main|shine_map"):
            texture = fbx.object("Texture", "t\0\1Texture", "", [element("RelativeFilename", "t.png")])
            fbx.connect(texture, material, name)
        self.read(fbx)
        self.assertIn(self.LOST + "textures of other properties of materials: 1 (gold 3dsMax|main|shine_map)", self.lost)
        self.assertIn(self.LOST + "properties of materials that only one program has: 1 (gold 3dsMax|main|shine)",
                      self.lost)

    @staticmethod
    def layer(number, *kinds):
        return element("Layer", number, children=[element("Version", 100), *(
            element("LayerElement", children=[element("Type", kind), element("TypedIndex", number)]) for kind in kinds)])

    def test_roughness_computed_from_a_large_exponent(self):
        materials = element("LayerElementMaterial", 0, children=[
            element("MappingInformationType", "AllSame"), element("ReferenceInformationType", "IndexToDirect"),
            element("Materials", Array("i", [0])),
        ])
        fbx = self.triangle(materials, self.layer(0, "LayerElementMaterial"))
        material = fbx.object("Material", "gold\0\1Material", "", [
            element("Version", 102), element("ShadingModel", "phong"),
            element("Properties70", children=[prop("ShininessExponent", "Number", 400.0)]),
        ])
        fbx.connect(material, 1001)
        scene = self.read(fbx)
        (gold,) = (node for node in scene["nodes"] if node["type"] == "material")
        self.assertEqual(inputs_of(gold)["roughness"]["value"], 0)
        self.assertIn(self.LOST + "numbers of materials out of range (clamped): 1 (gold.roughness)", self.lost)

    def test_names_of_uvsets(self):
        def uvset(number, name):
            return element("LayerElementUV", number, children=[
                element("MappingInformationType", "ByPolygonVertex"), element("ReferenceInformationType", "Direct"),
                element("Name", name), element("UV", Array("d", [0.0, 0.0, 1.0, 0.0, 0.0, 1.0])),
            ])

        layers = [self.layer(number, "LayerElementUV") for number in (0, 1)]
        scene = self.read(self.triangle(uvset(0, "map1"), uvset(1, ""), *layers))
        (mesh,) = (node for node in scene["nodes"] if node["type"] == "mesh")
        names = [inputs_of(uvset)["name"]["value"] for uvset in inputs_of(mesh)["uvsets"]["elements"]]
        self.assertEqual(names, ["map1", "uv1"])
        self.assertEqual(self.lost, [])


class Cameras(FbxFiles):
    def view(self, is_binary, **properties):
        """The aspect and the tangent of half the vertical field of view."""
        fbx = Fbx()
        attribute = fbx.object("NodeAttribute", "eye\0\1NodeAttribute", "Camera", [
            element("TypeFlags", "Camera"),
            element("Properties70", children=[prop(name, "double", float(value)) for name, value in properties.items()]),
        ])
        model = fbx.object("Model", "eye\0\1Model", "Camera", [element("Version", 232), element("Properties70", children=[])])
        fbx.connect(model, 0)
        fbx.connect(attribute, model)
        fbx.model("n", fbx.mesh([A, B, C]))
        (camera,) = [inputs_of(node) for node in self.read(fbx, is_binary=is_binary)["nodes"] if node["type"] == "camera"]
        return camera.get("aspect", {"value": None})["value"], math.tan(math.radians(camera["fov"]["value"]) / 2)

    def test_fields_of_view(self):
        # Film of 2 by 1 inches; a focal length of 1 inch shows it with the tangents 1 and 0.5.
        film = {"FilmWidth": 2, "FilmHeight": 1, "ApertureMode": 3, "FocalLength": 25.4}
        square, wide, wider = ({"AspectWidth": width, "AspectHeight": 100} for width in (100, 200, 400))
        for properties, expected in (
            ({**wide, "ApertureMode": 1, "FieldOfView": 90}, (2, 0.5)),
            ({**wide, "ApertureMode": 2, "FieldOfView": 90}, (2, 1)),
            ({**wide, "FieldOfView": 90}, (2, 1)),
            ({**wide, "ApertureMode": 0, "FieldOfViewX": 40, "FieldOfViewY": 90}, (2, 1)),
            ({**wide, **film}, (2, 0.5)),
            ({**square, **film, "GateFit": 1}, (1, 0.5)),
            ({**square, **film, "GateFit": 2}, (1, 1)),
            ({**square, **film, "GateFit": 3}, (1, 0.5)),
            ({**wider, **film, "GateFit": 3}, (4, 0.25)),
            ({**square, **film, "GateFit": 4}, (1, 1)),
            ({**wider, **film, "GateFit": 4}, (4, 0.5)),
            ({**square, **film, "GateFit": 1, "FilmSqueezeRatio": 2}, (1, 1)),
            ({"AspectRatioMode": 4, "AspectWidth": 2, "AspectHeight": 100, "FieldOfView": 90}, (2, 1)),
            ({"AspectRatioMode": 3, "AspectWidth": 100, "AspectHeight": 0.5, "FieldOfView": 90}, (2, 1)),
        ):
            for is_binary in (True, False):
                with self.subTest(properties, is_binary=is_binary):
                    self.assert_close([self.view(is_binary, **properties)], [expected])

    def test_projections(self):
        for projection, lost in ((0, []), (1, ["orthographic projections of cameras (read as perspective ones): 1 (eye)"])):
            self.view(False, CameraProjectionType=projection)
            self.assertEqual(self.lost, ["vrn: out.json: lost: " + loss for loss in lost])

    def test_views_without_a_size(self):
        for properties in ({"AspectHeight": 0}, {"ApertureMode": 3, "FocalLength": 0}, {"ApertureMode": 3, "FilmWidth": -1}):
            with self.subTest(properties):
                aspect, tangent = self.view(True, **properties)
                self.assertIsNone(aspect)
                self.assertTrue(math.isfinite(tangent))


class Damage(FbxFiles):
    def test_old_text_files_of_another_form(self):
        self.file("old.fbx", "FBXHeaderExtension:  {\n\tFBXVersion: 6100\n}\nObjects {\n}\n")
        result = self.run_here("convert", "old.fbx", "out.json")
        self.assertIn(b"read from version 7.1 on, and this is version 6", result.stderr)
        self.assertEqual(result.returncode, 1)

    def test_other_byte_order(self):
        self.file("in.fbx", b"Kaydara FBX Binary  \0\x1a\1\0\0\x1d\x4c" + bytes(100))
        result = self.run_here("convert", "in.fbx", "out.json")
        message = b"vrn: in.fbx: its numbers begin with the highest byte; save it as text\n"
        self.assertEqual((result.returncode, result.stderr), (1, message))

    def test_values_of_one_byte(self):
        fbx = Fbx()
        fbx.model("n", fbx.mesh([A, B, C]), [prop("Channels", "UByte", 7)])
        fbx.write(self.folder / "in.fbx", is_binary=True)
        content = (self.folder / "in.fbx").read_bytes()
        number = content.index(b"I\7\0\0\0")
        # The three bytes that are left are those of a value of two bytes.
        self.file("in.fbx", content[:number] + b"Z\7" + b"Y\0\0" + content[number + 5:])
        values = content.index(b"\x01PS\x08\0\0\0Channels") - 16
        changed = bytearray((self.folder / "in.fbx").read_bytes())
        changed[values:values + 8] = struct.pack("<Q", 6)
        self.file("in.fbx", bytes(changed))
        self.assertEqual(self.run_here("convert", "in.fbx", "out.json").returncode, 0)

    def test_old_versions(self):
        for is_binary in (True, False):
            Fbx(version=6100).write(self.folder / "old.fbx", is_binary)
            result = self.run_here("convert", "old.fbx", "out.json")
            message = b"FBX files are read from version 7.1 on, and this is version 6; save it as a newer one"
            self.assertEqual((result.returncode, result.stderr), (1, b"vrn: old.fbx: " + message + b"\n"))

    def test_lists_over_several_lines(self):
        fbx = Fbx()
        fbx.model("n", fbx.mesh([A, B, C]), [vector("Lcl Translation", (1, 2, 3))])
        fbx.write(self.folder / "in.fbx", is_binary=False)
        text = (self.folder / "in.fbx").read_text()
        self.file("in.fbx", text.replace('"", "", 1.0, 2.0, 3.0', '"", "",\n; the first\n 1.0\n, 2.0\n ,3.0'))
        self.run_here("convert", "in.fbx", "out.json")
        found = World(json.loads((self.folder / "out.json").read_text())).points()
        self.assert_close(found["n"], [(2, 2, 3), (1, 4, 3), (1, 2, 6)])

    def test_every_cut_ends_with_a_reason(self):
        fbx = Fbx()
        fbx.model("n", fbx.mesh([A, B, C], is_compressed=True))
        for is_binary in (True, False):
            path = self.folder / "whole.fbx"
            fbx.write(path, is_binary)
            content = path.read_bytes()
            for length in range(0, len(content) - 200, 61):
                self.file("cut.fbx", content[:length])
                result = self.run_here("convert", "cut.fbx", "out.json")
                self.assertIn(result.returncode, (0, 1), (length, result.stderr))
                self.assertEqual(result.returncode == 1, b"vrn: cut.fbx: " in result.stderr, (length, result.stderr))


if __name__ == "__main__":
    unittest.main()
