"""What the command `vrn-batch` prints: results as they come, the progress between them, and a summary."""

from __future__ import annotations

import io
import sys
from collections import Counter
from collections.abc import Iterable, Iterator

from .json_lines import json_line
from .progress import Progress
from .results import Result, Status
from .sarif import SarifLog
from .text import encodable, escaped


class Printer:
    """Prints results in a format: `text`, `json` or `sarif`."""

    def __init__(self, format: str, is_quiet: bool) -> None:
        if isinstance(sys.stdout, io.TextIOWrapper):  # paths are printed as they are in any locale
            sys.stdout.reconfigure(encoding="utf-8", errors="surrogateescape")
        self.exit_code = 0
        """That of the worst file so far."""
        self._format = format
        self._is_quiet = is_quiet
        self._counts: Counter[Status] = Counter()
        self._progress = Progress(sys.stderr, not is_quiet)
        self._is_terminal = sys.stdout.isatty()
        self._sarif = SarifLog(self._write) if format == "sarif" else None

    def printed(self, results: Iterable[Result]) -> Iterator[Result]:
        """Prints each result before it passes it on, and in the end what there is to say about all."""
        try:
            for result in results:
                self._print(result)
                yield result
        finally:
            self._progress.hide()
        self._print_end()

    def _print(self, result: Result) -> None:
        self.exit_code = max(self.exit_code, result.exit_code)
        self._counts[result.status] += 1
        if self._sarif:
            self._sarif.add(result)
        elif self._format == "json":
            self._write(json_line(result))
        elif result.diagnostics or result.exit_code:
            self._write(result_text(result, self._is_terminal) + "\n")
        self._progress.add(result)

    def _print_end(self) -> None:
        if self._sarif:
            self._sarif.end()
        elif self._format == "text" and not self._is_quiet:
            counts = ", ".join(f"{self._counts[status]} {status}" for status in Status if status in self._counts)
            files = self._counts.total()
            self._write(f"{files} {'file' if files == 1 else 'files'}: {counts or 'no results'}\n")

    def _write(self, text: str) -> None:
        self._progress.hide()
        sys.stdout.write(encodable(text))


def result_text(result: Result, is_terminal: bool) -> str:
    """What was found in a file, a line each, and why there is no more."""
    lines = [f"{result.path}:{found}" for found in result.diagnostics]
    if result.exit_code and (not lines or result.verdict is not Status.ERRORS):
        lines.append(f"{result.path}: {result.verdict}" + (f": {result.error}" if result.error else ""))
    return "\n".join(map(escaped, lines) if is_terminal else lines)
