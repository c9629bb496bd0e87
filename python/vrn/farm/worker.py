"""The worker's side: applies the function to each file of a batch. What goes wrong with a file is its outcome."""

from __future__ import annotations

import functools
import os
import pickle
import socket
import time
from collections.abc import Sequence
from typing import Any

from .._errors import ParseError
from .results import Answer, Outcome, Status
from .work import Function

Report = tuple[str, list[Outcome]]
"""The worker, and the outcomes of its batch in the order of the files."""

_MAX_ERROR = 2000  # characters that are kept of a message


def work_here(function: Function, paths: Sequence[str]) -> Report:
    """Works on a batch in this process."""
    return worker_name(), [attempt(function, path) for path in paths]


def pack_report(report: Report) -> bytes:
    """A report for the driver. A value that cannot be pickled fails its file, not the batch."""
    try:
        return pickle.dumps(report, protocol=5)
    except Exception:
        name, outcomes = report
        return pickle.dumps((name, [picklable(outcome) for outcome in outcomes]), protocol=5)


def picklable(outcome: Outcome) -> Outcome:
    """The outcome, or a failure if its value cannot be pickled."""
    try:
        pickle.dumps(outcome, protocol=5)
        return outcome
    except Exception as error:  # values may raise anything
        return Outcome(Status.FAILED, outcome.seconds, error=f"the value cannot be pickled: {error}"[:_MAX_ERROR])


@functools.lru_cache(maxsize=4)
def unpacked(packed: bytes) -> Function:
    """The function of a run, unpickled once a process."""
    return pickle.loads(packed)  # type: ignore[no-any-return]


def worker_name() -> str:
    """The host and the process."""
    return f"{_host()}-{os.getpid()}"


@functools.lru_cache(maxsize=1)
def _host() -> str:
    return socket.gethostname()


def attempt(function: Function, path: str) -> Outcome:
    """Applies the function to a file."""
    start = time.perf_counter()

    def outcome(status: Status, error: BaseException | None = None, **members: Any) -> Outcome:
        text = describe(error)[:_MAX_ERROR] if error else ""
        return Outcome(status, time.perf_counter() - start, error=text, **members)

    try:
        answer = _answer(function(path))
        return outcome(Status.OK if answer.ok else Status.ERRORS, value=answer.value, diagnostics=answer.diagnostics)
    except ParseError as error:
        return outcome(Status.ERRORS, error, diagnostics=error.diagnostics)
    except OSError as error:
        return outcome(Status.UNREADABLE if _is_about(error, path) else Status.FAILED, error)
    except MemoryError as error:
        return outcome(Status.KILLED, error)
    except (Exception, SystemExit) as error:
        return outcome(Status.ERRORS if _is_content_error(error) else Status.FAILED, error)


def describe(error: BaseException) -> str:
    """An exception for people: what it is, and what it says."""
    if isinstance(error, ParseError | OSError) and str(error):
        return str(error)
    text = str(error)
    return f"{type(error).__name__}: {text}" if text else type(error).__name__


def _answer(value: Any) -> Answer:
    if isinstance(value, Answer):
        return value
    from .._vrn import Report as CheckReport

    if isinstance(value, CheckReport):  # what vrn.check returns belongs to its process
        return Answer(None, tuple(value.diagnostics), value.ok)
    return Answer(value)


def _is_content_error(error: BaseException) -> bool:
    from .._errors import ConversionError

    return isinstance(error, ConversionError)


def _is_about(error: OSError, path: str) -> bool:
    return error.filename == path or error.filename is None and str(error).startswith(path)
