"""Skins, morph targets and animations."""

import numpy as np
import pytest
import vrn
from conftest import Trip, close, equal
from pxr import Gf, Sdf, Usd, UsdGeom, UsdSkel

SKIN = """
mesh m; m.points = vec3f[3] {0 0 0, 0 1 0, 0 2 0};
m.skin.joints = vec4u[3] {0 1 0 0, 1 0 0 0, 1 0 0 0};
m.skin.weights = vec4f[3] {1 0 0 0, 0.5 0.5 0 0, 1 0 0 0};
instance i; i.geometry = m; i.skin = s;
transform rig; rig.translation = vec3(0 0 3);
transform lower; lower.parent = rig;
transform between; between.parent = lower; between.translation = vec3(0 0.25 0);
transform upper; upper.parent = between; upper.translation = vec3(0 0.75 0);
transform hat; hat.parent = upper; hat.translation = vec3(0 1 0);
skin s; s.joints[0] = upper; s.joints[1] = lower; s.skeleton = rig;
s.inverseBind = mat4f[2] {1 0 0 0 0 1 0 0 0 0 1 0 0 -1 0 1, 1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1};
"""
TURN = """
animation turn; turn.loop = true; turn.name = "a turn";
turn.channels[0].target = upper; turn.channels[0].path = "rotation"; turn.channels[0].interpolation = "linear";
turn.channels[0].times = float[2] {0.1 0.7};
turn.channels[0].values = quatf[2] {0 0 0 1, 0 0 1 0};
turn.channels[1].target = rig; turn.channels[1].path = "translation"; turn.channels[1].interpolation = "step";
turn.channels[1].times = float[3] {0 0.5 1};
turn.channels[1].values = vec3f[3] {0 0 0, 1 2 3, 4 5 6};
"""


def skinned(stage: Usd.Stage, path: str, time: float) -> np.ndarray:
    """The points of a mesh as OpenUSD moves them, in the world."""
    root = UsdSkel.Root(stage.GetPrimAtPath("/Root")) or UsdSkel.Root(stage.GetPrimAtPath("/rig"))
    cache = UsdSkel.Cache()
    cache.Populate(root, Usd.PrimDefaultPredicate)
    mesh = stage.GetPrimAtPath(path)
    query = cache.GetSkinningQuery(mesh)
    skeleton = UsdSkel.BindingAPI(mesh).GetInheritedSkeleton()
    pose = cache.GetSkelQuery(skeleton)
    matrices = pose.ComputeSkinningTransforms(time)
    points = UsdGeom.PointBased(mesh).GetPointsAttr().Get()
    assert query.ComputeSkinnedPoints(matrices, points, time)
    world = UsdGeom.XformCache(time).GetLocalToWorldTransform(skeleton.GetPrim())
    return np.array([world.Transform(Gf.Vec3d(point)) for point in points])


def test_skins_move_points_where_the_scene_does(trip: Trip) -> None:
    stage = trip.write(SKIN)
    close(skinned(stage, "/Root/i/m", 0), [(0, 0, 3), (0, 1, 3), (0, 2, 3)])
    # At the end, the upper joint is turned by half a turn about Z, and the rig is elsewhere.
    stage = trip.write(SKIN + TURN)
    points = skinned(stage, "/Root/i/m", 24.0)
    close(points, [(4, 7, 6), (4, 6, 6), (4, 7, 6)], 1e-3)


def test_skins_come_back(trip: Trip) -> None:
    original = vrn.loads(SKIN)
    back = trip.round(SKIN)
    assert sorted(back) == sorted(original)
    assert [joint.name for joint in back["s"]["joints"]] == ["upper", "lower"]
    assert (back["i"]["skin"], back["s"]["skeleton"]) == (back["s"], back["rig"])
    assert back["hat"]["parent"] == back["upper"]
    equal(back["s"]["inverseBind"], original["s"]["inverseBind"])
    equal(back["m"]["skin"]["joints"], original["m"]["skin"]["joints"])
    equal(back["m"]["skin"]["weights"], original["m"]["skin"]["weights"])


