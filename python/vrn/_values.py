"""The small values of a scene: vectors, points, quaternions, colours and matrices.

Each is a tuple of real numbers with names. They are immutable, compare with plain tuples, and numpy takes them as they
are. These classes avoid collections.namedtuple and typing, which take longer to import than the rest of the package.
"""

from __future__ import annotations

TYPE_CHECKING = False
if TYPE_CHECKING:
    from collections.abc import Iterable
    from typing import ClassVar

    from typing_extensions import Self

    Numbers = tuple[float, ...]
else:
    Numbers = tuple


class _Components(Numbers):
    """A tuple of a fixed number of reals."""

    __slots__ = ()
    size: ClassVar[int]

    def __new__(cls, *components: float) -> Self:
        if len(components) != cls.size:
            raise TypeError(f"{cls.__name__} takes {cls.size} numbers, not {len(components)}")
        return tuple.__new__(cls, map(float, components))

    def __getnewargs__(self) -> tuple[float, ...]:
        return tuple(self)

    def __repr__(self) -> str:
        return f"{type(self).__name__}{tuple(self)!r}"


class _XY(_Components):
    __slots__ = ()

    @property
    def x(self) -> float:
        """The first component."""
        return self[0]

    @property
    def y(self) -> float:
        """The second component."""
        return self[1]


class _XYZ(_XY):
    __slots__ = ()

    @property
    def z(self) -> float:
        """The third component."""
        return self[2]


class Vec2(_XY):
    """A vector of two reals: x, y."""

    __slots__ = ()
    size = 2


class Vec3(_XYZ):
    """A vector of three reals: x, y, z.

    >>> vrn.Vec3(1, 2, 3)
    Vec3(1.0, 2.0, 3.0)
    >>> vrn.Vec3(1, 2, 3).y
    2.0
    """

    __slots__ = ()
    size = 3


class Vec4(_XYZ):
    """A vector of four reals: x, y, z, w."""

    __slots__ = ()
    size = 4

    @property
    def w(self) -> float:
        """The fourth component."""
        return self[3]


class Pos2(_XY):
    """A point of the plane: x, y."""

    __slots__ = ()
    size = 2


class Pos3(_XYZ):
    """A point of space: x, y, z."""

    __slots__ = ()
    size = 3


class Quat(_Components):
    """A quaternion in the order of the format: a, b, c, d."""

    __slots__ = ()
    size = 4

    @property
    def a(self) -> float:
        """The first component."""
        return self[0]

    @property
    def b(self) -> float:
        """The second component."""
        return self[1]

    @property
    def c(self) -> float:
        """The third component."""
        return self[2]

    @property
    def d(self) -> float:
        """The fourth component."""
        return self[3]


class Rgba(_Components):
    """A colour: r, g, b, a, where 1 is full intensity. Three numbers make an opaque colour.

    >>> vrn.Rgba(1, 0.5, 0)
    Rgba(1.0, 0.5, 0.0, 1.0)
    """

    __slots__ = ()
    size = 4

    @property
    def r(self) -> float:
        """Red."""
        return self[0]

    @property
    def g(self) -> float:
        """Green."""
        return self[1]

    @property
    def b(self) -> float:
        """Blue."""
        return self[2]

    @property
    def a(self) -> float:
        """Opacity."""
        return self[3]

    def __new__(cls, *components: float) -> Self:
        if len(components) == 3:
            components = (*components, 1.0)
        return super().__new__(cls, *components)


class _Rows(tuple):  # type: ignore[type-arg]
    """A square matrix as a tuple of rows."""

    __slots__ = ()
    size: ClassVar[int]

    def __new__(cls, *rows: Iterable[float]) -> Self:
        made = tuple(tuple(map(float, row)) for row in rows)
        if len(made) != cls.size or any(len(row) != cls.size for row in made):
            raise TypeError(f"{cls.__name__} takes {cls.size} rows of {cls.size} numbers")
        return tuple.__new__(cls, made)

    def __getnewargs__(self) -> tuple[tuple[float, ...], ...]:
        return tuple(self)

    def __repr__(self) -> str:
        return f"{type(self).__name__}({', '.join(map(repr, self))})"


class Mat3(_Rows):
    """A matrix of three rows of three reals."""

    __slots__ = ()
    size = 3


class Mat4(_Rows):
    """A matrix of four rows of four reals.

    >>> vrn.Mat4((1, 0, 0, 0), (0, 1, 0, 0), (0, 0, 1, 0), (5, 0, 0, 1))[3]
    (5.0, 0.0, 0.0, 1.0)
    """

    __slots__ = ()
    size = 4
