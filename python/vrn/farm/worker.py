"""The worker's side: applies the function to each file of a batch. What goes wrong with a file is its outcome."""

from __future__ import annotations

import functools
import os
import pickle
import socket
import time
from collections.abc import Sequence
from typing import Any

from .._errors import Diagnostic, ParseError
from .packing import Done
from .results import Answer, Outcome, Status, describe
from .work import Function


def work_here(function: Function, paths: Sequence[str]) -> Done:
    """Works on a batch in this process. A function can have an `attempt_all`, which is faster than one by one."""
    attempt_all = getattr(function, "attempt_all", None)
    if hasattr(function, "__wrapped__"):  # functools.wraps copies the attributes of another function
        attempt_all = None
    return worker_name(), attempt_all(paths) if attempt_all else [attempt(function, path) for path in paths]


@functools.lru_cache(maxsize=4)
def loaded(packed: bytes) -> Function:
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
        text = "" if error is None else describe(error)
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
    except KeyboardInterrupt:
        raise
    except BaseException as error:
        return outcome(Status.ERRORS if _is_content_error(error) else Status.FAILED, error)


def _answer(value: Any) -> Answer:
    if isinstance(value, Answer):
        for found in value.diagnostics:
            if not isinstance(found, Diagnostic):
                raise TypeError(f"Answer: diagnostics must be of vrn.Diagnostic, not {type(found).__name__}")
        return value
    from .._vrn import Report as CheckReport

    if isinstance(value, CheckReport):  # what vrn.check returns belongs to its process
        return Answer(None, tuple(value.diagnostics), value.ok)
    return Answer(value)


def _is_content_error(error: BaseException) -> bool:
    from .._errors import ConversionError

    return isinstance(error, ConversionError)


def _is_about(error: OSError, path: str) -> bool:
    return error.filename == path or error.filename is None and describe(error).startswith(path)
