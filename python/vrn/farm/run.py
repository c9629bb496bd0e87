"""`batch`: a function over many files, and the run that it returns; `as_completed`: results as they come."""

from __future__ import annotations

import contextlib
import os
from array import array
from collections.abc import Collection, Generator, Iterable, Iterator, Sequence
from typing import Any, overload

from .._vrn import __version__
from .driver import Driver
from .executors import ExecutorLike, pool_for
from .guard import Limits
from .ledger import Ledger
from .manifest import Source, manifest, part_of
from .report import RunReport
from .results import Result, Status
from .targets import without_conflicts
from .work import Function, Work

AGAIN: frozenset[str] = frozenset({"failed", "unreadable"})
"""Files with these statuses are worked on again though nothing changed: the cause may be gone."""


def as_completed(
    paths: Source | Iterable[Source],
    function: Function,
    *,
    executor: ExecutorLike = None,
    workers: int | None = None,
    ledger: str | os.PathLike[str] | None = None,
    retries: int = 0,
    timeout: float | None = None,
    memory: int | None = None,
    again: Collection[str] = AGAIN,
    part: tuple[int, int] | None = None,
) -> Generator[Result, None, None]:
    """Applies a function to many files, and returns the results as they come: memory does not grow with their number.

    The parameters are those of `batch`. Nothing is done before the first result is taken, nor after the iterator is
    closed; what was done by then is in the ledger.
    """
    work = Work(function)
    limits = _limits(timeout, memory)
    if workers is not None and workers < 1:
        raise ValueError(f"workers: 1 or more, not {workers}")
    if retries < 0:
        raise ValueError(f"retries: 0 or more, not {retries}")
    if unknown := set(again) - {status.value for status in Status}:
        raise ValueError(f"again: no status is named {min(unknown)!r}")
    if part and not 1 <= part[0] <= part[1]:
        raise ValueError(f"part: a number from 1 to the number of parts, not {part[0]} of {part[1]}")
    work_on_record = f"{work.identity} vrn {__version__}" if ledger is not None else ""
    entries = without_conflicts(manifest(paths), function)
    if part:
        entries = part_of(entries, *part)

    def results() -> Generator[Result, None, None]:
        with contextlib.ExitStack() as stack:
            opened = stack.enter_context(Ledger(ledger, work_on_record)) if ledger is not None else None
            yield from Driver(entries, work, pool_for(executor, limits, workers), opened, again, retries).results()

    return results()


def batch(paths: Source | Iterable[Source], function: Function, **options: Any) -> Run:
    """Applies a function to many files, waits until all are done, and returns the results.

    >>> run = vrn.batch("examples/*.vrn", vrn.ops.check)
    >>> run.ok, len(run)
    (True, 13)
    >>> import os.path
    >>> run = vrn.batch(["city.vrn"], os.path.getsize, ledger="run.ledger", retries=2, timeout=60)
    >>> run[0].status, run[0].value
    ('ok', 2741)

    The paths are a file, a folder, which stands for all `*.vrn` below it, a pattern with `*`, `?` and `**`, a URL that
    fsspec knows, or an iterable of these. The function takes a path, and returns anything that can be pickled.

    - `executor`: `"threads"` (the default), `"processes"`, `"loky"`, an executor of `concurrent.futures`, or a client of
      Dask. `workers` is the number of its workers, where it is not known.
    - `ledger`: a file that records what is done. The same call goes on where the last one stopped; files that did not
      change since are `unchanged`. `again` names statuses that do not count as done.
    - `retries`: how many more times a file is tried that failed or could not be read.
    - `timeout`, `memory`: the seconds and the bytes of address space that one file may take. With one of them, the
      function runs in child processes of the workers.
    - `part`: `(3, 12)` works on the third of twelve parts, for machines that share the work without talking.

    Raises FarmError if the run cannot start or go on; what is wrong with a file is its result.
    """
    return Run(as_completed(paths, function, **options))


class Run(Sequence[Result]):
    """The results of a run, in the order in which they came. Takes about 30 bytes a file beside its path."""

    def __init__(self, results: Iterable[Result]) -> None:
        self._paths = bytearray()
        self._ends = array("Q")
        self._statuses = bytearray()
        self._seconds = array("d")
        self._workers: list[str] = []
        self._worker_numbers: dict[str, int] = {}
        self._worker_of = array("L")
        self._others: dict[int, tuple[Any, ...]] = {}  # of results that have more: value, diagnostics, error, previous
        for result in results:
            self._append(result)

    @property
    def report(self) -> RunReport:
        """What there is to say about all files together."""
        return RunReport(self)

    @property
    def exit_code(self) -> int:
        """0 if no file has errors, 1 if some have errors in their content, 2 if anything else went wrong."""
        return max((result.exit_code for result in self), default=0)

    @property
    def ok(self) -> bool:
        """Whether no file has errors."""
        return self.exit_code == 0

    def __len__(self) -> int:
        return len(self._ends)

    @overload
    def __getitem__(self, index: int) -> Result: ...
    @overload
    def __getitem__(self, index: slice) -> list[Result]: ...
    def __getitem__(self, index: int | slice) -> Result | list[Result]:
        if isinstance(index, slice):
            return [self._result(i) for i in range(*index.indices(len(self)))]
        return self._result(range(len(self))[index])

    def __iter__(self) -> Iterator[Result]:
        return map(self._result, range(len(self)))

    def __repr__(self) -> str:
        counts = ", ".join(f"{count} {status}" for status, count in self.report.counts.items())
        return f"<vrn.Run of {len(self)} files: {counts or 'none'}>"

    def _append(self, result: Result) -> None:
        path, status, value, diagnostics, seconds, worker, error, previous = result
        if value is not None or diagnostics or error or previous:
            self._others[len(self._ends)] = value, diagnostics, error, previous
        self._paths += path.encode("utf-8", "surrogatepass")
        self._ends.append(len(self._paths))
        self._statuses.append(_STATUSES.index(status))
        self._seconds.append(seconds)
        self._worker_of.append(self._number_of(worker))

    def _number_of(self, worker: str) -> int:
        number = self._worker_numbers.setdefault(worker, len(self._workers))
        if number == len(self._workers):
            self._workers.append(worker)
        return number

    def _result(self, index: int) -> Result:
        start = self._ends[index - 1] if index else 0
        path = self._paths[start : self._ends[index]].decode("utf-8", "surrogatepass")
        value, diagnostics, error, previous = self._others.get(index, _NOTHING)
        worker = self._workers[self._worker_of[index]]
        status = _STATUSES[self._statuses[index]]
        return Result(path, status, value, diagnostics, self._seconds[index], worker, error, previous)


_STATUSES = list(Status)
_MAX_MEMORY = (1 << 63) - 1  # that a system can limit
_NOTHING: tuple[Any, ...] = (None, (), "", None)


def _limits(timeout: float | None, memory: int | None) -> Limits:
    if timeout is not None and not timeout > 0:
        raise ValueError(f"timeout: more than 0 seconds, not {timeout}")
    if memory is not None and not 0 < memory <= _MAX_MEMORY:
        raise ValueError(f"memory: more than 0 and less than 2**63 bytes, not {memory}")
    return Limits(timeout, memory)
