"""What ledgers take for the same work."""

from __future__ import annotations

import functools
import os
import subprocess
import sys
import threading
from collections.abc import Callable
from typing import Any

import pytest
from conftest import ENVIRONMENT, Library

import vrn
from vrn.farm import batch, ops
from vrn.farm.identity import identity

Function = Callable[[str], Any]


def plain(path: str, *more: Any, **options: Any) -> Any:
    return more, options


def other(path: str) -> Any:
    return path


def closure(value: Any) -> Function:
    def inner(path: str) -> Any:
        return value

    return inner


def with_default(value: Any) -> Function:
    def inner(path: str, bound: Any = value, *, named: Any = value) -> Any:
        return bound, named

    return inner


def decorated(function: Function, times: int = 1) -> Function:
    @functools.wraps(function)
    def wrapper(path: str) -> Any:
        return [function(path) for _ in range(times)]

    return wrapper


def decorated_otherwise(function: Function, times: int = 1) -> Function:
    @functools.wraps(function)
    def wrapper(path: str) -> Any:
        return [function(path)] * times

    return wrapper


def recursive(value: Any) -> Function:
    def inner(path: str) -> Any:
        return inner(path[1:]) if path else value

    return inner


def using_a_module(value: Any) -> Function:
    import json

    return lambda path: json.dumps(value)


class Scaled:
    def __init__(self, value: Any) -> None:
        self.value = value

    def __call__(self, path: str) -> Any:
        return self.value

    def method(self, path: str) -> Any:
        return self.value


def typed_at_a_prompt(value: Any) -> Function:
    names: dict[str, Function] = {}
    exec(f"def work(path):\n    def inner(): return path in {{{value!r}, 'b', 'c'}}\n    return inner()", names)
    return names["work"]


MAKERS: dict[str, Callable[[Any], Function]] = {
    "closure": closure,
    "default": with_default,
    "decorator": lambda value: decorated(closure(value)),
    "recursive": recursive,
    "module": using_a_module,
    "object": Scaled,
    "method": lambda value: Scaled(value).method,
    "partial": lambda value: functools.partial(plain, value),
    "keyword": lambda value: functools.partial(plain, option=value),
    "nested": lambda value: functools.partial(plain, functools.partial(plain, closure(value))),
    "check": lambda value: functools.partial(vrn.check, catalogue=value),
    "ops": lambda value: functools.partial(ops.check, catalogue=value),
    "prompt": typed_at_a_prompt,
    "built in": lambda value: [value].append,
}
VALUES: list[Any] = [1, 2, "1", "a", (1, 2), None, 1.5, {"a", "b", "c"}, {"a", "b", "d"}, {"a": 1}, {"a": 2}]
VALUES += [plain, other, os.path]


@pytest.mark.parametrize("maker", MAKERS)
def test_other_values_are_other_work(maker: str) -> None:
    make = MAKERS[maker]
    values = [value for value in VALUES if maker != "prompt" or isinstance(value, int | str | float | tuple)]
    identities = [identity(make(value)) for value in values]
    assert len(set(identities)) == len(values)
    assert identities == [identity(make(value)) for value in values]


def test_other_functions_are_other_work() -> None:
    functions: list[Function] = [plain, other, Scaled, len, vrn.check, ops.check]
    functions += [decorated(plain), decorated(other), decorated(plain, 2), decorated_otherwise(plain)]
    assert len({identity(function) for function in functions}) == len(functions)


def test_identities_are_those_of_other_processes() -> None:
    """Strings have other hashes there, so sets have other orders."""
    code = "import test_identity as t; print(t.all_identities())"
    for seed in "1", "2":
        told = subprocess.run(
            [sys.executable, "-c", code], env={**ENVIRONMENT, "PYTHONHASHSEED": seed}, capture_output=True, text=True
        )
        assert told.stdout == f"{all_identities()}\n", told.stderr


def all_identities() -> list[str]:
    return [identity(make({"a", "b", "c"})) for name, make in MAKERS.items() if name != "prompt"]


def test_a_function_may_name_itself() -> None:
    work = Scaled(threading.Lock())
    work.identity = "mine"  # type: ignore[attr-defined]
    assert identity(work) == "mine"


def test_values_that_cannot_be_compared_are_refused_with_a_ledger(library: Library) -> None:
    library(good=1)
    for work in closure(threading.Lock()), functools.partial(plain, threading.Lock()), Scaled(threading.Lock()).method:
        with pytest.raises(ValueError, match=r"ledger cannot tell test_identity\.\S+ from .* give it a string"):
            batch("lib", work, ledger="run.ledger")
        assert not os.path.exists("run.ledger")
        assert len(batch("lib", work)) == 1
