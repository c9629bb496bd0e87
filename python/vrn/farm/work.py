"""The function that is applied to every file: its identity in ledgers, and its form for other processes."""

from __future__ import annotations

import functools
import importlib
import io
import pickle
from collections.abc import Callable
from typing import Any

from .identity import identity, is_compiled, name_of
from .results import FarmError

Function = Callable[[str], Any]


class Work:
    """A function of one path."""

    def __init__(self, function: Function) -> None:
        if not callable(function):
            raise TypeError(f"the work must be a function of a path, not {type(function).__name__}")
        self.function = function

    @functools.cached_property
    def identity(self) -> str:
        """What ledgers know the function by. Raises ValueError if there is no way to tell it from others."""
        return identity(self.function)

    @functools.cached_property
    def packed(self) -> bytes:
        """The function for another process. Raises FarmError if there is no way to send it."""
        try:
            packed = _dumps(self.function)
        except (pickle.PicklingError, AttributeError, TypeError) as error:
            return self._packed_by_value(str(error))
        if b"__main__" in packed:  # a name that means another module in another process
            return self._packed_by_value("it is defined in the main script")
        return packed

    def _packed_by_value(self, reason: str) -> bytes:
        try:
            import cloudpickle
        except ImportError:
            raise FarmError(
                f"{name_of(self.function)} cannot be sent to other processes: {reason}; "
                "move it to a module, or install cloudpickle"
            ) from None
        try:
            return bytes(cloudpickle.dumps(self.function, protocol=5))
        except Exception as error:  # anything that the function refers to may refuse
            raise FarmError(f"{name_of(self.function)} cannot be sent to other processes: {error}") from error


class _Pickler(pickle.Pickler):
    """Pickles functions that are written in C++ by their names, as others are."""

    def reducer_override(self, value: Any) -> Any:
        if is_compiled(value):
            return named, (value.__module__, value.__name__)
        return NotImplemented


def named(module: str, name: str) -> Any:
    """A function by its name, in the process that unpickles it."""
    return getattr(importlib.import_module(module), name)


def _dumps(function: Function) -> bytes:
    packed = io.BytesIO()
    _Pickler(packed, protocol=5).dump(function)
    return packed.getvalue()
