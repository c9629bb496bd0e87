"""The hierarchy, its transforms, and the names of nodes and prims."""

import numpy as np
import pytest
import vrn
from conftest import Trip, close, equal, paths_of
from pxr import Gf, Usd, UsdGeom


def world(stage: Usd.Stage, path: str, time: float | None = None) -> np.ndarray:
    code = Usd.TimeCode.Default() if time is None else Usd.TimeCode(time)
    return np.array(UsdGeom.XformCache(code).GetLocalToWorldTransform(stage.GetPrimAtPath(path)))


def test_scale_then_rotation_then_translation_then_matrix(trip: Trip) -> None:
    text = """
    transform a;
    a.translation = vec3(1 2 3);
    a.rotation = quat(0 0 0.7071067811865476 0.7071067811865476);
    a.scale = vec3(2 1 1);
    a.transform = mat4(1 0 0 0, 0 0 1 0, 0 -1 0 0, 10 0 0 1);
    """
    stage = trip.write(text)
    # (1, 0, 0) is doubled, turned to Y, moved, turned from Y to Z, and moved again.
    close(Gf.Matrix4d(world(stage, "/Root/a").tolist()).Transform(Gf.Vec3d(1, 0, 0)), (11, -3, 4))
    back = trip.round(text)["a"]
    equal(back["translation"], (1, 2, 3))
    equal(back["rotation"], (0, 0, 0.7071067811865476, 0.7071067811865476))
    equal(back["scale"], (2, 1, 1))
    equal(back["transform"], [(1, 0, 0, 0), (0, 0, 1, 0), (0, -1, 0, 0), (10, 0, 0, 1)])


def test_hierarchy_visibility_types_and_extras(trip: Trip) -> None:
    text = r"""
    group g; g.children[0] = a; g.name = "the \"group\"\nof two lines";
    transform a; a.visible = false; a.extras = "{\"a\": [1, 2]}";
    transform b; b.parent = a; b.translation = vec3(0.1 1e-300 1e300);
    """
    stage = trip.write(text)
    assert paths_of(stage) == ["/Root", "/Root/g", "/Root/g/a", "/Root/g/a/b"]
    back = trip.round(text)
    assert (back["b"]["parent"], back["a"]["parent"]) == (back["a"], back["g"])
    assert back["g"].type == "group"
    assert back["g"]["name"] == 'the "group"\nof two lines'
    assert (back["a"]["visible"], back["a"]["extras"]) == (False, '{"a": [1, 2]}')
    equal(back["b"]["translation"], (0.1, 1e-300, 1e300))


def test_names_are_kept(trip: Trip) -> None:
    names = ["a", "A", "_", "_9", "class", "def", "over", "Root", "Materials", "x" * 300, "mesh", "vec3"]
    scene = vrn.Scene()
    for name in names:
        scene.add("transform", name).add("name", "String", f"{name} é\t\u2028\U0001f600")
    assert list(trip.round(scene)) == names
    assert trip.round(scene)["a"]["name"] == "a é\t\u2028\U0001f600"


def test_names_of_meshes_beside_children(trip: Trip) -> None:
    text = """
    mesh m; m.points = vec3f[3] {0 0 0, 1 0 0, 0 1 0};
    instance i; i.geometry = m;
    instance j; j.geometry = m; j.parent = i;
    mesh j_mesh; j_mesh.points = vec3f[3] {0 0 0, 1 0 0, 0 1 0};
    instance k; k.geometry = j_mesh; k.parent = i; k.translation = vec3(1 0 0);
    """
    back = trip.round(text)
    assert sorted(back) == ["i", "j", "j_mesh", "k", "m"]
    assert back["i"]["geometry"] == back["j"]["geometry"] == back["m"]
    assert back["k"]["parent"] == back["i"]


def test_bytes_that_are_not_utf8_are_reported(trip: Trip) -> None:
    scene = vrn.Scene()
    scene.add("transform", "a").add("name", "String", "x\udcff")
    stage = trip.write(scene, ["bytes of texts that are not UTF-8"])
    assert stage.GetPrimAtPath("/Root/a").GetDisplayName() == "x\ufffd"


