"""Outcomes between processes. Values are pickled one by one, so that one that cannot be sent fails its file alone."""

from __future__ import annotations

import pickle
from collections.abc import Sequence
from typing import NamedTuple

from .results import Outcome, Status, describe

Done = tuple[str, list[Outcome]]
"""The worker, and the outcomes of its batch in the order of the files."""


class Packed(NamedTuple):
    """A value on its way."""

    data: bytes


def packed(outcome: Outcome) -> Outcome:
    """The outcome for another process, or a failure if its value cannot be pickled."""
    if outcome.value is None or isinstance(outcome.value, Packed):
        return outcome
    try:
        return outcome._replace(value=Packed(pickle.dumps(outcome.value, protocol=5)))
    except (Exception, SystemExit) as error:  # values may raise anything
        return _failed(outcome, f"the value cannot be pickled: {describe(error)}")


def unpacked(outcome: Outcome) -> Outcome:
    """The outcome with its value, or a failure if this process cannot unpickle it."""
    if not isinstance(outcome.value, Packed):
        return outcome
    try:
        return outcome._replace(value=pickle.loads(outcome.value.data))
    except (Exception, SystemExit) as error:
        return _failed(outcome, f"the value cannot be unpickled: {describe(error)}")


def sent(worker: str, outcomes: Sequence[Outcome]) -> bytes:
    """What a worker in another process answers."""
    return pickle.dumps((worker, list(map(packed, outcomes))), protocol=5)


def received(message: bytes) -> Done:
    """The answer of a worker. Values stay packed."""
    done: Done = pickle.loads(message)
    return done


def _failed(outcome: Outcome, error: str) -> Outcome:
    return Outcome(Status.FAILED, outcome.seconds, error=error)
