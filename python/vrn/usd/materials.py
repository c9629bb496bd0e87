"""Materials: nodes of the metallic-roughness model, and networks with a UsdPreviewSurface."""

from __future__ import annotations

import math
from dataclasses import dataclass
from typing import TYPE_CHECKING, Any

import numpy as np
from pxr import Gf, Sdf, Usd, UsdShade

import vrn

from .authored import Authored
from .given import FURTHER, Given
from .keys import KEPT, NAME
from .meshes import uvset_name
from .names import text_for_usd
from .numbers import DIGITS, shortest, shortest_of, single
from .textures import read_image

if TYPE_CHECKING:
    from .reading import Reader
    from .writing import Writer

TYPES = Sdf.ValueTypeNames
_WRAPS = ("repeat", "mirror", "clamp")


@dataclass(frozen=True)
class Number:
    """A number of a material: its input, that of the shader, and what both are if they are missing."""

    path: str
    shader: str
    default: float
    shader_default: float
    most: float = 1.0


NUMBERS = (
    Number("metallic", "metallic", 0, 0),
    Number("roughness", "roughness", 1, 0.5),
    Number("clearcoat.factor", "clearcoat", 0, 0),
    Number("clearcoat.roughness", "clearcoatRoughness", 0, 0.01),
    Number("ior", "ior", 1.5, 1.5, math.inf),
)


@dataclass(frozen=True)
class Map:
    """A map of a material: its inputs, and the inputs of the shader with the channels that go there."""

    path: str
    xform: str
    outputs: tuple[tuple[str, str], ...]
    is_colour: bool = False

    @property
    def name(self) -> str:
        return self.path.replace(".", "_")


BASE = Map("baseColorMap", "baseColorXform", (("diffuseColor", "rgb"),), True)
OPACITY = Map("opacityMap", "baseColorXform", (("opacity", "a"),), True)
METAL = Map("metallicRoughnessMap", "metallicRoughnessXform", (("roughness", "g"), ("metallic", "b")))
NORMAL = Map("normalMap", "normalXform", (("normal", "rgb"),))
OCCLUSION = Map("occlusionMap", "occlusionXform", (("occlusion", "r"),))
EMISSION = Map("emission.map", "emissionXform", (("emissiveColor", "rgb"),), True)
COAT = Map("clearcoat.map", "clearcoat.xform", (("clearcoat", "r"),))
COAT_ROUGHNESS = Map("clearcoat.roughnessMap", "clearcoat.roughnessXform", (("clearcoatRoughness", "g"),))

_NO_BIAS = (0.0, 0.0, 0.0, 0.0)
_NO_SCALE = (1.0, 1.0, 1.0, 1.0)


# --- writing


class MaterialWriter:
    """Writes each material when it is used first."""

    def __init__(self, writer: Writer) -> None:
        self._writer = writer
        self._paths: dict[str, Sdf.Path] = {}
        self.double_sided: set[str] = set()
        self.bound: set[str] = set()

    def path_of(self, node: vrn.Node) -> Sdf.Path:
        if node.name not in self._paths:
            self._writer.visited.add(node.name)
            material = self._writer.define(UsdShade.Material, node, self._writer.scope("Materials"))
            self._paths[node.name] = material.GetPath()
            _Network(self._writer, material, node, self).write()
        return self._paths[node.name]

    def bind(self, prim: Usd.Prim, node: vrn.Node, is_override: bool = False) -> None:
        """Binds a material to a mesh, or to a node in place of those of its meshes."""
        path = self.path_of(node)
        strength = UsdShade.Tokens.strongerThanDescendants if is_override else UsdShade.Tokens.fallbackStrength
        binding = UsdShade.MaterialBindingAPI.Apply(prim)
        binding.Bind(UsdShade.Material(prim.GetStage().GetPrimAtPath(path)), strength)
        self.bound.add(node.name)


