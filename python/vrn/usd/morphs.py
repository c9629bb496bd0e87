"""Morph targets of meshes: the prims BlendShape below a mesh."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any

import numpy as np
from pxr import Sdf, UsdSkel

import vrn

from .arrays import Array, finite, from_usd, to_usd
from .authored import Authored
from .given import Given
from .keys import NAME
from .names import UniqueNames, prim_name, text_for_usd
from .surfaces import Surface

if TYPE_CHECKING:
    from pxr import Usd

TYPES = Sdf.ValueTypeNames
_OFFSETS = (("points", "offsets"), ("normals", "normalOffsets"))


def write_targets(prim: Usd.Prim, given: Given, point_count: int) -> None:
    names = UniqueNames()
    tokens, paths = [], []
    for i in range(given.count("targets")):
        title = given.text(f"targets[{i}].name")
        token = names.take(prim_name(title or f"target{i}"))
        shape = UsdSkel.BlendShape.Define(prim.GetStage(), prim.GetPath().AppendChild(token))
        for member, attribute in _OFFSETS:
            offsets = given.floats(f"targets[{i}].{member}", 3)
            if offsets is None:
                continue
            if offsets.shape != (point_count, 3) or not finite(offsets):
                given.lose("attributes that do not match the points of their mesh", f"targets[{i}].{member}")
                continue
            shape.GetPrim().CreateAttribute(attribute, TYPES.Vector3fArray, False).Set(
                to_usd(offsets, TYPES.Vector3fArray)
            )
        if not shape.GetOffsetsAttr().HasAuthoredValue():
            shape.CreateOffsetsAttr(to_usd(np.zeros((point_count, 3)), TYPES.Vector3fArray))
        if title != token:
            shape.GetPrim().SetCustomDataByKey(NAME, text_for_usd(title))
        tokens.append(token)
        paths.append(shape.GetPath())
    if tokens:
        binding = UsdSkel.BindingAPI.Apply(prim)
        binding.CreateBlendShapesAttr(tokens)
        binding.CreateBlendShapeTargetsRel().SetTargets(paths)


def read_targets(authored: Authored, surface: Surface) -> None:
    """Puts the targets of a mesh on its points."""
    tokens = authored.value("skel:blendShapes")
    paths = authored.targets("skel:blendShapeTargets")
    if tokens is None or len(tokens) != len(paths):
        if paths:
            authored.lose("blend shapes whose names and targets differ in number", "skel:blendShapeTargets")
        return
    for i, path in enumerate(paths):
        shape = UsdSkel.BlendShape(authored.prim.GetStage().GetPrimAtPath(path))
        if not shape:
            authored.lose("blend shapes that are missing", "skel:blendShapeTargets")
            continue
        _read_target(authored, shape, f"target:{i}", surface)


def _read_target(authored: Authored, shape: UsdSkel.BlendShape, key: str, surface: Surface) -> None:
    indices = shape.GetPointIndicesAttr().Get()
    for member, attribute in _OFFSETS:
        value = shape.GetPrim().GetAttribute(attribute).Get()
        if value is None or not len(value):
            continue
        offsets = _dense(from_usd(value), from_usd(indices) if indices else None, surface.point_count)
        if offsets is None:
            authored.lose("blend shapes that do not match the points of their mesh", shape.GetPrim().GetName())
        else:
            surface.points[f"{key}:{member}"] = offsets
    if shape.GetInbetweens():
        authored.lose("shapes in between of blend shapes", shape.GetPrim().GetName())
    name = shape.GetPrim().GetCustomDataByKey(NAME)
    surface.titles[key] = name if isinstance(name, str) else shape.GetPrim().GetName()


def _dense(offsets: Array, indices: Array | None, count: int) -> Array | None:
    if not finite(offsets):
        return None
    if indices is None:
        return offsets if len(offsets) == count else None
    if len(indices) != len(offsets) or indices.min() < 0 or indices.max() >= count:
        return None
    dense = np.zeros((count, 3), np.float32)
    dense[indices] = offsets
    return dense


def put_targets(node: vrn.Node, surface: Surface) -> None:
    if not surface.titles:
        return
    targets = node.add("targets", "Object[]")
    for key, title in surface.titles.items():
        entry = targets.append()
        entry.add("name", "String", title)
        for member, _ in _OFFSETS:
            values = surface.points.get(f"{key}:{member}")
            if values is not None:
                entry.add(member, "vec3f[]", values)


def tokens_of(prim: Usd.Prim) -> list[Any]:
    """The names of the blend shapes of a mesh, in order."""
    value = UsdSkel.BindingAPI(prim).GetBlendShapesAttr().Get()
    return list(value) if value else []
