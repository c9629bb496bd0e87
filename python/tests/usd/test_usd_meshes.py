"""Meshes in both directions."""

import numpy as np
import pytest
from conftest import Trip, attribute, close, equal, paths_of
from pxr import Gf, Sdf, Usd, UsdGeom, UsdShade, Vt

SQUARE = """
mesh m;
m.points = vec3f[4] {0 0 0, 1 0 0, 1 1 0, 0 1 0};
m.faceCounts = byte[2] {3 3};
m.faceIndices = int32[6] {0 1 2, 0 2 3};
instance i;
i.geometry = m;
"""


@pytest.mark.parametrize(
    ("faces", "counts", "indices"),
    [
        ("m.faceCounts = int32[1] {4}; m.faceIndices = int32[4] {3 2 1 0};", [4], [3, 2, 1, 0]),
        ("m.triangles = vec3u[2] {0 1 2, 0 2 3};", [3, 3], [0, 1, 2, 0, 2, 3]),
        ("m.indices = uint16[3] {3 1 0};", [3], [3, 1, 0]),
        ('m.indices = uint32[3] {0 1 2}; m.topology = "triangles";', [3], [0, 1, 2]),
    ],
)
def test_all_forms_of_faces_become_the_same(trip: Trip, faces: str, counts: list[int], indices: list[int]) -> None:
    text = f"mesh m; m.points = vec3f[4] {{0 0 0, 1 0 0, 1 1 0, 0 1 0}}; {faces} instance i; i.geometry = m;"
    stage = trip.write(text)
    equal(attribute(stage, "/Root/i/m.faceVertexCounts"), counts)
    equal(attribute(stage, "/Root/i/m.faceVertexIndices"), indices)
    assert attribute(stage, "/Root/i/m.subdivisionScheme") == "none"
    equal(attribute(stage, "/Root/i/m.extent"), [(0, 0, 0), (1, 1, 0)])
    back = trip.round(text)
    assert list(back) == ["i", "m"]
    assert back["i"]["geometry"] == back["m"]
    equal(back["m"]["points"], [(0, 0, 0), (1, 0, 0), (1, 1, 0), (0, 1, 0)])
    equal(back["m"]["indices"] if counts[0] == 3 else back["m"]["faceIndices"], indices)


def test_points_without_indices_are_corners(trip: Trip) -> None:
    back = trip.round("mesh m; m.points = vec3f[3] {0 0 0, 1 0 0, 1 1 0};")
    equal(back["m"]["indices"], [0, 1, 2])
    assert list(back) == ["m"]  # a mesh that no node shows stays one


def test_lines_and_points(trip: Trip) -> None:
    back = trip.round(
        """
        mesh l; l.topology = "lines"; l.points = vec3f[4] {0 0 0, 1 0 0, 2 0 0, 3 0 0}; l.indices = int32[4] {3 2 0 1};
        l.colors = rgbaf[4] {0 0 0 1, 1 0 0 1, 0 1 0 1, 0 0 1 1};
        mesh p; p.topology = "points"; p.points = vec3f[2] {0 0 0, 1 0 0};
        """
    )
    lines = back["l"]
    assert (lines["topology"], back["p"]["topology"]) == ("lines", "points")
    equal(lines["points"][lines["indices"]], [(3, 0, 0), (2, 0, 0), (0, 0, 0), (1, 0, 0)])
    equal(lines["colors"][lines["indices"]][0], (0, 0, 1, 1))
    equal(back["p"]["points"], [(0, 0, 0), (1, 0, 0)])


def test_points_shared_by_lines_are_repeated(trip: Trip) -> None:
    text = 'mesh l; l.topology = "lines"; l.points = vec3f[3] {0 0 0, 1 0 0, 2 0 0}; l.indices = int32[4] {0 1 1 2};'
    back = trip.round(text, ["points shared by lines (repeated)"])
    equal(back["l"]["points"][back["l"]["indices"]], [(0, 0, 0), (1, 0, 0), (1, 0, 0), (2, 0, 0)])


