"""The ledger: a file that records what became of each file, so that the same call goes on where it stopped.

It has a line of JSON for each record. A line with `"ledger"` names the work that the records after it are about, which
is the function with its options and the version of the package: records of other work do not count. A process that
dies leaves at most half a line, which the next run removes. Only one run at a time can have a ledger open.
"""

from __future__ import annotations

import contextlib
import fcntl
import json
import os
import time
from array import array
from bisect import bisect_right
from collections.abc import Iterable, Iterator
from itertools import groupby
from operator import itemgetter
from typing import IO, Any, NamedTuple

from .._errors import Diagnostic
from .manifest import Entry
from .results import FarmError, Result, Status

MAX_DIAGNOSTICS = 100
"""A record has no more of them; its counts are those of all."""

_SYNC_SECONDS = 1.0  # between calls of fsync
_FORMAT = 1
_OFFSET_BITS = 48
_encoder = json.JSONEncoder(separators=(",", ":"))


class Record(NamedTuple):
    """What a ledger has of a file."""

    path: str
    key: str
    status: Status
    seconds: float
    worker: str
    diagnostics: tuple[Diagnostic, ...]
    error: str

    def as_result(self) -> Result:
        """The record as the result of the run that made it."""
        return Result(self.path, self.status, None, self.diagnostics, self.seconds, self.worker, self.error)


class Ledger:
    """A ledger that is open for a run. Use it in a `with` statement."""

    def __init__(self, path: str | os.PathLike[str], work: str) -> None:
        """Opens or creates a ledger. Raises FarmError if another run has it open, or if the file is something else."""
        self.path = os.fspath(path)
        self._file = _opened(self.path)
        try:
            _lock(self._file, self.path)
            self._end = _without_torn_line(self._file)
            self._past = _Past(self._file, self._end, work, self.path)
            self._file.seek(self._end)
            if self._past.last_work != work:
                self._write(_line({"ledger": _FORMAT, "work": work}))
            self._synced = time.monotonic()
        except BaseException:
            self._file.close()
            raise

    def __enter__(self) -> Ledger:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def find(self, entry: Entry) -> Record | None:
        """The record of the same work on the same content, from before this run."""
        if not entry.key:
            return None
        record = self._past.find(entry.path)
        return record if record and record.key == entry.key else None

    def append(self, results: Iterable[tuple[Entry, Result]]) -> None:
        """Records results. They survive the end of this process immediately, that of the machine a second later."""
        self._write("".join(_line(_members(entry, result)) for entry, result in results))
        if time.monotonic() - self._synced > _SYNC_SECONDS:
            self._sync()

    def close(self) -> None:
        """Writes everything to disk, and lets other runs have the ledger."""
        if not self._file.closed:
            try:
                self._sync()
            finally:
                self._file.close()

    def _write(self, text: str) -> None:
        data = text.encode("ascii")
        try:
            written = 0
            while written < len(data):
                written += self._file.write(data[written:])
        except OSError as error:
            with contextlib.suppress(OSError):
                self._file.truncate(self._end)  # whole lines only
            raise FarmError(f"the ledger {self.path} cannot be written: {error.strerror}") from error
        self._end += len(data)

    def _sync(self) -> None:
        try:
            os.fsync(self._file.fileno())
        except OSError as error:
            raise FarmError(f"the ledger {self.path} cannot be written: {error.strerror}") from error
        self._synced = time.monotonic()


def read_ledger(path: str | os.PathLike[str]) -> Iterator[Record]:
    """The last records of all files, of the work that the ledger was last used for, in the order of their paths.

    Raises FarmError if the file is no ledger, OSError if it cannot be read. A run that has it open does not matter.
    """
    name = os.fspath(path)
    with open(name, "rb", buffering=0) as file:
        end = _end_of_lines(file)
        past = _Past(file, end, None, name)
        yield from sorted(past.records(), key=lambda record: record.path)