def test_eight_joints_of_a_point(trip: Trip) -> None:
    text = SKIN + (
        "m.skin.more[0].joints = vec4u[3] {1 1 1 1, 0 0 0 0, 1 0 1 0}; "
        "m.skin.more[0].weights = vec4f[3] {0 0 0 1, 0 1 0 0, 0 0 1 0};"
    )
    back = trip.round(text)["m"]["skin"]["more"][0]
    equal(back["joints"], [(1, 1, 1, 1), (0, 0, 0, 0), (1, 0, 1, 0)])
    equal(back["weights"], [(0, 0, 0, 1), (0, 1, 0, 0), (0, 0, 1, 0)])


def test_animations_come_back(trip: Trip) -> None:
    original, back = vrn.loads(SKIN + TURN), trip.round(SKIN + TURN)
    assert back["turn"]["name"] == "a turn"
    assert (back["turn"]["loop"], back["turn"]["duration"], back["turn"]["channelCount"]) == (True, 1, 2)
    found = {entry["target"].name: entry for entry in back["turn"]["channels"]}
    for entry in original["turn"]["channels"]:
        other = found[entry["target"].name]
        assert (other["path"], other["interpolation"]) == (entry["path"], entry["interpolation"])
        equal(other["times"], entry["times"])
        equal(other["values"], entry["values"])


def test_steps_stay_until_the_next_key(trip: Trip) -> None:
    stage = trip.write(SKIN + TURN)
    rig = UsdGeom.Xformable(stage.GetPrimAtPath("/Root/rig"))
    close(rig.GetLocalTransformation(11.9).ExtractTranslation(), (0, 0, 0))
    close(rig.GetLocalTransformation(12).ExtractTranslation(), (1, 2, 3))
    assert (stage.GetStartTimeCode(), stage.GetEndTimeCode(), stage.GetTimeCodesPerSecond()) == (0, 24, 24)


def test_cubic_splines_are_sampled(trip: Trip) -> None:
    text = """
    transform a; animation n;
    n.channels[0].target = a; n.channels[0].path = "translation"; n.channels[0].interpolation = "cubic";
    n.channels[0].times = float[2] {0 2};
    n.channels[0].values = vec3f[6] {0 0 0, 0 0 0, 1 0 0, 0 0 0, 1 0 0, 0 0 0};
    """
    stage = trip.write(text, ["tangents of animation channels (sampled 30 times a second)"])
    a = UsdGeom.Xformable(stage.GetPrimAtPath("/Root/a"))
    for seconds in (0, 0.5, 1, 2):
        u = seconds / 2
        expected = (u**3 - 2 * u**2 + u) * 2 * 1 + (3 * u**2 - 2 * u**3) * 1
        close(a.GetLocalTransformation(seconds * 24).ExtractTranslation()[0], expected, 1e-3)


MORPH = """
mesh m; m.points = vec3f[3] {0 0 0, 1 0 0, 0 1 0};
m.targets[0].name = "smile"; m.targets[0].points = vec3f[3] {0 0 1, 0 0 0, 0 0 0};
m.targets[1].name = "a frown!"; m.targets[1].points = vec3f[3] {0 0 0, 0 0 2, 0 0 0};
m.targets[1].normals = vec3f[3] {0 1 0, 0 0 0, 0 0 0};
instance i; i.geometry = m; i.weights = float[2] {0.5 0.25};
"""


def test_morph_targets(trip: Trip) -> None:
    back = trip.round(MORPH)
    targets = back["m"]["targets"]
    assert [target["name"] for target in targets] == ["smile", "a frown!"]
    equal(targets[0]["points"], [(0, 0, 1), (0, 0, 0), (0, 0, 0)])
    equal(targets[1]["normals"][0], (0, 1, 0))
    equal(back["i"]["weights"], (0.5, 0.25))


