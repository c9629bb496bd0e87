"""What the tests with other libraries share: a tetrahedron with corners at the origin and on the axes, at 2, 3 and 4."""

from __future__ import annotations

import math
from typing import NamedTuple

import pytest
import vrn

TETRAHEDRON = """
mesh tetrahedron:
  .points = vec3f[4] {0 0 0, 2 0 0, 0 3 0, 0 0 4};
  .triangles = vec3u[4] {0 2 1, 0 1 3, 0 3 2, 1 2 3};
"""


class Measures(NamedTuple):
    """What geometry says of it."""

    area: float = (2 * 3 + 2 * 4 + 3 * 4 + math.hypot(3 * 4, 2 * 4, 2 * 3)) / 2  # of three legs, and the face across
    volume: float = 2 * 3 * 4 / 6
    lowest: tuple[float, ...] = (0, 0, 0)
    highest: tuple[float, ...] = (2, 3, 4)


@pytest.fixture
def measures() -> Measures:
    return Measures()


@pytest.fixture
def scene() -> vrn.Scene:
    return vrn.loads(TETRAHEDRON)
