"""What an executor is to a run: workers for batches.

A pool hides what differs between executors: how a batch is sent, how many workers there are, and what an error of the
executor means for the batch that had it.
"""

from __future__ import annotations

import enum
import os
from collections.abc import Sequence
from concurrent.futures import Future
from typing import Any, Protocol

from .files import is_remote
from .packing import Done
from .work import Work


class Fate(enum.Enum):
    """What an error of an executor means for the batch that had it."""

    DIED = "the worker died, perhaps of a file of the batch"
    LOST = "the batch is not done, through no fault of its own"
    FATAL = "no batch can be done"


class Pool(Protocol):
    """Workers for batches."""

    batch_seconds: float
    """How long a batch should take."""

    @property
    def workers(self) -> int:
        """How many there are now; at least one."""

    def submit(self, work: Work, paths: Sequence[str], is_suspect: bool) -> Future[Any]:
        """Sends a batch. A suspect one may kill its worker. Raises what a future may."""

    def done(self, future: Future[Any]) -> Done:
        """The outcomes of a batch that is done. Raises what the executor did."""

    def fate(self, error: BaseException) -> Fate:
        """What the error means."""

    def renewed(self) -> Pool:
        """A pool that can go on after a death: this one, or another in its place."""

    def close(self) -> None:
        """Cancels what has not begun, and releases what belongs to the pool."""


def folder_of(work: Work, paths: Sequence[str]) -> str:
    """The folder that workers elsewhere need for the work: the current one if any path is relative, otherwise none."""
    target = getattr(work.function, "target", None)
    names = [*paths, target(paths[0])] if target else paths
    return "" if all(is_remote(name) or os.path.isabs(name) for name in names) else os.getcwd()