class _Network:
    """The shaders of one material."""

    def __init__(self, writer: Writer, prim: Usd.Prim, node: vrn.Node, owner: MaterialWriter) -> None:
        self._writer = writer
        self._owner = owner
        self._material = UsdShade.Material(prim)
        self._given = Given(node, writer.losses)
        self._stage = prim.GetStage()
        self._surface = self._shader("Surface", "UsdPreviewSurface")
        self._readers: dict[int, UsdShade.Shader] = {}

    def write(self) -> None:
        self._material.CreateSurfaceOutput().ConnectToSource(self._surface.ConnectableAPI(), "surface")
        numbers = {number.path: self._number(number) for number in NUMBERS}
        self._write_base()
        self._write_metal(numbers["metallic"], numbers["roughness"])
        self._write_normal()
        self._write_occlusion()
        self._write_emission()
        self._write_coat(numbers["clearcoat.factor"], numbers["clearcoat.roughness"])
        if self._given.flag("doubleSided", False):
            self._owner.double_sided.add(self._given.node.name)
        self._given.add_unread("name", *KEPT)

    def _number(self, number: Number) -> float:
        value = self._given.number(number.path, number.default)
        if not 0 <= value <= number.most:
            self._given.lose("numbers of materials out of range (clamped)", number.path)
            value = min(max(value, 0), number.most)
        if value != number.shader_default:
            self._surface.CreateInput(number.shader, TYPES.Float).Set(self._single(value, number.path))
        return value

    def _single(self, value: float, path: str) -> float:
        if shortest(single(value)) != value:
            self._given.lose(DIGITS, path)
        return single(value)

    def _colour(self, *paths: str, default: tuple[float, ...], most: float = 1.0) -> tuple[float, ...]:
        """The first of these colours that there is, with an alpha of 1 if it has none."""
        path = next((path for path in paths if self._given.has(path)), paths[0])
        found = self._given.find(path)
        is_short = found is not None and isinstance(found.value, tuple) and len(found.value) == 3
        values = self._given.vector(path, default[:3] if is_short else default)
        clamped = tuple(min(max(value, 0.0), most) for value in values)
        if clamped != values:
            self._given.lose("numbers of materials out of range (clamped)", path)
        for value in clamped:
            self._single(value, path)
        return (*clamped, 1.0)[:4]

    def _write_base(self) -> None:
        color = self._colour("baseColor", "color", default=(1, 1, 1, 1))
        path = "baseColorMap" if self._given.link("baseColorMap") else "colorMap"
        base = Map(path, BASE.xform, BASE.outputs, True)
        texture = self._texture(base, color)
        if texture is None:
            self._surface.CreateInput("diffuseColor", TYPES.Color3f).Set(Gf.Vec3f(*color[:3]))
        self._write_opacity(color[3], self._given.link(path), texture)

    def _write_opacity(self, alpha: float, color_map: vrn.Node | None, texture: UsdShade.Shader | None) -> None:
        opacity_map = self._given.link("opacityMap")
        mode = self._given.text("alpha.mode")
        cutoff = self._given.number("alpha.cutoff", 0.5)
        if mode not in ("", "opaque", "mask", "blend"):
            self._given.lose("unknown alpha modes of materials", "alpha.mode")
            mode = ""
        mode = mode or ("blend" if alpha < 1 or opacity_map is not None else "opaque")
        if mode == "opaque":
            if alpha < 1 or opacity_map is not None:
                self._given.lose("alpha of opaque materials")
            return
        if mode == "mask":
            if not 0 < cutoff <= single(math.inf):
                self._given.lose("alpha cutoffs of materials that are not positive", "alpha.cutoff")
                cutoff = 1e-6
            self._surface.CreateInput("opacityThreshold", TYPES.Float).Set(self._single(cutoff, "alpha.cutoff"))
        if opacity_map is not None and opacity_map != color_map:
            texture = self._texture(OPACITY, (1, 1, 1, alpha))
        elif texture is not None:
            self._connect(texture, "opacity", "a")
        if texture is None:
            self._surface.CreateInput("opacity", TYPES.Float).Set(alpha)

    def _write_metal(self, metallic: float, roughness: float) -> None:
        self._texture(METAL, (1, roughness, metallic, 1))

    def _write_normal(self) -> None:
        scale = self._given.number("normalScale", 1)
        if self._given.link("normalMap") is not None and scale != 1:
            # Programs that check stages only accept the usual scale of maps with 8 bits.
            self._given.lose("scales of normal maps", "normalScale")
        self._texture(NORMAL, (2, 2, 2, 1), (-1, -1, -1, 0))

    def _write_occlusion(self) -> None:
        strength = self._given.number("occlusionStrength", 1)
        self._texture(OCCLUSION, (strength,) * 3 + (1,), (1 - strength,) * 3 + (0,))

    def _write_emission(self) -> None:
        color = self._colour("emission.color", default=(0, 0, 0, 1), most=single(math.inf))
        if color[3] != 1:
            self._given.lose(FURTHER, "emission.color")
        strength = self._given.number("emission.strength", 1)
        if strength != 1 and any(color[:3]):
            self._given.lose("strengths of emission (multiplied into its colour)", "emission.strength")
        color = tuple(single(value * strength) for value in color[:3])
        if self._texture(EMISSION, (*color, 1)) is None and any(color):
            self._surface.CreateInput("emissiveColor", TYPES.Color3f).Set(Gf.Vec3f(*color))

    def _write_coat(self, factor: float, roughness: float) -> None:
        self._texture(COAT, (factor,) * 3 + (1,))
        self._texture(COAT_ROUGHNESS, (roughness,) * 3 + (1,))

    def _texture(
        self, image: Map, scale: tuple[float, ...], bias: tuple[float, ...] = _NO_BIAS
    ) -> UsdShade.Shader | None:
        """The texture of a map, connected to the surface. None if there is none with an image."""
        node = self._given.link(image.path)
        if node is None:
            return None
        self._check_output(image)
        self._writer.visited.add(node.name)
        given = Given(
            node, self._writer.losses if node.name not in self._writer.textures else type(self._writer.losses)()
        )
        path = self._writer.images.path_of(given)
        shader = None
        if path is not None:
            shader = self._shader(image.name, "UsdUVTexture")
            shader.CreateInput("file", TYPES.Asset).Set(Sdf.AssetPath(path))
            shader.CreateInput("sourceColorSpace", TYPES.Token).Set("sRGB" if image.is_colour else "raw")
            for axis in "UV":
                self._write_wrap(shader, given, axis)
            if scale != _NO_SCALE:
                shader.CreateInput("scale", TYPES.Float4).Set(Gf.Vec4f(*scale))
            if bias != _NO_BIAS:
                shader.CreateInput("bias", TYPES.Float4).Set(Gf.Vec4f(*bias))
            self._write_coordinates(shader, image)
            self._writer.keep_name(shader.GetPrim(), node)
            # Also where the names agree: it distinguishes textures with the same image.
            shader.GetPrim().SetCustomDataByKey(NAME, text_for_usd(node.name))
            for target, channel in image.outputs:
                self._connect(shader, target, channel)
        given.add_unread("name", "extras", "wrapU", "wrapV", "file", "encoded")
        self._writer.textures.add(node.name)
        return shader

    def _check_output(self, image: Map) -> None:
        found = self._given.find(image.path)
        expected = "outAlpha" if image is OPACITY else "outColor"
        if found is not None and found.connection is not None and found.connection.name != expected:
            self._given.lose(f"connections to texture outputs other than {expected}", image.path)

    def _write_wrap(self, shader: UsdShade.Shader, given: Given, axis: str) -> None:
        wrap = given.text(f"wrap{axis}") or "repeat"
        if wrap not in _WRAPS:
            given.lose("unknown wrap modes of textures", f"wrap{axis}")
            wrap = "repeat"
        shader.CreateInput("wrapS" if axis == "U" else "wrapT", TYPES.Token).Set(wrap)

    def _write_coordinates(self, texture: UsdShade.Shader, image: Map) -> None:
        """Where a texture lies: the uvset, and the transform of its coordinates."""
        uvset = int(self._given.number(f"{image.xform}.uvset", 0))
        source = self._reader(uvset)
        values = XformValues(
            self._given.vector(f"{image.xform}.offset", (0, 0)),
            self._given.number(f"{image.xform}.rotation", 0),
            self._given.vector(f"{image.xform}.scale", (1, 1)),
        )
        if values != XformValues():
            placed = self._shader(f"{image.name}_place", "UsdTransform2d")
            for name, kind, value in values.to_usd():
                placed.CreateInput(name, kind).Set(value)
            placed.CreateInput("in", TYPES.Float2).ConnectToSource(source.ConnectableAPI(), "result")
            placed.CreateOutput("result", TYPES.Float2)
            source = placed
            if XformValues.from_usd(*(value for _, _, value in values.to_usd())) != values:
                self._given.lose(DIGITS, image.xform)
        texture.CreateInput("st", TYPES.Float2).ConnectToSource(source.ConnectableAPI(), "result")

    def _reader(self, uvset: int) -> UsdShade.Shader:
        if uvset not in self._readers:
            reader = self._shader(f"uvset{uvset}", "UsdPrimvarReader_float2")
            reader.CreateInput("varname", TYPES.String).Set(uvset_name(uvset))
            reader.CreateOutput("result", TYPES.Float2)
            self._readers[uvset] = reader
        return self._readers[uvset]

    def _connect(self, texture: UsdShade.Shader, target: str, channel: str) -> None:
        is_vector = len(channel) == 3
        texture.CreateOutput(channel, TYPES.Float3 if is_vector else TYPES.Float)
        kind = TYPES.Normal3f if target == "normal" else TYPES.Color3f if is_vector else TYPES.Float
        self._surface.CreateInput(target, kind).ConnectToSource(texture.ConnectableAPI(), channel)

    def _shader(self, name: str, kind: str) -> UsdShade.Shader:
        shader = UsdShade.Shader.Define(self._stage, self._material.GetPath().AppendChild(name))
        shader.CreateIdAttr(kind)
        if kind == "UsdPreviewSurface":
            shader.CreateOutput("surface", TYPES.Token)
        return shader


