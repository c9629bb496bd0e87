"""One table over the values of many files."""

from __future__ import annotations

import json
import os
from collections.abc import Iterable, Sequence
from typing import TYPE_CHECKING, Any

from .arrow import imported_pyarrow, write_parquet
from .manifest import Source
from .ops import scan as scanning
from .run import Run, batch
from .text import utf8

if TYPE_CHECKING:
    import pyarrow


def scan(paths: Source | Iterable[Source], columns: Sequence[str], **options: Any) -> Table:
    """Reads values from many files into one table.

    >>> table = vrn.scan("city.vrn", ["*.fov", "*.material"])
    >>> table.columns["node"], table.columns["*.fov"]
    (['cam1', 'box', 'boxB'], [45.0, None, None])
    >>> table.to_parquet("lib.parquet")

    The columns are paths as in `vrn query`; the options are those of `batch`, but for the ledger, which stores no values.
    The table has a row for each node that a path matches. A column whose path can match several inputs of one node
    holds lists. Files without a scene have no rows; the `run` of the table has their results.
    """
    if isinstance(columns, str):
        raise TypeError("columns: a list of paths, not one string")
    if "ledger" in options:
        raise TypeError("a scan has no ledger: ledgers store no values")
    return Table(columns, batch(paths, scanning(tuple(columns)), **options))


class Table:
    """Values of nodes: the columns `file`, `node`, and one for each path."""

    def __init__(self, paths: Sequence[str], run: Run) -> None:
        self.run = run
        """The results, one a file."""
        self.columns: dict[str, list[Any]] = {"file": [], "node": [], **{path: [] for path in paths}}
        """The values by the name of their column; None where a node has none."""
        for result in sorted(run, key=lambda result: result.path):
            if result.value is not None:
                self._add(result.path, result.value)

    def __len__(self) -> int:
        return len(self.columns["file"])

    def __repr__(self) -> str:
        return f"<vrn.Table of {len(self)} rows from {len(self.run)} files>"

    def to_arrow(self) -> pyarrow.Table:
        """The table for Arrow. Values that have no common type become text. Needs pyarrow."""
        return imported_pyarrow().table({name: _array(values) for name, values in self.columns.items()})

    def to_parquet(self, path: str | os.PathLike[str]) -> None:
        """Writes the table to a file. Needs pyarrow."""
        write_parquet(self.to_arrow(), path)

    def _add(self, file: str, found: dict[str, dict[str, Any]]) -> None:
        rows: dict[str, dict[str, Any]] = {}
        for column, values in found.items():
            for place, value in values.items():
                row = rows.setdefault(_node_of(place), {})
                if _is_list(column):
                    row.setdefault(column, []).append(value)
                else:
                    row[column] = value
        for node, row in rows.items():
            for name, cells in self.columns.items():
                cells.append(file if name == "file" else node if name == "node" else row.get(name))


def _node_of(place: str) -> str:
    return place.partition(".")[0]


def _is_list(column: str) -> bool:
    """Whether a path can match several inputs of one node."""
    _, _, below = column.partition(".")
    return any(sign in below for sign in "*?:")


def _array(values: list[Any]) -> Any:
    pyarrow = imported_pyarrow()
    try:
        return pyarrow.array(values)
    except (pyarrow.ArrowInvalid, pyarrow.ArrowTypeError, UnicodeEncodeError, OverflowError):
        return pyarrow.array([None if value is None else _text(value) for value in values], pyarrow.string())


def _text(value: Any) -> str:
    return utf8(value if isinstance(value, str) else json.dumps(value))
