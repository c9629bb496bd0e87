"""What a node of a scene holds, and which of it nobody has read."""

from __future__ import annotations

import math
import re
from functools import cache
from typing import Any

import numpy as np

import vrn

from .arrays import Array, finite
from .losses import Losses
from .numbers import DIGITS, LARGEST

WRONG_TYPE = "values of the wrong type"
FURTHER = "further components of vectors and colours"
_UNTYPED = "Buffer"  # of a catalogue, before it has a value


@cache
def _declared_values(node_type: str) -> dict[str, Any]:
    """The inputs that the catalogue declares for a type, with their defaults."""
    scene = vrn.Scene(catalogue=vrn.Catalogue.builtin())
    if node_type not in vrn.Catalogue.builtin().types:
        return {}
    inputs = scene.add(node_type, "node").inputs
    return {name: _plain(found.value) for name, found in inputs.items() if found.type != _UNTYPED}


def _plain(value: Any) -> Any:
    return tuple(value) if isinstance(value, tuple) else value


class Given:
    """The inputs of a node by path, such as `uvsets[0].name`. What is never read is lost."""

    def __init__(self, node: vrn.Node, losses: Losses) -> None:
        self.node = node
        self._losses = losses
        self._inputs = {entry.label[len(node.name) + 1 :]: entry for entry in node.walk()}
        self._read: set[str] = set()

    def find(self, path: str) -> vrn.Input | None:
        self._read.add(path)
        return self._inputs.get(path)

    def has(self, path: str) -> bool:
        return path in self._inputs

    def count(self, path: str) -> int:
        """The number of elements of an array."""
        found = self._inputs.get(path)
        return len(found.children) if found is not None and ("[]" in found.type or found.type == "Array") else 0

    def lose(self, what: str, path: str = "") -> None:
        self._losses.add(what, f"{self.node.name}.{path}" if path else self.node.name)

    def number(self, path: str, default: float) -> float:
        value = self._value(path, (int, float), default)
        return self._checked(path, (float(value),), (default,))[0]

    def vector(self, path: str, default: tuple[float, ...]) -> tuple[float, ...]:
        value = self._value(path, tuple, default)
        if len(value) != len(default) or isinstance(value[0], tuple):
            self.lose(WRONG_TYPE, path)
            value = default
        return self._checked(path, tuple(map(float, value)), default)

    def color(self, path: str, default: tuple[float, ...]) -> tuple[float, ...]:
        """Red, green and blue. Any alpha but 1 is lost."""
        found = self.find(path)
        has_alpha = found is not None and isinstance(found.value, tuple) and len(found.value) == 4
        values = self.vector(path, (*default, 1.0) if has_alpha else default)
        if has_alpha and values[3] != 1:
            self.lose(FURTHER, path)
        return values[:3]

    def matrix(self, path: str) -> Array:
        value = self._value(path, tuple, vrn.Mat4(*np.eye(4)))
        array = np.array(value, np.float64)
        if array.shape == (4, 4) and finite(array):
            return array
        self.lose(WRONG_TYPE if array.shape != (4, 4) else "numbers that are not finite", path)
        return np.eye(4)

    def text(self, path: str) -> str:
        return str(self._value(path, str, ""))

    def flag(self, path: str, default: bool) -> bool:
        return bool(self._value(path, bool, default))

    def link(self, path: str) -> vrn.Node | None:
        """The node that an input has as its value, or whose output it is connected to."""
        found = self.find(path)
        if found is None:
            return None
        if found.connection is not None:
            return found.connection.node
        if isinstance(found.value, vrn.Node):
            return found.value
        if found.value is not None:
            self.lose(WRONG_TYPE, path)
        return None

    def floats(self, path: str, components: int) -> Array | None:
        """The numbers of a buffer in single precision, of shape (n,) or (n, components). None if there are none."""
        array = self._buffer(path, components)
        if array is None:
            return None
        if array.dtype.kind != "f" or self._inputs[path].type.startswith(("hsv", "hsl")):
            self.lose(WRONG_TYPE, path)
            return None
        if np.abs(array, where=np.isfinite(array), out=np.zeros(array.shape)).max(initial=0) > LARGEST:
            self.lose("numbers beyond the range of a float", path)
            return None
        stored = array.astype(np.float32)
        if array.dtype != np.float32 and not np.array_equal(stored, array, equal_nan=True):
            self.lose(DIGITS, path)
        return stored

    def integers(self, path: str, components: int = 0) -> Array | None:
        """The whole numbers of a buffer, of shape (n, components), or one after the other. None if there are none."""
        array = self._buffer(path, components)
        if array is not None and array.dtype.kind not in "iu":
            self.lose(WRONG_TYPE, path)
            return None
        return array

    def numbers(self, path: str) -> Array | None:
        """The numbers of a buffer, of any type. None if there are none."""
        found = self.find(path)
        value = found.value if found is not None and found.type != _UNTYPED else None
        return value if isinstance(value, np.ndarray) and value.size else None

    def add_unread(self, *ignored: str) -> None:
        """Reports the inputs with information that nothing has read."""
        for path, found in self._inputs.items():
            general = re.sub(r"\[\d+\]", "[]", path)
            if (
                path in self._read
                or general in ignored
                or general.startswith("bounds")
                or not self._informs(path, found)
            ):
                continue
            self._losses.add(f"input {general} of {self.node.type}", found.label)

    def _informs(self, path: str, found: vrn.Input) -> bool:
        if found.connection is not None:
            return True
        if found.type == _UNTYPED:
            return False
        value = found.value
        if isinstance(value, vrn.Input):
            return False  # an object or array: its members speak for themselves
        if isinstance(value, np.ndarray):
            return bool(value.size)
        if value is None or value == "":
            return False
        declared = _declared_values(self.node.type)
        return path not in declared or declared[path] != _plain(value)

    def _value(self, path: str, kinds: Any, default: Any) -> Any:
        found = self.find(path)
        if found is None or (found.type == "Null" and found.connection is None):
            return default
        value = found.value
        is_flag = isinstance(value, bool) and kinds is not bool
        if isinstance(value, kinds) and not is_flag:
            return value
        self.lose(WRONG_TYPE, path)
        return default

    def _checked(self, path: str, values: tuple[float, ...], default: tuple[float, ...]) -> tuple[float, ...]:
        if all(map(math.isfinite, values)):
            return values
        self.lose("numbers that are not finite", path)
        return default

    def _buffer(self, path: str, components: int) -> Array | None:
        found = self.find(path)
        if found is None or found.type in ("Null", _UNTYPED):
            return None
        value = found.value
        if not isinstance(value, np.ndarray):
            self.lose(WRONG_TYPE, path)
            return None
        if value.size == 0:
            return None
        if components == 0:
            return value.reshape(-1)
        flat = value.reshape(len(value), -1)
        if flat.shape[1] == components:
            return flat if components > 1 else flat[:, 0]
        # Numbers without a grouping, as in scenes that have plain buffers.
        if value.ndim == 1 and value.size % components == 0:
            return value.reshape(-1, components)
        self.lose(WRONG_TYPE, path)
        return None
