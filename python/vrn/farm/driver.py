"""The driver: sends batches to workers, records what comes back, and finds the files that kill workers.

At most four batches a worker are on their way. A batch that dies with its worker is halved, and its halves are worked
on in child processes of the workers, within limits; so the worker survives, and the file that is to blame is known. A
half that dies in spite of that is halved again, down to single files, which are recorded as killed.
"""

from __future__ import annotations

import contextlib
from collections import deque
from collections.abc import Callable, Collection, Iterable, Iterator
from concurrent.futures import FIRST_COMPLETED, Future, wait
from dataclasses import dataclass
from typing import Any

from .executors import Fate, Pool
from .ledger import Ledger
from .manifest import Entry, digest
from .packing import Done, unpacked
from .results import FarmError, Outcome, Result, Status, describe
from .sizing import Sizing, weight
from .work import Work

IN_FLIGHT = 4
"""Batches a worker that are on their way."""

_LOOK_AHEAD = 10_000  # files, to notice in time that no more follow
_LOOK_STEP = 100  # files that are listed before batches that are done are looked at
_LOOK_PAUSE = 0.005  # seconds between these steps: threads of the executor need the interpreter, too
_MAX_LOSSES = 5  # of one batch


@dataclass
class Batch:
    """Files that are worked on together."""

    entries: list[Entry]
    is_suspect: bool = False
    losses: int = 0

    def halves(self) -> Iterator[Batch]:
        """Two suspect batches, or one if there is a single file."""
        middle = (len(self.entries) + 1) // 2
        for entries in self.entries[:middle], self.entries[middle:]:
            if entries:
                yield Batch(entries, is_suspect=True)


