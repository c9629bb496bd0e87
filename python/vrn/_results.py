"""What conversions and comparisons report."""

from __future__ import annotations

from _operator import itemgetter

TYPE_CHECKING = False
if TYPE_CHECKING:
    from typing import Literal

    Change = Literal["removed", "added", "changed"]
    _LossTuple = tuple[str, int, str]
    _DifferenceTuple = tuple[str, Change, str | None, str | None, str]
else:
    _LossTuple = _DifferenceTuple = tuple


class Loss(_LossTuple):
    """A part of a scene that an output does not reproduce, or a defect of an input. Immutable and picklable."""

    __slots__ = ()
    what: str = property(itemgetter(0), doc="What is lost.")  # type: ignore[assignment]
    count: int = property(itemgetter(1), doc="How many times.")  # type: ignore[assignment]
    path: str = property(itemgetter(2), doc="The first node or input concerned; empty for the file.")  # type: ignore[assignment]

    def __new__(cls, what: str, count: int, path: str) -> Loss:
        return tuple.__new__(cls, (what, count, path))

    def __getnewargs__(self) -> tuple[str, int, str]:
        return (self.what, self.count, self.path)

    def __repr__(self) -> str:
        return f"Loss(what={self.what!r}, count={self.count}, path={self.path!r})"

    def __str__(self) -> str:
        times = f" ({self.count} times)" if self.count > 1 else ""
        return f"{self.path}: {self.what}{times}" if self.path else self.what + times


class Difference(_DifferenceTuple):
    """What differs between two scenes at one path. Immutable and picklable; the string is one line."""

    __slots__ = ()
    path: str = property(itemgetter(0), doc="The node or input; empty for the scene.")  # type: ignore[assignment]
    change: Change = property(itemgetter(1), doc='"removed", "added" or "changed".')  # type: ignore[assignment]
    before: str | None = property(itemgetter(2), doc="The old value as text, if there is one.")  # type: ignore[assignment]
    after: str | None = property(itemgetter(3), doc="The new value as text, if there is one.")  # type: ignore[assignment]

    def __new__(cls, path: str, change: Change, before: str | None, after: str | None, text: str) -> Difference:
        return tuple.__new__(cls, (path, change, before, after, text))

    def __getnewargs__(self) -> tuple[str, Change, str | None, str | None, str]:
        return tuple(self)

    def __repr__(self) -> str:
        return f"<vrn.Difference {self[4]!r}>"

    def __str__(self) -> str:
        return self[4]
