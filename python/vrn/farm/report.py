"""What there is to say about all files of a run together: counts, and their results in formats for other programs."""

from __future__ import annotations

import json
import os
from collections import Counter
from collections.abc import Callable, Iterable, Iterator
from typing import TYPE_CHECKING, Any

from .results import TROUBLE, Result, Status

if TYPE_CHECKING:
    import pyarrow

_SARIF = "https://docs.oasis-open.org/sarif/sarif/v2.1.0/errata01/os/schemas/sarif-schema-2.1.0.json"
_LEVELS = {"error": "error", "warning": "warning", "notice": "note"}


class Report:
    """A report about results, which can be iterated any number of times."""

    def __init__(self, results: Iterable[Result]) -> None:
        self._results = results

    @property
    def counts(self) -> dict[Status, int]:
        """The number of files by status, for the statuses that occur."""
        counted = Counter(result.status for result in self._results)
        return {status: counted[status] for status in Status if counted[status]}

    @property
    def problems(self) -> Iterator[Result]:
        """The results of files with errors or trouble, those of unchanged files included."""
        return (result for result in self._results if result.exit_code)

    def to_json_lines(self) -> str:
        """A line of JSON for each file. Values are omitted: they may be anything."""
        return "".join(map(json_line, self._results))

    def to_sarif(self) -> str:
        """One log in SARIF 2.1.0, for code scanning."""
        pieces: list[str] = []
        log = SarifLog(pieces.append)
        for result in self._results:
            log.add(result)
        log.end()
        return "".join(pieces)

    def to_arrow(self) -> pyarrow.Table:
        """A table with a row for each file. Needs pyarrow."""
        return table_of(self._results)

    def to_parquet(self, path: str | os.PathLike[str]) -> None:
        """Writes the table of `to_arrow` to a file. Needs pyarrow."""
        write_parquet(self.to_arrow(), path)


def json_line(result: Result) -> str:
    """A result as a line of JSON, `{"file", "status", "ok", "diagnostics", ...}`."""
    members: dict[str, Any] = {"file": result.path, "status": result.status, "ok": result.exit_code == 0}
    if result.previous:
        members["previous"] = result.previous
    members["seconds"] = round(result.seconds, 6)
    if result.worker:
        members["worker"] = result.worker
    if result.error:
        members["error"] = result.error
    members["diagnostics"] = [
        {
            "severity": found.severity,
            "message": found.message,
            "line": found.line,
            "column": found.column,
            "rule": found.name,
        }
        for found in result.diagnostics
    ]
    return json.dumps(members, separators=(",", ":")) + "\n"


class SarifLog:
    """Writes a log while results come: memory does not grow with them, but for files that could not be worked on."""

    def __init__(self, write: Callable[[str], object]) -> None:
        self._write = write
        self._rules: set[str] = set()
        self._trouble: list[dict[str, Any]] = []
        self._separator = "\n"
        write(f'{{"$schema":"{_SARIF}","version":"2.1.0","runs":[{{"results":[')

    def add(self, result: Result) -> None:
        """Adds what was found in a file."""
        location = _location(result.path)
        for found in result.diagnostics:
            rule = found.name or _LEVELS[found.severity]
            self._rules.add(rule)
            region = {"region": {"startLine": found.line, "startColumn": found.column}} if found.line else {}
            self._item(
                {
                    "ruleId": rule,
                    "level": _LEVELS[found.severity],
                    "message": {"text": _utf8(found.message)},
                    "locations": [{"physicalLocation": location | region}],
                }
            )
        if result.verdict in TROUBLE or result.exit_code and not result.diagnostics:
            message = {"text": _utf8(result.error or result.verdict.value)}
            self._trouble.append({"level": "error", "message": message, "locations": [{"physicalLocation": location}]})

    def end(self) -> None:
        """Writes what depends on all files."""
        from .._vrn import __version__

        invocation = {"executionSuccessful": not self._trouble, "toolExecutionNotifications": self._trouble}
        rules = [{"id": rule} for rule in sorted(self._rules)]
        members = {
            "columnKind": "unicodeCodePoints",
            "invocations": [invocation],
            "tool": {"driver": {"name": "vrn", "version": __version__, "rules": rules}},
        }
        self._write("\n]," + _json(members)[1:] + "]}\n")

    def _item(self, item: dict[str, Any]) -> None:
        self._write(self._separator + _json(item))
        self._separator = ",\n"


def table_of(results: Iterable[Result]) -> pyarrow.Table:
    """A table with a row for each result."""
    import pyarrow

    found = pyarrow.struct(
        [
            ("line", pyarrow.int32()),
            ("column", pyarrow.int32()),
            ("severity", pyarrow.string()),
            ("name", pyarrow.string()),
            ("message", pyarrow.string()),
        ]
    )
    columns: dict[str, tuple[Any, Callable[[Result], Any]]] = {
        "file": (pyarrow.string(), lambda result: _utf8(result.path)),
        "status": (pyarrow.string(), lambda result: result.status.value),
        "previous": (pyarrow.string(), lambda result: result.previous and result.previous.value),
        "seconds": (pyarrow.float64(), lambda result: result.seconds),
        "worker": (pyarrow.string(), lambda result: result.worker),
        "error": (pyarrow.string(), lambda result: _utf8(result.error) or None),
        "diagnostics": (pyarrow.list_(found), lambda result: [_found(each) for each in result.diagnostics]),
    }
    kept = list(results)
    return pyarrow.table({name: pyarrow.array(map(value, kept), kind) for name, (kind, value) in columns.items()})


def write_parquet(table: pyarrow.Table, path: str | os.PathLike[str]) -> None:
    """Writes a table to a file, which appears whole or not at all."""
    import pyarrow.parquet

    temporary = f"{os.fspath(path)}.{os.getpid()}.new"
    try:
        pyarrow.parquet.write_table(table, temporary)
        os.replace(temporary, path)
    except BaseException:
        if os.path.exists(temporary):
            os.unlink(temporary)
        raise


def _found(diagnostic: Any) -> dict[str, Any]:
    line, column, severity, name, message = diagnostic
    return {"line": line, "column": column, "severity": severity, "name": name, "message": _utf8(message)}


def _location(path: str) -> dict[str, Any]:
    from urllib.parse import quote

    if "://" in path:
        uri = path
    else:
        uri = ("file://" if path.startswith("/") else "") + quote(os.fsencode(path.removeprefix("./")), safe="/~-._")
    return {"artifactLocation": {"uri": uri}}


def _utf8(text: str) -> str:
    """The text with U+FFFD for what is not UTF-8."""
    return text.encode("utf-8", "surrogateescape").decode("utf-8", "replace")


def _json(value: Any) -> str:
    return json.dumps(value, separators=(",", ":"), ensure_ascii=False)