@dataclass(frozen=True)
class XformValues:
    """A transform of texture coordinates, as scenes have it: the origin is the upper left corner of the image.

    That of USD is the lower left corner, so the same transform has another translation there.
    """

    offset: tuple[float, ...] = (0.0, 0.0)
    rotation: float = 0.0
    scale: tuple[float, ...] = (1.0, 1.0)

    def to_usd(self) -> list[tuple[str, Any, Any]]:
        sine, cosine = _sine_and_cosine(self.rotation)
        translation = (self.offset[0] + sine * self.scale[1], 1 - cosine * self.scale[1] - self.offset[1])
        return [
            ("rotation", TYPES.Float, single(self.rotation)),
            ("scale", TYPES.Float2, Gf.Vec2f(*self.scale)),
            ("translation", TYPES.Float2, Gf.Vec2f(*translation)),
        ]

    @staticmethod
    def from_usd(rotation: float, scale: Any, translation: Any) -> XformValues:
        sine, cosine = _sine_and_cosine(shortest(rotation))
        sx, sy = (shortest(value) for value in scale)
        tx, ty = (float(value) for value in translation)
        offset = (
            shortest_of(tx, lambda value: value + sine * sy, tx - sine * sy),
            shortest_of(ty, lambda value: 1 - cosine * sy - value, 1 - cosine * sy - ty),
        )
        return XformValues(offset, shortest(rotation), (sx, sy))