def test_attributes_of_points(trip: Trip) -> None:
    back = trip.round(
        SQUARE
        + """
        m.normals = vec3f[4] {0 0 1, 0 1 0, 1 0 0, 0 0 1};
        m.tangents = vec4f[4] {1 0 0 1, 1 0 0 -1, 1 0 0 1, 0 1 0 1};
        m.colors = rgbaf[4] {0.1 0.2 0.3 0.4, 1 1 1 1, 0 0 0 0, 0.5 0.5 0.5 0.5};
        m.colorsets[0].colors = rgbaf[4] {0 0 1 1, 0 1 0 1, 1 0 0 1, 0 0 0 1};
        m.attributes[0].name = "_heat"; m.attributes[0].values = float[4] {1 2 3 4.5};
        m.attributes[1].name = "_flow"; m.attributes[1].values = vec3f[4] {1 2 3, 4 5 6, 7 8 9, 1 1 1};
        m.attributes[2].name = "_id"; m.attributes[2].values = int32[4] {4 -3 2 1};
        m.uvsets[0].name = "uv0"; m.uvsets[0].coords = vec2f[4] {0 0, 1 0, 1 0.25, 0 0.75};
        m.uvsets[1].name = "lightmap"; m.uvsets[1].coords = vec2f[4] {0 0.5, 1 0, 1 0.25, 0 0.75};
        """
    )["m"]
    equal(back["normals"], [(0, 0, 1), (0, 1, 0), (1, 0, 0), (0, 0, 1)])
    equal(back["tangents"][1], (1, 0, 0, -1))
    equal(back["colors"][0], np.float32((0.1, 0.2, 0.3, 0.4)))
    equal(back["colorsets"][0]["colors"][1], (0, 1, 0, 1))
    assert sorted(entry["name"] for entry in back["attributes"]) == ["_flow", "_heat", "_id"]
    values = {entry["name"]: entry["values"] for entry in back["attributes"]}
    equal(values["_heat"], (1, 2, 3, 4.5))
    equal(values["_flow"][1], (4, 5, 6))
    assert values["_id"].dtype == np.int32
    equal(values["_id"], (4, -3, 2, 1))
    assert [entry["name"] for entry in back["uvsets"]] == ["uv0", "lightmap"]
    equal(back["uvsets"][0]["coords"], [(0, 0), (1, 0), (1, 0.25), (0, 0.75)])
    equal(back["uvsets"][1]["coords"][0], (0, 0.5))


def test_attributes_of_corners(trip: Trip) -> None:
    text = (
        SQUARE
        + """
        m.normals = vec3f[6] {0 0 1, 0 1 0, 1 0 0, 0 0 1, 0 1 0, 1 0 0};
        m.uvsets[0].coords = vec2f[6] {0 0, 0.5 0, 1 0, 0 0.5, 0.5 0.5, 1 0.5};
        m.uvsets[1].coords = vec2f[2] {0 0, 1 1};
        m.uvsets[1].indices = int32[6] {0 1 0 1 0 1};
        """
    )
    stage = trip.write(text)
    mesh = UsdGeom.Mesh(stage.GetPrimAtPath("/Root/i/m"))
    assert mesh.GetNormalsInterpolation() == "faceVarying"
    primvars = UsdGeom.PrimvarsAPI(mesh)
    assert primvars.GetPrimvar("st").GetInterpolation() == "faceVarying"
    equal(primvars.GetPrimvar("st").Get()[1], (0.5, 1))  # v counts from the lower edge
    equal(primvars.GetPrimvar("st1").GetIndices(), [0, 1, 0, 1, 0, 1])
    back = trip.round(text)["m"]
    assert back["normalMode"] == "corner"
    equal(back["normals"][1], (0, 1, 0))
    equal(back["uvsets"][0]["coords"][4], (0.5, 0.5))
    equal(back["uvsets"][1]["coords"], [(0, 0), (1, 1)])
    equal(back["uvsets"][1]["indices"], [0, 1, 0, 1, 0, 1])


