"""Cameras."""

from __future__ import annotations

import math
from typing import TYPE_CHECKING

from pxr import Gf, UsdGeom

import vrn

from .authored import Authored
from .given import Given
from .numbers import DIGITS, shortest, shortest_of, single

if TYPE_CHECKING:
    from pxr import Usd

# USD measures apertures and focal lengths in tenths of the unit of the scene.
_TENTHS = 10.0
_HEIGHT = 24.0  # of the aperture, as of a full-frame film in tenths of centimetres; only its ratio to the rest matters
_NEAR, _FAR = 0.1, 1_000_000.0  # where a scene has none; the default of USD, 1, is far in metres


def _focal_length(fov: float) -> float:
    return _HEIGHT / (2 * math.tan(math.radians(fov) / 2))


def write_camera(prim: Usd.Prim, given: Given) -> None:
    camera = UsdGeom.Camera(prim)
    projection = given.text("projection")
    if projection not in ("", "perspective", "orthographic"):
        given.lose("unknown projections of cameras", "projection")
    if projection == "orthographic":
        camera.CreateProjectionAttr("orthographic")
        _write_size(camera, given)
    else:
        _write_angles(camera, given)
    _write_clipping(camera, given)


def _write_angles(camera: UsdGeom.Camera, given: Given) -> None:
    fov = given.number("fov", 45)
    if not 0 < fov < 180:
        given.lose("fields of view of cameras outside 0 to 180 degrees", "fov")
        fov = 45
    focal = _focal_length(fov)
    if shortest_of(focal, _focal_length, _fov(focal)) != fov:
        given.lose(DIGITS, "fov")
    camera.CreateFocalLengthAttr(focal)
    camera.CreateVerticalApertureAttr(_HEIGHT)
    aspect = given.number("aspect", 0)
    if aspect > 0:
        camera.CreateHorizontalApertureAttr(single(aspect * _HEIGHT))
        if _aspect(single(aspect * _HEIGHT), _HEIGHT) != aspect:
            given.lose(DIGITS, "aspect")


def _fov(focal: float) -> float:
    return math.degrees(2 * math.atan(_HEIGHT / (2 * single(focal))))


def _aspect(width: float, height: float) -> float:
    return shortest_of(width, lambda aspect: aspect * height, width / height)


def _write_size(camera: UsdGeom.Camera, given: Given) -> None:
    size = given.vector("size", (1, 1))
    if 0 in size:
        given.lose("sizes of cameras that are 0", "size")
        size = (1, 1)
    # The apertures are the whole width and height, the size is half of them.
    apertures = [single(2 * length * _TENTHS) for length in size]
    camera.CreateHorizontalApertureAttr(apertures[0])
    camera.CreateVerticalApertureAttr(apertures[1])
    if any(_half(aperture, 1) != length for aperture, length in zip(apertures, size, strict=True)):
        given.lose(DIGITS, "size")


def _half(aperture: float, metres: float) -> float:
    """Half of an aperture, in metres."""
    scale = 2 * _TENTHS / metres
    return shortest_of(aperture, lambda length: length * scale, aperture / scale)


def _write_clipping(camera: UsdGeom.Camera, given: Given) -> None:
    clip = given.vector("clip", (0, 0))
    near = given.number("near", 0) or clip[0]
    far = given.number("far", 0) or clip[1]
    if near < 0:
        given.lose("negative near planes of cameras", "near" if given.has("near") else "clip")
    near = near if near > 0 else _NEAR
    if far != 0 and far <= near:
        given.lose("far planes of cameras that are not beyond the near plane", "far" if given.has("far") else "clip")
    far = far if far > near else max(_FAR, 2 * near)
    camera.CreateClippingRangeAttr(Gf.Vec2f(single(near), single(far)))
    if any(shortest(distance) != distance for distance in (near, far)):
        given.lose(DIGITS, "clip")


def read_camera(authored: Authored, node: vrn.Node, metres: float) -> None:
    """Adds what a camera is to a node. `metres` is the unit of the stage."""
    width = authored.number("horizontalAperture", 20.955)
    height = authored.number("verticalAperture", 15.2908)
    if authored.value("projection", "perspective") == "orthographic":
        node.add("projection", "String", "orthographic")
        node.add("size", "Vec2", (_half(width, metres), _half(height, metres)))
    else:
        node.add("projection", "String", "perspective")
        _read_angles(authored, node, width, height)
    authored.mark("focusDistance", "focalLength")
    near, far = authored.value("clippingRange", Gf.Vec2f(1, _FAR))
    if 0 < near < far < math.inf:
        node.add("near", "Real", shortest(near * metres))
        if far < _FAR:
            node.add("far", "Real", shortest(far * metres))
    else:
        authored.lose("clipping ranges of cameras that are not in order", "clippingRange")


def _read_angles(authored: Authored, node: vrn.Node, width: float, height: float) -> None:
    focal = authored.number("focalLength", 50)
    if focal > 0 and height > 0:
        guess = math.degrees(2 * math.atan(height / (2 * focal)))
        node.add("fov", "Real", shortest_of(focal, lambda fov: height / (2 * math.tan(math.radians(fov) / 2)), guess))
    else:
        authored.lose("focal lengths and apertures of cameras that are not positive", "focalLength")
    if authored.has("horizontalAperture") and width > 0 and height > 0:
        node.add("aspect", "Real", _aspect(width, height))