def _sine_and_cosine(degrees: float) -> tuple[float, float]:
    """Exact for quarter turns."""
    quarters = {0.0: (0.0, 1.0), 90.0: (1.0, 0.0), 180.0: (0.0, -1.0), 270.0: (-1.0, 0.0)}
    exact = quarters.get(degrees % 360)
    return exact or (math.sin(math.radians(degrees)), math.cos(math.radians(degrees)))


# --- reading


@dataclass
class Image:
    """A texture that an input of a surface is connected to."""

    shader: UsdShade.Shader
    channel: str
    scale: tuple[float, ...]
    bias: tuple[float, ...]


class MaterialReader:
    """Makes a node of each material when it is bound first."""

    def __init__(self, reader: Reader) -> None:
        self._reader = reader
        self._nodes: dict[Sdf.Path, vrn.Node] = {}
        self._textures: dict[Any, vrn.Node] = {}

    def node_of(self, material: UsdShade.Material, uv_names: list[str]) -> vrn.Node:
        """The node of a material. `uv_names` are the uvsets of the mesh that it is bound to."""
        path = material.GetPath()
        if path not in self._nodes:
            node = self._reader.add_for("material", material.GetPrim())
            self._nodes[path] = node
            _Surface(self._reader, material, node, uv_names, self._textures).read()
        return self._nodes[path]

    def finish(self) -> None:
        """Reads the materials that no mesh has."""
        for prim in Usd.PrimRange.Stage(self._reader.stage):
            if prim.IsA(UsdShade.Material) and prim.GetPath() not in self._nodes:
                self.node_of(UsdShade.Material(prim), [])