def test_subdivision(trip: Trip) -> None:
    text = (
        SQUARE
        + """
        m.subdivision.scheme = "catmullClark";
        m.subdivision.boundary = "edgeOnly";
        m.subdivision.creaseIndices = int32[2] {0 2};
        m.subdivision.creaseLengths = int32[1] {2};
        m.subdivision.creaseSharpnesses = float[1] {2.5};
        m.subdivision.holes = int32[1] {1};
        """
    )
    stage = trip.write(text)
    assert attribute(stage, "/Root/i/m.subdivisionScheme") == "catmullClark"
    assert attribute(stage, "/Root/i/m.interpolateBoundary") == "edgeOnly"
    back = trip.round(text)["m"]["subdivision"]
    assert (back["scheme"], back["boundary"]) == ("catmullClark", "edgeOnly")
    equal(back["creaseIndices"], [0, 2])
    equal(back["creaseSharpnesses"], [2.5])
    equal(back["holes"], [1])


def test_shared_meshes_stay_shared(trip: Trip) -> None:
    text = SQUARE + 'instance j; j.geometry = m; j.translation = vec3(1 2 3); m.name = "the square";'
    stage = trip.write(text)
    assert stage.GetPrimAtPath("/Root/j/m").HasAuthoredReferences()
    back = trip.round(text)
    assert sorted(back) == ["i", "j", "m"]
    assert back["i"]["geometry"] == back["j"]["geometry"] == back["m"]
    assert back["m"]["name"] == "the square"


def test_parts_of_an_instance(trip: Trip) -> None:
    text = SQUARE + "mesh n; n.points = vec3f[3] {0 0 0, 1 0 0, 0 1 0}; i.parts[0] = n;"
    back = trip.round(text)
    assert back["i"]["geometry"] == back["m"]
    assert list(back["i"]["parts"]) == [back["n"]]


def test_repeated_instances(trip: Trip) -> None:
    text = (
        SQUARE
        + """
        i.instances.translation = vec3f[3] {0 0 0, 1 0 0, 2 0 0};
        i.instances.rotation = quatf[3] {0 0 0 1, 0 0 1 0, 0 1 0 0};
        i.instances.scale = vec3f[3] {1 1 1, 2 2 2, -1 2 3};
        """
    )
    stage = trip.write(text)
    instancer = UsdGeom.PointInstancer(stage.GetPrimAtPath("/Root/i/instances"))
    transforms = instancer.ComputeInstanceTransformsAtTime(Usd.TimeCode.Default(), Usd.TimeCode.Default())
    close(transforms[1].Transform(Gf.Vec3d(1, 0, 0)), (-1, 0, 0))
    back = trip.round(text)
    assert sorted(back) == ["i", "m"]
    close(back["i"]["instances"]["translation"], [(0, 0, 0), (1, 0, 0), (2, 0, 0)])
    close(back["i"]["instances"]["rotation"][1], (0, 0, 1, 0))
    rewritten = trip.write(back)
    again = UsdGeom.PointInstancer(rewritten.GetPrimAtPath("/Root/i/instances"))
    moved = again.ComputeInstanceTransformsAtTime(Usd.TimeCode.Default(), Usd.TimeCode.Default())
    close(np.array(moved), np.array(transforms), 1e-5)
    scale = back["i"]["instances"]["scale"][2]  # of a mirror, any two axes may be turned about
    close(abs(scale), (1, 2, 3))
    assert scale.prod() < 0


# --- stages that others made


def define(stage: Usd.Stage, path: str, counts: list[int], indices: list[int], points: int = 4) -> UsdGeom.Mesh:
    mesh = UsdGeom.Mesh.Define(stage, path)
    mesh.CreatePointsAttr(Vt.Vec3fArray([Gf.Vec3f(k, k * k, 0) for k in range(points)]))
    mesh.CreateFaceVertexCountsAttr(counts)
    mesh.CreateFaceVertexIndicesAttr(indices)
    mesh.CreateSubdivisionSchemeAttr("none")
    return mesh


