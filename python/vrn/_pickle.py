"""How scenes, catalogues and limits are pickled.

A scene is its text, in which buffers are empty, the bytes of the buffers, and what no text says. From protocol 5 on these are out of band
for whoever passes a `buffer_callback`: no byte of them is copied, neither by pickling nor by restoring.
"""

from __future__ import annotations

import pickle

from . import _vrn

TYPE_CHECKING = False
if TYPE_CHECKING:
    from typing import Any, SupportsIndex

    from ._vrn import Scene


def reduced(scene: Scene, protocol: SupportsIndex) -> tuple[Any, ...]:
    """What pickle stores of a scene."""
    try:
        text, buffers, *rest = _vrn.state_of(scene)
    except ValueError as error:
        raise pickle.PicklingError(str(error)) from None
    stored = pickle.PickleBuffer if int(protocol) >= 5 else bytes
    return restored, (text, tuple((place, kind, stored(data)) for place, kind, data in buffers), *rest)


def restored(text: bytes, buffers: tuple[Any, ...], *rest: Any) -> Scene:
    """The scene of what was stored."""
    return _vrn.restored(text, buffers, *rest)
