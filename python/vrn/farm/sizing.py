"""How many files a batch has: as many as take the wanted time, by what the batches before took."""

from __future__ import annotations

from collections import deque

from .manifest import Entry

MAX_FILES = 2000
"""A batch has no more, so that its message stays small and little is lost with a worker."""

_OPENING = 32 << 10  # opening a file costs about as much as reading so many bytes
_GROWTH = 16  # between a batch and the largest one that is done
_MEMORY = 0.7  # of the rate so far, when another batch is done


def weight(entry: Entry) -> int:
    """What a file costs, in bytes."""
    return entry.size + _OPENING


class Sizing:
    """Learns how long files take, and cuts batches that take the wanted time.

    The first batches have one file each, because nothing is known about the work; each further one is up to sixteen
    times the largest one that is done.
    """

    def __init__(self, seconds: float) -> None:
        self.seconds = seconds
        self._largest = 0
        self._rate = 0.0  # bytes of weight in a second of one worker

    def learn(self, weight: int, seconds: float) -> None:
        """A batch of this weight took this time."""
        rate = weight / max(seconds, 1e-6)
        self._rate = _MEMORY * self._rate + (1 - _MEMORY) * rate if self._rate else rate
        self._largest = max(self._largest, weight)

    @property
    def is_learning(self) -> bool:
        """Whether the next batch is smaller than it should be, for lack of a larger one that is done."""
        return not self._rate or self._rate * self.seconds > _GROWTH * self._largest

    @property
    def budget(self) -> int:
        """The weight that the next batch should have."""
        return int(min(self._rate * self.seconds, _GROWTH * self._largest))

    def take(self, waiting: deque[Entry], budget: int) -> list[Entry]:
        """Removes the files of the next batch, at least one, from those that wait."""
        batch = [waiting.popleft()]
        left = budget - weight(batch[0])
        while waiting and len(batch) < MAX_FILES and left >= weight(waiting[0]):
            left -= weight(waiting[0])
            batch.append(waiting.popleft())
        return batch

    def last_budget(self, waiting_weight: int, workers: int) -> int:
        """The weight of the next batch if no more files follow: all workers shall finish at about the same time."""
        return min(self.budget, max(waiting_weight // (2 * workers), int(self._rate * self.seconds / 16)))
