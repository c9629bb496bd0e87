"""Materials and textures."""

import pathlib

import pytest
import vrn
import vrn.usd
from conftest import Trip, attribute, close, equal, findings, png
from pxr import Gf, Sdf, Usd, UsdGeom, UsdShade

MESH = "mesh m; m.points = vec3f[3] {0 0 0, 1 0 0, 0 1 0}; m.uvsets[0].coords = vec2f[3] {0 0, 1 0, 0 1}; "
SHOWN = MESH + "instance i; i.geometry = m; material a; m.material |= a.outColor; "
TEXTURE = 'texture t; t.file = "maps\\\\my wood.png"; '
INPUTS = "/Root/Materials/a/Surface.inputs:"


@pytest.fixture(autouse=True)
def images(tmp_path: pathlib.Path) -> None:
    (tmp_path / "maps").mkdir()
    (tmp_path / "maps" / "my wood.png").write_bytes(png())
    (tmp_path / "maps" / "other.png").write_bytes(png((1, 2, 3)))


def surface(stage: Usd.Stage, name: str = "a") -> UsdShade.Shader:
    material = UsdShade.Material(stage.GetPrimAtPath(f"/Root/Materials/{name}"))
    return material.ComputeSurfaceSource()[0]


def image_of(stage: Usd.Stage, name: str) -> tuple[UsdShade.Shader, str]:
    """The texture that an input of the surface is connected to, and its channel."""
    source = surface(stage).GetInput(name).GetConnectedSources()[0][0]
    return UsdShade.Shader(source.source.GetPrim()), source.sourceName


def test_numbers(trip: Trip) -> None:
    text = (
        SHOWN
        + """
        a.baseColor = rgba(0.1 0.2 0.3 1); a.metallic = 0.25; a.roughness = 0.05; a.ior = 1.33;
        a.emission.color = rgba(1 2 3 1); a.clearcoat.factor = 0.5; a.clearcoat.roughness = 0.125;
        a.doubleSided = true; a.name = "paint"; a.extras = "7";
        """
    )
    stage = trip.write(text)
    close(attribute(stage, INPUTS + "diffuseColor"), (0.1, 0.2, 0.3))
    close(attribute(stage, INPUTS + "roughness"), 0.05)
    assert attribute(stage, "/Root/i/m.doubleSided") is True
    back = trip.round(text)
    material = back["a"]
    assert back["m"].inputs["material"].connection == material.outputs["outColor"]
    equal(material["baseColor"], (0.1, 0.2, 0.3, 1))
    assert [material[name] for name in ("metallic", "roughness", "ior", "doubleSided")] == [0.25, 0.05, 1.33, True]
    equal(material["emission"]["color"], (1, 2, 3, 1))
    assert (material["clearcoat"]["factor"], material["clearcoat"]["roughness"]) == (0.5, 0.125)
    assert (material["alpha"]["mode"], material["name"], material["extras"]) == ("opaque", "paint", "7")


@pytest.mark.parametrize("text", ["", "a.roughness = 0.5;", "a.metallic = 1.0; a.roughness = 0.0;"])
def test_defaults_differ_between_the_two(trip: Trip, text: str) -> None:
    material = vrn.loads(SHOWN + text)["a"]
    back = trip.round(SHOWN + text)["a"]
    assert back["roughness"] == material.get("roughness", 1.0)
    assert back["metallic"] == material.get("metallic", 0.0)
    equal(back["baseColor"], (1, 1, 1, 1))


@pytest.mark.parametrize(
    ("text", "mode", "alpha", "threshold"),
    [
        ("a.baseColor = rgba(1 1 1 0.5);", "blend", 0.5, None),
        ('a.baseColor = rgba(1 1 1 0.5); a.alpha.mode = "mask";', "mask", 0.5, 0.5),
        ('a.alpha.mode = "mask"; a.alpha.cutoff = 0.3;', "mask", 1, 0.3),
        ('a.alpha.mode = "blend";', "opaque", 1, None),  # of alpha 1 without a map, which looks the same
    ],
)
def test_alpha_modes(trip: Trip, text: str, mode: str, alpha: float, threshold: float | None) -> None:
    stage = trip.write(SHOWN + text)
    if threshold:
        close(attribute(stage, INPUTS + "opacityThreshold"), threshold)
    back = trip.round(SHOWN + text)["a"]
    assert (back["alpha"]["mode"], back["baseColor"].a) == (mode, alpha)
    if threshold:
        assert back["alpha"]["cutoff"] == threshold