class _Surface:
    def __init__(
        self,
        reader: Reader,
        material: UsdShade.Material,
        node: vrn.Node,
        uv_names: list[str],
        textures: dict[Any, vrn.Node],
    ) -> None:
        self._reader = reader
        self._material = material
        self._node = node
        self._uv_names = uv_names
        self._textures = textures
        self._seen: dict[Sdf.Path, Authored] = {}

    def read(self) -> None:
        shader = self._material.ComputeSurfaceSource()[0]
        self._authored = Authored(self._material.GetPrim(), self._reader.losses)
        if not shader or shader.GetIdAttr().Get() != "UsdPreviewSurface":
            self._authored.lose("materials without a UsdPreviewSurface")
            return
        self._shader = shader
        self._seen_of(shader)
        if self._value("useSpecularWorkflow", 0):
            self._authored.lose("specular colours of materials")
        self._read_base()
        self._read_numbers()
        self._read_normal()
        self._read_occlusion()
        self._read_emission()
        self._read_coat()
        for seen in self._seen.values():
            seen.mark("info:id")
            seen.add_unread()
        self._add_unread_outputs()

    def _add_unread_outputs(self) -> None:
        for output in self._material.GetOutputs():
            if output.GetFullName() != "outputs:surface" and output.HasConnectedSource():
                self._authored.lose(f"property {output.GetFullName()} of Material", output.GetFullName())

    def _seen_of(self, shader: UsdShade.Shader) -> Authored:
        prim = shader.GetPrim()
        if prim.GetPath() not in self._seen:
            self._seen[prim.GetPath()] = Authored(prim, self._reader.losses)
            self._seen[prim.GetPath()].mark(*(out.GetFullName() for out in shader.GetOutputs()))
        return self._seen[prim.GetPath()]

    def _source(self, shader: UsdShade.Shader, name: str) -> Usd.Attribute | None:
        """The attribute that gives the value of an input: its own, one of the material, or an output of a shader."""
        self._seen_of(shader).mark(f"inputs:{name}")
        found = shader.GetInput(name)
        sources = UsdShade.Utils.GetValueProducingAttributes(found) if found else []
        return sources[0] if sources else None

    def _input(self, shader: UsdShade.Shader, name: str, default: Any) -> Any:
        attribute = self._source(shader, name)
        if attribute is None or UsdShade.Output.IsOutput(attribute):
            return default
        if attribute.ValueMightBeTimeVarying():
            self._authored.lose(f"time samples of {name} of Shader", attribute.GetName())
        value = attribute.Get(Usd.TimeCode.EarliestTime())
        if value is None:
            return default
        is_number = not isinstance(value, (str, Sdf.AssetPath))
        if default is not None and np.shape(value) != np.shape(default):
            self._authored.lose("values of the wrong type", attribute.GetName())
            return default
        if is_number and not np.isfinite(np.array(value, np.float64)).all():
            self._authored.lose("numbers that are not finite", attribute.GetName())
            return default
        return value

    def _value(self, name: str, default: Any) -> Any:
        return self._input(self._shader, name, default)

    def _image(self, name: str) -> Image | None:
        """The texture that an input of the surface is connected to."""
        attribute = self._source(self._shader, name)
        if attribute is None or not UsdShade.Output.IsOutput(attribute):
            return None
        shader = UsdShade.Shader(attribute.GetPrim())
        if not shader or shader.GetIdAttr().Get() != "UsdUVTexture":
            self._authored.lose("shaders other than UsdUVTexture", f"{self._shader.GetPrim().GetName()}.{name}")
            return None
        scale = tuple(float(value) for value in self._input(shader, "scale", _NO_SCALE))
        bias = tuple(float(value) for value in self._input(shader, "bias", _NO_BIAS))
        return Image(shader, attribute.GetBaseName(), scale, bias)

    def _read_base(self) -> None:
        node = self._node
        image, opacity = self._image("diffuseColor"), self._image("opacity")
        color = [shortest(value) for value in self._value("diffuseColor", (0.18, 0.18, 0.18))]
        alpha = shortest(self._value("opacity", 1.0))
        if image is not None:
            color = [shortest(value) for value in image.scale[:3]]
            self._check(image, "rgb")
        if opacity is not None:
            alpha = shortest(opacity.scale[3])
            self._check(opacity, "a")
        node.add("baseColor", "Rgba", (*color, alpha))
        threshold = self._value("opacityThreshold", 0.0)
        mode = "mask" if threshold > 0 else "blend" if opacity is not None or alpha < 1 else "opaque"
        entry = node.add("alpha", "Object")
        entry.add("mode", "String", mode)
        if mode == "mask":
            entry.add("cutoff", "Real", shortest(threshold))
        if image is not None:
            self._put(BASE, image)
        if opacity is not None and (image is None or opacity.shader.GetPath() != image.shader.GetPath()):
            self._put(OPACITY, opacity, has_xform=image is None)
            if image is not None and self._coordinates(opacity) != self._coordinates(image):
                # Scenes have one transform for both.
                self._authored.lose("texture coordinates of opacity maps", opacity.shader.GetPrim().GetName())

    def _read_numbers(self) -> None:
        metallic, roughness = self._image("metallic"), self._image("roughness")
        factors = {}
        both = metallic is not None and roughness is not None
        is_pair = both and self._same_image(metallic, roughness)
        only_rough = metallic is None and roughness is not None and not self._value("metallic", 0.0)
        if (is_pair and metallic and metallic.channel == "b" or only_rough) and roughness and roughness.channel == "g":
            self._put(METAL, roughness)
            factors["roughness"] = roughness.scale[1]
            if is_pair and metallic:
                factors["metallic"] = metallic.scale[2]
            for image in (metallic, roughness):
                self._check_bias(image)
        elif metallic is not None or roughness is not None:
            self._authored.lose("maps of metalness and roughness that are not blue and green of one image")
            for image in (metallic, roughness):
                if image is not None:
                    self._seen_of(image.shader).mark("inputs:file", "inputs:st")
        for number in NUMBERS:
            value = factors.get(number.path, self._value(number.shader, number.shader_default))
            if number.path.startswith("clearcoat.") or (number.path == "ior" and shortest(value) == number.default):
                continue
            self._node.add(number.path, "Real", shortest(value))

    def _same_image(self, a: Image | None, b: Image | None) -> bool:
        if a is None or b is None:
            return False
        if a.shader.GetPath() == b.shader.GetPath():
            return True
        files = [self._input(image.shader, "file", None) for image in (a, b)]
        return bool(files[0] == files[1] and _coords(a) == _coords(b))

    def _read_normal(self) -> None:
        image = self._image("normal")
        if image is None:
            return
        scale = image.scale[0] / 2
        if image.scale[:3] != (2 * scale, 2 * scale, 2) or image.bias[:3] != (-scale, -scale, -1):
            self._authored.lose("scales of normal maps", image.shader.GetPrim().GetName())
            scale = 1
        self._put(NORMAL, image)
        if scale != 1:
            self._node.add("normalScale", "Real", shortest(scale))

    def _read_occlusion(self) -> None:
        image = self._image("occlusion")
        if image is None:
            if self._value("occlusion", 1.0) != 1:
                self._authored.lose("occlusion of materials without a map")
            return
        strength = shortest(image.scale[0])
        if image.channel != "r" or not math.isclose(image.bias[0], 1 - strength, abs_tol=1e-6):
            self._authored.lose("textures with other channels or a bias", image.shader.GetPrim().GetName())
        self._put(OCCLUSION, image)
        if strength != 1:
            self._node.add("occlusionStrength", "Real", strength)

    def _read_emission(self) -> None:
        image = self._image("emissiveColor")
        color = self._value("emissiveColor", (0, 0, 0))
        if image is not None:
            color = image.scale[:3]
            self._check(image, "rgb")
        if image is None and not any(color):
            return
        entry = self._node.add("emission", "Object")
        entry.add("color", "Rgba", (*(shortest(value) for value in color), 1.0))
        if image is not None:
            self._put(EMISSION, image)

    def _read_coat(self) -> None:
        images = {COAT: self._image("clearcoat"), COAT_ROUGHNESS: self._image("clearcoatRoughness")}
        factor, roughness = self._value("clearcoat", 0.0), self._value("clearcoatRoughness", 0.01)
        if not factor and images[COAT] is None:
            return
        entry = self._node.add("clearcoat", "Object")
        for image, name, value, index in (
            (images[COAT], "factor", factor, 0),
            (images[COAT_ROUGHNESS], "roughness", roughness, 1),
        ):
            entry.add(name, "Real", shortest(image.scale[index] if image else value))
        for kind, image in images.items():
            if image is not None:
                self._check(image, kind.outputs[0][1])
                self._put(kind, image)

    def _check(self, image: Image, channel: str) -> None:
        if image.channel != channel:
            self._authored.lose("textures with other channels or a bias", image.shader.GetPrim().GetName())
        self._check_bias(image)

    def _check_bias(self, image: Image | None) -> None:
        if image is not None and any(image.bias):
            self._authored.lose("textures with other channels or a bias", image.shader.GetPrim().GetName())

    def _put(self, kind: Map, image: Image, has_xform: bool = True) -> None:
        texture = self._texture(image)
        if texture is None:
            return
        head, _, tail = kind.path.rpartition(".")
        entry: Any = self._node if not head else self._node.inputs[head]
        entry.add(tail, "Null", None)
        output = texture.outputs["outAlpha" if kind is OPACITY else "outColor"]
        (self._node.inputs[kind.path] if not head else entry.children[tail]).connection = output
        if has_xform:
            self._put_xform(kind, image)

    def _put_xform(self, kind: Map, image: Image) -> None:
        values, uvset = self._coordinates(image)
        members = (
            ("offset", "Vec2", values.offset, (0.0, 0.0)),
            ("rotation", "Real", values.rotation, 0.0),
            ("scale", "Vec2", values.scale, (1.0, 1.0)),
            ("uvset", "UInt", uvset, 0),
        )
        changed = [(name, type_name, value) for name, type_name, value, default in members if value != default]
        if not changed:
            return
        head, _, tail = kind.xform.rpartition(".")
        owner: Any = self._node if not head else self._node.inputs[head]
        entry = owner.add(tail, "Object")
        for name, type_name, value in changed:
            entry.add(name, type_name, value)

    def _coordinates(self, image: Image) -> tuple[XformValues, int]:
        values, uvset = XformValues(), 0
        attribute = self._source(image.shader, "st")
        shader = UsdShade.Shader(attribute.GetPrim()) if attribute else None
        if shader and shader.GetIdAttr().Get() == "UsdTransform2d":
            values = XformValues.from_usd(
                self._input(shader, "rotation", 0.0),
                self._input(shader, "scale", (1.0, 1.0)),
                self._input(shader, "translation", (0.0, 0.0)),
            )
            attribute = self._source(shader, "in")
            shader = UsdShade.Shader(attribute.GetPrim()) if attribute else None
        if shader and shader.GetIdAttr().Get() == "UsdPrimvarReader_float2":
            name = str(self._input(shader, "varname", "st"))
            self._seen_of(shader).mark("inputs:fallback")
            if name in self._uv_names:
                uvset = self._uv_names.index(name)
            elif self._uv_names:
                self._authored.lose("texture coordinates that a mesh does not have", name)
            elif name.removeprefix("st").isdigit():
                uvset = int(name.removeprefix("st"))
        elif shader:
            self._authored.lose("texture coordinates of other shaders than UsdPrimvarReader_float2")
        return values, uvset

    def _texture(self, image: Image) -> vrn.Node | None:
        shader = image.shader
        asset = self._input(shader, "file", None)
        wraps = tuple(str(self._input(shader, name, "useMetadata")) for name in ("wrapS", "wrapT"))
        for name in ("sourceColorSpace", "fallback"):
            self._input(shader, name, None)
        if not isinstance(asset, Sdf.AssetPath) or not asset.path:
            self._authored.lose("textures without an image", shader.GetPrim().GetName())
            return None
        prim = shader.GetPrim()
        own = prim.GetCustomDataByKey(NAME)
        key = (asset.path, asset.resolvedPath, wraps, own)
        node = self._textures.get(key)
        if node is None:
            node = self._textures[key] = self._make_texture(prim, asset, wraps, isinstance(own, str))
        return node

    def _make_texture(self, prim: Usd.Prim, asset: Any, wraps: tuple[str, ...], is_own: bool) -> vrn.Node:
        node = self._reader.add_for("texture", prim)
        if not is_own and "name" not in node.inputs:
            node.add("name", "String", asset.path.rpartition("/")[2])
        if not read_image(node, asset, self._reader.folder):
            self._authored.lose("image files that cannot be read", prim.GetName())
        for axis, wrap in zip("UV", wraps, strict=True):
            if wrap not in _WRAPS and wrap != "useMetadata":
                self._authored.lose("unknown wrap modes of textures", prim.GetName())
            node.add(f"wrap{axis}", "String", wrap if wrap in _WRAPS else "repeat")
        return node


def _coords(image: Image) -> Any:
    sources = image.shader.GetInput("st").GetConnectedSources()[0] if image.shader.GetInput("st") else []
    return [(source.source.GetPath(), source.sourceName) for source in sources]