def test_a_mesh_prim_becomes_an_instance_and_a_mesh(trip: Trip, stage: Usd.Stage) -> None:
    mesh = define(stage, "/World/Thing", [4], [0, 1, 2, 3])
    UsdGeom.Xformable(mesh).AddTranslateOp().Set((1, 2, 3))
    UsdGeom.Xform.Define(stage, "/World/Other")
    scene = trip.read(stage)
    assert sorted(scene) == ["Other", "Thing", "Thing_geo", "World"]
    assert scene["Thing"]["geometry"] == scene["Thing_geo"]
    assert tuple(scene["Thing"]["translation"]) == (1, 2, 3)
    assert scene["Thing"]["parent"] == scene["World"]
    assert scene["Thing_geo"]["topology"] == "polygons"


def test_left_handed_faces_are_turned(trip: Trip, stage: Usd.Stage) -> None:
    mesh = define(stage, "/m", [3, 4], [0, 1, 2, 0, 1, 2, 3])
    mesh.CreateOrientationAttr("leftHanded")
    primvar = UsdGeom.PrimvarsAPI(mesh).CreatePrimvar("st", Sdf.ValueTypeNames.TexCoord2fArray, "faceVarying")
    primvar.Set([(k / 8, 1) for k in range(7)])
    node = trip.read(stage)["m_geo"]
    equal(node["faceIndices"], [0, 2, 1, 0, 3, 2, 1])
    equal(node["uvsets"][0]["coords"][:, 0] * 8, [0, 2, 1, 3, 6, 5, 4])


@pytest.mark.parametrize(
    ("interpolation", "count", "of_corners"),
    [("constant", 1, [0] * 6), ("uniform", 2, [0] * 3 + [1] * 3), ("faceVarying", 6, range(6))],
)
def test_colours_of_faces_and_corners_split_points(
    trip: Trip, stage: Usd.Stage, interpolation: str, count: int, of_corners: list[int]
) -> None:
    mesh = define(stage, "/m", [3, 3], [0, 1, 2, 0, 2, 3])
    primvar = UsdGeom.PrimvarsAPI(mesh).CreatePrimvar("displayColor", Sdf.ValueTypeNames.Color3fArray, interpolation)
    primvar.Set([(k / 8, 0, 0) for k in range(count)])
    node = trip.read(stage)["m_geo"]
    corners = node["indices"]
    equal(node["points"][corners][:, 0], [0, 1, 2, 0, 2, 3])
    equal(node["colors"][corners][:, 0] * 8, list(of_corners))
    equal(node["colors"][:, 3], 1)
    assert len(node["points"]) == (4 if interpolation == "constant" else 6)


def test_indexed_primvars_are_read(trip: Trip, stage: Usd.Stage) -> None:
    mesh = define(stage, "/m", [3, 3], [0, 1, 2, 0, 2, 3])
    primvars = UsdGeom.PrimvarsAPI(mesh)
    color = primvars.CreatePrimvar("displayColor", Sdf.ValueTypeNames.Color3fArray, "vertex")
    color.Set([(1, 0, 0), (0, 1, 0)])
    color.SetIndices([0, 1, 1, 0])
    opacity = primvars.CreatePrimvar("displayOpacity", Sdf.ValueTypeNames.FloatArray, "constant")
    opacity.Set([0.5])
    coords = primvars.CreatePrimvar("UVMap", Sdf.ValueTypeNames.Float2Array, "uniform")
    coords.Set([(0.25, 1), (0.5, 1)])
    node = trip.read(stage)["m_geo"]
    equal(node["colors"], [(1, 0, 0, 0.5), (0, 1, 0, 0.5), (0, 1, 0, 0.5), (1, 0, 0, 0.5)])
    equal(node["uvsets"][0]["coords"][:, 0], [0.25] * 3 + [0.5] * 3)
    assert node["uvsets"][0]["name"] == "uv0"


