"""Transforms: three vectors and a matrix of a node, and the ordered operations of a prim, with their animation."""

from __future__ import annotations

from dataclasses import dataclass, field
from typing import Any

import numpy as np
from pxr import Gf, Usd, UsdGeom

import vrn

from .arrays import Array, decompose, finite
from .authored import Authored
from .given import Given
from .numbers import shortest

SAMPLES_PER_SECOND = 30.0
_MOST_SAMPLES = 1_000_000

Op = UsdGeom.XformOp


def quaternion(xyzw: Any, kind: type = Gf.Quatd) -> Any:
    x, y, z, w = map(float, xyzw)
    return kind(w, x, y, z)


@dataclass(frozen=True)
class Part:
    """One of the three vectors: its input, the type of the operation, and its value if it is missing."""

    path: str
    kind: Any
    default: tuple[float, ...]

    def to_usd(self, value: Any) -> Any:
        return quaternion(value) if self.path == "rotation" else Gf.Vec3d(*map(float, value))


# The order of the operations: the first one is applied last. A matrix comes before all of them.
PARTS = (
    Part("translation", Op.TypeTranslate, (0, 0, 0)),
    Part("rotation", Op.TypeOrient, (0, 0, 0, 1)),
    Part("scale", Op.TypeScale, (1, 1, 1)),
)


def write_transform(prim: Usd.Prim, given: Given, animated: dict[str, Any]) -> None:
    """Adds the operations of a node. `animated` has what writes the samples of the vectors that are animated."""
    xform = UsdGeom.Xformable(prim)
    matrix = given.matrix("transform")
    if not np.array_equal(matrix, np.eye(4)):
        xform.AddTransformOp().Set(Gf.Matrix4d(matrix.tolist()))
    for part in PARTS:
        value = given.vector(part.path, part.default)
        if part.path == "rotation":
            value = _unit(value, given)
        if value == part.default and part.path not in animated:
            continue
        operation = xform.AddXformOp(part.kind, Op.PrecisionDouble)
        operation.Set(part.to_usd(value))
        if part.path in animated:
            animated[part.path](operation.GetAttr(), part.to_usd)


def _unit(rotation: tuple[float, ...], given: Given) -> tuple[float, ...]:
    length = float(np.linalg.norm(rotation))
    if abs(length - 1) < 1e-3:
        return rotation
    given.lose("lengths of rotations (set to 1)")
    return tuple(value / length for value in rotation) if length > 0 else (0.0, 0.0, 0.0, 1.0)


@dataclass
class Motion:
    """The keys of one animated vector: times in the unit of the stage, and values."""

    path: str
    times: Array
    values: Array
    attribute: Usd.Attribute | None = None


@dataclass
class Transform:
    """What the operations of a prim say: values by input, and motions."""

    values: dict[str, Any] = field(default_factory=dict)
    motions: list[Motion] = field(default_factory=list)
    sampled: bool = False

    @property
    def is_identity(self) -> bool:
        return not self.values and not self.motions

    def set(self, path: str, value: Any, default: Any) -> None:
        if tuple(value) != tuple(default):
            self.values[path] = tuple(value)

    def put(self, node: vrn.Node) -> None:
        """Adds the values to a node."""
        for path, value in self.values.items():
            kind = {"transform": "Mat4", "rotation": "Quat"}.get(path, "Vec3")
            node.add(path, kind, vrn.Mat4(*value) if kind == "Mat4" else value)


def read_transform(authored: Authored) -> Transform:
    """The transform of a prim relative to its parent."""
    authored.mark("xformOpOrder")
    xform = UsdGeom.Xformable(authored.prim)
    if not xform:
        return Transform()
    operations = xform.GetOrderedXformOps()
    authored.mark(*(operation.GetAttr().GetName() for operation in operations))
    if xform.GetResetXformStack():
        authored.lose("transforms that do not follow those of the parents", "xformOpOrder")
    if not all(_is_finite(operation) for operation in operations):
        authored.lose("transforms of other values than finite numbers")
        return Transform()
    if _is_plain(operations):
        return _plain(operations)
    return _product(xform, operations, authored)