MAPS = {
    "baseColorMap": ("diffuseColor", "rgb", "sRGB", "a.baseColor = rgba(0.5 0.25 1 1);", (0.5, 0.25, 1, 1), (0, 0, 0, 0)),
    "normalMap": ("normal", "rgb", "raw", "", (2, 2, 2, 1), (-1, -1, -1, 0)),
    "occlusionMap": ("occlusion", "r", "raw", "a.occlusionStrength = 0.75;", (0.75, 0.75, 0.75, 1), (0.25, 0.25, 0.25, 0)),
    "emission.map": ("emissiveColor", "rgb", "sRGB", "a.emission.color = rgba(1 2 3 1);", (1, 2, 3, 1), (0, 0, 0, 0)),
    "metallicRoughnessMap": ("metallic", "b", "raw", "a.metallic = 0.5; a.roughness = 0.25;", (1, 0.25, 0.5, 1), (0, 0, 0, 0)),
    "clearcoat.map": ("clearcoat", "r", "raw", "a.clearcoat.factor = 0.5;", (0.5, 0.5, 0.5, 1), (0, 0, 0, 0)),
    "clearcoat.roughnessMap": ("clearcoatRoughness", "g", "raw",
                               "a.clearcoat.factor = 1.0; a.clearcoat.roughness = 0.5;", (0.5, 0.5, 0.5, 1), (0, 0, 0, 0)),
}  # fmt: skip


@pytest.mark.parametrize("path", MAPS)
def test_maps(trip: Trip, path: str) -> None:
    target, channel, space, text, scale, bias = MAPS[path]
    text = SHOWN + TEXTURE + f't.wrapU = "mirror"; t.wrapV = "clamp"; a.{path} |= t.outColor; ' + text
    stage = trip.write(text)
    shader, found = image_of(stage, target)
    assert (found, shader.GetInput("sourceColorSpace").Get()) == (channel, space)
    assert shader.GetInput("file").Get().path == "./maps/my wood.png"
    assert (shader.GetInput("wrapS").Get(), shader.GetInput("wrapT").Get()) == ("mirror", "clamp")
    close(shader.GetInput("scale").Get() if shader.GetInput("scale") else (1, 1, 1, 1), scale)
    close(shader.GetInput("bias").Get() if shader.GetInput("bias") else (0, 0, 0, 0), bias)
    original, back = vrn.loads(text), trip.round(text)
    connection = back.get(f"a.{path}")
    assert connection == back["t"].outputs["outColor"]
    assert (back["t"]["file"], back["t"]["wrapU"], back["t"]["wrapV"]) == ("maps/my wood.png", "mirror", "clamp")
    for name in ("baseColor", "metallic", "roughness", "occlusionStrength", "emission.color", "clearcoat.factor"):
        if original.get(f"a.{name}") is not None:
            assert back.get(f"a.{name}") == original.get(f"a.{name}")


def test_alpha_of_maps(trip: Trip) -> None:
    text = SHOWN + TEXTURE + 'a.baseColorMap |= t.outColor; a.alpha.mode = "mask"; a.baseColor = rgba(1 1 1 0.5); '
    stage = trip.write(text)
    color, opacity = image_of(stage, "diffuseColor"), image_of(stage, "opacity")
    assert (color[1], opacity[1]) == ("rgb", "a")
    assert color[0].GetPath() == opacity[0].GetPath()
    back = trip.round(text)
    assert (back.get("a.alpha.mode"), back.get("a.baseColor").a) == ("mask", 0.5)
    other = text + 'texture o; o.file = "maps/other.png"; a.opacityMap |= o.outAlpha; a.alpha.mode = "blend";'
    back = trip.round(other)
    assert back.get("a.opacityMap") == back["o"].outputs["outAlpha"]
    assert back.get("a.baseColorMap") == back["t"].outputs["outColor"]


@pytest.mark.parametrize(
    "xform",
    [
        "offset = vec2(0.25 0.5)",
        "scale = vec2(2 3)",
        "rotation = 90.0",
        "rotation = 30.0; a.baseColorXform.offset = vec2(0.1 0.2); a.baseColorXform.scale = vec2(2 0.5)",
        "uvset = 1u",
    ],
)
def test_transforms_of_textures(trip: Trip, xform: str) -> None:
    text = (
        SHOWN
        + TEXTURE
        + f"m.uvsets[1].coords = vec2f[3] {{0 0, 1 0, 0 1}}; a.baseColorMap |= t.outColor; a.baseColorXform.{xform};"
    )
    original, back = vrn.loads(text), trip.round(text)
    expected = {found.name: found.value for found in original["a"].inputs["baseColorXform"].children}
    found = {entry.name: entry.value for entry in back["a"].inputs["baseColorXform"].children}
    assert found == expected


