"""Libraries of files, and a cluster of Dask with a scheduler and two workers."""

from __future__ import annotations

import contextlib
import os
import signal
import subprocess
import sys
import time
from collections.abc import Callable, Iterator
from pathlib import Path
from typing import Any

import pytest

Library = Callable[..., Path]

ENVIRONMENT = {**os.environ, "PYTHONPATH": os.pathsep.join(filter(None, sys.path))}
"""For processes that import what the tests do."""


@pytest.fixture
def library(tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> Library:
    """Makes a folder `lib` in the current folder, with files of the given names or so many good ones."""
    monkeypatch.chdir(tmp_path)

    def make(*names: str, good: int = 0) -> Path:
        folder = Path("lib")
        for number in range(good):
            name = folder / f"{number % 7}" / f"good{number:04}.vrn"
            name.parent.mkdir(parents=True, exist_ok=True)
            name.write_text(f"thing a{number}; a{number}.size = {number};\n")
        for name in names:
            path = folder / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text("t a; a.x = ;\n" if "broken" in name else "t a; a.x = 1;\n")
        return folder

    return make


class Cluster:
    """A scheduler and its workers, each a process of its own."""

    def __init__(self, folder: Path, allowed_failures: int) -> None:
        self.scheduler_file = folder / "scheduler.json"
        self._environment = {
            **ENVIRONMENT,
            "DASK_DISTRIBUTED__SCHEDULER__ALLOWED_FAILURES": str(allowed_failures),
            "DASK_DISTRIBUTED__ADMIN__LOW_LEVEL_LOG_LENGTH": "0",
        }
        self.scheduler = self._start("scheduler", "--port", "0", "--host", "127.0.0.1", "--no-dashboard")
        self._workers = [self._worker() for _ in range(2)]
        self._clients: list[Any] = []

    def _start(self, *arguments: str) -> subprocess.Popen[bytes]:
        command = [sys.executable, "-m", "dask", *arguments, "--scheduler-file", str(self.scheduler_file)]
        return subprocess.Popen(
            command, env=self._environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True
        )

    def _worker(self) -> subprocess.Popen[bytes]:
        """A nanny and the worker that it starts again after its death."""
        return self._start("worker", "--nthreads", "1", "--no-dashboard", "--host", "127.0.0.1", "--death-timeout", "170")

    def client(self) -> Any:
        from distributed import Client

        client = Client(scheduler_file=str(self.scheduler_file), timeout=170, set_as_default=False)
        self._clients.append(client)
        client.wait_for_workers(2, timeout=170)
        return client

    def kill_worker(self) -> None:
        """Kills the process of one worker, as a machine without memory does. Its nanny starts another."""
        wait_until(self._kill_started)

    def _kill_started(self) -> bool:
        for number in self._started():
            with contextlib.suppress(ProcessLookupError):
                os.kill(number, signal.SIGKILL)
                return True
        return False

    def _started(self) -> list[int]:
        """The processes that the first nanny started: its worker. Asking Dask could wait forever for a dead one."""
        children = Path(f"/proc/{self._workers[0].pid}/task").glob("*/children")
        numbers = [int(number) for child in children for number in _content(child).split()]
        return [number for number in numbers if b"spawn_main" in _content(Path(f"/proc/{number}/cmdline"))]

    def close(self) -> None:
        for client in self._clients:
            client.close(timeout=5)
        for process in [*self._workers, self.scheduler]:
            if process.poll() is None:
                os.killpg(process.pid, signal.SIGKILL)
            process.wait()


@pytest.fixture(scope="session")
def cluster(tmp_path_factory: pytest.TempPathFactory) -> Iterator[Cluster]:
    """A cluster that tests share."""
    cluster = Cluster(tmp_path_factory.mktemp("cluster"), allowed_failures=1)
    yield cluster
    cluster.close()


@pytest.fixture(scope="session")
def client(cluster: Cluster) -> Any:
    return cluster.client()


@pytest.fixture
def own_cluster(tmp_path: Path) -> Iterator[Cluster]:
    """A cluster that the test may damage."""
    cluster = Cluster(tmp_path, allowed_failures=0)
    yield cluster
    cluster.close()


def _content(path: Path) -> bytes:
    """What is in a file of the system; nothing if its process or thread has ended."""
    try:
        return path.read_bytes()
    except (FileNotFoundError, ProcessLookupError):
        return b""


def wait_until(condition: Callable[[], bool]) -> None:
    """Waits for what another process does. A test that waits in vain is ended by its time limit."""
    while not condition():
        time.sleep(0.01)
