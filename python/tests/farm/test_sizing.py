"""The sizes of batches."""

from __future__ import annotations

from collections import deque

import pytest

from vrn.farm.manifest import Entry
from vrn.farm.sizing import MAX_FILES, Sizing, weight


def sizes(seconds_a_file: float, files: int = 20_000, size: int = 9_000) -> list[int]:
    """The numbers of files in batches, if each is done before the next is cut."""
    sizing = Sizing(0.75)
    waiting = deque(Entry(str(number), size) for number in range(files))
    found = []
    while waiting:
        batch = sizing.take(waiting, sizing.budget)
        found.append(len(batch))
        sizing.learn(sum(map(weight, batch)), seconds_a_file * len(batch))
    return found


def test_batches_grow_from_one_file() -> None:
    assert sizes(0.0001)[:4] == [1, 16, 256, MAX_FILES]


@pytest.mark.parametrize("seconds", [0.0005, 0.005, 0.1, 0.3])
def test_batches_take_the_wanted_time(seconds: float) -> None:
    steady = sizes(seconds)[8:-1]
    assert steady
    assert all(0.4 <= count * seconds <= 0.8 for count in steady)


def test_small_batches_are_few() -> None:
    sizing = Sizing(0.75)
    assert sizing.is_learning
    sizing.learn(1_000, 0.0001)
    assert sizing.is_learning and sizing.budget == 16_000
    sizing.learn(1_000_000, 0.1)
    assert not sizing.is_learning


def test_long_files_are_alone() -> None:
    assert set(sizes(10.0, files=50)) == {1}


def test_batches_are_bounded() -> None:
    assert max(sizes(0.000001)) == MAX_FILES


def test_batches_count_bytes() -> None:
    sizing = Sizing(1.0)
    small, large = Entry("small", 1000), Entry("large", 50_000_000)
    sizing.learn(100_000_000, 1.0)
    assert len(sizing.take(deque([large] * 10), sizing.budget)) == 1
    assert len(sizing.take(deque([small] * 5000), sizing.budget)) > 1000


def test_the_last_batches_are_small() -> None:
    sizing = Sizing(1.0)
    sizing.learn(1_000_000, 1.0)
    assert sizing.last_budget(10_000_000, 2) == sizing.budget
    assert sizing.last_budget(400_000, 2) == 100_000
    assert sizing.last_budget(1, 2) == 1_000_000 // 16


def test_a_new_rate_is_learned() -> None:
    sizing = Sizing(1.0)
    sizing.learn(1_000_000, 1.0)
    for _ in range(20):
        sizing.learn(1_000_000, 10.0)
    assert 90_000 < sizing.budget < 110_000
