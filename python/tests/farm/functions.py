"""Work for tests: functions of a path that can be sent to other processes."""

from __future__ import annotations

import os
import signal
import time
from pathlib import Path
from typing import Any

from vrn.farm import Answer


def size(path: str) -> int:
    return os.path.getsize(path)


def text(path: str) -> str:
    return Path(path).read_text()


def note(path: str) -> int:
    """Counts the calls: appends a byte to a file beside this one."""
    with open(path + ".calls", "ab") as file:
        file.write(b"x")
    return size(path)


def slow_note(path: str) -> int:
    time.sleep(0.002)
    return note(path)


def calls(path: str | Path) -> int:
    counted = Path(f"{path}.calls")
    return counted.stat().st_size if counted.exists() else 0


def toxic(path: str) -> int:
    """Does what the name of the file demands."""
    name = os.path.basename(path)
    if name.startswith("deadly"):
        os.kill(os.getpid(), signal.SIGSEGV)
    if name.startswith("endless"):
        time.sleep(3600)
    if name.startswith("greedy"):
        return len(bytearray(30 << 30))
    if name.startswith("raising"):
        raise RuntimeError("no good")
    if name.startswith("leaving"):
        raise SystemExit("away")
    if name.startswith("lambda"):
        return lambda: 0  # type: ignore[return-value]
    return size(path)


def gone_once(path: str) -> int:
    """Kills its process the first time."""
    if note(path) and calls(path) == 1 and os.path.basename(path).startswith("deadly"):
        os.kill(os.getpid(), signal.SIGKILL)
    return size(path)


def fails_twice(path: str) -> int:
    note(path)
    if calls(path) < 3:
        raise RuntimeError(f"try {calls(path)}")
    return 3


def chatty(path: str) -> int:
    """Prints to the descriptors that a child process uses for its messages."""
    print("noise")
    os.write(1, b"more noise\n")
    return size(path)


def answering(path: str) -> Answer:
    return Answer("value", (), ok=False)


def needs_nothing(path: str) -> Any:
    return None


def number_and_wait(path: str) -> None:
    """Writes the number of its process beside the file, and does not end."""
    Path(path + ".pid").write_text(f"{os.getpid()}\n")
    time.sleep(3600)


def own_process(path: str) -> int:
    return os.getpid()
