"""Names: of nodes, which are identifiers of VRN and unique in a scene, and of prims, unique below their parent."""

from __future__ import annotations

import re
from collections.abc import Container

from pxr import Tf

import vrn

_IDENTIFIER = re.compile(r"[A-Za-z_][A-Za-z0-9_]*\Z")


def unique(name: str, taken: Container[str]) -> str:
    """The name, with a number if it is taken."""
    if name not in taken:
        return name
    number = 2
    while f"{name}_{number}" in taken:
        number += 1
    return f"{name}_{number}"


class UniqueNames:
    """Makes names unique, also where very many are equal."""

    def __init__(self) -> None:
        self._taken: set[str] = set()
        self._next: dict[str, int] = {}

    def take(self, name: str) -> str:
        result = name
        while result in self._taken:
            number = self._next.get(name, 2)
            self._next[name] = number + 1
            result = f"{name}_{number}"
        self._taken.add(result)
        return result


def prim_name(name: str) -> str:
    """A valid name of a prim: an identifier in ASCII, which all versions of USD take."""
    return Tf.MakeValidIdentifier(name) if name else "_"


def node_name(name: str) -> str:
    """A valid name of a node that a text can refer to."""
    if not _IDENTIFIER.match(name):
        name = re.sub(r"[^A-Za-z0-9]+", "_", name).strip("_") or "node"
        name = name if _IDENTIFIER.match(name) else "_" + name
    return name if _can_be_linked(name) else name + "_"


def _can_be_linked(name: str) -> bool:
    try:
        linked = vrn.loads(f"transform {name}; transform {name}_x; {name}_x.parent = {name};")[name + "_x"]["parent"]
    except (vrn.Error, KeyError):
        return False
    return isinstance(linked, vrn.Node)


def text_for_usd(text: str) -> str:
    """A text as USD stores it: in UTF-8, without the surrogates that stand for other bytes."""
    return text.encode("utf-8", "surrogateescape").decode("utf-8", "replace")
