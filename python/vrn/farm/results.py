"""What became of each file: its result, and the outcome of one try that a worker reports."""

from __future__ import annotations

import enum
from dataclasses import dataclass
from typing import Any, NamedTuple

from .._errors import Diagnostic, Error, ParseError

_MAX_ERROR = 2000  # characters that are kept of a message


class FarmError(Error):
    """A run cannot start or go on. What was recorded in its ledger stays: the same call goes on from there."""


class Status(str, enum.Enum):
    """What became of a file. A status is also its name as a string: `result.status == "ok"`."""

    OK = "ok"
    """The function returned, and its answer holds no errors."""
    ERRORS = "errors"
    """The file has errors in its content."""
    UNREADABLE = "unreadable"
    """The file cannot be opened or read."""
    FAILED = "failed"
    """The function raised an exception that is not about the content of the file."""
    KILLED = "killed"
    """The process that worked on the file ended, or needed more memory than allowed; so it did when tried alone."""
    TIMEOUT = "timeout"
    """The function took longer than allowed."""
    UNCHANGED = "unchanged"
    """The ledger has a record of the same work on the same content."""

    __str__ = str.__str__
    __repr__ = str.__repr__


TROUBLE = frozenset({Status.UNREADABLE, Status.FAILED, Status.KILLED, Status.TIMEOUT})


@dataclass(frozen=True)
class Answer:
    """What a function may return to report diagnostics with its value."""

    value: Any = None
    """What counts as returned."""
    diagnostics: tuple[Diagnostic, ...] = ()
    """What was found in the file."""
    ok: bool = True
    """False if the content of the file has errors."""


class Outcome(NamedTuple):
    """What one try of one file came to, as workers report it."""

    status: Status
    seconds: float = 0.0
    value: Any = None
    diagnostics: tuple[Diagnostic, ...] = ()
    error: str = ""


class Result(NamedTuple):
    """What became of one file. Immutable; picklable if its value is."""

    path: str
    """The file, as the manifest names it."""
    status: Status
    """What became of it."""
    value: Any = None
    """What the function returned. None for an unchanged file: values are not stored."""
    diagnostics: tuple[Diagnostic, ...] = ()
    """What was found in the file. Of an unchanged file at most the first 100."""
    seconds: float = 0.0
    """The time that the function took."""
    worker: str = ""
    """The host and the process that did the work."""
    error: str = ""
    """Why there is no value: one or more lines for people."""
    previous: Status | None = None
    """The status that the ledger has of an unchanged file."""

    @property
    def verdict(self) -> Status:
        """The status, or for an unchanged file the one on record."""
        return self.previous or self.status

    @property
    def exit_code(self) -> int:
        """0 for a file without errors, 1 for errors in its content, 2 for anything else that went wrong."""
        return 2 if self.verdict in TROUBLE else int(self.verdict is Status.ERRORS)


def describe(error: BaseException) -> str:
    """An exception for people: what it is, and what it says."""
    try:
        text = str(error)[:_MAX_ERROR]
    except Exception as second:
        text = f"its text cannot be made: {type(second).__name__}"
    if text and isinstance(error, ParseError | OSError):
        return text
    return f"{type(error).__name__}: {text}" if text else type(error).__name__