def test_normals_of_corners_that_are_as_many_as_points(trip: Trip, stage: Usd.Stage) -> None:
    mesh = define(stage, "/m", [4], [3, 2, 1, 0])
    mesh.CreateNormalsAttr([(1, 0, 0), (0, 1, 0), (0, 0, 1), (-1, 0, 0)])
    mesh.SetNormalsInterpolation("faceVarying")
    coords = UsdGeom.PrimvarsAPI(mesh).CreatePrimvar("st", Sdf.ValueTypeNames.TexCoord2fArray, "faceVarying")
    coords.Set([(k / 8, 1) for k in range(4)])
    node = trip.read(stage)["m_geo"]
    corners = node["faceIndices"]
    uvset = node["uvsets"][0]
    equal(uvset["coords"][uvset["indices"]][:, 0] * 8, [0, 1, 2, 3])
    equal(node["points"][corners][:, 0], [3, 2, 1, 0])
    equal(node["normals"][corners], [(1, 0, 0), (0, 1, 0), (0, 0, 1), (-1, 0, 0)])


def test_catmull_clark_is_the_default_of_usd(trip: Trip, stage: Usd.Stage) -> None:
    mesh = define(stage, "/m", [4], [0, 1, 2, 3])
    mesh.GetPrim().RemoveProperty("subdivisionScheme")
    assert trip.read(stage)["m_geo"]["subdivision"]["scheme"] == "catmullClark"


def test_subsets_become_parts(trip: Trip, stage: Usd.Stage) -> None:
    mesh = define(stage, "/World/m", [3, 3, 2, 4], [0, 1, 2, 0, 2, 3, 0, 1, 3, 2, 1, 0])
    for name, faces in (("red", [1, 2]), ("blue", [3])):
        material = UsdShade.Material.Define(stage, f"/Looks/{name}")
        shader = UsdShade.Shader.Define(stage, f"/Looks/{name}/s")
        shader.CreateIdAttr("UsdPreviewSurface")
        material.CreateSurfaceOutput().ConnectToSource(shader.ConnectableAPI(), "surface")
        subset = UsdShade.MaterialBindingAPI.Apply(mesh.GetPrim()).CreateMaterialBindSubset(name, faces)
        UsdShade.MaterialBindingAPI.Apply(subset.GetPrim()).Bind(material)
    scene = trip.read(stage, ["faces with fewer than three corners"])
    world = scene["World"]
    parts = [world["geometry"], *world["parts"]]
    assert [part.inputs["material"].connection is not None for part in parts if "material" in part.inputs] == [
        True,
        True,
    ]
    materials = [part.inputs["material"].connection.node.name if "material" in part.inputs else "" for part in parts]
    assert materials == ["", "red", "blue"]
    equal(parts[0]["points"][parts[0]["indices"]][:, 0], [0, 1, 2])
    equal(parts[1]["points"][parts[1]["indices"]][:, 0], [0, 2, 3])
    equal(parts[2]["points"][parts[2]["faceIndices"]][:, 0], [3, 2, 1, 0])


def test_native_instances_share_a_mesh(trip: Trip, stage: Usd.Stage) -> None:
    stage.CreateClassPrim("/Proto")
    define(stage, "/Proto/m", [3], [0, 1, 2])
    for name in "ab":
        prim = UsdGeom.Xform.Define(stage, f"/{name}").GetPrim()
        prim.GetReferences().AddInternalReference("/Proto")
        prim.SetInstanceable(True)
    scene = trip.read(stage)
    assert sorted(scene) == ["a", "b", "m"]
    assert scene["a"]["geometry"] == scene["b"]["geometry"]


def test_point_instancers_with_several_prototypes(trip: Trip, stage: Usd.Stage) -> None:
    instancer = UsdGeom.PointInstancer.Define(stage, "/many")
    define(stage, "/many/p/a", [3], [0, 1, 2])
    second = define(stage, "/many/p/b", [3], [0, 1, 2])
    UsdGeom.Xformable(second).AddTranslateOp().Set((0, 0, 1))
    instancer.CreatePrototypesRel().SetTargets(["/many/p/a", "/many/p/b"])
    instancer.CreateProtoIndicesAttr([0, 1, 0])
    instancer.CreatePositionsAttr([(0, 0, 0), (1, 0, 0), (2, 0, 0)])
    instancer.CreateOrientationsAttr([Gf.Quath(1), Gf.Quath(0, 1, 0, 0), Gf.Quath(1)])
    scene = trip.read(stage)
    assert sorted(scene) == ["a", "a_2", "b", "b_2", "many"]
    instances = {node["geometry"].name: node for node in scene.nodes(type="instance")}
    assert all(node["parent"] == scene["many"] for node in instances.values())
    shown = [node["instances"]["translation"] for node in instances.values()]
    equal(shown[0], [(0, 0, 0), (2, 0, 0)])
    close(shown[1], [(1, 0, -1)])  # turned about X, so the offset of the prototype points down


