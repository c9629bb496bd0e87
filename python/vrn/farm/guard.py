"""Work within limits: a child process applies the function, and its parent ends it if a file takes too long.

Outcomes come back one by one, so that it is known which file a child died of. That file is tried once more, alone in
a new child: then it was not the fault of a file before it.
"""

from __future__ import annotations

import contextlib
import functools
import os
import pickle
import select
import signal
import subprocess
import sys
import threading
import time
from collections.abc import Iterator, Sequence
from typing import NamedTuple

from .child import Request
from .packing import Done, sent
from .results import FarmError, Outcome, Status
from .worker import loaded, work_here, worker_name

_START_SECONDS = 60.0  # for a child to start and import what the function needs, if the time of files is limited
_PROGRAM = "import sys; sys.path[:], sys.argv[1:] = sys.argv[1:], []; from vrn.farm.child import main; main()"
_PAUSE_SECONDS = 0.005  # between reads of outcomes: waking up for each file costs more than checking it


class Limits(NamedTuple):
    """What the work on one file may take. None means unlimited."""

    seconds: float | None = None
    memory: int | None = None
    """In bytes of address space."""


def default_limits(limits: Limits) -> Limits:
    """Limits for files that may have killed a worker: an hour, and 80 % of the memory."""
    return Limits(limits.seconds or 3600.0, limits.memory or machine_memory() * 4 // 5)


def work_there(packed: bytes, paths: Sequence[str], folder: str, limits: Limits, is_suspect: bool) -> bytes:
    """Works on a batch for a driver in another process, maybe on another machine.

    It does so in this process if there is nothing to guard against, and if the current folder is that of the driver,
    which relative paths are in.
    """
    if is_suspect:
        limits = default_limits(limits)
    if limits != Limits() or folder and folder != os.getcwd():
        return sent(*guarded(_children_of(os.getpid()), packed, paths, folder, limits))
    return sent(*work_here(loaded(packed), paths))


def guarded(children: Children, packed: bytes, paths: Sequence[str], folder: str, limits: Limits) -> Done:
    """Works on a batch in child processes of this one."""
    outcomes: list[Outcome] = []
    while len(outcomes) < len(paths):
        rest = Request(packed, tuple(paths[len(outcomes) :]), folder, limits.memory)
        outcomes += children.work(rest, limits.seconds)
        if outcomes[-1].status is Status.KILLED:
            alone = rest._replace(paths=(paths[len(outcomes) - 1],))
            outcomes[-1] = _explained(children.work_alone(alone, limits.seconds)[0], limits)
    return worker_name(), outcomes


def _explained(outcome: Outcome, limits: Limits) -> Outcome:
    if outcome.status is Status.KILLED and outcome.error.startswith("MemoryError") and limits.memory:
        return outcome._replace(error=f"the file needs more than {limits.memory / 2**20:.0f} MiB of memory")
    return outcome


class Children:
    """The child processes of one process. Any number of threads may use them."""

    def __init__(self) -> None:
        self._lock = threading.Lock()
        self._idle: list[Child] = []
        self._busy: set[Child] = set()
        self._is_closed = False

    def work(self, request: Request, seconds: float | None) -> list[Outcome]:
        """Outcomes of the files up to the first that killed its child or took too long, included."""
        try:
            return self._work(request, seconds)
        except _Death:  # an idle child ended of itself
            return self.work_alone(request, seconds)

    def work_alone(self, request: Request, seconds: float | None) -> list[Outcome]:
        """The same, in a new child."""
        try:
            return self._work(request, seconds, is_new=True)
        except _Death as death:
            raise FarmError(f"a process for the work ended as it started: {death}") from None

    def _work(self, request: Request, seconds: float | None, is_new: bool = False) -> list[Outcome]:
        with self._child(is_new) as child:
            child.begin(request, seconds)
            outcomes = []
            for outcome in child.outcomes(request, seconds):
                outcomes.append(outcome)
                if outcome.status is Status.KILLED:  # it may have little memory left
                    child.end()
                    break
            return outcomes

    @contextlib.contextmanager
    def _child(self, is_new: bool) -> Iterator[Child]:
        """A child for one batch. One that is left early is ended: what it still answers is not about the next batch."""
        child = self._take(is_new)
        try:
            yield child
        except BaseException:
            child.end()
            raise
        finally:
            self._put(child)

    def close(self) -> None:
        """Kills all children, also those that work; what waits for them raises FarmError."""
        with self._lock:
            self._is_closed = True
            children = [*self._idle, *self._busy]
            self._idle.clear()
        for child in children:
            child.kill()

    def _take(self, is_new: bool) -> Child:
        with self._lock:
            if self._is_closed:
                raise FarmError("the run was ended")
            child = Child() if is_new or not self._idle else self._idle.pop()
            self._busy.add(child)
            return child

    def _put(self, child: Child) -> None:
        """Keeps a child for later batches if it still runs."""
        with self._lock:
            self._busy.discard(child)
            if child.is_alive and not self._is_closed:
                self._idle.append(child)
                return
        child.end()


class Child:
    """A child process. One batch at a time.

    It imports from where this process does, not from the current folder. Its session is its own: a Ctrl-C reaches only
    this process, which decides.
    """

    def __init__(self) -> None:
        command = [sys.executable, "-c", _PROGRAM, *map(_import_place, sys.path)]
        self._process = subprocess.Popen(
            command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, bufsize=0, start_new_session=True
        )
        assert self._process.stdin and self._process.stdout
        self._requests = self._process.stdin
        self._answers = self._process.stdout
        self._received = bytearray()
        self._has_started = False

    @property
    def is_alive(self) -> bool:
        """Whether the process can work on another batch."""
        return self._process.poll() is None

    def kill(self) -> None:
        """Ends the process and those that it started, from any thread."""
        if self.is_alive:
            with contextlib.suppress(ProcessLookupError):
                os.killpg(self._process.pid, signal.SIGKILL)

    def end(self) -> None:
        """Ends the process, if it still runs, and releases what it used."""
        self.kill()
        self._requests.close()
        self._answers.close()
        self._process.wait()

    def begin(self, request: Request, seconds: float | None) -> None:
        """Has the child load the function. Raises FarmError if it cannot, _Death if it ended."""
        limit = max(seconds, _START_SECONDS) if seconds else None
        try:
            if not self._has_started:
                self._next(limit)
                self._has_started = True
            self._write(pickle.dumps(request, protocol=5))
            problem = self._next(limit)
        except TimeoutError:
            raise FarmError(
                f"a process for the work did not start within {limit:.0f} s; "
                "use fewer workers, or import less in the module of the function"
            ) from None
        if problem is not None:
            raise FarmError(f"a worker cannot load the function: {problem}")

    def outcomes(self, request: Request, seconds: float | None) -> Iterator[Outcome]:
        """Outcomes, as they come. The last one is that of a file which killed the process or took too long."""
        for _ in request.paths:
            start = time.monotonic()
            try:
                outcome = self._next(seconds)
            except (_Death, TimeoutError) as error:
                self.end()
                status = Status.KILLED if isinstance(error, _Death) else Status.TIMEOUT
                yield Outcome(status, time.monotonic() - start, error=str(error))
                return
            assert isinstance(outcome, Outcome)
            yield outcome

    def _write(self, data: bytes) -> None:
        try:
            while data:
                data = data[self._requests.write(data) :]
        except BrokenPipeError:
            raise self._death() from None

    def _next(self, seconds: float | None) -> object:
        """The next message. Raises _Death if none can come, TimeoutError if none comes in time."""
        deadline = None if seconds is None else time.monotonic() + seconds
        while (message := self._taken()) is None:
            self._receive(deadline)
        return message[0]

    def _taken(self) -> tuple[object] | None:
        size = int.from_bytes(self._received[:4], "little")
        if len(self._received) < 4 or len(self._received) < 4 + size:
            return None
        message = pickle.loads(self._received[4 : 4 + size])
        del self._received[: 4 + size]
        return (message,)

    def _death(self) -> _Death:
        """What became of the process, which ended, or closed the pipes that it needs."""
        self.kill()
        return _Death(_cause(self._process.wait()))

    def _receive(self, deadline: float | None) -> None:
        poll = select.poll()
        poll.register(self._answers, select.POLLIN)
        while not poll.poll(_milliseconds_until(deadline)):
            if deadline is not None and time.monotonic() >= deadline:
                raise TimeoutError("the file takes longer than the limit of time")
        data = os.read(self._answers.fileno(), 1 << 20)
        if not data:
            raise self._death()
        self._received += data
        time.sleep(_PAUSE_SECONDS)


class _Death(Exception):
    """The child ended."""


def _import_place(text: str) -> str:
    """An entry of `sys.path` for a process with another current folder. What is no path belongs to an import hook."""
    return os.path.abspath(text) if os.path.exists(text or os.curdir) else text


def _milliseconds_until(deadline: float | None) -> float | None:
    """For a poll, an hour or less: it cannot take any number."""
    return None if deadline is None else min(max(0.0, deadline - time.monotonic()), 3600.0) * 1000


def _cause(code: int) -> str:
    if code >= 0:
        return f"its process ended with exit code {code}"
    try:
        return f"its process was ended by {signal.Signals(-code).name}"
    except ValueError:
        return f"its process was ended by signal {-code}"


def machine_memory(groups: str = "/proc/self/cgroup", root: str = "/sys/fs/cgroup") -> int:
    """The bytes of memory that a process can get: those of the machine, or of the control groups that it is in."""
    limits = [os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES")]
    folder = os.path.join(root, _content(groups).partition("0::/")[2].partition("\n")[0])
    while folder.startswith(root):
        limit = _content(os.path.join(folder, "memory.max")).strip()
        if limit.isdecimal():
            limits.append(int(limit))
        folder = os.path.dirname(folder)
    return min(limits)


def _content(path: str) -> str:
    try:
        with open(path, encoding="ascii") as file:
            return file.read()
    except (OSError, ValueError):
        return ""


@functools.lru_cache(maxsize=1)
def _children_of(process: int) -> Children:
    """The children of this process, which later batches use: a process that was forked has others."""
    return Children()