def test_deep_hierarchies(trip: Trip) -> None:
    count = 1500
    text = "".join(f"transform t{i}; " + (f"t{i}.parent = t{i - 1};\n" if i else "\n") for i in range(count))
    back = trip.round(text, check=False)
    assert len(back) == count
    assert back[f"t{count - 1}"]["parent"] == back[f"t{count - 2}"]


@pytest.mark.parametrize(
    ("text", "loss"),
    [
        ("transform a; a.parent = b; transform b; b.parent = a;", "parents that close a cycle"),
        ("mesh m; transform a; a.parent = m;", "parents without a transform"),
        ("mesh m; transform a; a.children[0] = m;", "children without a transform"),
        ("transform a; a.children[0] = c; transform b; b.children[0] = c; transform c;", "further parents of nodes"),
        ("transform a; a.rotation = quat(0 0 0 2);", "lengths of rotations (set to 1)"),
        ("transform a; a.translation = vec3(nan 0 0);", "numbers that are not finite"),
        ("transform a; a.translation = 5;", "values of the wrong type"),
        ('transform a; a.visible = "no";', "values of the wrong type"),
        ("transform a; a.colour = 5;", "input colour of transform"),
        ("instance a; a.geometry = b; transform b;", "geometries that are not meshes"),
        ("thing a;", "nodes of type thing"),
        ("scene s; s.nodes[0] = a; transform a; transform b;", "nodes outside the scene that is shown first"),
        ("scene s; s.nodes[0] = a; transform a; scene t;", "scenes after the one that is shown first"),
        ("variants v; variants w;", "nodes of type variants"),
        ("instance i; i.instances.translation = vec3f[2] {0 0 0, 1 1 1}; i.instances.scale = vec3f[1] {1 1 1};",
         "instances whose transforms are not finite or differ in number"),
    ],
)  # fmt: skip
def test_losses_of_written_hierarchies(trip: Trip, text: str, loss: str) -> None:
    also = ["meshes with no points"] if text.startswith("mesh m") else []
    also += (
        [f"input instances.{member} of instance" for member in ("translation", "scale")] if "instances." in text else []
    )
    trip.write(text, [loss, *also])


def test_nodes_of_a_cycle_are_written(trip: Trip) -> None:
    text = "transform a; a.parent = b; transform b; b.parent = c; transform c; c.parent = a;"
    assert len(paths_of(trip.write(text, ["parents that close a cycle"]))) == 4


def test_a_scene_node_and_an_asset_come_back(trip: Trip) -> None:
    text = """
    scene s; s.name = "first"; s.default = true; s.nodes[0] = a;
    transform a;
    asset info; info.copyright = "© somebody"; info.fileExtras = "[1]";
    """
    back = trip.round(text)
    assert list(back["s"]["nodes"]) == [back["a"]]
    assert (back["s"]["default"], back["s"]["name"]) == (True, "first")
    assert (back["info"]["copyright"], back["info"]["fileExtras"]) == ("© somebody", "[1]")


# --- stages that others made


def test_metres_and_z_up(trip: Trip, stage: Usd.Stage) -> None:
    UsdGeom.SetStageUpAxis(stage, UsdGeom.Tokens.z)
    UsdGeom.SetStageMetersPerUnit(stage, 0.01)
    UsdGeom.Xform.Define(stage, "/a").AddTranslateOp().Set((0, 0, 100))
    scene = trip.read(stage)
    assert scene["a"]["parent"] == scene["root"]
    again = trip.write(scene)
    close(world(again, f"/Root/{scene['a']['parent'].name}/a")[3, :3], (0, 1, 0))


