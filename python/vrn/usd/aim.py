"""Where cameras and lights are and look: a position, a direction and an up vector, or a matrix."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any

import numpy as np
from pxr import Gf, UsdGeom

import vrn

from .arrays import Array, compose
from .numbers import shortest

if TYPE_CHECKING:
    from pxr import Usd

    from .given import Given
    from .transforms import Transform


def look_along(position: Array, direction: Array, up: Array) -> Array:
    """The matrix that moves what looks along -Z to a position, a direction and an up vector."""
    back = -direction / np.linalg.norm(direction)
    right = np.cross(up, back)
    if np.linalg.norm(right) < 1e-12 * max(float(np.linalg.norm(up)), 1e-300):
        # The up vector leaves the turn open: any other one will do.
        right = np.cross((1, 0, 0) if abs(back[0]) < 0.9 else (0, 1, 0), back)
    right = right / np.linalg.norm(right)
    matrix = np.eye(4)
    matrix[0, :3], matrix[1, :3], matrix[2, :3] = right, np.cross(back, right), back
    matrix[3, :3] = position
    return matrix


def write_aim(prim: Usd.Prim, given: Given, target: Array | None) -> None:
    """Places a camera or light. `target` is the place of the node to look at, if nothing else aims it."""
    position = np.array(given.vector("position", (0, 0, 0)))
    up = np.array(given.vector("up", (0, 1, 0)))
    direction = _direction(given, position)
    if direction is None and target is not None:
        direction = target - position
    if direction is None or not np.linalg.norm(direction) > 0:
        direction = np.array((0.0, 0.0, -1.0))
    elif prim.IsA(UsdGeom.Camera):
        UsdGeom.Camera(prim).CreateFocusDistanceAttr(float(np.linalg.norm(direction)))
    matrix = look_along(position, direction, up)
    if not np.array_equal(matrix, np.eye(4)):
        UsdGeom.Xformable(prim).AddTransformOp().Set(Gf.Matrix4d(matrix.tolist()))


def _direction(given: Given, position: Array) -> Array | None:
    if given.find("lookAt") is not None:
        return np.array(given.vector("lookAt", (0, 0, 0))) - position
    found = given.vector("direction", (0, 0, 0))
    return np.array(found) if any(found) else None


def has_aim(given: Given) -> bool:
    return given.has("lookAt") or any(given.vector("direction", (0, 0, 0)))


def is_aim(transform: Transform) -> bool:
    """Whether a transform only moves and turns, once and for all."""
    if transform.motions or "scale" in transform.values:
        return False
    matrix = _matrix(transform)
    turned = matrix[:3, :3]
    is_turned = np.allclose(turned @ turned.T, np.eye(3), atol=1e-6) and np.linalg.det(turned) > 0
    return bool(is_turned and np.allclose(matrix[:, 3], (0, 0, 0, 1)))


def _matrix(transform: Transform) -> Array:
    values: Any = transform.values
    trs = compose(
        np.array([values.get("translation", (0, 0, 0))]),
        np.array([values.get("rotation", (0, 0, 0, 1))]),
        np.ones((1, 3)),
    )[0]
    product: Array = trs @ np.array(values.get("transform", np.eye(4)))
    return product


def put_aim(node: vrn.Node, transform: Transform, distance: float) -> None:
    """Adds a position and a direction to a camera, at a distance the point that it looks at, or to a light."""
    matrix = _matrix(transform)
    position, direction = matrix[3, :3], -matrix[2, :3]
    if any(position):
        node.add("position", "Pos3", position.tolist())
    if np.allclose(matrix[:3, :3], np.eye(3), atol=1e-12):
        return
    if node.type == "camera":
        length = distance if distance > 0 else 1.0
        node.add("lookAt", "Pos3", [shortest(value) for value in position + direction * length])
        if not np.allclose(look_along(position, direction, np.array((0, 1, 0))), matrix, atol=1e-6):
            node.add("up", "Vec3", matrix[1, :3].tolist())
    else:
        node.add("direction", "Vec3", direction.tolist())
