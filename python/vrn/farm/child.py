"""The program of a child process, in which a worker applies the function within limits.

Requests arrive on standard input, answers go to what was standard output. The function itself reads nothing, and what
it prints goes to standard error. The process ends when its parent does, even in the middle of a file, and when it was
idle for a minute.
"""

from __future__ import annotations

import os
import pickle
import queue
import resource
import threading
from typing import IO, NamedTuple

_IDLE_SECONDS = 60.0


class Request(NamedTuple):
    """Files to work on."""

    packed: bytes
    paths: tuple[str, ...]
    folder: str
    """That relative paths are in; empty for the current one."""
    memory: int | None
    """The bytes of address space that may be used; None for any number."""


def write_message(pipe: int, message: object) -> None:
    """Writes a pickle after its length in four bytes."""
    data = pickle.dumps(message, protocol=5)
    data = len(data).to_bytes(4, "little") + data
    while data:
        data = data[os.write(pipe, data) :]


def main() -> None:
    """Works on requests until there are no more.

    Ends the process without the usual cleaning up, which would wait for the thread that receives.
    """
    pipe, answers = _own_pipes()
    write_message(answers, None)  # started: from now on requests are received
    requests: queue.SimpleQueue[Request] = queue.SimpleQueue()
    threading.Thread(target=_receive, args=(pipe, requests), daemon=True).start()
    while True:
        try:
            request = requests.get(timeout=_IDLE_SECONDS)
            _serve(request, answers)
        except (queue.Empty, BrokenPipeError):  # nobody asks, or nobody listens
            os._exit(0)


def _own_pipes() -> tuple[IO[bytes], int]:
    """The pipes to and from the parent, out of the reach of the function and of the programs that it starts."""
    requests, answers = os.fdopen(os.dup(0), "rb"), os.dup(1)
    nothing = os.open(os.devnull, os.O_RDONLY)
    os.dup2(nothing, 0)
    os.close(nothing)
    os.dup2(2, 1)
    return requests, answers


def _receive(pipe: IO[bytes], requests: queue.SimpleQueue[Request]) -> None:
    """Ends the process with its parent: then nobody is left to receive what it would still do."""
    try:
        while True:
            requests.put(pickle.load(pipe))
    except (EOFError, pickle.UnpicklingError):
        os._exit(0)


def _serve(request: Request, answers: int) -> None:
    from .packing import packed
    from .results import describe
    from .worker import attempt, loaded

    _limit_memory(request.memory)
    try:
        if request.folder:
            os.chdir(request.folder)
        function = loaded(request.packed)
    except Exception as error:  # a module that the function needs may raise anything
        write_message(answers, describe(error))
        return
    write_message(answers, None)  # ready: the time of the first file begins
    for path in request.paths:
        write_message(answers, packed(attempt(function, path)))


def _limit_memory(limit: int | None) -> None:
    _, hard = resource.getrlimit(resource.RLIMIT_AS)
    soft = hard if limit is None else limit if hard == resource.RLIM_INFINITY else min(limit, hard)
    resource.setrlimit(resource.RLIMIT_AS, (soft, hard))
