"""Batches on a cluster of Dask. Dask repeats a batch whose worker died, a few times; then it is ours to find out why."""

from __future__ import annotations

import contextlib
import functools
import time
from collections.abc import Sequence
from concurrent.futures import CancelledError, Future
from typing import Any

from .guard import Limits, work_there
from .packing import Done, received
from .pools import Fate, Pool, folder_of
from .results import FarmError, describe
from .work import Work

_COUNT_SECONDS = 2.0  # between questions for the number of workers, which change while a run lasts


class DaskPool:
    """The workers of a Dask client."""

    batch_seconds = 0.75

    def __init__(self, client: Any, workers: int | None, limits: Limits) -> None:
        self._client = client
        self._sent: set[Any] = set()
        self._fixed_workers = workers
        self._counted_workers = 1 if workers else self._first_count()
        self._counted_at = time.monotonic()
        self._limits = limits

    @property
    def workers(self) -> int:
        if self._fixed_workers:
            return self._fixed_workers
        if time.monotonic() - self._counted_at > _COUNT_SECONDS:
            self._counted_at = time.monotonic()
            self._client.loop.add_callback(self._count)
        return self._counted_workers

    def submit(self, work: Work, paths: Sequence[str], is_suspect: bool) -> Future[Any]:
        folder = folder_of(work, paths)
        sent = self._client.submit(
            work_there, work.packed, paths, folder, self._limits, is_suspect, pure=False, retries=0
        )
        if self._client.status != "running":  # what is sent while the scheduler is gone would never come back
            raise FarmError(f"the client of Dask is {self._client.status}; is its scheduler gone?")
        future: Future[Any] = Future()
        self._sent.add(sent)
        sent.add_done_callback(lambda sent: self._finish(sent, future))
        return future

    def done(self, future: Future[Any]) -> Done:
        return received(future.result())

    def fate(self, error: BaseException) -> Fate:
        if self._client.status != "running":
            return Fate.FATAL
        if isinstance(error, CancelledError):
            return Fate.LOST
        return Fate.DIED if type(error).__name__ == "KilledWorker" else Fate.FATAL

    def renewed(self) -> Pool:
        return self

    def close(self) -> None:
        if self._client.status == "running":
            self._client.cancel(list(self._sent))
        self._sent.clear()

    def _first_count(self) -> int:
        try:
            return _threads(self._client.nthreads())
        except Exception as error:  # the scheduler is gone, or the client is closed
            raise FarmError(f"the scheduler of Dask does not answer: {describe(error)}") from error

    async def _count(self) -> None:
        """Asks beside the run: a scheduler that is gone does not answer, but the batches tell."""
        with contextlib.suppress(Exception):
            self._counted_workers = _threads(await self._client.nthreads(asynchronous=True))

    def _finish(self, sent: Any, future: Future[Any]) -> None:
        """Passes on what came of a batch; the executor that Dask has for this fails if a result was lost."""
        try:
            result = sent.result()
        except BaseException as error:
            outcome = functools.partial(future.set_exception, error)
        else:
            outcome = functools.partial(future.set_result, result)
        self._sent.discard(sent)
        if future.set_running_or_notify_cancel():
            outcome()


def _threads(workers: dict[str, int]) -> int:
    """Of all workers; 1 if there is none yet, so that work waits for the first."""
    return max(1, sum(workers.values()))
