"""What there is to say about all files of a run together."""

from __future__ import annotations

import os
from collections import Counter
from collections.abc import Iterable, Iterator
from typing import TYPE_CHECKING

from .arrow import table_of, write_parquet
from .json_lines import json_line
from .results import Result, Status
from .sarif import SarifLog

if TYPE_CHECKING:
    import pyarrow


class RunReport:
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
