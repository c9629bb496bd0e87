"""Child processes: what becomes of one whose batch is left, or that does not start."""

from __future__ import annotations

import os
import pickle
import sys
from collections.abc import Iterator
from pathlib import Path
from typing import Any

import functions
import pytest

from vrn.farm import FarmError
from vrn.farm.child import Request
from vrn.farm.guard import Child, Children, Limits, guarded, machine_memory
from vrn.farm.packing import unpacked
from vrn.farm.results import Outcome


@pytest.fixture
def children() -> Iterator[Children]:
    children = Children()
    yield children
    children.close()


def names(outcomes: list[Outcome]) -> list[Any]:
    return [unpacked(outcome).value for outcome in outcomes]


def test_answers_of_a_batch_that_was_left_are_not_those_of_the_next(
    children: Children, monkeypatch: pytest.MonkeyPatch
) -> None:
    packed = pickle.dumps(os.path.basename)

    def interrupted(child: Child, request: Request, seconds: float | None) -> Iterator[Outcome]:
        raise KeyboardInterrupt
        yield

    with monkeypatch.context() as patched:
        patched.setattr(Child, "outcomes", interrupted)
        with pytest.raises(KeyboardInterrupt):
            guarded(children, packed, ["/a.vrn", "/b.vrn"], "", Limits())
    _, outcomes = guarded(children, packed, ["/c.vrn"], "", Limits())
    assert names(outcomes) == ["c.vrn"]


def test_a_child_is_kept_for_the_next_batch(children: Children) -> None:
    packed = pickle.dumps(functions.own_process)
    first, second = (guarded(children, packed, ["/a.vrn"], "", Limits())[1] for _ in range(2))
    assert names(first) == names(second) != [os.getpid()]


def test_a_process_that_does_not_start_is_reported(
    children: Children, tmp_path: Path, monkeypatch: pytest.MonkeyPatch
) -> None:
    sleeper = tmp_path / "sleeper"
    sleeper.write_text("#!/bin/sh\nexec sleep 3600\n")
    sleeper.chmod(0o755)
    monkeypatch.setattr(sys, "executable", str(sleeper))
    monkeypatch.setattr("vrn.farm.guard._START_SECONDS", 0.1)
    paths = [f"/{number:0100}.vrn" for number in range(2000)]  # more than a pipe holds
    with pytest.raises(FarmError, match=r"did not start within 0 s; use fewer workers"):
        guarded(children, pickle.dumps(functions.size), paths, "", Limits(0.01))


@pytest.mark.parametrize(
    ("group", "limits", "expected"),
    [
        ("/", {"": "1000"}, 1000),
        ("/", {"": "max"}, None),
        ("/a/b", {"": "5000", "a": "3000", "a/b": "4000"}, 3000),
        ("/a/b", {"a": "max", "a/b": "4000"}, 4000),
        ("/a", {"b": "4000"}, None),
        ("/../..", {"": "2000"}, 2000),
    ],
)
def test_the_memory_of_control_groups(tmp_path: Path, group: str, limits: dict[str, str], expected: int | None) -> None:
    groups = tmp_path / "cgroup"
    groups.write_text(f"1:name=other:/x\n0::{group}\n")
    root = tmp_path / "root"
    root.mkdir()
    for folder, limit in limits.items():
        (root / folder).mkdir(parents=True, exist_ok=True)
        (root / folder / "memory.max").write_text(limit + "\n")
    machine = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES")
    assert machine_memory(str(groups), str(root)) == (expected or machine)
    assert machine_memory("none", "none") == machine