def test_transforms_of_textures_mean_the_same(trip: Trip) -> None:
    """A point of the image, reached by the rules of both formats."""
    text = (
        SHOWN + TEXTURE + "a.baseColorMap |= t.outColor; a.baseColorXform.rotation = 90.0; "
        "a.baseColorXform.scale = vec2(2 4); a.baseColorXform.offset = vec2(0.1 0.2);"
    )
    stage = trip.write(text)
    place = UsdShade.Shader(stage.GetPrimAtPath("/Root/Materials/a/baseColorMap_place"))
    scale, rotation, translation = (place.GetInput(name).Get() for name in ("scale", "rotation", "translation"))
    s, t = 0.5, 1 - 0.25  # (u, v) is (0.5, 0.25)
    turned = Gf.Rotation(Gf.Vec3d(0, 0, 1), rotation).TransformDir(Gf.Vec3d(s * scale[0], t * scale[1], 0))
    found = (turned[0] + translation[0], 1 - (turned[1] + translation[1]))
    # Scaled to (1, 1), turned by a quarter to (1, -1) as in glTF, and moved.
    close(found, (1.1, -0.8))


def test_textures_are_shared_by_materials(trip: Trip) -> None:
    text = SHOWN + TEXTURE + 'material b; a.baseColorMap |= t.outColor; b.normalMap |= t.outColor; t.name = "wood";'
    back = trip.round(text)
    assert back.get("b.normalMap") == back.get("a.baseColorMap") == back["t"].outputs["outColor"]
    assert back["t"]["name"] == "wood"


def test_overrides_of_instances(trip: Trip) -> None:
    text = SHOWN + "instance j; j.geometry = m; material b; j.material |= b.outColor; b.doubleSided = true;"
    stage = trip.write(text)
    bound = UsdShade.MaterialBindingAPI(stage.GetPrimAtPath("/Root/j/m")).ComputeBoundMaterial()[0]
    assert bound.GetPath() == "/Root/Materials/b"
    back = trip.round(text)
    assert back.get("j.material") == back["b"].outputs["outColor"]
    assert back.get("m.material") == back["a"].outputs["outColor"]
    assert "material" not in back["i"].inputs


def test_embedded_images_are_written_beside_the_stage(trip: Trip, tmp_path: pathlib.Path) -> None:
    scene = vrn.loads(SHOWN + "texture t; a.baseColorMap |= t.outColor;")
    scene["t"].add("encoded", "byte[]", png())
    stage = trip.write(scene)
    assert image_of(stage, "diffuseColor")[0].GetInput("file").Get().path == "./scene_textures/t.png"
    assert (tmp_path / "scene_textures" / "t.png").read_bytes() == png()


def test_packages_contain_their_images(trip: Trip, tmp_path: pathlib.Path) -> None:
    scene = vrn.loads(SHOWN + TEXTURE + "texture e; a.baseColorMap |= t.outColor; a.normalMap |= e.outColor;")
    scene["e"].add("encoded", "byte[]", png((7, 8, 9)))
    back = trip.round(scene, name="scene.usdz")
    assert back["t"]["encoded"].tobytes() == png()
    assert back["e"]["encoded"].tobytes() == png((7, 8, 9))
    assert sorted(path.name for path in tmp_path.iterdir()) == ["maps", "scene.usdz"]


def test_paths_of_textures_follow_the_folder(trip: Trip, tmp_path: pathlib.Path) -> None:
    (tmp_path / "out").mkdir()
    scene = vrn.loads(SHOWN + TEXTURE + "a.baseColorMap |= t.outColor;")
    assert vrn.usd.to_usd(scene, tmp_path / "out" / "a.usda", folder=tmp_path) == ()
    assert findings(tmp_path / "out" / "a.usda") == []
    back, losses = vrn.usd.from_usd(tmp_path / "out" / "a.usda")
    assert (back["t"]["file"], losses) == ("../maps/my wood.png", ())
    assert vrn.usd.to_usd(scene, tmp_path / "out" / "a.usdz", folder=tmp_path) == ()


