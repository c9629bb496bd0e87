"""Arrays of numpy as arrays of USD and back, without a loop over their elements."""

from __future__ import annotations

from typing import Any, TypeAlias

import numpy as np
from numpy.typing import NDArray
from pxr import Sdf, Vt

Array: TypeAlias = NDArray[Any]

_TYPES = Sdf.ValueTypeNames
_KINDS: dict[Any, tuple[type, str, Any]] = {
    # The type of attributes: the class of arrays, the type and the shape of an element.
    _TYPES.FloatArray: (Vt.FloatArray, "float32", ()),
    _TYPES.DoubleArray: (Vt.DoubleArray, "float64", ()),
    _TYPES.IntArray: (Vt.IntArray, "int32", ()),
    _TYPES.Int64Array: (Vt.Int64Array, "int64", ()),
    _TYPES.Float2Array: (Vt.Vec2fArray, "float32", (2,)),
    _TYPES.Float3Array: (Vt.Vec3fArray, "float32", (3,)),
    _TYPES.Float4Array: (Vt.Vec4fArray, "float32", (4,)),
    _TYPES.Point3fArray: (Vt.Vec3fArray, "float32", (3,)),
    _TYPES.Vector3fArray: (Vt.Vec3fArray, "float32", (3,)),
    _TYPES.Normal3fArray: (Vt.Vec3fArray, "float32", (3,)),
    _TYPES.Color3fArray: (Vt.Vec3fArray, "float32", (3,)),
    _TYPES.Color4fArray: (Vt.Vec4fArray, "float32", (4,)),
    _TYPES.TexCoord2fArray: (Vt.Vec2fArray, "float32", (2,)),
    _TYPES.QuatfArray: (Vt.QuatfArray, "float32", (4,)),
    _TYPES.Half3Array: (Vt.Vec3hArray, "float16", (3,)),
    _TYPES.Matrix4dArray: (Vt.Matrix4dArray, "float64", (4, 4)),
}


def to_usd(values: Any, type_name: Any) -> Any:
    """An array for an attribute of a type. Quaternions are x y z w, as in scenes."""
    kind, dtype, shape = _KINDS[type_name]
    array = np.ascontiguousarray(np.asarray(values).reshape(-1, *shape), dtype)
    return kind.FromNumpy(array)  # type: ignore[attr-defined]


def from_usd(values: Any) -> Array:
    """The elements of an array of USD. Quaternions are x y z w, as in scenes."""
    return np.array(values)


def finite(array: Array) -> bool:
    return bool(np.isfinite(array).all())


def decompose(matrices: Array) -> tuple[Array, Array, Array]:
    """The translations, rotations (x y z w) and scales of matrices for row vectors, of shape (n, 4, 4)."""
    matrices = np.asarray(matrices, np.float64)
    rows = matrices[:, :3, :3]
    scales = np.linalg.norm(rows, axis=2)
    scales[np.linalg.det(rows) < 0] *= -1
    safe = np.where(scales == 0, 1.0, scales)
    return matrices[:, 3, :3], quaternions(rows / safe[:, :, None]), scales


def quaternions(rotations: Array) -> Array:
    """The quaternions (x y z w) of rotation matrices for row vectors, of shape (n, 3, 3)."""
    m = rotations
    xx, yy, zz = m[:, 0, 0], m[:, 1, 1], m[:, 2, 2]
    # Four times the squares of w, x, y and z: dividing by the largest one is the stable way.
    squares = np.stack([1 + xx - yy - zz, 1 - xx + yy - zz, 1 - xx - yy + zz, 1 + xx + yy + zz], 1)
    x, y, z = m[:, 1, 2] - m[:, 2, 1], m[:, 2, 0] - m[:, 0, 2], m[:, 0, 1] - m[:, 1, 0]
    xy, xz, yz = m[:, 0, 1] + m[:, 1, 0], m[:, 2, 0] + m[:, 0, 2], m[:, 1, 2] + m[:, 2, 1]
    candidates = np.stack(
        [
            np.stack([squares[:, 0], xy, xz, x], 1),
            np.stack([xy, squares[:, 1], yz, y], 1),
            np.stack([xz, yz, squares[:, 2], z], 1),
            np.stack([x, y, z, squares[:, 3]], 1),
        ],
        1,
    )
    chosen = candidates[np.arange(len(m)), squares.argmax(1)]
    lengths: Array = np.maximum(np.linalg.norm(chosen, axis=1, keepdims=True), np.finfo(float).tiny)
    return np.asarray(chosen / lengths)


def compose(translations: Array, rotations: Array, scales: Array) -> Array:
    """The matrices for row vectors of translations, rotations (x y z w) and scales."""
    x, y, z, w = np.asarray(rotations, np.float64).T
    matrices = np.zeros((len(x), 4, 4))
    matrices[:, 0, :3] = np.stack([1 - 2 * (y * y + z * z), 2 * (x * y + z * w), 2 * (x * z - y * w)], 1)
    matrices[:, 1, :3] = np.stack([2 * (x * y - z * w), 1 - 2 * (x * x + z * z), 2 * (y * z + x * w)], 1)
    matrices[:, 2, :3] = np.stack([2 * (x * z + y * w), 2 * (y * z - x * w), 1 - 2 * (x * x + y * y)], 1)
    matrices[:, :3, :3] *= np.asarray(scales, np.float64)[:, :, None]
    matrices[:, 3, :3] = translations
    matrices[:, 3, 3] = 1
    return matrices
