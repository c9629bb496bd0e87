"""What a conversion loses, one record for each kind."""

from __future__ import annotations

from .._results import Loss

_MOST_KINDS = 200


class Losses:
    """Counts each kind of loss and keeps where it occurred first."""

    def __init__(self) -> None:
        self._counts: dict[str, int] = {}
        self._first: dict[str, str] = {}

    def add(self, what: str, path: str) -> None:
        # What comes from a file can be of any number of kinds.
        if what not in self._counts and len(self._counts) >= _MOST_KINDS:
            what = "other kinds"
        self._counts[what] = self._counts.get(what, 0) + 1
        self._first.setdefault(what, path)

    def all(self) -> tuple[Loss, ...]:
        return tuple(Loss(what, count, self._first[what]) for what, count in self._counts.items())
