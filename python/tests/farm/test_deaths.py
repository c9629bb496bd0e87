"""Deaths of workers, of the driver and of the scheduler: every file has one record, and the next call goes on."""

from __future__ import annotations

import os
import signal
import subprocess
import sys
import threading
from pathlib import Path

import functions
import pytest
from conftest import ENVIRONMENT, Cluster, Library, wait_until
from test_batch import essence

from vrn.farm import FarmError, Status, as_completed, batch
from vrn.farm.ledger import read_ledger

HERE = Path(__file__).parent


def records(ledger: str) -> int:
    return max(0, Path(ledger).read_bytes().count(b"\n") - 1) if Path(ledger).exists() else 0


def driver(*arguments: str) -> subprocess.Popen[bytes]:
    return subprocess.Popen([sys.executable, HERE / "driving.py", *arguments], env=ENVIRONMENT)


def test_a_killed_worker_loses_nothing(library: Library, own_cluster: Cluster) -> None:
    library(good=600)
    client = own_cluster.client()
    results = as_completed(os.path.abspath("lib"), functions.note, executor=client, ledger="run.ledger")
    paths = []
    for result in results:
        assert result.status == "ok"
        paths.append(result.path)
        if len(paths) in (1, 50):
            own_cluster.kill_worker()
    assert len(paths) == len(set(paths)) == 600
    run = batch(os.path.abspath("lib"), functions.note, ledger="run.ledger")
    assert run.report.counts == {Status.UNCHANGED: 600}


@pytest.mark.parametrize("is_on_cluster", [False, True])
def test_a_killed_driver_goes_on(
    library: Library, request: pytest.FixtureRequest, is_on_cluster: bool
) -> None:
    library(good=400)
    arguments = ["run.ledger", "gated_note"]
    if is_on_cluster:
        arguments.append(str(request.getfixturevalue("cluster").scheduler_file))
    killed = driver(*arguments)
    wait_until(lambda: records("run.ledger") >= 40 or killed.poll() is not None)
    killed.kill()
    killed.wait()
    done = {record.path for record in read_ledger("run.ledger")}
    assert 40 <= len(done) < 400
    Path("gate").touch()
    again = driver(*arguments)
    assert again.wait() == 0
    assert len({path for path, *_ in essence("run.ledger")}) == len(essence("run.ledger")) == 400
    assert {functions.calls(path) for path in done} == {1}


def test_a_killed_scheduler_is_an_error_and_the_next_call_goes_on(library: Library, own_cluster: Cluster) -> None:
    library(good=400)
    client = own_cluster.client()
    results = as_completed(os.path.abspath("lib"), functions.note, executor=client, ledger="run.ledger")
    next(results)
    own_cluster.scheduler.kill()
    with pytest.raises(FarmError, match="cannot run batches|client of Dask is"):
        for _ in results:
            pass
    done = records("run.ledger")
    assert 1 <= done < 400
    run = batch(os.path.abspath("lib"), functions.note, ledger="run.ledger")
    assert run.report.counts == {Status.OK: 400 - done, Status.UNCHANGED: done}


def test_children_end_with_their_driver(library: Library) -> None:
    """Even in the middle of a file that never ends."""
    library("endless.vrn")
    code = "import functions; from vrn.farm import batch; batch('lib', functions.number_and_wait, executor='processes')"
    killed = subprocess.Popen([sys.executable, "-c", code], env=ENVIRONMENT)
    number = Path("lib/endless.vrn.pid")
    wait_until(number.exists)
    killed.kill()
    killed.wait()
    wait_until(lambda: not _is_running(int(number.read_text())))


def _is_running(process: int) -> bool:
    try:
        return Path(f"/proc/{process}/stat").read_text().rpartition(")")[2].split()[0] != "Z"
    except OSError:
        return False


def test_an_interrupt_ends_the_run_and_keeps_what_is_done(library: Library) -> None:
    library(good=500)
    is_interrupted = threading.Event()

    def interrupt(*_: object) -> None:
        is_interrupted.set()
        raise KeyboardInterrupt

    def interrupting(path: str) -> int:
        if path.endswith("good0300.vrn"):
            os.kill(os.getpid(), signal.SIGINT)
            is_interrupted.wait()
        return functions.note(path)

    interrupting.identity = "interrupting"  # type: ignore[attr-defined]
    before = signal.signal(signal.SIGINT, interrupt)
    try:
        with pytest.raises(KeyboardInterrupt):
            batch("lib", interrupting, workers=2, ledger="run.ledger")
    finally:
        signal.signal(signal.SIGINT, before)
    done = records("run.ledger")
    assert 0 < done < 500


def test_closing_a_run_ends_files_that_never_end(library: Library) -> None:
    library("a.vrn", "endless.vrn")
    results = as_completed("lib", functions.toxic, executor="processes", workers=2)
    assert next(results).path == "lib/a.vrn"
    results.close()


def test_closing_a_run_ends_programs_that_files_started(library: Library) -> None:
    library("a.vrn", "endless.vrn")
    results = as_completed("lib", functions.start_and_wait, executor="processes", workers=2)
    assert next(results).path == "lib/a.vrn"
    number = Path("lib/endless.vrn.pid")
    wait_until(number.exists)
    results.close()
    wait_until(lambda: not _is_running(int(number.read_text())))


def test_ctrl_c_prints_nothing(library: Library) -> None:
    """A terminal sends it to all processes of the group."""
    library("endless.vrn")
    command = [sys.executable, "-m", "vrn.farm.command", "call", "functions:number_and_wait", "lib", "--timeout", "600"]
    interrupted = subprocess.Popen(
        command,
        env=ENVIRONMENT,
        stderr=subprocess.PIPE,
        start_new_session=True,
        preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_DFL),
    )
    wait_until(Path("lib/endless.vrn.pid").exists)
    os.killpg(interrupted.pid, signal.SIGINT)
    assert interrupted.communicate()[1] == b""
    assert interrupted.returncode == 128 + signal.SIGINT


def test_an_idle_child_that_ends_is_replaced(library: Library) -> None:
    library(good=30)
    results = as_completed("lib", functions.own_process, executor="processes", workers=1)
    killed = next(results).value
    os.kill(killed, signal.SIGKILL)
    assert {result.status for result in results} == {Status.OK}
