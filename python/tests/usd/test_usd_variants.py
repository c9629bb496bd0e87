"""Variants of a scene are variants of the root prim that bind other materials."""

import vrn
from conftest import Trip, attribute
from pxr import Usd, UsdGeom, UsdShade

TRIANGLE = "points = vec3f[3] {0 0 0 1 0 0 0 1 0};"
SHOES = f"""
variants looks; looks.names[*] = "Midnight Blue"; looks.names[*] = "red"; looks.names[*] = "1 \\"odd\\"";
material plain; material blue; blue.baseColor = rgba(0 0 1); blue.doubleSided = true; material red;
mesh shoe; shoe.{TRIANGLE} shoe.material |= plain.outColor;
shoe.variants[*].variant = 0u; shoe.variants[0].material |= blue.outColor;
shoe.variants[*].variant = 1u; shoe.variants[1].material |= red.outColor;
mesh lace; lace.{TRIANGLE} lace.variants[*].variant = 2u; lace.variants[0].material |= red.outColor;
mesh sole; sole.{TRIANGLE} sole.material |= red.outColor;
instance left; left.geometry = shoe; left.parts[*] = lace; instance right; right.geometry = shoe; instance s; s.geometry = sole;
"""
PATHS = ("/Root/left/shoe", "/Root/right/shoe", "/Root/left/lace", "/Root/s/sole")


def bound(stage: Usd.Stage, variant: str) -> list[str]:
    """The names of the materials of all meshes in a variant of the root."""
    stage.GetPrimAtPath("/Root").GetVariantSet("materials").SetVariantSelection(variant)
    found = [UsdShade.MaterialBindingAPI(stage.GetPrimAtPath(path)).ComputeBoundMaterial()[0] for path in PATHS]
    return [material.GetPrim().GetName() if material else "" for material in found]


def variants_of(mesh: vrn.Node) -> list[tuple[object, str]]:
    if "variants" not in mesh.inputs:
        return []
    entries = mesh.inputs["variants"].children
    return [(entry["variant"], entry.children["material"].connection.node.name) for entry in entries]


def test_variants_bind_materials(trip: Trip) -> None:
    stage = trip.write(SHOES)
    sets = stage.GetPrimAtPath("/Root").GetVariantSet("materials")
    assert sets.GetVariantSelection() == "default"
    assert sorted(sets.GetVariantNames()) == ["Midnight_Blue", "___odd_", "default", "red"]
    assert bound(stage, "default") == ["plain", "plain", "", "red"]
    assert attribute(stage, "/Root/left/shoe.doubleSided") is False
    assert bound(stage, "Midnight_Blue") == ["blue", "blue", "", "red"]
    assert attribute(stage, "/Root/left/shoe.doubleSided") is True
    assert bound(stage, "red") == ["red", "red", "", "red"]
    assert bound(stage, "___odd_") == ["plain", "plain", "red", "red"]


def test_variants_come_back(trip: Trip) -> None:
    scene = trip.round(SHOES)
    assert [entry.value for entry in scene["looks"].inputs["names"].children] == ["Midnight Blue", "red", '1 "odd"']
    assert variants_of(scene["shoe"]) == [(0, "blue"), (1, "red")]
    assert variants_of(scene["lace"]) == [(2, "red")]
    assert variants_of(scene["sole"]) == []
    assert scene["shoe"].inputs["material"].connection.node.name == "plain"
    assert [node.name for node in scene.nodes(type="material") if node.get("doubleSided")] == ["blue"]
    again = trip.round(scene)
    assert vrn.diff(scene, again) == []


def test_names_of_variants_are_unique(trip: Trip) -> None:
    scene = trip.round('variants v; v.names[*] = "default"; v.names[*] = "a b"; v.names[*] = "a_b"; v.names[*] = "";')
    assert [entry.value for entry in scene["v"].inputs["names"].children] == ["default", "a b", "a_b", ""]


def test_variants_without_a_material_or_a_name_are_lost(trip: Trip) -> None:
    mesh = f"mesh m; m.{TRIANGLE} material a; "
    what = "variants of meshes without a material or a name"
    trip.write(mesh + "m.variants[*].variant = 0u; m.variants[0].material |= a.outColor;", [what])
    trip.write('variants v; v.names[*] = "x"; ' + mesh + "m.variants[*].variant = 0u;", [what])
    twice = "m.variants[*].variant = 0u; m.variants[0].material |= a.outColor; "
    twice += "m.variants[*].variant = 0u; m.variants[1].material |= b.outColor;"
    trip.write('variants v; v.names[*] = "x"; material b; ' + mesh + twice, ["further materials of a mesh in a variant"])
    trip.write('variants v; v.names[*] = "x"; variants w; w.names[*] = "y";', ["nodes of type variants"])


def stage_with_variants(stage: Usd.Stage) -> Usd.VariantSet:
    root = UsdGeom.Xform.Define(stage, "/Shoe").GetPrim()
    stage.SetDefaultPrim(root)
    mesh = UsdGeom.Mesh.Define(stage, "/Shoe/m")
    mesh.CreatePointsAttr([(0, 0, 0), (1, 0, 0), (0, 1, 0)])
    mesh.CreateFaceVertexCountsAttr([3])
    mesh.CreateFaceVertexIndicesAttr([0, 1, 2])
    mesh.CreateSubdivisionSchemeAttr("none")
    made = root.GetVariantSets().AddVariantSet("materials")
    for name in ("blue", "red"):
        material = UsdShade.Material.Define(stage, f"/Shoe/{name}")
        shader = UsdShade.Shader.Define(stage, f"/Shoe/{name}/Surface")
        shader.CreateIdAttr("UsdPreviewSurface")
        material.CreateSurfaceOutput().ConnectToSource(shader.ConnectableAPI(), "surface")
        made.AddVariant(name)
        made.SetVariantSelection(name)
        with made.GetVariantEditContext():
            UsdShade.MaterialBindingAPI.Apply(mesh.GetPrim()).Bind(material)
    return made


def test_variants_of_other_stages(trip: Trip, stage: Usd.Stage) -> None:
    stage_with_variants(stage)
    scene = trip.read(stage)
    mesh = scene.nodes(type="mesh")[0]
    assert mesh.inputs["material"].connection.node.name == "red"
    assert [entry.value for entry in scene["variants"].inputs["names"].children] == ["blue", "red"]
    assert variants_of(mesh) == [(0, "blue")]


def test_variants_of_more_than_materials_are_lost(trip: Trip, stage: Usd.Stage) -> None:
    made = stage_with_variants(stage)
    with made.GetVariantEditContext():
        UsdGeom.Imageable(stage.GetPrimAtPath("/Shoe/m")).MakeInvisible()
    scene = trip.read(stage, ["variants that are not selected"])
    assert "variants" not in scene and scene.nodes(type="mesh")[0].inputs["material"].connection.node.name == "red"
