"""The types in the signatures of the package, for annotations.

>>> def load(source: vrn.typing.Source) -> vrn.Scene:
...     return vrn.read(source)
"""

from __future__ import annotations

import os
from collections.abc import Mapping, Sequence
from typing import TYPE_CHECKING, Any, Literal, Protocol, TypeAlias, Union

from ._vrn import Adopted, Input, Node, Output

if TYPE_CHECKING:
    from numpy.typing import ArrayLike
    from typing_extensions import Buffer
else:
    ArrayLike = Buffer = Any


class ReadableFile(Protocol):
    """A file opened for reading bytes or text."""

    def read(self, size: int = ..., /) -> bytes | str:
        """At most `size` bytes or characters; all if there is no size."""
        ...


class WritableFile(Protocol):
    """A file opened for writing bytes."""

    def write(self, data: Any, /) -> object:
        """Writes an object with the buffer protocol."""
        ...


Path: TypeAlias = Union[str, bytes, "os.PathLike[str]", "os.PathLike[bytes]"]
"""The name of a file."""

Source: TypeAlias = Union[Path, ReadableFile]
"""What texts are read from."""

Target: TypeAlias = Union[Path, WritableFile]
"""What texts are written to."""

Data: TypeAlias = Union[str, "Buffer"]
"""A text, or its bytes in UTF-8."""

Value: TypeAlias = Any
"""The value of an input, which its type determines: bool, int, float, str, one of the small values such as `Vec3`, a
numpy array for a buffer, a `Node`, an `Output`, an `Input` for an array or object, or None."""

Assignable: TypeAlias = Union[
    "ArrayLike", "Buffer", Sequence[Any], Mapping[str, Any], Adopted, Input, Node, Output, None
]
"""What can be assigned to an input."""

Severity: TypeAlias = Literal["error", "warning", "notice"]
"""How bad a diagnostic is."""

Change: TypeAlias = Literal["removed", "added", "changed"]
"""What happened between two scenes."""