def _is_finite(operation: Any) -> bool:
    """Whether all values of an operation are finite numbers, also in single precision where they are animated."""
    attribute = operation.GetAttr()
    times = attribute.GetTimeSamples()
    values = [attribute.Get(), *(attribute.Get(time) for time in times)]
    numbers = [np.array(_numbers(value), np.float32 if times else np.float64) for value in values if value is not None]
    shapes = [np.shape(part.default) for part in PARTS if part.kind == operation.GetOpType()]
    return all(finite(number) and (not shapes or number.shape in shapes) for number in numbers)


def _numbers(value: Any) -> Any:
    if isinstance(value, (Gf.Quatd, Gf.Quatf, Gf.Quath)):
        return (*value.imaginary, value.real)
    return value


def _is_plain(operations: list[Any]) -> bool:
    """Whether the operations are those of a node, in its order."""
    order = [Op.TypeTransform, *(part.kind for part in PARTS)]
    kinds = [operation.GetOpType() for operation in operations]
    places = [order.index(kind) for kind in kinds if kind in order]
    is_ordered = len(places) == len(kinds) and places == sorted(set(places))
    moves = any(op.MightBeTimeVarying() for op in operations if op.GetOpType() == Op.TypeTransform)
    return is_ordered and not moves and not any(operation.IsInverseOp() for operation in operations)


def _plain(operations: list[Any]) -> Transform:
    result = Transform()
    for operation in operations:
        attribute = operation.GetAttr()
        value = attribute.Get()
        samples = attribute.GetTimeSamples()
        if value is None:
            value = attribute.Get(samples[0]) if samples else None
        if value is None:
            continue
        if operation.GetOpType() == Op.TypeTransform:
            result.set("transform", _rows(value), _rows(Gf.Matrix4d(1)))
            continue
        part = next(part for part in PARTS if part.kind == operation.GetOpType())
        result.set(part.path, _components(value), part.default)
        if len(samples) > 0:
            values = np.array([_components(attribute.Get(time)) for time in samples])
            result.motions.append(Motion(part.path, np.array(samples), values, attribute))
    return result


def _components(value: Any) -> tuple[float, ...]:
    """The numbers of a vector or a quaternion, with the digits that its precision has."""
    numbers = _numbers(value)
    is_double = isinstance(value, (Gf.Quatd, Gf.Vec3d))
    return tuple(float(number) if is_double else shortest(number) for number in numbers)


def _rows(matrix: Any) -> tuple[tuple[float, ...], ...]:
    return tuple(tuple(float(number) for number in row) for row in np.array(matrix))


def _product(xform: UsdGeom.Xformable, operations: list[Any], authored: Authored) -> Transform:
    """The product of any operations: a matrix, or the vectors of matrices at many times if it is animated."""
    result = Transform()
    times = _sample_times(operations, authored)
    if times is None:
        matrix = xform.GetLocalTransformation(Usd.TimeCode.EarliestTime())
        result.set("transform", _rows(matrix), _rows(Gf.Matrix4d(1)))
        return result
    matrices = np.array([np.array(xform.GetLocalTransformation(Usd.TimeCode(float(time)))) for time in times])
    result.sampled = True
    for part, values in zip(PARTS, decompose(matrices), strict=True):
        result.set(part.path, values[0].tolist(), part.default)
        if not np.allclose(values, values[0], rtol=1e-12, atol=1e-12):
            keys = continuous(values) if part.path == "rotation" else values
            result.motions.append(Motion(part.path, times, keys))
    return result


def continuous(rotations: Array) -> Array:
    """The same rotations with signs by which each quaternion is near the one before it."""
    products = (rotations[1:] * rotations[:-1]).sum(1)
    signs = np.cumprod(np.where(products < 0, -1.0, 1.0))
    result: Array = rotations * np.concatenate([[1.0], signs])[:, None]
    return result


def _sample_times(operations: list[Any], authored: Authored) -> Array | None:
    """The times of all keys, and those in between where keys alone do not give the motion. None without motion."""
    keys = sorted({time for operation in operations for time in operation.GetTimeSamples()})
    if len(keys) < 2:
        return None
    if len(operations) == 1 and operations[0].GetOpType() == Op.TypeTransform:
        return np.array(keys)
    rate = authored.prim.GetStage().GetTimeCodesPerSecond() / SAMPLES_PER_SECOND
    count = (keys[-1] - keys[0]) / rate
    if not count < _MOST_SAMPLES:
        authored.lose("motions of more than 1,000,000 samples between their keys")
        return np.array(keys)
    return np.unique(np.concatenate([keys, np.arange(keys[0], keys[-1], rate)]))
