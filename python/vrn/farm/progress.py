"""A status line on a terminal while a run lasts."""

from __future__ import annotations

import time
from typing import TextIO

from .results import Result, Status

_FIRST_SECONDS = 0.5  # without a line: most runs are over by then
_PAUSE_SECONDS = 0.1


class Progress:
    """Counts results, and shows the counts on one line that is removed before anything else is printed."""

    def __init__(self, stream: TextIO, is_shown: bool) -> None:
        self._stream = stream
        self._is_shown = is_shown and stream.isatty()
        self._start = time.monotonic()
        self._next = self._start + _FIRST_SECONDS
        self._is_visible = False
        self._done = self._unchanged = self._problems = 0

    def add(self, result: Result) -> None:
        """A file is done."""
        self._done += 1
        self._unchanged += result.status is Status.UNCHANGED
        self._problems += result.exit_code != 0
        now = time.monotonic()
        if self._is_shown and now >= self._next:
            self._next = now + _PAUSE_SECONDS
            self.hide()
            self._stream.write(self._line(now - self._start))
            self._stream.flush()
            self._is_visible = True

    def hide(self) -> None:
        """Removes the line."""
        if self._is_visible:
            self._stream.write("\r\x1b[K")
            self._stream.flush()
            self._is_visible = False

    def _line(self, seconds: float) -> str:
        line = f"{self._done:,} files, {self._done / seconds:,.0f} a second"
        if self._unchanged:
            line += f", {self._unchanged:,} unchanged"
        return line + (f", {self._problems:,} with problems" if self._problems else "")