@pytest.mark.parametrize("interpolation", ["linear", "step"])
def test_animated_weights(trip: Trip, interpolation: str) -> None:
    text = (
        MORPH
        + f"""
    instance j; j.geometry = m; j.weights = float[2] {{1 0}};
    animation n; n.channels[0].target = i; n.channels[0].path = "weights";
    n.channels[0].interpolation = "{interpolation}";
    n.channels[0].times = float[3] {{0 1 2}}; n.channels[0].values = float[6] {{0 0, 0.5 1, 0.25 0}};
    """
    )
    back = trip.round(text)
    channel = back["n"]["channels"][0]
    assert (channel["target"], channel["interpolation"]) == (back["i"], interpolation)
    equal(channel["values"], (0, 0, 0.5, 1, 0.25, 0))
    equal(channel["times"], (0, 1, 2))
    equal(back["j"]["weights"], (1, 0))


def test_weights_of_meshes_of_one_skin(trip: Trip) -> None:
    text = (
        SKIN
        + """
    m.targets[0].name = "t"; m.targets[0].points = vec3f[3] {1 0 0, 1 0 0, 1 0 0};
    i.weights = float[1] {0.5};
    instance k; k.geometry = m; k.skin = s; k.weights = float[1] {0.25};
    """
    )
    back = trip.round(text)
    equal(back["i"]["weights"], [0.5])
    equal(back["k"]["weights"], [0.25])
    assert back["k"]["geometry"] == back["i"]["geometry"]


def test_animated_weights_of_one_skin(trip: Trip) -> None:
    text = (
        SKIN
        + """
    m.targets[0].name = "t"; m.targets[0].points = vec3f[3] {1 0 0, 1 0 0, 1 0 0};
    instance k; k.geometry = m; k.skin = s;
    animation n;
    n.channels[0].target = i; n.channels[0].path = "weights";
    n.channels[0].times = float[2] {0 2}; n.channels[0].values = float[2] {0 1};
    n.channels[1].target = k; n.channels[1].path = "weights";
    n.channels[1].times = float[2] {1 3}; n.channels[1].values = float[2] {1 0.5};
    """
    )
    back = trip.round(text)
    found = {entry["target"].name: entry for entry in back["n"]["channels"]}
    equal(found["i"]["times"], (0, 1, 2, 3))
    close(found["i"]["values"], (0, 0.5, 1, 1))
    close(found["k"]["values"], (1, 1, 0.75, 0.5))


CHANNEL = 'transform a; animation n; n.channels[0].target = a; n.channels[0].path = "scale"; '


@pytest.mark.parametrize(
    ("text", "loss"),
    [
        ("animation n;", "animations without channels"),
        (CHANNEL, "animation channels with times that are missing, negative or not increasing"),
        (CHANNEL + "n.channels[0].times = float[2] {1 0}; n.channels[0].values = vec3f[2] {1 1 1, 2 2 2};",
         "animation channels with times that are missing, negative or not increasing"),
        (CHANNEL + "n.channels[0].times = float[2] {0 1}; n.channels[0].values = vec3f[1] {1 1 1};",
         "animation channels with values that do not match the times and the path"),
        (CHANNEL + 'n.channels[0].interpolation = "magic";', "animation channels with an unknown interpolation"),
        (CHANNEL + 'n.channels[0].path = "colour";',
         "animation channels with a path other than those of transforms and weights"),
        (CHANNEL + "remove a;", "animation channels with a missing target or one without a transform"),
        (CHANNEL + "n.channels[0].times = float[1] {0}; n.channels[0].values = vec3f[1] {1 1 1}; "
         'n.channels[1].target = a; n.channels[1].path = "scale"; '
         "n.channels[1].times = float[1] {0}; n.channels[1].values = vec3f[1] {1 1 1};",
         "animation channels with the target and path of an earlier channel"),
        (CHANNEL + "n.channels[0].times = float[1] {0}; n.channels[0].values = vec3f[1] {1 1 1}; animation o;",
         "animations after the first one"),
        (SKIN + "m.skin.joints = vec4u[2] {0 0 0 0, 0 0 0 0};", "joints that are not four integers per point"),
        (SKIN + "m.skin.joints = vec4u[3] {70000 0 0 0, 0 0 0 0, 0 0 0 0};",
         "joints of meshes with numbers above 65535"),
        (SKIN + "m.skin.joints = vec4u[3] {7 0 0 0, 0 0 0 0, 0 0 0 0};",
         "skins with fewer joints than the mesh uses"),
        (SKIN + "s.joints[1] = upper;", "skins with duplicate joints"),
        (SKIN + "s.joints[1] = m;", "skins with joints without a transform"),
        (SKIN + "s.inverseBind = mat4f[1] {1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1};",
         "skins with inverseBind matrices that do not match the joints, or have no inverse"),
        (SKIN + "m.skin.weights = vec4f[0] {}; m.skin.joints = vec4u[0] {};", "skins on nodes whose mesh has no weights"),
        (MORPH + "i.weights = float[1] {1};", "weights that do not match the morph targets"),
        (MORPH + "m.targets[0].points = vec3f[1] {1 1 1};", "attributes that do not match the points of their mesh"),
    ],
)  # fmt: skip
def test_losses_of_written_skins_and_animations(trip: Trip, text: str, loss: str) -> None:
    # A skin that no mesh can use is lost itself, too.
    also = ["skins on nodes whose mesh has no weights"] if loss.startswith("joints ") else []
    unused = loss == "skins on nodes whose mesh has no weights" or also
    trip.write(text, [loss, *also, *(["nodes of type skin"] if unused else [])])


