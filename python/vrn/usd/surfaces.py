"""The faces of a mesh with all that lies on its points and corners, as arrays."""

from __future__ import annotations

from dataclasses import dataclass, field, replace

import numpy as np

from .arrays import Array


@dataclass
class Surface:
    """Faces, given by their numbers of corners and the point of each corner, and attributes by name.

    `points` has one element per point in each array, `corners` one per corner,
    `faces` one per face. `titles` are names of groups of attributes, such as morph targets.
    """

    counts: Array
    indices: Array
    points: dict[str, Array] = field(default_factory=dict)
    corners: dict[str, Array] = field(default_factory=dict)
    faces: dict[str, Array] = field(default_factory=dict)
    titles: dict[str, str] = field(default_factory=dict)

    @property
    def point_count(self) -> int:
        return len(self.points["points"])


def flipped(surface: Surface) -> Surface:
    """The same faces, facing the other way: corners in reverse order, the first one staying first."""
    starts = np.repeat(np.cumsum(surface.counts) - surface.counts, surface.counts)
    counts = np.repeat(surface.counts, surface.counts)
    within = np.arange(len(surface.indices)) - starts
    return _with_corners(surface, starts + (counts - within) % counts)


def _with_corners(surface: Surface, order: Array) -> Surface:
    corners = {name: values[order] for name, values in surface.corners.items()}
    return replace(surface, indices=surface.indices[order], corners=corners)


def with_faces(surface: Surface, is_kept: Array) -> Surface:
    """Only these faces, with all points."""
    kept = _with_corners(surface, np.flatnonzero(np.repeat(is_kept, surface.counts)))
    faces = {name: values[is_kept] for name, values in surface.faces.items()}
    return replace(kept, counts=surface.counts[is_kept], faces=faces)


def with_used_points(surface: Surface) -> Surface:
    """The same faces, with the points that they use."""
    used, indices = np.unique(surface.indices, return_inverse=True)
    points = {name: values[used] for name, values in surface.points.items()}
    return replace(surface, indices=indices.reshape(-1), points=points)


def split(surface: Surface, names: list[str]) -> Surface:
    """The same faces, with attributes of corners moved to the points.

    A point becomes several where its corners differ in these attributes.
    """
    keys = [surface.indices.astype(np.int64)]
    for name in names:
        keys.append(_numbered(surface.corners[name]))
    _, first, inverse = np.unique(np.stack(keys, 1), axis=0, return_index=True, return_inverse=True)
    points = {name: values[surface.indices[first]] for name, values in surface.points.items()}
    points.update({name: surface.corners[name][first] for name in names})
    corners = {name: values for name, values in surface.corners.items() if name not in names}
    return replace(surface, indices=inverse.reshape(-1), points=points, corners=corners)


def _numbered(values: Array) -> Array:
    """A number for each element, equal for equal ones."""
    flat = np.ascontiguousarray(values.reshape(len(values), -1))
    rows = flat.view(np.dtype((np.void, flat.dtype.itemsize * flat.shape[1])))
    return np.unique(rows, return_inverse=True)[1].reshape(-1)
