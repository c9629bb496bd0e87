"""What makes two functions the same work for a ledger: their names, their texts, and the values that are bound to them.

A function may say it itself, with an attribute `identity` that is a string. What a function takes from its module
counts only by its name.
"""

from __future__ import annotations

import functools
import hashlib
import inspect
import io
import pickle
import types
from collections.abc import Callable
from typing import Any

_FUNCTIONS = (types.FunctionType, types.BuiltinFunctionType, types.MethodType, functools.partial)
_SIZE = 16  # of digests, in bytes


def identity(function: Callable[..., Any]) -> str:
    """The same in every process with the same function. Raises ValueError if its bound values cannot be compared."""
    try:
        return _identity(function, ())
    except (pickle.PicklingError, AttributeError, TypeError, RecursionError) as error:
        raise ValueError(
            f"a ledger cannot tell {name_of(function)} from the same function with other values: {error}; "
            "give it a string `identity` that does, bind only values that can be pickled, or use no ledger"
        ) from error


def name_of(function: Callable[..., Any]) -> str:
    """The module and the name of a function, or of the class of a callable object."""
    if isinstance(function, functools.partial):
        return name_of(function.func)
    named = function if hasattr(function, "__qualname__") else type(function)
    return f"{named.__module__}.{named.__qualname__}"


def _identity(function: Callable[..., Any], outer: tuple[Any, ...]) -> str:
    """`outer` are functions that this one is bound to: a function may refer to itself."""
    own = getattr(function, "identity", None)
    if isinstance(own, str):
        return own
    if any(function is each for each in outer):
        return name_of(function)
    parts = [name_of(function), _text(function)]
    bound = _bound(function)
    if bound is not None:
        parts.append(_digest_of_value(bound, (*outer, function)))
    return " ".join(filter(None, parts))


def _text(function: Any) -> str:
    """A digest of the text of a function, or of that of the class of a callable object; empty if it is built in."""
    if isinstance(function, functools.partial):
        return ""
    code = getattr(function, "__code__", None)  # that of a decorated function is not the one of the function in it
    for source in code or function, type(function):
        try:
            return _digest(inspect.getsource(source).encode(errors="replace"))
        except (OSError, TypeError):  # built in, or typed at a prompt
            pass
    return _digest_of_value(_instructions(code), ()) if code else ""


def _instructions(code: types.CodeType) -> tuple[Any, ...]:
    constants = [_instructions(value) if isinstance(value, types.CodeType) else value for value in code.co_consts]
    return code.co_code, code.co_names, code.co_varnames, constants


def _bound(function: Any) -> Any:
    """The values that a function has beside its text; None if there are none."""
    if isinstance(function, functools.partial):
        return function.func, function.args, sorted(function.keywords.items())
    if isinstance(function, types.FunctionType):
        values = [cell.cell_contents for cell in function.__closure__ or () if _is_filled(cell)]
        bound = values, function.__defaults__ or (), sorted((function.__kwdefaults__ or {}).items())
        return bound if any(bound) else None
    if isinstance(function, types.MethodType):
        return function.__func__, function.__self__
    if isinstance(function, types.BuiltinFunctionType):
        return None if isinstance(function.__self__, types.ModuleType | None) else function.__self__
    return None if isinstance(function, type) or is_compiled(function) else function


def is_compiled(value: Any) -> bool:
    """Whether the value is a function of this package that is written in C++."""
    return type(value).__name__ == "nb_func"


def _is_filled(cell: types.CellType) -> bool:
    try:
        cell.cell_contents
    except ValueError:  # a name that gets its value later
        return False
    return True


class _Pickler(pickle.Pickler):
    """Pickles functions as what makes them the same, modules as their names, and sets in an order of their own."""

    def __init__(self, file: io.BytesIO, value: Any, outer: tuple[Any, ...]) -> None:
        super().__init__(file, protocol=5)
        self._value = value
        self._outer = outer

    def persistent_id(self, value: Any) -> Any:
        if value is self._value:
            return None
        if isinstance(value, set | frozenset):
            return sorted(_digest_of_value(each, self._outer) for each in value)
        if isinstance(value, types.ModuleType):
            return value.__name__
        if isinstance(value, _FUNCTIONS) or is_compiled(value) or _has_identity(value):
            return _identity(value, self._outer)
        return None


def _has_identity(value: Any) -> bool:
    return callable(value) and not isinstance(value, type) and isinstance(getattr(value, "identity", None), str)


def _digest_of_value(value: Any, outer: tuple[Any, ...]) -> str:
    pickled = io.BytesIO()
    _Pickler(pickled, value, outer).dump(value)
    return _digest(pickled.getvalue())


def _digest(data: bytes) -> str:
    return hashlib.blake2b(data, digest_size=_SIZE).hexdigest()