# --- stages that others made


def rig(stage: Usd.Stage) -> tuple[UsdGeom.Mesh, UsdSkel.Skeleton, UsdSkel.Animation]:
    UsdSkel.Root.Define(stage, "/rig")
    mesh = UsdGeom.Mesh.Define(stage, "/rig/m")
    mesh.CreatePointsAttr([(0, 0, 0), (0, 1, 0), (0, 2, 0)])
    mesh.CreateFaceVertexCountsAttr([3])
    mesh.CreateFaceVertexIndicesAttr([0, 1, 2])
    mesh.CreateSubdivisionSchemeAttr("none")
    skeleton = UsdSkel.Skeleton.Define(stage, "/rig/skel")
    skeleton.AddTranslateOp().Set((0, 0, 5))
    skeleton.CreateJointsAttr(["hip", "hip/knee"])
    up = Gf.Matrix4d().SetTranslate((0, 1, 0))
    skeleton.CreateBindTransformsAttr([Gf.Matrix4d(1), up])
    skeleton.CreateRestTransformsAttr([Gf.Matrix4d(1), up])
    binding = UsdSkel.BindingAPI.Apply(mesh.GetPrim())
    binding.CreateSkeletonRel().SetTargets(["/rig/skel"])
    binding.CreateJointIndicesPrimvar(False, 2).Set([0, 1, 0, 1, 1, 0])
    binding.CreateJointWeightsPrimvar(False, 2).Set([1, 0, 0.5, 0.5, 1, 0])
    binding.CreateGeomBindTransformAttr(Gf.Matrix4d(1))
    animation = UsdSkel.Animation.Define(stage, "/rig/anim")
    UsdSkel.BindingAPI.Apply(skeleton.GetPrim()).CreateAnimationSourceRel().SetTargets(["/rig/anim"])
    return mesh, skeleton, animation


def test_joints_become_nodes(trip: Trip, stage: Usd.Stage) -> None:
    rig(stage)
    scene = trip.read(stage)
    skin = next(iter(scene.nodes(type="skin")))
    assert [joint.name for joint in skin["joints"]] == ["hip", "knee"]
    assert (scene["knee"]["parent"], scene["hip"]["parent"]) == (scene["hip"], scene["skel"])
    equal(scene["knee"]["translation"], (0, 1, 0))
    equal(skin["inverseBind"][1][3], (0, -1, 0, 1))
    mesh = next(iter(scene.nodes(type="mesh")))
    equal(mesh["skin"]["joints"], [(0, 1, 0, 0), (0, 1, 0, 0), (1, 0, 0, 0)])
    again = trip.write(scene)
    path = str(next(prim.GetPath() for prim in again.Traverse() if prim.IsA(UsdGeom.Mesh)))
    close(skinned(again, path, 0), skinned(stage, "/rig/m", 0))


