"""What errors of Dask mean for a batch, with a client that does what the test says."""

from __future__ import annotations

import pickle
from collections.abc import Callable
from concurrent.futures import CancelledError
from typing import Any

import functions
import pytest

from vrn.farm.dask import DaskPool
from vrn.farm.executors import Fate
from vrn.farm.guard import Limits
from vrn.farm.work import Work


class KilledWorker(Exception):
    """Has the name of Dask's exception."""


class FakeClient:
    """A client and the future of its only task: done when it is sent."""

    status = "running"

    def __init__(self, result: bytes | BaseException) -> None:
        self._result = result
        self.cancelled: list[Any] = []

    def submit(self, *arguments: Any, **options: Any) -> FakeClient:
        assert options == {"pure": False, "retries": 0}
        return self

    def add_done_callback(self, call: Callable[[Any], None]) -> None:
        call(self)

    def result(self) -> bytes:
        if isinstance(self._result, bytes):
            return self._result
        raise self._result

    def nthreads(self) -> dict[str, int]:
        return {"a": 2, "b": 3}

    def cancel(self, futures: list[Any]) -> None:
        self.cancelled += futures


@pytest.mark.parametrize(
    ("error", "status", "fate"),
    [
        (CancelledError("lost"), "running", Fate.LOST),
        (KilledWorker("3 times"), "running", Fate.DIED),
        (RuntimeError("odd"), "running", Fate.FATAL),
        (CancelledError("no connection"), "connecting", Fate.FATAL),
    ],
)
def test_errors(error: Exception, status: str, fate: Fate) -> None:
    client = FakeClient(error)
    pool = DaskPool(client, None, Limits())
    future = pool.submit(Work(functions.size), ["/a.vrn"], False)
    client.status = status
    with pytest.raises(type(error)) as raised:
        pool.report(future)
    assert pool.fate(raised.value) is fate


def test_a_report() -> None:
    pool = DaskPool(FakeClient(pickle.dumps(("worker", []))), None, Limits())
    assert pool.report(pool.submit(Work(functions.size), ["/a.vrn"], False)) == ("worker", [])


def test_workers_are_counted() -> None:
    assert DaskPool(FakeClient(b""), None, Limits()).workers == 5
    assert DaskPool(FakeClient(b""), 7, Limits()).workers == 7
