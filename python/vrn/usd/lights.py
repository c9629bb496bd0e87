"""Lights. Those of scenes have intensities in lux (directional) and candela (point, spot), as in glTF."""

from __future__ import annotations

import math
from typing import TYPE_CHECKING, Any

from pxr import Gf, Usd, UsdLux

import vrn

from .authored import Authored
from .given import Given
from .numbers import DIGITS, shortest, shortest_of, single

if TYPE_CHECKING:
    from collections.abc import Callable

    from .losses import Losses

# A normalized sphere emits its intensity divided by its surface, and shows a quarter of that as a disk.
_CANDELA = 4.0
_RADIUS = 0.01  # of lights without a size, for renderers that do not treat them as points


def light_type(node: vrn.Node, losses: Losses) -> str:
    """The type of prims for the kind of a light."""
    kind = node.get("kind", "directional") or "directional"
    if kind not in ("directional", "point", "spot"):
        losses.add("unknown kinds of lights", f"{node.name}.kind")
    return "SphereLight" if kind in ("point", "spot") else "DistantLight"


def write_light(prim: Usd.Prim, given: Given) -> None:
    light = UsdLux.LightAPI(prim)
    kind = given.text("kind")
    factor = _CANDELA if prim.IsA(UsdLux.SphereLight) else 1.0
    _write_number(given, light.CreateIntensityAttr, "intensity", 1, lambda value: value * factor, math.inf)
    color = given.color("color", (1, 1, 1))
    light.CreateColorAttr(Gf.Vec3f(*map(single, color)))
    if any(shortest(single(value)) != value for value in color):
        given.lose(DIGITS, "color")
    light.CreateNormalizeAttr(True)
    if prim.IsA(UsdLux.SphereLight):
        sphere = UsdLux.SphereLight(prim)
        sphere.CreateTreatAsPointAttr(True)
        sphere.CreateRadiusAttr(_RADIUS)
    else:
        UsdLux.DistantLight(prim).CreateAngleAttr(0)
    if kind == "spot":
        _write_cone(prim, given)
    if not given.flag("castShadows", True):
        UsdLux.ShadowAPI.Apply(prim).CreateShadowEnableAttr(False)


def _write_cone(prim: Usd.Prim, given: Given) -> None:
    shaping = UsdLux.ShapingAPI.Apply(prim)
    outer = _write_number(given, shaping.CreateShapingConeAngleAttr, "outerAngle", 45, lambda value: value, 90)
    inner = given.number("innerAngle", 0)
    if not 0 <= inner <= outer:
        given.lose("numbers out of range (clamped)", "innerAngle")
        inner = min(max(inner, 0), outer)
    softness = single(1 - inner / outer) if outer > 0 else 0.0
    shaping.CreateShapingConeSoftnessAttr(softness)
    if _inner_angle(outer, softness) != inner:
        given.lose(DIGITS, "innerAngle")


def _inner_angle(outer: float, softness: float) -> float:
    return shortest_of(softness, lambda inner: 1 - inner / outer, outer * (1 - softness)) if outer > 0 else 0.0


def _write_number(
    given: Given,
    create: Callable[[float], Any],
    path: str,
    default: float,
    convert: Callable[[float], float],
    most: float,
) -> float:
    value = given.number(path, default)
    if not 0 <= value <= most:
        given.lose("numbers out of range (clamped)", path)
        value = min(max(value, 0), most)
    stored = single(convert(value))
    create(stored)
    if shortest_of(stored, convert, value) != value:
        given.lose(DIGITS, path)
    return value


def is_light(prim: Usd.Prim) -> bool:
    return bool(prim.IsA(UsdLux.DistantLight) or prim.IsA(UsdLux.SphereLight))


def read_light(authored: Authored, node: vrn.Node) -> None:
    """Adds what a light is to a node."""
    is_sphere = authored.prim.IsA(UsdLux.SphereLight)
    cone = authored.number("inputs:shaping:cone:angle", 90)
    # Without an angle, the cone is a whole sphere.
    is_spot = is_sphere and authored.has("inputs:shaping:cone:angle") and cone < 180
    node.add("kind", "String", "spot" if is_spot else "point" if is_sphere else "directional")
    node.add("color", "Rgba", _color(authored))
    intensity = authored.number("inputs:intensity", 1 if is_sphere else 50000)
    factor = 2 ** authored.number("inputs:exposure", 0) * _factor(authored, is_sphere)
    node.add(
        "intensity", "Real", shortest_of(intensity, lambda value: value / factor, intensity * factor) if factor else 0.0
    )
    if is_spot:
        outer = shortest(min(cone, 90))
        if cone > 90:
            authored.lose("cones of lights wider than 90 degrees", "inputs:shaping:cone:angle")
        softness = min(max(authored.number("inputs:shaping:cone:softness", 0), 0), 1)
        node.add("outerAngle", "Real", outer)
        node.add("innerAngle", "Real", _inner_angle(outer, softness))
    if authored.value("inputs:shadow:enable", True) is False:
        node.add("castShadows", "Bool", False)


def _color(authored: Authored) -> tuple[float, ...]:
    color = [shortest(value) for value in authored.value("inputs:color", (1, 1, 1))]
    if authored.value("inputs:enableColorTemperature", False):
        temperature = UsdLux.BlackbodyTemperatureAsRgb(authored.number("inputs:colorTemperature", 6500))
        color = [value * float(part) for value, part in zip(color, temperature, strict=True)]
    return (*color, 1.0)


def _factor(authored: Authored, is_sphere: bool) -> float:
    """What the intensity is multiplied by to have lux or candela."""
    is_normalized = authored.value("inputs:normalize", False)
    if is_sphere:
        radius = authored.number("inputs:radius", 0.5)
        is_point = authored.value("treatAsPoint", False)
        if radius != single(_RADIUS) and not is_point:
            authored.lose("sizes of lights", "inputs:radius")
        return 1 / _CANDELA if is_normalized else math.pi * radius * radius
    half = math.radians(authored.number("inputs:angle", 0.53)) / 2
    return 1.0 if is_normalized or half == 0 else math.pi * math.sin(half) ** 2