@pytest.mark.parametrize(
    ("counts", "indices", "loss"),
    [
        ([3], [0, 1, 9], "meshes with indices that are out of range"),
        ([3], [0, 1, -1], "meshes with indices that are out of range"),
        ([4], [0, 1, 2], "meshes with faceVertexCounts that do not sum to the number of faceVertexIndices"),
        ([3, -3], [0, 1, 2], "meshes with faceVertexCounts that do not sum to the number of faceVertexIndices"),
        ([], [], "meshes with no faces"),
    ],
)
def test_invalid_meshes_are_left_out(
    trip: Trip, stage: Usd.Stage, counts: list[int], indices: list[int], loss: str
) -> None:
    define(stage, "/m", counts, indices)
    assert "geometry" not in trip.read(stage, [loss])["m"]


@pytest.mark.parametrize(
    ("text", "loss"),
    [
        ("m.points = vec3f[0] {};", "meshes with no points"),
        ("m.points = vec3f[3] {0 0 0, 1 0 0, inf 0 0};", "meshes with points that are not finite"),
        ("m.points = vec3f[2] {0 0 0, 1 0 0};", "meshes with an incomplete last face"),
        ("m.points = vec3f[3] {0 0 0, 1 0 0, 0 1 0}; m.indices = int32[3] {0 1 3};",
         "meshes with indices that are out of range or not integers"),
        ('m.points = vec3f[3] {0 0 0, 1 0 0, 0 1 0}; m.topology = "soup";', "meshes with an unknown topology"),
        ('m.points = vec3f[3] {0 0 0, 1 0 0, 0 1 0}; m.topology = "polygons";', "meshes with polygons without indices"),
        ("m.points = vec3f[3] {0 0 0, 1 0 0, 0 1 0}; m.faceIndices = int32[3] {0 1 2};",
         "meshes with polygons without valid faceCounts"),
        ("m.points = vec3f[3] {0 0 0, 1 0 0, 0 1 0}; m.faceIndices = int32[3] {0 1 2}; m.faceCounts = int32[1] {4};",
         "meshes with faceCounts that do not sum to the number of faceIndices"),
    ],
)  # fmt: skip
def test_invalid_meshes_are_not_written(trip: Trip, text: str, loss: str) -> None:
    stage = trip.write("mesh m; " + text, [loss])
    assert paths_of(stage) == ["/Root"]


@pytest.mark.parametrize(
    ("text", "loss"),
    [
        ("m.points = vec3d[3] {0 0 0, 1 0 0, 0.1 1 0};", "digits beyond float precision"),
        ("m.points = vec3d[3] {0 0 0, 1 0 0, 1e300 1 0};", "numbers beyond the range of a float"),
        ("m.normals = vec3f[2] {0 0 1, 0 0 1};", "attributes that do not match the points of their mesh"),
        ("m.normals = vec3f[3] {0 0 1, 0 0 1, nan 0 0};", "numbers that are not finite"),
        ("m.colors = int32[3] {1 2 3};", "values of the wrong type"),
        ("m.uvsets[0].coords = vec2f[3] {0 0.1, 0 0.3, 0 1e-9};", "last digits of texture coordinates (v is flipped)"),
        ("m.uvsets[0].coords = vec2f[1] {0 0}; m.uvsets[0].indices = int32[3] {0 0 1};",
         "attributes that do not match the points of their mesh"),
        ('m.attributes[0].name = "heat"; m.attributes[0].values = float[3] {1 2 3};',
         "attributes whose name is not an identifier that starts with _"),
        ('m.attributes[0].name = "_h"; m.attributes[0].values = double[3] {1 2 3};',
         "attributes that are not one to four floats or one integer"),
        ('m.subdivision.scheme = "magic";', "unknown rules of subdivision"),
        ("m.smooth = true;", "input smooth of mesh"),
        ("m.variants[0].variant = 1u;", "variants of meshes without a material or a name"),
        ("m.targets[0].coords = vec2f[3] {0 0, 0 0, 1 1};", "input targets[].coords of mesh"),
    ],
)  # fmt: skip
def test_losses_of_written_meshes(trip: Trip, text: str, loss: str) -> None:
    base = "mesh m; m.points = vec3f[3] {0 0 0, 1 0 0, 0 1 0}; "
    text = text if text.startswith("m.points") else base + text
    losses = [loss] + (["meshes with no points"] if "range" in loss else [])
    trip.write(text if text.startswith("mesh") else "mesh m; " + text, losses)


