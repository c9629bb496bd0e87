"""Real numbers between the double precision of scenes and the single precision of most attributes of stages."""

from __future__ import annotations

import math
from collections.abc import Callable
from typing import Any

import numpy as np

LARGEST = float(np.finfo(np.float32).max)
DIGITS = "digits beyond float precision"


def single(value: float) -> float:
    """The nearest number of single precision; the largest one for numbers beyond their range."""
    return float(np.float32(max(-LARGEST, min(LARGEST, value))))


def shortest(value: Any) -> float:
    """The shortest decimal number that has this value in single precision: 0.1, not 0.10000000149."""
    return float(str(np.float32(value)))


def shortest_of(stored: float, to_stored: Callable[[float], float], guess: float) -> float:
    """The shortest decimal number that becomes `stored` by a conversion to single precision; else the guess itself."""
    if not math.isfinite(guess):
        return guess
    for digits in range(1, 18):
        candidate = float(f"{guess:.{digits}g}")
        if single(to_stored(candidate)) == single(stored):
            return candidate
    return guess
