"""The rows of the tables: what was measured, the requirement (must) and the goal."""

from __future__ import annotations


class Table:
    """Prints rows as they come, and remembers whether one misses its requirement."""

    def __init__(self, title: str) -> None:
        self.has_missed = False
        print(f"{title:48} {'measured':>8} {'must':>7} {'goal':>7}", flush=True)

    def row(
        self,
        title: str,
        value: float,
        must: float | None = None,
        goal: float | None = None,
        unit: str = "",
        is_least: bool = False,
    ) -> None:
        """Bounds are upper ones, or lower ones if `is_least`; without them, the row explains another one."""
        has_missed = must is not None and (value < must if is_least else value > must)
        self.has_missed |= has_missed
        bounds = " ".join("      -" if bound is None else f"{bound:7.2f}" for bound in (must, goal))
        notes = " ".join(filter(None, [unit, "at least" if is_least else "", "MISSED" if has_missed else ""]))
        print(f"{title:48} {value:8.2f} {bounds} {notes}".rstrip(), flush=True)