class _Past:
    """The records that a ledger had when it was opened: 16 bytes of memory for each."""

    def __init__(self, file: IO[bytes], end: int, work: str | None, name: str) -> None:
        self._descriptor = file.fileno()
        self._name = name
        self.last_work: str | None = None
        places: list[int] = []
        for offset, members in _lines(name, end):
            if "ledger" in members:
                if work is None and members["work"] != self.last_work:
                    places.clear()
                self.last_work = members["work"]
            elif work is None or self.last_work == work:
                places.append(_hash(members["path"]) << _OFFSET_BITS | offset)
        places.sort()
        self._hashes = array("Q", (place >> _OFFSET_BITS for place in places))
        self._offsets = array("Q", (place & (1 << _OFFSET_BITS) - 1 for place in places))

    def find(self, path: str) -> Record | None:
        """The last record of a path."""
        hashed = _hash(path)
        place = bisect_right(self._hashes, hashed)
        while place and self._hashes[place - 1] == hashed:
            record = self._record(self._offsets[place - 1])
            if record.path == path:
                return record
            place -= 1
        return None

    def records(self) -> Iterator[Record]:
        """The last record of each path."""
        for _, offsets in groupby(zip(self._hashes, self._offsets), key=itemgetter(0)):
            seen: set[str] = set()  # different paths rarely have the same hash
            for _, offset in reversed(list(offsets)):
                record = self._record(offset)
                if record.path not in seen:
                    seen.add(record.path)
                    yield record

    def _record(self, offset: int) -> Record:
        line = b""
        while b"\n" not in line:
            more = os.pread(self._descriptor, 1 << 10, offset + len(line))
            if not more:
                raise FarmError(f"{self._name} has become shorter; only one run can have a ledger")
            line += more
        try:
            return _record(json.loads(line[: line.index(b"\n")]))
        except (ValueError, TypeError, KeyError, RecursionError):
            raise FarmError(f"{self._name}: no record of a ledger at byte {offset}; remove this line") from None


def _lines(name: str, end: int) -> Iterator[tuple[int, dict[str, Any]]]:
    """The lines of a ledger up to its end, with their offsets."""
    offset = 0
    with open(name, "rb") as file:
        for number, line in enumerate(file, 1):
            if offset >= end:
                return
            try:
                members = json.loads(line)
                is_start = "ledger" in members
                is_valid = isinstance(members["work" if is_start else "path"], str) and (is_start or number > 1)
            except (ValueError, TypeError, KeyError, RecursionError):
                is_start = is_valid = False
            if not is_valid:
                raise FarmError(f"{name}:{number}: no line of a ledger; name another file, or remove this one")
            if is_start and members["ledger"] != _FORMAT:
                raise FarmError(
                    f"{name}:{number}: the ledger has the format {members['ledger']}, and only {_FORMAT} is known; "
                    "name another file, or use the version of vrn that wrote it"
                )
            yield offset, members
            offset += len(line)


def _members(entry: Entry, result: Result) -> dict[str, Any]:
    members: dict[str, Any] = {
        "path": entry.path,
        "key": entry.key,
        "status": result.status.value,
        "seconds": round(result.seconds, 6),
        "worker": result.worker,
    }
    if result.diagnostics:
        severities = [diagnostic.severity for diagnostic in result.diagnostics]
        members |= {severity + "s": severities.count(severity) for severity in sorted(set(severities))}
        members["diagnostics"] = result.diagnostics[:MAX_DIAGNOSTICS]
    if result.error:
        members["error"] = result.error
    return members


def _record(members: dict[str, Any]) -> Record:
    diagnostics = tuple(Diagnostic(*diagnostic) for diagnostic in members.get("diagnostics", ()))
    status = Status(members["status"])
    return Record(
        members["path"], members["key"], status, members["seconds"], members["worker"], diagnostics, members.get("error", "")
    )


def _line(members: dict[str, Any]) -> str:
    return _encoder.encode(members) + "\n"


def _hash(path: str) -> int:
    return hash(path) & 0xFFFF_FFFF_FFFF_FFFF


def _opened(path: str) -> IO[bytes]:
    try:
        return os.fdopen(os.open(path, os.O_RDWR | os.O_CREAT | os.O_CLOEXEC, 0o666), "r+b", buffering=0)
    except OSError as error:
        raise FarmError(f"the ledger {path} cannot be opened: {error.strerror}") from error


def _lock(file: IO[bytes], path: str) -> None:
    try:
        fcntl.flock(file, fcntl.LOCK_EX | fcntl.LOCK_NB)
    except BlockingIOError:
        raise FarmError(f"the ledger {path} is in use by another run; wait for it, or name another ledger") from None
    except OSError as error:
        raise FarmError(
            f"the ledger {path} cannot be locked: {error.strerror}; put it on a file system that has locks"
        ) from error


def _without_torn_line(file: IO[bytes]) -> int:
    """Removes what a dying process left of a line. Returns the size of the file."""
    end = _end_of_lines(file)
    file.truncate(end)
    return end


def _end_of_lines(file: IO[bytes]) -> int:
    end = file.seek(0, os.SEEK_END)
    while end:
        start = max(0, end - (1 << 16))
        file.seek(start)
        block = file.read(end - start)
        if (line_feed := block.rfind(b"\n")) >= 0:
            return start + line_feed + 1
        end = start
    return 0