class Driver:
    """A run while it lasts."""

    def __init__(
        self, entries: Iterable[Entry], work: Work, pool: Pool, ledger: Ledger | None, again: Collection[str], retries: int
    ) -> None:
        self._coming = iter(entries)
        self._has_more = True
        self._work = work
        self._pool = pool
        self._ledger = ledger
        self._again = frozenset(map(Status, again))
        self._retries = retries
        self._tries: dict[str, int] = {}  # of files that failed and are tried again
        self._waiting: deque[Entry] = deque()
        self._waiting_weight = 0
        self._ready: deque[Batch] = deque()  # before the files that wait
        self._flying: dict[Future[Any], tuple[Batch, Pool]] = {}
        self._sizing = Sizing(pool.batch_seconds)
        self._targets = _Targets(work.function)

    def results(self) -> Iterator[Result]:
        """Results, as they come; they are in the ledger before. Closing the iterator cancels what has not begun."""
        with contextlib.ExitStack() as stack:
            stack.callback(self._stop)
            while True:
                yield from self._fill()
                if not self._flying:
                    return
                if self._has_more and len(self._waiting) < _LOOK_AHEAD:
                    yield from self._list(_LOOK_STEP)
                    pause = _LOOK_PAUSE
                else:
                    pause = None
                yield from self._land(wait(self._flying, pause, FIRST_COMPLETED).done)

    def _stop(self) -> None:
        for future in self._flying:
            future.cancel()
        self._pool.close()

    def _fill(self) -> Iterator[Result]:
        """Sends batches until enough are on their way."""
        while len(self._flying) < IN_FLIGHT * self._pool.workers:
            if self._ready:
                yield from self._send(self._ready.popleft())
                continue
            yield from self._list_up_to(self._sizing.budget)
            if not self._waiting:
                return
            budget = self._sizing.budget
            if not self._has_more:
                budget = self._sizing.last_budget(self._waiting_weight, self._pool.workers)
            entries = self._sizing.take(self._waiting, budget)
            self._waiting_weight -= sum(map(weight, entries))
            yield from self._send(Batch(entries))

    def _list_up_to(self, budget: int) -> Iterator[Result]:
        while self._has_more and (not self._waiting or self._waiting_weight < budget):
            yield from self._list(1)

    def _list(self, count: int) -> Iterator[Result]:
        """Takes files from the manifest. Those that need no work are results."""
        for _ in range(count):
            entry = next(self._coming, None)
            if entry is None:
                self._has_more = False
                return
            result = self._result_without_work(entry)
            if result:
                yield result
            else:
                self._waiting.append(entry)
                self._waiting_weight += weight(entry)

    def _result_without_work(self, entry: Entry) -> Result | None:
        if entry.problem:
            return Result(entry.path, Status.UNREADABLE, error=entry.problem)
        if conflict := self._targets.conflict(entry.path):
            return Result(entry.path, Status.FAILED, error=conflict)
        record = self._ledger.find(entry) if self._ledger else None
        if record is None or record.status in self._again or self._targets.is_missing(entry.path, record.status):
            return None
        return record.as_result()._replace(status=Status.UNCHANGED, previous=record.status)

    def _send(self, batch: Batch) -> list[Result]:
        """Sends a batch. There are results if the executor refuses, and the file is to blame."""
        paths = [entry.path for entry in batch.entries]
        try:
            future = self._pool.submit(self._work, paths, batch.is_suspect)
        except Exception as error:  # executors differ in what they raise
            return self._blame(batch, self._pool, error)
        self._flying[future] = batch, self._pool
        return []

    def _land(self, done: Iterable[Future[Any]]) -> Iterator[Result]:
        for future in done:
            batch, pool = self._flying.pop(future)
            try:
                report = pool.report(future)
            except BaseException as error:
                if isinstance(error, KeyboardInterrupt):
                    raise
                yield from self._blame(batch, pool, error)
            else:
                yield from self._record(batch, report)

    def _record(self, batch: Batch, report: Done) -> list[Result]:
        worker, outcomes = report[0], list(map(unpacked, report[1]))
        if not batch.is_suspect:
            self._sizing.learn(sum(map(weight, batch.entries)), sum(outcome.seconds for outcome in outcomes))
        done = []
        for entry, outcome in zip(batch.entries, outcomes, strict=True):
            if self._is_tried_again(entry, outcome):
                self._ready.append(Batch([entry], batch.is_suspect))
            else:
                done.append((entry, _result(entry, outcome, worker)))
        return self._recorded(done)

    def _recorded(self, results: list[tuple[Entry, Result]]) -> list[Result]:
        if self._ledger:
            self._ledger.append(results)
        return [result for _, result in results]

    def _is_tried_again(self, entry: Entry, outcome: Outcome) -> bool:
        if outcome.status not in (Status.FAILED, Status.UNREADABLE):
            return False
        tries = self._tries.get(entry.path, 0)
        if tries == self._retries:
            return False
        self._tries[entry.path] = tries + 1
        return True

    def _blame(self, batch: Batch, pool: Pool, error: BaseException) -> list[Result]:
        """Decides what follows from an error of the executor. Raises FarmError if no batch can be done."""
        fate = pool.fate(error)
        if fate is Fate.FATAL:
            if isinstance(error, FarmError):
                raise error
            raise FarmError(f"the executor cannot run batches: {describe(error)}") from error
        if fate is Fate.LOST:
            batch.losses += 1
            if batch.losses > _MAX_LOSSES:
                raise FarmError(f"the executor lost the same batch {batch.losses} times: {describe(error)}") from error
            self._ready.append(batch)
            return []
        if pool is self._pool:
            self._pool = pool.renewed()
        if batch.is_suspect and len(batch.entries) == 1:
            outcome = Outcome(Status.KILLED, error=f"the worker died of it: {describe(error)}")
            return self._recorded([(batch.entries[0], _result(batch.entries[0], outcome, ""))])
        self._ready.extend(batch.halves())
        return []


class _Targets:
    """The files that the work writes: two files must not have the same one, and one that is gone is made again."""

    def __init__(self, function: Callable[[str], Any]) -> None:
        self._target: Callable[[str], str] | None = getattr(function, "target", None)
        self._taken: set[int] = set()

    def conflict(self, path: str) -> str:
        """Why the file cannot be worked on; empty if it can."""
        if not self._target:
            return ""
        target = self._target(path)
        identity = digest(target)
        if identity in self._taken:
            return f"{target} is the output of another file; use {{parent}} in the name of outputs"
        self._taken.add(identity)
        return ""

    def is_missing(self, path: str, status: Status) -> bool:
        """Whether the output of a file that is done does not exist any more."""
        if not self._target or status is not Status.OK:
            return False
        from .files import exists

        return not exists(self._target(path))


def _result(entry: Entry, outcome: Outcome, worker: str) -> Result:
    return Result(
        entry.path, outcome.status, outcome.value, outcome.diagnostics, outcome.seconds, worker, outcome.error
    )
