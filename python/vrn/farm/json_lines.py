"""Results as JSON, a line each. What was found in a file reads as in the report of `vrn check`."""

from __future__ import annotations

import json
from typing import Any

from .._errors import Diagnostic
from .results import Result
from .text import utf8

CATALOGUE_KINDS = frozenset(
    {
        "badCount",
        "badIndex",
        "cycle",
        "missingFile",
        "notListed",
        "outOfRange",
        "unknownInput",
        "unknownType",
        "unused",
        "wrongNode",
        "wrongType",
    }
)
"""The names of diagnostics that come from a check by a catalogue."""


def json_line(result: Result) -> str:
    """A result as a line of JSON, `{"file", "status", "ok", "diagnostics", ...}`."""
    members: dict[str, Any] = {"file": utf8(result.path), "status": result.status, "ok": result.exit_code == 0}
    if result.previous:
        members["previous"] = result.previous
    members["seconds"] = round(result.seconds, 6)
    if result.worker:
        members["worker"] = result.worker
    if result.error:
        members["error"] = utf8(result.error)
    members["diagnostics"] = list(map(_members, result.diagnostics))
    return json.dumps(members, separators=(",", ":"), ensure_ascii=False) + "\n"


def _members(found: Diagnostic) -> dict[str, Any]:
    members = {"severity": "error" if found.severity == "error" else "warning", "message": utf8(found.message)}
    if found.severity == "notice":
        members["source"] = "check"
    elif found.name in CATALOGUE_KINDS:
        members |= {"source": "types", "rule": found.name}
    return {**members, "line": found.line, "column": found.column}