def test_losses_of_read_meshes(trip: Trip, stage: Usd.Stage) -> None:
    mesh = define(stage, "/m", [3], [0, 1, 2])
    primvars = UsdGeom.PrimvarsAPI(mesh)
    primvars.CreatePrimvar("words", Sdf.ValueTypeNames.StringArray, "vertex").Set(["a"] * 4)
    primvars.CreatePrimvar("short", Sdf.ValueTypeNames.FloatArray, "vertex").Set([1.0])
    primvars.CreatePrimvar("flat", Sdf.ValueTypeNames.FloatArray, "uniform").Set([1.0])
    mesh.GetPrim().CreateAttribute("speed", Sdf.ValueTypeNames.Float).Set(1)
    mesh.CreateVelocitiesAttr([(1, 0, 0)] * 4)
    mesh.CreateDoubleSidedAttr(True)
    mesh.GetPointsAttr().Set([(0, 0, 0)] * 4, 1)
    mesh.GetPointsAttr().Set([(1, 0, 0)] * 4, 2)
    trip.read(
        stage,
        [
            "primvars that are not numbers or vectors",
            "primvars that do not match their mesh",
            "property primvars:flat of Mesh",
            "property speed of Mesh",
            "property velocities of Mesh",
            "sides of meshes without a material",
            "time samples of points of Mesh",
        ],
    )


def test_materials_of_parents_use_the_uvsets_of_the_mesh(trip: Trip, stage: Usd.Stage) -> None:
    mesh = define(stage, "/World/m", [3], [0, 1, 2])
    for name in ("a", "b"):
        primvar = UsdGeom.PrimvarsAPI(mesh).CreatePrimvar(name, Sdf.ValueTypeNames.TexCoord2fArray, "vertex")
        primvar.Set([(0, 0)] * 4)
    material = UsdShade.Material.Define(stage, "/Looks/k")
    shaders = [UsdShade.Shader.Define(stage, f"/Looks/k/{name}") for name in "stv"]
    for shader, kind in zip(shaders, ("UsdPreviewSurface", "UsdUVTexture", "UsdPrimvarReader_float2"), strict=True):
        shader.CreateIdAttr(kind)
    material.CreateSurfaceOutput().ConnectToSource(shaders[0].ConnectableAPI(), "surface")
    color = shaders[0].CreateInput("diffuseColor", Sdf.ValueTypeNames.Color3f)
    color.ConnectToSource(shaders[1].ConnectableAPI(), "rgb")
    shaders[1].CreateInput("file", Sdf.ValueTypeNames.Asset).Set("wood.png")
    shaders[1].CreateInput("st", Sdf.ValueTypeNames.Float2).ConnectToSource(shaders[2].ConnectableAPI(), "result")
    shaders[2].CreateInput("varname", Sdf.ValueTypeNames.String).Set("b")
    UsdShade.MaterialBindingAPI.Apply(stage.GetPrimAtPath("/World")).Bind(material)
    scene = trip.read(stage)
    assert scene.get("World.material") == scene["k"].outputs["outColor"]
    assert scene.get("k.baseColorXform.uvset") == 1


@pytest.mark.parametrize("text", ['m.topology = "";', "m.bounds.max = pos3(1 1 1);", "m.colors = rgbaf[0] {};"])
def test_inputs_without_information_are_not_reported(trip: Trip, text: str) -> None:
    trip.write(SQUARE + text)
