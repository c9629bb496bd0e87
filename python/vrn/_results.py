"""What conversions and comparisons report."""

from __future__ import annotations

TYPE_CHECKING = False
if TYPE_CHECKING:
    from .typing import Change

    _LossTuple = tuple[str, int, str]
    _DifferenceTuple = tuple[str, Change, str | None, str | None, str]
else:
    _LossTuple = _DifferenceTuple = tuple


class Loss(_LossTuple):
    """A part of a scene that an output does not reproduce, or a defect of an input. Immutable and picklable."""

    __slots__ = ()

    @property
    def what(self) -> str:
        """What is lost."""
        return self[0]

    @property
    def count(self) -> int:  # type: ignore[override]
        """How many times."""
        return self[1]

    @property
    def path(self) -> str:
        """The first node or input concerned; empty for the file."""
        return self[2]

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

    @property
    def path(self) -> str:
        """The node or input; empty for the scene."""
        return self[0]

    @property
    def change(self) -> Change:
        """One of `removed`, `added` and `changed`."""
        return self[1]

    @property
    def before(self) -> str | None:
        """The old value as text, if there is one."""
        return self[2]

    @property
    def after(self) -> str | None:
        """The new value as text, if there is one."""
        return self[3]

    def __new__(cls, path: str, change: Change, before: str | None, after: str | None, text: str) -> Difference:
        return tuple.__new__(cls, (path, change, before, after, text))

    def __getnewargs__(self) -> tuple[str, Change, str | None, str | None, str]:
        return (self.path, self.change, self.before, self.after, self[4])

    def __repr__(self) -> str:
        return f"<vrn.Difference {self[4]!r}>"

    def __str__(self) -> str:
        return self[4]
