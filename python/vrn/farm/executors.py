"""Where batches run: threads or processes here, or an executor of the user, such as Dask's or loky's."""

from __future__ import annotations

import os
from collections.abc import Sequence
from concurrent.futures import BrokenExecutor, CancelledError, Executor, Future, ThreadPoolExecutor
from typing import Any

from .guard import Children, Limits, default_limits, guarded, work_there
from .packing import Done, received
from .pools import Fate, Pool, folder_of
from .results import FarmError
from .work import Work
from .worker import work_here

ExecutorLike = str | Executor | Any | None


def pool_for(executor: ExecutorLike, limits: Limits, workers: int | None) -> Pool:
    """The pool for what the caller of a run names."""
    if executor is None or executor == "threads":
        return LocalPool(workers or processors(), limits, is_guarded=limits != Limits())
    if executor == "processes":
        return LocalPool(workers or processors(), limits, is_guarded=True)
    if executor == "loky":
        return LokyPool(workers or processors(), limits)
    if isinstance(executor, ThreadPoolExecutor):
        return LocalPool(workers or executor._max_workers, limits, limits != Limits(), executor)
    if isinstance(executor, Executor) and type(executor).__name__ != "ClientExecutor":
        return ExecutorPool(executor, workers or getattr(executor, "_max_workers", None) or processors(), limits)
    if hasattr(executor, "get_executor"):
        from .dask import DaskPool

        return DaskPool(executor, workers, limits)
    raise TypeError(
        'executor: "threads", "processes", "loky", an executor of concurrent.futures, or a client of Dask, '
        f"not {executor!r}"
    )


def processors() -> int:
    """The processors that this process may use."""
    return len(os.sched_getaffinity(0))


class LocalPool:
    """Threads of this process. Guarded ones let child processes do the work."""

    def __init__(self, workers: int, limits: Limits, is_guarded: bool, executor: Executor | None = None) -> None:
        self.batch_seconds = 0.5 if is_guarded else 0.1
        self.workers = workers
        self._limits = limits
        self._is_guarded = is_guarded
        self._executor = executor or ThreadPoolExecutor(workers, "vrn")
        self._is_own = executor is None
        self._children = Children()

    def submit(self, work: Work, paths: Sequence[str], is_suspect: bool) -> Future[Any]:
        if self._is_guarded:
            limits = default_limits(self._limits) if is_suspect else self._limits
            return self._executor.submit(guarded, self._children, work.packed, paths, os.getcwd(), limits)
        return self._executor.submit(work_here, work.function, paths)

    def done(self, future: Future[Any]) -> Done:
        done: Done = future.result()
        return done

    def fate(self, error: BaseException) -> Fate:
        return Fate.FATAL

    def renewed(self) -> Pool:
        return self

    def close(self) -> None:
        self._children.close()
        if self._is_own:
            self._executor.shutdown(wait=True, cancel_futures=True)


class ExecutorPool:
    """An executor of other processes. If it breaks, processes of this machine replace it."""

    batch_seconds = 0.75

    def __init__(self, executor: Executor, workers: int, limits: Limits) -> None:
        self._executor = executor
        self.workers = workers
        self.limits = limits

    def submit(self, work: Work, paths: Sequence[str], is_suspect: bool) -> Future[Any]:
        return self._executor.submit(work_there, work.packed, paths, folder_of(work, paths), self.limits, is_suspect)

    def done(self, future: Future[Any]) -> Done:
        return received(future.result())

    def fate(self, error: BaseException) -> Fate:
        if isinstance(error, BrokenExecutor):
            return Fate.DIED
        return Fate.LOST if isinstance(error, CancelledError) else Fate.FATAL

    def renewed(self) -> Pool:
        return LocalPool(self.workers, self.limits, is_guarded=True)

    def close(self) -> None:
        pass  # the executor belongs to the caller


class LokyPool(ExecutorPool):
    """Processes of loky, which start again after a death."""

    def __init__(self, workers: int, limits: Limits) -> None:
        try:
            from loky import get_reusable_executor
        except ImportError:
            raise FarmError('executor="loky" needs the package loky') from None
        super().__init__(get_reusable_executor(max_workers=workers), workers, limits)

    def renewed(self) -> Pool:
        return LokyPool(self.workers, self.limits)
