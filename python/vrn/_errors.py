"""The exceptions of the package, and the diagnostics that they carry."""

from __future__ import annotations

TYPE_CHECKING = False
if TYPE_CHECKING:
    from typing import Any

    from ._vrn import Scene
    from .typing import Severity

    _DiagnosticTuple = tuple[int, int, Severity, str, str]
else:
    _DiagnosticTuple = tuple


class Diagnostic(_DiagnosticTuple):
    """What the reader says about one place of a text.

    Immutable, ordered by position, and picklable. The line and column count from 1, the column in characters; both are
    0 if the position is unknown. The name identifies the kind of message and never changes; the wording of the message
    may.
    """

    __slots__ = ()

    @property
    def line(self) -> int:
        """The line, from 1."""
        return self[0]

    @property
    def column(self) -> int:
        """The column, in characters from 1."""
        return self[1]

    @property
    def severity(self) -> Severity:
        """One of `error`, `warning` and `notice`."""
        return self[2]

    @property
    def name(self) -> str:
        """The name of this kind of message."""
        return self[3]

    @property
    def message(self) -> str:
        """The message."""
        return self[4]

    def __new__(cls, line: int, column: int, severity: Severity, name: str, message: str) -> Diagnostic:
        return tuple.__new__(cls, (line, column, severity, name, message))

    def __getnewargs__(self) -> tuple[int, int, Severity, str, str]:
        return (self.line, self.column, self.severity, self.name, self.message)

    def __repr__(self) -> str:
        return (
            f"Diagnostic(line={self.line}, column={self.column}, severity={self.severity!r}, "
            f"name={self.name!r}, message={self.message!r})"
        )

    def __str__(self) -> str:
        return f"{self.line}:{self.column}: {self.severity}: {self.message} [{self.name}]"


class Error(Exception):
    """The base class of the errors that only this package raises."""


class ParseError(Error, ValueError):
    """A text ends with an error: the statements before it are read, the ones after it are not.

    The string of the error is the place, the message, and the line of the text with a caret under the place.

    >>> try:
    ...     vrn.loads("mesh box; box.size = 2; box.count = ;")
    ... except vrn.ParseError as error:
    ...     print(error.line, error.column, error.scene["box"]["size"])
    1 37 2
    """

    filename: str
    """The name of the file, or `<string>`."""
    line: int
    """The line of the error, from 1; 0 if unknown."""
    column: int
    """The column of the error, in characters from 1; 0 if unknown."""
    diagnostics: tuple[Diagnostic, ...]
    """Everything that was said about the text, the error included."""
    scene: Scene | None
    """The scene of the statements before the error. None in an error that was pickled."""

    def __init__(
        self,
        message: str,
        filename: str = "<string>",
        line: int = 0,
        column: int = 0,
        diagnostics: tuple[Diagnostic, ...] = (),
        scene: Scene | None = None,
    ) -> None:
        super().__init__(message)
        self.filename = filename
        self.line = line
        self.column = column
        self.diagnostics = diagnostics
        self.scene = scene

    def __reduce__(self) -> tuple[Any, ...]:
        return type(self), (self.args[0], self.filename, self.line, self.column, self.diagnostics)


class DiagnosticsError(ParseError):
    """With `strict=True`: a text was read to its end, but there is something to say about it."""


class RemovedError(Error, ReferenceError):
    """A node, input or output is used that is no longer part of its scene."""


class ConversionError(Error, ValueError):
    """The content of a file cannot be converted."""
