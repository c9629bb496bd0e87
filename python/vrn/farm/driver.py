"""The driver: sends batches to workers, records what comes back, and finds the files that kill workers.

At most four batches a worker are on their way, two while they are small. A batch that dies with its worker is halved, and
its halves are worked on in child processes of the workers, within limits; so the worker survives, and the file that is to
blame is known. A half that dies in spite of that is halved again, down to single files. A single file that dies with its worker is tried
once more while nothing else is on its way: only if it dies then, too, is it to blame, not a neighbour.
"""

from __future__ import annotations

import contextlib
import queue
from collections import deque
from collections.abc import Collection, Iterable, Iterator
from concurrent.futures import Future
from dataclasses import dataclass
from typing import Any

from .ledger import Ledger, Record
from .manifest import Entry
from .packing import Done, unpacked
from .pools import Fate, Pool
from .results import FarmError, Outcome, Result, Status, describe
from .sizing import Sizing, weight
from .targets import is_target_missing
from .work import Work

IN_FLIGHT = 4
"""Batches a worker that are on their way."""

_FIRST_IN_FLIGHT = 2  # as long as they are small, because small ones cost schedulers more than the work that they are

_LOOK_AHEAD = 10_000  # files, to notice in time that no more follow
_LOOK_STEP = 100  # files that are listed before batches that are done are looked at
_LOOK_PAUSE = 0.005  # seconds between these steps: threads of the executor need the interpreter, too
_MAX_LOSSES = 5  # of one batch


@dataclass
class Batch:
    """Files that are worked on together."""

    entries: list[Entry]
    is_suspect: bool = False
    is_accused: bool = False
    """Whether nothing else may be on its way while this single file is."""
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
        self._accused: deque[Batch] = deque()  # before these
        self._flying: dict[Future[Any], tuple[Batch, Pool]] = {}
        self._landed: queue.SimpleQueue[Future[Any]] = queue.SimpleQueue()
        self._sizing = Sizing(pool.batch_seconds)

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
                    yield from self._land(_LOOK_PAUSE)
                else:
                    yield from self._land(None)

    def _stop(self) -> None:
        for future in self._flying:
            future.cancel()
        self._pool.close()

    # What is sent

    def _fill(self) -> Iterator[Result]:
        """Sends batches until enough are on their way."""
        while len(self._flying) < self._in_flight() * self._pool.workers and not self._is_trial():
            if self._accused:
                if self._flying:
                    return
                self._send(self._accused.popleft())
            elif self._ready:
                self._send(self._ready.popleft())
            else:
                yield from self._list_up_to(self._sizing.budget)
                if not self._waiting:
                    return
                self._send(self._next_batch())

    def _in_flight(self) -> int:
        return _FIRST_IN_FLIGHT if self._sizing.is_learning else IN_FLIGHT

    def _is_trial(self) -> bool:
        """Whether what is on its way is an accused file, which is alone."""
        return len(self._flying) == 1 and next(iter(self._flying.values()))[0].is_accused

    def _next_batch(self) -> Batch:
        budget = self._sizing.budget
        if not self._has_more:
            budget = self._sizing.last_budget(self._waiting_weight, self._pool.workers)
        entries = self._sizing.take(self._waiting, budget)
        self._waiting_weight -= sum(map(weight, entries))
        return Batch(entries)

    def _send(self, batch: Batch) -> None:
        try:
            future = self._pool.submit(self._work, [entry.path for entry in batch.entries], batch.is_suspect)
        except Exception as error:  # executors differ in what they raise, but the batch was not begun
            self._fate(self._pool, error)
            self._send_again(batch, error)
        else:
            self._flying[future] = batch, self._pool
            future.add_done_callback(self._landed.put)

    def _send_again(self, batch: Batch, error: BaseException) -> None:
        batch.losses += 1
        if batch.losses > _MAX_LOSSES:
            raise FarmError(f"the executor lost the same batch {batch.losses} times: {describe(error)}") from error
        (self._accused if batch.is_accused else self._ready).append(batch)

    # What is listed

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
            if entry.problem:
                yield from self._recorded([(entry, Result(entry.path, entry.verdict, error=entry.problem))])
            elif record := self._valid_record(entry):
                yield record.as_result()._replace(status=Status.UNCHANGED, previous=record.status)
            else:
                self._waiting.append(entry)
                self._waiting_weight += weight(entry)

    def _valid_record(self, entry: Entry) -> Record | None:
        """The record of a file that is not worked on again."""
        record = self._ledger.find(entry) if self._ledger else None
        if record is None or record.status in self._again:
            return None
        if record.status is Status.OK and is_target_missing(self._work.function, entry.path):
            return None
        return record

    # What comes back

    def _land(self, seconds: float | None) -> Iterator[Result]:
        """Waits for the next batch that is done, at most so long."""
        try:
            future = self._landed.get(timeout=seconds)
        except queue.Empty:
            return
        batch, pool = self._flying.pop(future)
        try:
            done = pool.done(future)
        except BaseException as error:
            if isinstance(error, KeyboardInterrupt):
                raise
            yield from self._blame(batch, pool, error)
        else:
            yield from self._record(batch, done)

    def _record(self, batch: Batch, done: Done) -> list[Result]:
        worker, outcomes = done[0], list(map(unpacked, done[1]))
        if not batch.is_suspect:
            self._sizing.learn(sum(map(weight, batch.entries)), sum(outcome.seconds for outcome in outcomes))
        results, failed = [], []
        for entry, outcome in zip(batch.entries, outcomes, strict=True):
            if self._is_tried_again(entry, outcome):
                failed.append(entry)
            else:
                results.append((entry, _result(entry, outcome, worker)))
        if failed:
            self._ready.append(Batch(failed, batch.is_suspect))
        return self._recorded(results)

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
        """Decides what becomes of a batch that came back with an error of the executor."""
        fate = self._fate(pool, error)
        if fate is Fate.LOST:
            self._send_again(batch, error)
        elif len(batch.entries) > 1 or not batch.is_suspect:
            self._ready.extend(batch.halves())
        elif not batch.is_accused:
            self._accused.append(Batch(batch.entries, is_suspect=True, is_accused=True))
        else:
            (entry,) = batch.entries
            outcome = Outcome(Status.KILLED, error=f"the worker died of it: {describe(error)}")
            return self._recorded([(entry, _result(entry, outcome, ""))])
        return []

    def _fate(self, pool: Pool, error: BaseException) -> Fate:
        """What the error means for one batch. Raises FarmError if no batch can be done."""
        fate = pool.fate(error)
        if fate is Fate.FATAL:
            if isinstance(error, FarmError):
                raise error
            raise FarmError(f"the executor cannot run batches: {describe(error)}") from error
        if fate is Fate.DIED and pool is self._pool:
            self._pool = pool.renewed()
        return fate


def _result(entry: Entry, outcome: Outcome, worker: str) -> Result:
    return Result(
        entry.path, outcome.status, outcome.value, outcome.diagnostics, outcome.seconds, worker, outcome.error
    )
