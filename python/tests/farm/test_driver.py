"""The driver against a pool that does what the test says: what is on its way, and what follows from deaths."""

from __future__ import annotations

from collections.abc import Callable, Sequence
from concurrent.futures import Future
from typing import Any

import functions
import pytest

from vrn.farm import FarmError, Result
from vrn.farm.driver import IN_FLIGHT, Driver
from vrn.farm.manifest import Entry
from vrn.farm.packing import Done
from vrn.farm.pools import Fate
from vrn.farm.results import Outcome, Status
from vrn.farm.work import Work


class Died(Exception):
    pass


class Lost(Exception):
    pass


class FakePool:
    """Does a batch when its report is wanted, unless `problem` raises. Notes the batches and how many are on their way."""

    batch_seconds = 0.75

    def __init__(self, workers: int, problem: Callable[[Sequence[str], bool], None]) -> None:
        self.workers = workers
        self.batches: list[tuple[tuple[str, ...], bool]] = []
        self.flying = self.most_flying = 0
        self.renewals = 0
        self.is_closed = False
        self._problem = problem

    def submit(self, work: Work, paths: Sequence[str], is_suspect: bool) -> Future[Any]:
        self.batches.append((tuple(paths), is_suspect))
        self.flying += 1
        self.most_flying = max(self.most_flying, self.flying)
        future: Future[Any] = Future()
        future.set_result((paths, is_suspect))
        return future

    def done(self, future: Future[Any]) -> Done:
        self.flying -= 1
        paths, is_suspect = future.result()
        self._problem(paths, is_suspect)
        return "worker", [Outcome(Status.OK, 0.001 * len(path)) for path in paths]

    def fate(self, error: BaseException) -> Fate:
        return {Died: Fate.DIED, Lost: Fate.LOST}.get(type(error), Fate.FATAL)

    def renewed(self) -> FakePool:
        self.renewals += 1
        return self

    def close(self) -> None:
        self.is_closed = True


def run(pool: FakePool, count: int, retries: int = 0) -> list[Result]:
    entries = (Entry(f"{number:05}.vrn", 1000) for number in range(count))
    return list(Driver(entries, Work(functions.size), pool, None, (), retries).results())


def nothing(paths: Sequence[str], is_suspect: bool) -> None:
    pass


@pytest.mark.parametrize("workers", [1, 3])
def test_four_batches_a_worker_are_on_their_way(workers: int) -> None:
    pool = FakePool(workers, nothing)
    assert len(run(pool, 5000)) == 5000
    assert pool.most_flying == IN_FLIGHT * workers == 4 * workers
    assert pool.is_closed


def test_a_deadly_file_is_found_by_halving() -> None:
    def dies(paths: Sequence[str], is_suspect: bool) -> None:
        if "01234.vrn" in paths:
            raise Died("gone")

    pool = FakePool(2, dies)
    results = run(pool, 3000)
    assert len({result.path for result in results}) == len(results) == 3000
    (killed,) = (result for result in results if result.exit_code)
    assert (killed.path, killed.status, killed.error) == ("01234.vrn", "killed", "the worker died of it: Died: gone")
    with_it = [(len(paths), is_suspect) for paths, is_suspect in pool.batches if "01234.vrn" in paths]
    first, *others = with_it
    assert not first[1] and all(is_suspect for _, is_suspect in others)
    for (before, _), (size, _) in zip(with_it, others):
        assert size in (before // 2, (before + 1) // 2)
    assert [size for size, _ in with_it[-2:]] == [1, 1]
    assert len(with_it) <= first[0].bit_length() + 2
    assert pool.renewals == len(with_it)


def test_a_single_file_is_tried_once_more_under_suspicion() -> None:
    def dies_once(paths: Sequence[str], is_suspect: bool) -> None:
        if not is_suspect:
            raise Died

    pool = FakePool(1, dies_once)
    assert [result.status for result in run(pool, 1)] == ["ok"]
    assert [is_suspect for _, is_suspect in pool.batches] == [False, True]


def test_neighbours_of_deadly_files_are_not_blamed() -> None:
    """All that is on its way with a deadly file dies with it."""
    flying: list[Sequence[str]] = []
    deadly = {f"{number:05}.vrn" for number in range(0, 300, 30)}

    def dies(paths: Sequence[str], is_suspect: bool) -> None:
        if any(path in deadly for batch in flying for path in batch):
            raise Died("gone")

    class Shared(FakePool):
        def submit(self, work: Work, paths: Sequence[str], is_suspect: bool) -> Future[Any]:
            flying.append(paths)
            return super().submit(work, paths, is_suspect)

        def done(self, future: Future[Any]) -> Done:
            try:
                return super().done(future)
            finally:
                flying.remove(future.result()[0])

    results = run(Shared(3, dies), 300)
    assert len(results) == 300
    assert {result.path for result in results if result.status == "killed"} == deadly


def test_a_pool_that_is_found_broken_when_a_batch_is_sent() -> None:
    class Broken(FakePool):
        def submit(self, work: Work, paths: Sequence[str], is_suspect: bool) -> Future[Any]:
            if self.renewals < 3:
                raise Died("before")
            return super().submit(work, paths, is_suspect)

    pool = Broken(1, nothing)
    assert {result.status for result in run(pool, 1)} == {Status.OK}
    assert pool.batches == [(("00000.vrn",), False)]


def test_a_pool_that_is_always_broken_ends_the_run() -> None:
    class Broken(FakePool):
        def submit(self, work: Work, paths: Sequence[str], is_suspect: bool) -> Future[Any]:
            raise Died("before")

    pool = Broken(1, nothing)
    with pytest.raises(FarmError, match="lost the same batch 6 times: Died: before"):
        run(pool, 1)
    assert pool.is_closed


def test_files_that_failed_together_are_tried_again_together() -> None:
    tried: set[str] = set()

    class Failing(FakePool):
        def done(self, future: Future[Any]) -> Done:
            worker, outcomes = super().done(future)
            paths, _ = future.result()
            for index, path in enumerate(paths):
                if path not in tried:
                    outcomes[index] = Outcome(Status.FAILED, 0.001, error="first try")
            tried.update(paths)
            return worker, outcomes

    pool = Failing(1, nothing)
    assert {result.status for result in run(pool, 2000, retries=1)} == {Status.OK}
    batches = [paths for paths, _ in pool.batches]
    assert len(set(batches)) * 2 == len(batches)


def test_lost_batches_are_sent_again_as_they_are() -> None:
    losses = iter(range(3))

    def loses(paths: Sequence[str], is_suspect: bool) -> None:
        if next(losses, None) is not None:
            raise Lost

    pool = FakePool(1, loses)
    assert {result.status for result in run(pool, 1)} == {Status.OK}
    assert pool.batches == [(("00000.vrn",), False)] * 4


def test_batches_are_not_lost_forever() -> None:
    def loses(paths: Sequence[str], is_suspect: bool) -> None:
        raise Lost("nowhere")

    pool = FakePool(1, loses)
    with pytest.raises(FarmError, match="lost the same batch 6 times: Lost: nowhere"):
        run(pool, 1)
    assert pool.is_closed


def test_other_errors_end_the_run() -> None:
    def breaks(paths: Sequence[str], is_suspect: bool) -> None:
        raise RuntimeError("no network")

    with pytest.raises(FarmError, match="cannot run batches: RuntimeError: no network"):
        run(FakePool(1, breaks), 10)