@pytest.mark.parametrize(
    ("text", "losses"),
    [
        ("a.baseColor = rgba(2 0 0 1);", ["numbers of materials out of range (clamped)"]),
        ("a.roughness = 2.0;", ["numbers of materials out of range (clamped)"]),
        ("a.metallic = 0.123456789123;", ["digits beyond float precision"]),
        ('a.alpha.mode = "glow";', ["unknown alpha modes of materials"]),
        ('a.alpha.mode = "opaque"; a.baseColor = rgba(1 1 1 0.5);', ["alpha of opaque materials"]),
        ('a.alpha.mode = "mask"; a.alpha.cutoff = 0.0;', ["alpha cutoffs of materials that are not positive"]),
        ("a.emission.color = rgba(1 1 1 1); a.emission.strength = 2.0;",
         ["strengths of emission (multiplied into its colour)"]),
        (TEXTURE + "a.normalMap |= t.outColor; a.normalScale = 0.5;", ["scales of normal maps"]),
        ("a.emission.color = rgba(1 0 0 0.5);", ["further components of vectors and colours"]),
        ("a.unlit = true;", ["input unlit of material"]),
        ("a.transmission.factor = 0.5;", ["input transmission.factor of material"]),
        ("texture t; a.baseColorMap |= t.outColor;", ["textures without an image"]),
        (TEXTURE + 'a.baseColorMap |= t.outColor; t.wrapU = "border";', ["unknown wrap modes of textures"]),
        (TEXTURE + "a.baseColorMap |= t.outColor; t.filter = 9729;", ["input filter of texture"]),
        (TEXTURE + "a.baseColorMap |= t.outAlpha;", ["connections to texture outputs other than outColor"]),
        ('texture t; t.file = "a@b.png"; a.baseColorMap |= t.outColor;', ["paths of textures that a stage cannot have"]),
        ("texture t; t.encoded = byte[3] {1 2 3}; a.baseColorMap |= t.outColor;",
         ["encoded images that are not PNG or JPEG"]),
        (TEXTURE + "a.baseColorMap |= t.outColor; t.filter = 0; t.width = 0u;", []),
        (TEXTURE, ["nodes of type texture"]),
        ("material b; b.doubleSided = true;", ["sides of materials without a mesh"]),
        ("transform e; instance f; f.material |= a.outColor;", ["materials of nodes without a mesh"]),
    ],
)  # fmt: skip
def test_losses_of_written_materials(trip: Trip, text: str, losses: list[str]) -> None:
    trip.write(SHOWN + text, losses)


@pytest.mark.parametrize(
    ("scale", "bias", "expected", "losses"),
    [
        ((1, 1, 2, 1), (-0.5, -0.5, -1, 0), 0.5, []),
        ((2, 2, 2, 1), (-1, -1, -1, 0), None, []),
        ((2, -2, 2, 1), (-1, 1, -1, 0), None, ["scales of normal maps"]),
        ((1, 1, 2, 1), (-1, -1, -1, 0), None, ["scales of normal maps"]),
        ((1, 1, 1, 1), (-0.5, -0.5, -0.5, 0), None, ["scales of normal maps"]),
    ],
)
def test_scales_of_normal_maps(
    trip: Trip, scale: tuple[float, ...], bias: tuple[float, ...], expected: float | None, losses: list[str]
) -> None:
    stage = trip.write(SHOWN + TEXTURE + "a.normalMap |= t.outColor;")
    texture = UsdShade.Shader(stage.GetPrimAtPath("/Root/Materials/a/normalMap"))
    texture.GetInput("scale").Set(scale)
    texture.GetInput("bias").Set(bias)
    assert trip.read(stage, losses)["a"].get("normalScale") == expected


def test_missing_images_of_packages(trip: Trip, tmp_path: pathlib.Path) -> None:
    (tmp_path / "maps" / "text.png").write_text("no image")
    text = SHOWN + 'texture t; a.baseColorMap |= t.outColor; t.file = "{}";'
    trip.write(text.replace("{}", "gone.png"), ["image files that cannot be read"], "scene.usdz")
    trip.write(text.replace("{}", "maps/text.png"), ["image files that are not PNG or JPEG"], "scene.usdz")


# --- stages that others made