OPERATIONS = {
    "euler": lambda x: (x.AddTranslateOp().Set((1, 2, 3)), x.AddRotateXYZOp().Set((10, 20, 30)), x.AddScaleOp().Set((1, 2, 3))),
    "pivot": lambda x: (
        x.AddTranslateOp(opSuffix="pivot").Set((1, 0, 0)),
        x.AddRotateZOp().Set(90),
        x.AddTranslateOp(opSuffix="pivot", isInverseOp=True),
    ),
    "matrix": lambda x: x.AddTransformOp().Set(Gf.Matrix4d(1, 2, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 5, 6, 7, 1)),
    "floats": lambda x: (
        x.AddTranslateOp(UsdGeom.XformOp.PrecisionFloat).Set(Gf.Vec3f(0.1, 0.2, 0.3)),
        x.AddOrientOp().Set(Gf.Quatf(0.5, 0.5, 0.5, 0.5)),
    ),
    "wrong order": lambda x: (x.AddScaleOp().Set((1, 2, 3)), x.AddTranslateOp().Set((1, 1, 1))),
    "two": lambda x: (x.AddTranslateOp().Set((1, 0, 0)), x.AddTranslateOp(opSuffix="b").Set((0, 1, 0))),
    "none": lambda x: None,
}  # fmt: skip


@pytest.mark.parametrize("name", OPERATIONS)
def test_operations_of_all_kinds(trip: Trip, stage: Usd.Stage, name: str) -> None:
    OPERATIONS[name](UsdGeom.Xform.Define(stage, "/a"))
    scene = trip.read(stage)
    close(world(trip.write(scene), "/Root/a"), world(stage, "/a"))


def test_digits_of_single_precision(trip: Trip, stage: Usd.Stage) -> None:
    OPERATIONS["floats"](UsdGeom.Xform.Define(stage, "/a"))
    equal(trip.read(stage)["a"]["translation"], (0.1, 0.2, 0.3))


def test_names_of_prims_become_identifiers(trip: Trip) -> None:
    scene = trip.read(
        """
        def Xform "été" { }
        def Xform "a" ( displayName = "x; remove everything;" ) {
            def Xform "a" { }
            def Xform "true" { }
        }
        """
    )
    assert [node.name for node in scene.nodes()] == ["t", "a", "a_2", "true_"]
    assert scene["t"]["name"] == "été"
    assert scene["a"]["name"] == "x; remove everything;"
    assert [node.name for node in vrn.loads(scene.dumps(), strict=True).nodes()] == ["t", "a", "a_2", "true_"]


VARIANTS = """
def Xform "a" ( variantSets = "v"
variants = { string v = "x" }
)
{
    variantSet "v" = {
        "x" {
        }
        "y" {
        }
    }
}
"""


@pytest.mark.parametrize(
    ("text", "losses"),
    [
        ('def Cube "a" { double size = 2\n}', ["prims of type Cube", "property size of Cube"]),
        ('def DomeLight "a" {\n}', ["prims of type DomeLight"]),
        ('def RenderSettings "a" {\n}', ["prims of type RenderSettings"]),
        ('def Xform "a" { custom double b = 1\n}', ["property b of Xform"]),
        ('def Xform "a" { custom rel c = </a>\n}', ["property c of Xform"]),
        ('def Xform "a" (active = false)\n{\n}', ["prims that are not active"]),
        ('def Xform "a" { token purpose = "guide"\n}', ["prims for the purpose guide"]),
        ('def Xform "a" (assetInfo = { string name = "b"\n})\n{\n}', ["metadata assetInfo of Xform"]),
        ('def Xform "a" (customData = { string mine = "b"\n})\n{\n}', ["custom data mine of Xform"]),
        ('def Xform "a" { token visibility.timeSamples = {1: "inherited", 2: "invisible"}\n}',
         ["time samples of visibility of Xform"]),
        ('def Xform "a" { token[] xformOpOrder = ["!resetXformStack!"]\n}',
         ["transforms that do not follow those of the parents"]),
        (VARIANTS,
         ["variants that are not selected"]),
    ],
)  # fmt: skip
def test_losses_of_read_hierarchies(trip: Trip, text: str, losses: list[str]) -> None:
    trip.read(text, losses)
