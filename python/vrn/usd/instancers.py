"""Meshes that are shown many times: buffers of transforms of an instance, and PointInstancer."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any

import numpy as np
from pxr import Sdf, Usd, UsdGeom

import vrn

from .arrays import Array, compose, decompose, finite, from_usd, to_usd
from .authored import Authored
from .given import Given

if TYPE_CHECKING:
    from .reading import Reader

TYPES = Sdf.ValueTypeNames
_PARTS = (
    ("translation", 3, "positions", TYPES.Point3fArray, (0, 0, 0), "vec3f[]"),
    ("rotation", 4, "orientationsf", TYPES.QuatfArray, (0, 0, 0, 1), "quatf[]"),
    ("scale", 3, "scales", TYPES.Float3Array, (1, 1, 1), "vec3f[]"),
)

# --- writing


def read_given(given: Given) -> dict[str, Array] | None:
    """The transforms with which an instance repeats its meshes, by input. None if it does not."""
    found = {}
    for member, components, *_ in _PARTS:
        values = given.floats(f"instances.{member}", components)
        if values is not None:
            found[member] = values
    if not found:
        return None
    if len({len(values) for values in found.values()}) > 1 or not all(map(finite, found.values())):
        given.lose("instances whose transforms are not finite or differ in number", "instances")
        return None
    return found


def write_instancer(prim: Usd.Prim, prototype: Sdf.Path, found: dict[str, Array]) -> None:
    instancer = UsdGeom.PointInstancer(prim)
    count = len(next(iter(found.values())))
    instancer.CreatePrototypesRel().SetTargets([prototype])
    instancer.CreateProtoIndicesAttr(to_usd(np.zeros(count), TYPES.IntArray))
    for member, _, name, kind, default, _ in _PARTS:
        if member in found or name == "positions":
            values = found.get(member, np.broadcast_to(default, (count, len(default))))
            prim.CreateAttribute(name, kind, False).Set(to_usd(values, kind))
    instancer.CreateExtentAttr(instancer.ComputeExtentAtTime(Usd.TimeCode.Default(), Usd.TimeCode.Default()))


# --- reading


def read_instancer(reader: Reader, authored: Authored, node: vrn.Node | None, parent: vrn.Node | None) -> None:
    """Shows the prototypes of an instancer with the transforms that use them."""
    prim = authored.prim
    elements = _elements(authored)
    authored.mark("extent")
    if elements is None:
        return
    indices, matrices = elements
    for k, path in enumerate(authored.targets("prototypes")):
        root = prim.GetStage().GetPrimAtPath(path)
        chosen = matrices[indices == k]
        if not root or not len(chosen):
            authored.lose("prototypes that are missing or not used", "prototypes")
            continue
        _read_prototype(reader, authored, root, chosen, node, parent)


def _elements(authored: Authored) -> tuple[Array, Array] | None:
    """The number of the prototype and the matrix of each element."""
    indices = authored.array("protoIndices")
    positions = authored.array("positions")
    if indices is None or positions is None:
        authored.lose("instancers without elements")
        return None
    count = len(indices)
    parts = [positions]
    name = "orientationsf" if authored.has("orientationsf") else "orientations"
    authored.mark("orientations", "orientationsf")
    for attribute, default in ((name, (0, 0, 0, 1)), ("scales", (1, 1, 1))):
        values = authored.array(attribute)
        parts.append(np.broadcast_to(np.array(default, float), (count, len(default))) if values is None else values)
    if any(len(values) != count or not finite(values) for values in parts):
        authored.lose("instances whose transforms are not finite or differ in number")
        return None
    hidden = from_usd(authored.value("invisibleIds", []))
    ids = authored.array("ids")
    kept = ~np.isin(np.arange(count) if ids is None else ids, hidden)
    if not kept.all():
        authored.lose("invisible elements of instancers", "invisibleIds")
    return indices[kept], compose(*parts)[kept]


def _read_prototype(
    reader: Reader, authored: Authored, root: Usd.Prim, elements: Array, node: vrn.Node | None, parent: vrn.Node | None
) -> None:
    cache = UsdGeom.XformCache(Usd.TimeCode.EarliestTime())
    for prim in Usd.PrimRange(root, Usd.TraverseInstanceProxies(Usd.PrimDefaultPredicate)):
        if not reader.is_shape(prim):
            if prim.IsA(UsdGeom.Gprim) or prim.IsA(UsdGeom.PointInstancer):
                authored.lose(f"prims of type {prim.GetTypeName()}", str(prim.GetPath()))
            continue
        # A prototype is shown with its own transform, but not with those of its parents.
        inner = np.array(cache.ComputeRelativeTransform(prim, root.GetParent())[0])
        meshes = reader.meshes_of(prim)
        if not meshes:
            continue
        if node is not None and "geometry" in node.inputs and np.array_equal(inner, np.eye(4)):
            reader.add_parts(node, meshes)
            continue
        instance = node
        if instance is None:
            instance = reader.add("instance", root.GetName())
            if parent is not None:
                instance.add("parent", "Node", parent)
        reader.show(instance, meshes, prim)
        _put(instance, inner @ elements, authored)


def _put(node: vrn.Node, matrices: Array, authored: Authored) -> None:
    parts = decompose(matrices)
    if not np.allclose(compose(*parts), matrices, rtol=1e-5, atol=1e-6):
        authored.lose("shear of instances")
    entry: Any = node.add("instances", "Object")
    for (member, _, _, _, default, kind), values in zip(_PARTS, parts, strict=True):
        if member == "translation" or not np.allclose(values, default, atol=1e-7):
            entry.add(member, kind, values.astype(np.float32))
