"""Runs: the results of files, on every executor, and what the ledger saves the next time."""

from __future__ import annotations

import functools
import itertools
import json
import os
import pickle
import sys
import threading
from collections import Counter
from collections.abc import Callable, Iterator
from concurrent.futures import Executor, ProcessPoolExecutor, ThreadPoolExecutor
from pathlib import Path
from typing import Any

import functions
import pytest
from conftest import Library

from vrn.farm import FarmError, Result, Run, Status, as_completed, batch
from vrn.farm.ledger import read_ledger
from vrn.farm.sizing import Sizing


def statuses(run: Run) -> dict[str, str]:
    return {os.path.basename(result.path): result.status for result in run}


def essence(path: str | Path) -> list[tuple[Any, ...]]:
    """The records of a ledger without what differs between runs."""
    lines = (json.loads(line) for line in Path(path).read_text().splitlines()[1:])
    return sorted((line["path"], line["key"], line["status"], line.get("error", "")) for line in lines)


@pytest.fixture(params=["threads", "processes", "loky", "thread pool", "process pool", "dask"])
def executor(request: pytest.FixtureRequest) -> Iterator[Any]:
    if request.param == "dask":
        yield request.getfixturevalue("client")
    elif request.param.endswith("pool"):
        import multiprocessing

        spawn = multiprocessing.get_context("spawn")
        pool: Executor = ThreadPoolExecutor(2) if "thread" in request.param else ProcessPoolExecutor(2, mp_context=spawn)
        with pool:
            yield pool
    else:
        yield request.param


def test_every_executor_gives_the_same_results(library: Library, executor: Any) -> None:
    library("raising.vrn", "leaving.vrn", "sub/x.vrn", good=60)
    run = batch(["lib", "lib/missing.vrn"], functions.toxic, executor=executor, ledger="run.ledger")
    assert len(run) == 64
    assert run.report.counts == {Status.OK: 61, Status.UNREADABLE: 1, Status.FAILED: 2}
    assert all(result.value == os.path.getsize(result.path) for result in run if result.status == "ok")
    assert all(result.worker for result in run)
    errors = {os.path.basename(result.path): result.error for result in run if result.exit_code}
    assert errors == {
        "raising.vrn": "RuntimeError: no good",
        "leaving.vrn": "SystemExit: away",
        "missing.vrn": "[Errno 2] No such file or directory: 'lib/missing.vrn'",
    }
    batch(["lib", "lib/missing.vrn"], functions.toxic, ledger="reference.ledger")
    assert essence("run.ledger") == essence("reference.ledger")


def test_functions_of_the_main_script_and_closures(library: Library, client: Any) -> None:
    library(good=3)
    factor = 3

    def times(path: str) -> int:
        return factor * os.path.getsize(path)

    expected = sorted(3 * os.path.getsize(path) for path in Path("lib").rglob("*.vrn"))
    for executor in "threads", "processes", client:
        assert sorted(result.value for result in batch("lib", times, executor=executor)) == expected


def test_a_function_that_cannot_be_sent(library: Library) -> None:
    library(good=1)
    lock = threading.Lock()

    def locked(path: str) -> bool:
        return lock.locked()

    assert [result.value for result in batch("lib", locked)] == [False]
    with pytest.raises(FarmError, match="locked cannot be sent to other processes"):
        batch("lib", locked, executor="processes")


def test_values_that_cannot_be_pickled_fail_alone(library: Library, client: Any) -> None:
    library("lambda.vrn", good=3)
    for executor in "processes", client:
        run = batch("lib", functions.toxic, executor=executor)
        assert Counter(statuses(run).values()) == {"ok": 3, "failed": 1}
        (problem,) = run.report.problems
        assert problem.error.startswith("the value cannot be pickled")


def test_values_that_cannot_be_unpickled_fail_alone(library: Library, client: Any) -> None:
    library("unloadable.vrn", good=3)
    for executor in "threads", "processes", client:
        run = batch("lib", functions.toxic, executor=executor, timeout=60)
        assert Counter(statuses(run).values()) == {"ok": 3, "failed": 1}
        (problem,) = run.report.problems
        assert problem.error == "the value cannot be unpickled: RuntimeError: only good where it was made"


@pytest.mark.parametrize(
    ("name", "error"),
    [
        ("speechless.vrn", "Speechless: its text cannot be made: RuntimeError"),
        ("empty.vrn", "Empty"),
        ("fatal.vrn", "Fatal: not even an Exception"),
        ("misreported.vrn", "TypeError: Answer: diagnostics must be of vrn.Diagnostic, not str"),
    ],
)
def test_odd_exceptions_and_answers_fail_alone(library: Library, name: str, error: str) -> None:
    library(name, good=3)
    for executor in "threads", "processes":
        run = batch("lib", functions.toxic, executor=executor)
        assert [(problem.status, problem.error) for problem in run.report.problems] == [("failed", error)]
        assert len(run) == 4


