"""Batches on a cluster of Dask. Dask repeats a batch whose worker died, a few times; then it is ours to find out why."""

from __future__ import annotations

import functools
import time
from collections.abc import Sequence
from concurrent.futures import CancelledError, Future
from typing import Any

from .executors import Fate, Pool, folder_of
from .guard import Limits, work_there
from .packing import Done, received
from .work import Work

_COUNT_SECONDS = 2.0  # between questions for the number of workers, which change while a run lasts


class DaskPool:
    """The workers of a Dask client."""

    batch_seconds = 0.75

    def __init__(self, client: Any, workers: int | None, limits: Limits) -> None:
        self._client = client
        self._sent: set[Any] = set()
        self._fixed_workers = workers
        self._counted_workers = 1
        self._counted_at = float("-inf")
        self._limits = limits

    @property
    def workers(self) -> int:
        if self._fixed_workers:
            return self._fixed_workers
        if time.monotonic() - self._counted_at > _COUNT_SECONDS and self._client.status == "running":
            self._counted_workers = max(1, sum(self._client.nthreads().values()))
            self._counted_at = time.monotonic()
        return self._counted_workers

    def submit(self, work: Work, paths: Sequence[str], is_suspect: bool) -> Future[Any]:
        folder = folder_of(work, paths)
        sent = self._client.submit(
            work_there, work.packed, paths, folder, self._limits, is_suspect, pure=False, retries=0
        )
        future: Future[Any] = Future()
        self._sent.add(sent)
        sent.add_done_callback(lambda sent: self._finish(sent, future))
        return future

    def report(self, future: Future[Any]) -> Done:
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
