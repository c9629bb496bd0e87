"""The files that the work writes: no two files have the same one, and one that is gone is made again.

A function that writes a file for each says which with its method `target`.
"""

from __future__ import annotations

import os
from collections.abc import Callable, Iterable, Iterator

from .files import exists, is_remote
from .manifest import Entry, digest
from .results import Status
from .work import Function


def without_conflicts(entries: Iterable[Entry], function: Function) -> Iterator[Entry]:
    """The entries; one whose target is that of an entry before it has a problem.

    Runs that share the files find the same conflicts if this precedes the choice of their part.
    """
    target = _target_of(function)
    return _without_conflicts(entries, target) if target else iter(entries)


def is_target_missing(function: Function, path: str) -> bool:
    """Whether the file that the work made of this one does not exist any more."""
    target = _target_of(function)
    return target is not None and not exists(target(path))


def _target_of(function: Function) -> Callable[[str], str] | None:
    return getattr(function, "target", None)


def _without_conflicts(entries: Iterable[Entry], target: Callable[[str], str]) -> Iterator[Entry]:
    taken: set[int] = set()
    for entry in entries:
        if not entry.problem:
            made = target(entry.path)
            identity = digest(made if is_remote(made) else os.path.abspath(made))
            if identity in taken:
                problem = f"{made} is the output of another file; use {{parent}} in the name of outputs"
                entry = entry._replace(problem=problem, verdict=Status.FAILED)
            taken.add(identity)
        yield entry