def test_what_functions_print_does_not_matter(library: Library) -> None:
    library(good=5)
    assert batch("lib", functions.chatty, executor="processes").ok


def test_functions_have_nothing_to_read(library: Library) -> None:
    """Not what the driver still asks of the process, either."""
    library(good=5)
    assert {result.value for result in batch("lib", functions.read_input, executor="processes")} == {b""}


def test_child_processes_do_not_import_from_the_current_folder(library: Library) -> None:
    library(good=5)
    for name in "vrn", "queue", "functions":
        Path(f"{name}.py").write_text("raise SystemExit(1)\n")
    assert batch("lib", functions.size, executor="processes").ok


def test_child_processes_import_from_where_this_process_does(
    library: Library, monkeypatch: pytest.MonkeyPatch
) -> None:
    library(good=2)
    monkeypatch.setattr(sys, "path", ["", "an import hook", *sys.path])
    Path("beside.py").write_text("import sys\ndef places(path):\n    return sys.path[:2]\n")
    import beside  # type: ignore[import-not-found]

    results = batch("lib", beside.places, executor="processes")
    assert {tuple(result.value) for result in results} == {(os.getcwd(), "an import hook")}


def test_nothing_is_printed(library: Library, capfd: pytest.CaptureFixture[str]) -> None:
    library("broken.vrn", "raising.vrn", good=5)
    batch(["lib", "none/*.vrn"], functions.toxic, executor="processes")
    assert capfd.readouterr() == ("", "")


def test_an_answer_of_the_function(library: Library) -> None:
    library(good=1)
    (result,) = batch("lib", functions.answering)
    assert (result.status, result.value, result.exit_code) == ("errors", "value", 1)


def test_sources_without_files(library: Library) -> None:
    library(good=2)
    run = batch(["lib", "none/*.vrn"], functions.size)
    (problem,) = run.report.problems
    assert (problem.path, problem.status, problem.error) == ("none/*.vrn", "unreadable", "no file matches")
    assert run.exit_code == 2


@pytest.mark.parametrize(
    ("name", "code"), [("good.vrn", 0), ("raising.vrn", 2), ("missing.vrn", 2)]
)
def test_exit_codes(library: Library, name: str, code: int) -> None:
    library("good.vrn", "raising.vrn")
    run = batch(f"lib/{name}", functions.toxic)
    assert (run.exit_code, run.ok) == (code, code == 0)


# The ledger


def test_done_files_are_unchanged(library: Library) -> None:
    library(good=50)
    first = batch("lib", functions.note, ledger="run.ledger")
    second = batch("lib/**/*.vrn", functions.note, ledger="run.ledger")
    assert first.report.counts == {Status.OK: 50}
    assert second.report.counts == {Status.UNCHANGED: 50}
    assert {result.previous for result in second} == {Status.OK}
    assert all(functions.calls(result.path) == 1 for result in second)
    assert second.exit_code == 0


def test_changed_and_new_files_are_done(library: Library) -> None:
    folder = library("new/x.vrn", good=20)
    batch("lib/**/good*.vrn", functions.note, ledger="run.ledger")
    changed = folder / "3" / "good0003.vrn"
    changed.write_text("t b;")
    run = batch("lib", functions.note, ledger="run.ledger")
    assert {result.path for result in run if result.status == "ok"} == {str(changed), "lib/new/x.vrn"}


def test_what_may_be_cured_is_tried_again(library: Library) -> None:
    library("raising.vrn", good=3)
    for again, expected in [({"failed"}, "failed"), (set(), "unchanged")]:
        batch("lib", functions.toxic, ledger="run.ledger")
        run = batch("lib", functions.toxic, ledger="run.ledger", again=again)
        assert statuses(run)["raising.vrn"] == expected
        assert run.exit_code == 2


def test_other_options_are_other_work(library: Library) -> None:
    library(good=3)
    for base, expected in [(2, "ok"), (2, "unchanged"), (10, "ok"), (2, "unchanged")]:
        run = batch("lib", functools.partial(_power, base=base), ledger="run.ledger")
        assert set(statuses(run).values()) == {expected}


def _power(path: str, base: int) -> int:
    return base ** os.path.getsize(path)


def test_files_without_work_are_recorded(library: Library) -> None:
    library("a.vrn")
    for _ in range(2):
        run = batch(["lib", "none/*.vrn"], functions.size, ledger="run.ledger")
        assert run.exit_code == 2
    records = {record.path: (record.status, record.error) for record in read_ledger("run.ledger")}
    assert records == {"lib/a.vrn": ("ok", ""), "none/*.vrn": ("unreadable", "no file matches")}


