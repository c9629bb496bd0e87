"""What errors of Dask mean for a batch, with a client that does what the test says."""

from __future__ import annotations

import asyncio
import pickle
from collections.abc import Callable, Coroutine
from concurrent.futures import CancelledError
from typing import Any

import functions
import pytest
from conftest import wait_until

from vrn.farm import FarmError
from vrn.farm.dask import DaskPool
from vrn.farm.guard import Limits
from vrn.farm.pools import Fate
from vrn.farm.work import Work


class KilledWorker(Exception):
    """Has the name of Dask's exception."""


class FakeClient:
    """A client and the future of its only task: done when it is sent."""

    status = "running"

    def __init__(self, result: bytes | BaseException) -> None:
        self._result = result
        self.cancelled: list[Any] = []
        self.threads: dict[str, int] | None = {"a": 2, "b": 3}

    def submit(self, *arguments: Any, **options: Any) -> FakeClient:
        assert options == {"pure": False, "retries": 0}
        return self

    def add_done_callback(self, call: Callable[[Any], None]) -> None:
        call(self)

    def result(self) -> bytes:
        if isinstance(self._result, bytes):
            return self._result
        raise self._result

    def nthreads(self, asynchronous: bool = False) -> Any:
        async def later() -> dict[str, int]:
            return self.answer()

        return later() if asynchronous else self.answer()

    def answer(self) -> dict[str, int]:
        if self.threads is None:
            raise OSError("no connection")
        return self.threads

    @property
    def loop(self) -> FakeClient:
        return self

    def add_callback(self, call: Callable[[], Coroutine[Any, Any, None]]) -> None:
        asyncio.run(call())

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
        pool.done(future)
    assert pool.fate(raised.value) is fate


def test_a_report() -> None:
    pool = DaskPool(FakeClient(pickle.dumps(("worker", []))), None, Limits())
    assert pool.done(pool.submit(Work(functions.size), ["/a.vrn"], False)) == ("worker", [])


def test_a_batch_that_cannot_be_sent() -> None:
    client = FakeClient(b"")
    pool = DaskPool(client, None, Limits())
    client.status = "connecting"
    with pytest.raises(FarmError, match="client of Dask is connecting; is its scheduler gone?"):
        pool.submit(Work(functions.size), ["/a.vrn"], False)


def test_workers_are_counted(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr("vrn.farm.dask._COUNT_SECONDS", -1.0)
    client = FakeClient(b"")
    pool = DaskPool(client, None, Limits())
    assert DaskPool(client, 7, Limits()).workers == 7
    for threads, expected in ({"a": 2, "b": 3}, 5), ({"a": 2}, 2), (None, 2), ({}, 1):
        client.threads = threads
        assert pool.workers == expected


def test_a_scheduler_that_is_gone_is_an_error() -> None:
    client = FakeClient(b"")
    client.threads = None
    with pytest.raises(FarmError, match="scheduler of Dask does not answer: no connection"):
        DaskPool(client, None, Limits())


def test_workers_of_a_cluster_are_counted_beside_the_run(client: Any, monkeypatch: pytest.MonkeyPatch) -> None:
    pool = DaskPool(client, None, Limits())
    assert pool.workers == 2
    pool._counted_workers = 1
    monkeypatch.setattr("vrn.farm.dask._COUNT_SECONDS", -1.0)
    wait_until(lambda: pool.workers == 2)
