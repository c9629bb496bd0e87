"""Results as one log in SARIF 2.1.0. What was found in a file reads as in the log of `vrn check`."""

from __future__ import annotations

import json
import os
import re
from collections.abc import Callable
from typing import Any
from urllib.parse import quote

from .._errors import Diagnostic
from .._vrn import __version__
from .files import is_remote
from .results import TROUBLE, Result
from .text import utf8

_SCHEMA = "https://docs.oasis-open.org/sarif/sarif/v2.1.0/errata01/os/schemas/sarif-schema-2.1.0.json"
_LEVELS = {"error": "error", "warning": "warning"}
_OF_URLS = ":/?#[]@!$&'()*+,;=%~"  # characters that URLs have unquoted, or that quote others


class SarifLog:
    """A log that is being written: memory does not grow with results, but for files that could not be worked on."""

    def __init__(self, write: Callable[[str], object]) -> None:
        self._write = write
        self._rules: set[str] = set()
        self._trouble: list[dict[str, Any]] = []
        self._separator = "\n"
        write(f'{{"$schema":"{_SCHEMA}","version":"2.1.0","runs":[{{"results":[')

    def add(self, result: Result) -> None:
        """Adds what was found in a file."""
        location = {"artifactLocation": {"uri": _uri(result.path)}}
        for found in result.diagnostics:
            self._item(found, location)
        if result.verdict in TROUBLE or result.exit_code and not result.diagnostics:
            message = {"text": utf8(result.error or result.verdict.value)}
            self._trouble.append({"level": "error", "message": message, "locations": [{"physicalLocation": location}]})

    def end(self) -> None:
        """Writes what depends on all files."""
        invocation = {"executionSuccessful": not self._trouble, "toolExecutionNotifications": self._trouble}
        rules = [{"id": rule} for rule in sorted(self._rules)]
        members = {
            "columnKind": "unicodeCodePoints",
            "invocations": [invocation],
            "tool": {"driver": {"name": "vrn", "version": __version__, "rules": rules}},
        }
        self._write("\n]," + _json(members)[1:] + "]}\n")

    def _item(self, found: Diagnostic, location: dict[str, Any]) -> None:
        level = _LEVELS.get(found.severity, "note")
        rule = found.name or level
        self._rules.add(rule)
        region = {"region": {"startLine": found.line, "startColumn": found.column}} if found.line else {}
        item = {
            "ruleId": rule,
            "level": level,
            "message": {"text": utf8(found.message)},
            "locations": [{"physicalLocation": location | region}],
        }
        self._write(self._separator + _json(item))
        self._separator = ",\n"


def _uri(path: str) -> str:
    if is_remote(path):
        return quote(os.fsencode(path), safe=_OF_URLS)
    return ("file://" if path.startswith("/") else "") + quote(os.fsencode(re.sub(r"^(\./+)+", "", path)), safe="/~")


def _json(value: Any) -> str:
    return json.dumps(value, separators=(",", ":"), ensure_ascii=False)