def network(stage: Usd.Stage) -> tuple[UsdShade.Shader, UsdShade.Shader]:
    """A mesh with a material: its surface and a texture that is connected to nothing."""
    mesh = UsdGeom.Mesh.Define(stage, "/m")
    mesh.CreatePointsAttr([(0, 0, 0), (1, 0, 0), (0, 1, 0)])
    mesh.CreateFaceVertexCountsAttr([3])
    mesh.CreateFaceVertexIndicesAttr([0, 1, 2])
    mesh.CreateSubdivisionSchemeAttr("none")
    for name in ("UVMap", "Other"):
        UsdGeom.PrimvarsAPI(mesh).CreatePrimvar(name, Sdf.ValueTypeNames.TexCoord2fArray, "vertex").Set([(0, 0)] * 3)
    material = UsdShade.Material.Define(stage, "/Looks/a")
    shader = UsdShade.Shader.Define(stage, "/Looks/a/s")
    shader.CreateIdAttr("UsdPreviewSurface")
    material.CreateSurfaceOutput().ConnectToSource(shader.ConnectableAPI(), "surface")
    UsdShade.MaterialBindingAPI.Apply(mesh.GetPrim()).Bind(material)
    reader = UsdShade.Shader.Define(stage, "/Looks/a/r")
    reader.CreateIdAttr("UsdPrimvarReader_float2")
    # The name of the uvset is an input of the material, as some programs have it.
    name = material.CreateInput("frame:uv", Sdf.ValueTypeNames.String)
    name.Set("UVMap")
    reader.CreateInput("varname", Sdf.ValueTypeNames.String).ConnectToSource(name)
    texture = UsdShade.Shader.Define(stage, "/Looks/a/t")
    texture.CreateIdAttr("UsdUVTexture")
    texture.CreateInput("file", Sdf.ValueTypeNames.Asset).Set("maps/my wood.png")
    texture.CreateInput("st", Sdf.ValueTypeNames.Float2).ConnectToSource(reader.ConnectableAPI(), "result")
    return shader, texture


def test_defaults_of_a_surface(trip: Trip, stage: Usd.Stage) -> None:
    network(stage)
    material = trip.read(stage)["a"]
    equal(material["baseColor"], (0.18, 0.18, 0.18, 1))
    assert (material["roughness"], material["metallic"]) == (0.5, 0)


def test_textures_on_named_uvsets(trip: Trip, stage: Usd.Stage) -> None:
    shader, texture = network(stage)
    color = shader.CreateInput("diffuseColor", Sdf.ValueTypeNames.Color3f)
    color.ConnectToSource(texture.ConnectableAPI(), "rgb")
    scene = trip.read(stage)
    assert scene.get("a.baseColorXform.uvset") == 1  # after Other
    assert scene.get("a.baseColorMap").node["file"] == "maps/my wood.png"


@pytest.mark.parametrize(
    ("metallic", "roughness", "losses"),
    [("b", "g", []), ("r", "g", 1), (None, "g", []), ("b", None, 1)],
)
def test_maps_of_metal(
    trip: Trip, stage: Usd.Stage, metallic: str | None, roughness: str | None, losses: list[str] | int
) -> None:
    shader, texture = network(stage)
    for name, channel in (("metallic", metallic), ("roughness", roughness)):
        if channel:
            number = shader.CreateInput(name, Sdf.ValueTypeNames.Float)
            number.ConnectToSource(texture.ConnectableAPI(), channel)
    lost = ["maps of metalness and roughness that are not blue and green of one image"] if losses else []
    scene = trip.read(stage, lost)
    assert ("metallicRoughnessMap" in scene["a"].inputs) is not bool(losses)


def test_losses_of_read_materials(trip: Trip, stage: Usd.Stage) -> None:
    shader, texture = network(stage)
    kinds = Sdf.ValueTypeNames
    shader.CreateInput("useSpecularWorkflow", kinds.Int).Set(1)
    shader.CreateInput("displacement", kinds.Float).Set(1)
    shader.CreateInput("occlusion", kinds.Float).Set(0.5)
    shader.CreateInput("roughness", kinds.Float).Set(float("nan"))
    shader.CreateInput("diffuseColor", kinds.Color3f).ConnectToSource(texture.ConnectableAPI(), "rgb")
    texture.CreateInput("bias", kinds.Float4).Set((0.1, 0, 0, 0))
    texture.CreateInput("wrapS", kinds.Token).Set("black")
    other = UsdShade.Shader.Define(stage, "/Looks/a/o")
    other.CreateIdAttr("UsdPrimvarReader_float3")
    shader.CreateInput("emissiveColor", kinds.Color3f).ConnectToSource(other.ConnectableAPI(), "result")
    plain = UsdShade.Material.Define(stage, "/Looks/b")
    plain.GetPrim().SetDisplayName("no surface")
    trip.read(
        stage,
        [
            "materials without a UsdPreviewSurface",
            "numbers that are not finite",
            "occlusion of materials without a map",
            "property inputs:displacement of Shader",
            "shaders other than UsdUVTexture",
            "specular colours of materials",
            "textures with other channels or a bias",
            "unknown wrap modes of textures",
        ],
    )