def test_a_run_that_is_left_goes_on(library: Library) -> None:
    library(good=300)
    results = as_completed("lib", functions.note, ledger="run.ledger", workers=2)
    seen = {result.path for result in itertools.islice(results, 40)}
    results.close()
    recorded = {path for path, *_ in essence("run.ledger")}
    assert seen <= recorded
    run = batch("lib", functions.note, ledger="run.ledger")
    assert len(run) == 300
    assert {result.path for result in run if result.status == "unchanged"} == recorded
    assert [path for path, *_ in essence("run.ledger")] == sorted(result.path for result in run)


def test_results_come_while_others_wait(library: Library) -> None:
    library("a.vrn", "b.vrn")
    first_is_seen = threading.Event()

    def wait(path: str) -> bool:
        return path.endswith("a.vrn") or first_is_seen.wait(600)

    results = as_completed("lib", wait, workers=2)
    assert next(results).path == "lib/a.vrn"
    first_is_seen.set()
    assert next(results).value is True


# Retries


def test_retries(library: Library) -> None:
    library("a.vrn", "b.vrn")
    run = batch("lib", functions.fails_twice, retries=2, ledger="run.ledger")
    assert [result.value for result in run] == [3, 3]
    assert len(essence("run.ledger")) == 2
    for path in Path("lib").glob("*.calls"):
        path.unlink()
    run = batch("lib", functions.fails_twice, retries=1)
    assert [result.error for result in run] == ["RuntimeError: try 2"] * 2


@pytest.mark.parametrize("limit", [1e300, float("inf")])
def test_limits_of_any_size(library: Library, limit: float) -> None:
    library(good=2)
    assert batch("lib", functions.size, timeout=limit, memory=(1 << 63) - 1).ok


# Mistakes of the caller


@pytest.mark.parametrize(
    ("options", "message"),
    [
        ({"executor": "cloud"}, "executor: .*not 'cloud'"),
        ({"retries": -1}, "retries: 0 or more"),
        ({"timeout": 0}, "timeout: more than 0 seconds"),
        ({"timeout": float("nan")}, "timeout: more than 0 seconds"),
        ({"memory": -5}, "memory: more than 0 and less than"),
        ({"memory": 1 << 63}, "memory: more than 0 and less than"),
        ({"workers": 0}, "workers: 1 or more, not 0"),
        ({"again": {"lost"}}, "no status is named 'lost'"),
        ({"part": (3, 2)}, "part: a number from 1"),
    ],
)
def test_mistakes(library: Library, options: dict[str, Any], message: str) -> None:
    library(good=1)
    with pytest.raises((TypeError, ValueError), match=message):
        batch("lib", functions.size, **options)


def test_an_executor_that_is_shut_down(library: Library) -> None:
    library(good=1)
    pool = ThreadPoolExecutor(1)
    pool.shutdown()
    with pytest.raises(FarmError, match="cannot run batches: .*shutdown"):
        batch("lib", functions.size, executor=pool)


def test_a_function_that_workers_cannot_load(library: Library, monkeypatch: pytest.MonkeyPatch) -> None:
    library(good=3)
    monkeypatch.setattr("vrn.farm.work.Work.packed", pickle.dumps(functions.size).replace(b"functions", b"functionz"))
    with pytest.raises(FarmError, match="cannot load the function: .*functionz"):
        batch("lib", functions.size, executor="processes")


# The run as a sequence


def test_a_run_is_a_sequence() -> None:
    results = [
        Result("a.vrn", Status.OK, 1, (), 0.5, "host-1"),
        Result("b\udcff.vrn", Status.KILLED, None, (), 0.0, "", "dead"),
        Result("c.vrn", Status.UNCHANGED, None, (), 0.25, "host-2", "", Status.ERRORS),
        Result("d.vrn", Status.OK, None, (), 0.25, "host-1"),
    ]
    run = Run(results)
    assert list(run) == results
    assert (run[-1], run[1:3]) == (results[3], results[1:3])
    assert repr(run) == "<vrn.Run of 4 files: 2 ok, 1 killed, 1 unchanged>"
    assert [result.exit_code for result in run] == [0, 2, 1, 0]
    with pytest.raises(IndexError):
        run[4]


# What goes through a scheduler


def test_bytes_a_file(library: Library, monkeypatch: pytest.MonkeyPatch) -> None:
    library(good=400)
    learn = Sizing.learn
    monkeypatch.setattr(Sizing, "learn", lambda self, weight, seconds: learn(self, weight, 0.001))
    sent: list[int] = []

    class Counting(ProcessPoolExecutor):
        def submit(self, function: Callable[..., Any], /, *arguments: Any, **options: Any) -> Any:
            future = super().submit(function, *arguments, **options)
            sent.append(len(pickle.dumps(arguments)) + len(future.result()))
            return future

    with Counting(1) as pool:
        batch("lib", functions.size, executor=pool)
    assert sum(sent) / 400 < 300
