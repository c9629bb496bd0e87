"""Results as a table for Arrow, and tables in Parquet files. Needs pyarrow, which is imported when it is used."""

from __future__ import annotations

import importlib.util
import os
from collections.abc import Callable, Iterable
from typing import TYPE_CHECKING, Any

from .._errors import Diagnostic
from .results import FarmError, Result
from .text import utf8

if TYPE_CHECKING:
    import pyarrow

_NO_PYARROW = "tables need the package pyarrow; install vrn[farm]"


def imported_pyarrow() -> Any:
    """The package. Raises FarmError if it is not installed."""
    try:
        import pyarrow.parquet
    except ImportError:
        raise FarmError(_NO_PYARROW) from None
    return pyarrow


def expect_table(path: str) -> None:
    """Raises FarmError if no table can be written to the path later: it must not be known only after a long run."""
    if not importlib.util.find_spec("pyarrow"):
        raise FarmError(_NO_PYARROW)
    folder = os.path.dirname(path) or "."
    if os.path.isdir(path):
        raise FarmError(f"{path} is a folder; name a file")
    if not os.path.isdir(folder):
        raise FarmError(f"{path}: there is no folder {folder}; make it first")
    if not os.access(folder, os.W_OK | os.X_OK):
        raise FarmError(f"{path}: the folder {folder} cannot be written to")


def table_of(results: Iterable[Result]) -> pyarrow.Table:
    """A table with a row for each result."""
    pyarrow = imported_pyarrow()
    members = ("line", "int64"), ("column", "int64"), ("severity", "string"), ("name", "string"), ("message", "string")
    found = pyarrow.struct([(name, getattr(pyarrow, kind)()) for name, kind in members])
    columns: dict[str, tuple[Any, Callable[[Result], Any]]] = {
        "file": (pyarrow.string(), lambda result: utf8(result.path)),
        "status": (pyarrow.string(), lambda result: result.status.value),
        "previous": (pyarrow.string(), lambda result: result.previous and result.previous.value),
        "seconds": (pyarrow.float64(), lambda result: result.seconds),
        "worker": (pyarrow.string(), lambda result: result.worker),
        "error": (pyarrow.string(), lambda result: utf8(result.error) or None),
        "diagnostics": (pyarrow.list_(found), lambda result: [_members(each) for each in result.diagnostics]),
    }
    kept = list(results)
    return pyarrow.table({name: pyarrow.array(map(value, kept), kind) for name, (kind, value) in columns.items()})


def write_parquet(table: pyarrow.Table, path: str | os.PathLike[str]) -> None:
    """Writes a table to a file, which appears whole or not at all."""
    temporary = f"{os.fspath(path)}.{os.getpid()}.new"
    try:
        imported_pyarrow().parquet.write_table(table, temporary)
        os.replace(temporary, path)
    except BaseException:
        if os.path.exists(temporary):
            os.unlink(temporary)
        raise


def _members(diagnostic: Diagnostic) -> dict[str, Any]:
    line, column, severity, name, message = diagnostic
    return {"line": line, "column": column, "severity": severity, "name": name, "message": utf8(message)}
