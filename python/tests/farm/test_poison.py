"""Files that kill their worker, never end, or need too much memory: only they are lost, and their records say why."""

from __future__ import annotations

import os
import pickle
from collections.abc import Sequence
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path
from typing import Any

import functions
import pytest
from conftest import Library
from test_batch import essence

from vrn.farm import Run, batch
from vrn.farm.executors import ExecutorPool
from vrn.farm.guard import Children, Limits, default_limits, work_there
from vrn.farm.packing import Done, received, unpacked
from vrn.farm.work import Work

GIB = 1 << 30


def problems(run: Run) -> dict[str, tuple[str, str]]:
    return {os.path.basename(result.path): (result.status, result.error) for result in run.report.problems}


EXPECTED = {
    "deadly.vrn": ("killed", "its process was ended by SIGSEGV"),
    "endless.vrn": ("timeout", "the file takes longer than the limit of time"),
    "greedy.vrn": ("killed", "the file needs more than 2048 MiB of memory"),
}


@pytest.mark.parametrize("executor", ["threads", "processes", "dask"])
def test_three_poison_files_lose_nothing_else(library: Library, request: pytest.FixtureRequest, executor: str) -> None:
    library("1/deadly.vrn", "2/endless.vrn", "3/greedy.vrn", good=200)
    workers: Any = request.getfixturevalue("client") if executor == "dask" else executor
    run = batch("lib", functions.toxic, executor=workers, timeout=10, memory=2 * GIB, ledger="run.ledger")
    assert len(run) == 203
    assert problems(run) == EXPECTED
    assert len(essence("run.ledger")) == 203
    assert run.exit_code == 2


def test_a_process_that_closes_its_pipes_is_ended(library: Library) -> None:
    """It could not answer any more."""
    library("closing.vrn", good=3)
    run = batch("lib", functions.toxic, executor="processes")
    assert problems(run) == {"closing.vrn": ("killed", "its process was ended by SIGKILL")}


def test_poison_is_not_tried_again(library: Library) -> None:
    library("deadly.vrn", "x.vrn")
    batch("lib", functions.toxic, executor="processes", ledger="run.ledger")
    run = batch("lib", functions.toxic, executor="processes", ledger="run.ledger")
    assert [(result.status, result.previous) for result in run] == [("unchanged", "killed"), ("unchanged", "ok")]
    assert run.exit_code == 2


@pytest.mark.parametrize("executor", ["process pool", "loky", "dask"])
def test_a_batch_that_dies_is_halved_down_to_the_file(
    library: Library, request: pytest.FixtureRequest, executor: str
) -> None:
    """Without limits the workers do the work themselves, and die of it."""
    library("3/deadly.vrn", good=100)
    pool: Any = executor
    if executor == "dask":
        pool = request.getfixturevalue("client")
    elif executor == "process pool":
        from concurrent.futures import ProcessPoolExecutor
        from multiprocessing import get_context

        pool = ProcessPoolExecutor(2, mp_context=get_context("spawn"))
    run = batch(os.path.abspath("lib"), functions.toxic, executor=pool, ledger="run.ledger")
    assert len(run) == 101
    assert problems(run) == {"deadly.vrn": EXPECTED["deadly.vrn"]}
    assert len(essence("run.ledger")) == 101


def test_a_file_that_killed_only_once_is_done(library: Library) -> None:
    library("deadly.vrn", good=20)
    run = batch("lib", functions.gone_once, executor="processes")
    assert run.ok
    assert functions.calls("lib/deadly.vrn") == 2
    assert all(functions.calls(path) == 1 for path in Path("lib").rglob("good*.vrn"))


def test_a_memory_error_is_tried_alone_in_a_new_process(library: Library) -> None:
    library("greedy.vrn", good=3)
    run = batch("lib", functions.toxic, executor="processes", memory=2 * GIB)
    assert problems(run) == {"greedy.vrn": EXPECTED["greedy.vrn"]}


def test_limits_of_suspects() -> None:
    assert default_limits(Limits(5.0, 7)) == Limits(5.0, 7)
    limits = default_limits(Limits())
    assert limits.seconds == 3600
    assert limits.memory and limits.memory > GIB // 4


def test_suspects_have_limits_in_the_place_of_a_broken_pool(library: Library, monkeypatch: pytest.MonkeyPatch) -> None:
    library("a.vrn")
    seen: list[Limits] = []

    def noted(children: Children, packed: bytes, paths: Sequence[str], folder: str, limits: Limits) -> Done:
        seen.append(limits)
        return "worker", []

    monkeypatch.setattr("vrn.farm.executors.guarded", noted)
    with ThreadPoolExecutor(1) as executor:
        pool = ExecutorPool(executor, 1, Limits()).renewed()
        for is_suspect in False, True:
            pool.submit(Work(functions.size), ["a.vrn"], is_suspect).result()
        pool.close()
    assert seen == [Limits(), default_limits(Limits())]


def test_suspects_are_worked_on_in_children(library: Library) -> None:
    library("a.vrn")
    path = os.path.abspath("lib/a.vrn")
    own = pickle.dumps(functions.own_process)
    for limits, is_suspect, is_here in [
        (Limits(), False, True),
        (Limits(), True, False),
        (Limits(60.0), False, False),
        (Limits(None, 4 * GIB), False, False),
    ]:
        _, (outcome,) = received(work_there(own, [path], "", limits, is_suspect))
        assert (unpacked(outcome).value == os.getpid()) == is_here
    _, (outcome,) = received(work_there(pickle.dumps(os.path.getsize), ["lib/a.vrn"], os.getcwd(), Limits(), False))
    assert outcome.status == "ok"