def test_poses_become_channels(trip: Trip, stage: Usd.Stage) -> None:
    _, _, animation = rig(stage)
    animation.CreateJointsAttr(["hip/knee"])
    for time, turned in ((0, Gf.Quatf(1)), (48, Gf.Quatf(0, 0, 0, 1))):
        animation.CreateTranslationsAttr().Set([(0, 1, 0)], time)
        animation.CreateRotationsAttr().Set([turned], time)
        animation.CreateScalesAttr().Set([(1, 1, 1)], time)
    scene = trip.read(stage)
    (entry,) = scene["animation"]["channels"]
    assert (entry["target"], entry["path"]) == (scene["knee"], "rotation")
    equal(entry["times"], (0, 2))
    equal(entry["values"], [(0, 0, 0, 1), (0, 0, 1, 0)])


def test_sparse_blend_shapes(trip: Trip, stage: Usd.Stage) -> None:
    mesh, _, animation = rig(stage)
    shape = UsdSkel.BlendShape.Define(stage, "/rig/m/smile")
    shape.CreateOffsetsAttr([(1, 0, 0)])
    shape.CreatePointIndicesAttr([2])
    binding = UsdSkel.BindingAPI(mesh.GetPrim())
    binding.CreateBlendShapesAttr(["smile"])
    binding.CreateBlendShapeTargetsRel().SetTargets(["/rig/m/smile"])
    animation.CreateBlendShapesAttr(["other", "smile"])
    animation.CreateBlendShapeWeightsAttr([0.1, 0.75])
    scene = trip.read(stage)
    node = next(iter(scene.nodes(type="mesh")))
    equal(node["targets"][0]["points"], [(0, 0, 0), (0, 0, 0), (1, 0, 0)])
    instance = next(iter(scene.nodes(type="instance")))
    equal(instance["weights"], [0.75])


def test_rotations_about_axes_are_sampled(trip: Trip, stage: Usd.Stage) -> None:
    a = UsdGeom.Xform.Define(stage, "/a")
    turn = a.AddRotateZOp()
    for time, angle in ((0, 0), (24, 350)):
        turn.Set(angle, time)
    scene = trip.read(stage)
    (entry,) = scene["animation"]["channels"]
    assert len(entry["times"]) == 31
    quaternion = entry["values"][15]  # in the middle, at 175 degrees
    close(abs(quaternion[2]), np.sin(np.radians(175 / 2)), 1e-5)
    # No sign changes on the way: programs that do not take the shorter way turn the same.
    assert ((entry["values"][1:] * entry["values"][:-1]).sum(1) > 0).all()


@pytest.mark.parametrize(
    ("change", "losses"),
    [
        (lambda m, s, a: s.CreateRestTransformsAttr([]),
         ["skeletons with rest transforms that do not match the joints"]),
        (lambda m, s, a: s.CreateBindTransformsAttr([]), ["skeletons whose joints and bind transforms do not match"]),
        (lambda m, s, a: UsdSkel.BindingAPI(m).CreateJointsAttr(["nose"]),
         ["skeletons whose joints and bind transforms do not match"]),
        (lambda m, s, a: UsdSkel.BindingAPI(m).GetJointIndicesPrimvar().Set([0, 1]),
         ["joints and weights that do not match the points of their mesh"]),
        (lambda m, s, a: (a.CreateJointsAttr(["hip"]), a.CreateScalesAttr([(1, 1, 1)] * 2)),
         ["poses that do not match the joints"]),
        (lambda m, s, a: UsdSkel.BindingAPI(m).CreateBlendShapeTargetsRel().SetTargets(["/rig/gone"]),
         ["blend shapes whose names and targets differ in number"]),
        (lambda m, s, a: m.GetPrim().CreateAttribute("primvars:skel:skinningMethod", Sdf.ValueTypeNames.Token).Set(
            "dualQuaternion"), ["skinning methods other than linear blends"]),
    ],
)  # fmt: skip
def test_losses_of_read_skeletons(trip: Trip, stage: Usd.Stage, change: object, losses: list[str]) -> None:
    change(*rig(stage))
    trip.read(stage, losses)
