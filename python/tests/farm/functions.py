"""Work for tests: functions of a path that can be sent to other processes."""

from __future__ import annotations

import os
import signal
import subprocess
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


def gated_note(path: str) -> int:
    """Counts the calls. Files in the last folders of the library wait for the file `gate` beside it."""
    folder = Path(path).parent
    while folder.name > "2" and not (folder.parents[1] / "gate").exists():
        time.sleep(0.01)
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
    if name.startswith("unloadable"):
        return Unloadable()  # type: ignore[return-value]
    if name.startswith("closing"):
        os.closerange(3, 1000)
        time.sleep(3600)
    if name.startswith("empty"):
        raise Empty
    if name.startswith("speechless"):
        raise Speechless
    if name.startswith("fatal"):
        raise Fatal("not even an Exception")
    if name.startswith("misreported"):
        return Answer(0, ("text",))  # type: ignore[arg-type, return-value]
    if name.startswith("lambda"):
        return lambda: 0  # type: ignore[return-value]
    return size(path)


class Unloadable:
    """A value that only the process that made it can have."""

    def __reduce__(self) -> Any:
        return _refuse, ()


def _refuse() -> None:
    raise RuntimeError("only good where it was made")


class Speechless(Exception):
    def __str__(self) -> str:
        raise RuntimeError("no words")


class Empty(Exception):
    def __len__(self) -> int:
        return 0


class Fatal(BaseException):
    pass


def read_input(path: str) -> bytes:
    return os.read(0, 100)


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
    _write_whole(path + ".pid", f"{os.getpid()}")
    time.sleep(3600)


def start_and_wait(path: str) -> None:
    """Writes the number of a program that it starts beside the file `endless.vrn`, and does not end."""
    if path.endswith("endless.vrn"):
        with subprocess.Popen(["sleep", "3600"]) as program:
            _write_whole(path + ".pid", f"{program.pid}")


def _write_whole(path: str, text: str) -> None:
    """So that who waits for the file does not read half of it."""
    Path(path + ".new").write_text(text)
    os.replace(path + ".new", path)


def own_process(path: str) -> int:
    return os.getpid()
