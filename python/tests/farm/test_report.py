"""Reports of runs for other programs."""

from __future__ import annotations

import json

import pytest

from vrn import Diagnostic
from vrn.farm import Report, Result, Status
from vrn.farm.jobs import openjd
from vrn.farm.terminal import escaped

RESULTS = [
    Result("a.vrn", Status.OK, 5, (), 0.5, "host-1"),
    Result(
        "lib/b c.vrn",
        Status.ERRORS,
        None,
        (Diagnostic(1, 12, "error", "badToken", "bad\udcff"), Diagnostic(0, 0, "notice", "", "odd")),
        0.25,
        "host-2",
    ),
    Result("/c.vrn", Status.KILLED, error="its process was ended by SIGSEGV"),
    Result("d.vrn", Status.UNCHANGED, None, (), 0.0, "", "", Status.TIMEOUT),
]


def test_counts() -> None:
    report = Report(RESULTS)
    assert report.counts == {Status.OK: 1, Status.ERRORS: 1, Status.KILLED: 1, Status.UNCHANGED: 1}
    assert list(report.problems) == RESULTS[1:]


def test_json_lines() -> None:
    lines = [json.loads(line) for line in Report(RESULTS).to_json_lines().splitlines()]
    assert lines[0] == {
        "file": "a.vrn",
        "status": "ok",
        "ok": True,
        "seconds": 0.5,
        "worker": "host-1",
        "diagnostics": [],
    }
    assert lines[1]["diagnostics"][0] == {
        "severity": "error",
        "message": "bad\udcff",
        "line": 1,
        "column": 12,
        "rule": "badToken",
    }
    assert [(line["ok"], line.get("error"), line.get("previous")) for line in lines[2:]] == [
        (False, "its process was ended by SIGSEGV", None),
        (False, None, "timeout"),
    ]


def test_sarif() -> None:
    (run,) = json.loads(Report(RESULTS).to_sarif())["runs"]
    first, second = run["results"]
    assert first == {
        "ruleId": "badToken",
        "level": "error",
        "message": {"text": "bad\ufffd"},
        "locations": [
            {
                "physicalLocation": {
                    "artifactLocation": {"uri": "lib/b%20c.vrn"},
                    "region": {"startLine": 1, "startColumn": 12},
                }
            }
        ],
    }
    assert (second["ruleId"], second["level"]) == ("note", "note")
    assert "region" not in second["locations"][0]["physicalLocation"]
    (invocation,) = run["invocations"]
    assert not invocation["executionSuccessful"]
    trouble = [notification["message"]["text"] for notification in invocation["toolExecutionNotifications"]]
    assert trouble == ["its process was ended by SIGSEGV", "timeout"]
    assert [rule["id"] for rule in run["tool"]["driver"]["rules"]] == ["badToken", "note"]


def test_sarif_of_nothing() -> None:
    (run,) = json.loads(Report([]).to_sarif())["runs"]
    assert run["results"] == []
    assert run["invocations"][0]["executionSuccessful"]


def test_arrow() -> None:
    pytest.importorskip("pyarrow")
    table = Report(RESULTS).to_arrow().to_pydict()
    assert table["file"] == ["a.vrn", "lib/b c.vrn", "/c.vrn", "d.vrn"]
    assert table["status"] == ["ok", "errors", "killed", "unchanged"]
    assert table["previous"] == [None, None, None, "timeout"]
    assert [len(found) for found in table["diagnostics"]] == [0, 2, 0, 0]
    assert Report([]).to_arrow().num_rows == 0


@pytest.mark.parametrize(
    ("text", "expected"),
    [
        ("lib/ä.vrn", "lib/ä.vrn"),
        ("a\x1b[31mb\n\t\r", "a\\x1B[31mb\\n\\t\\r"),
        ("\udcff\x7f", "\\xFF\\x7F"),
        ("\x9b", "\\xC2\\x9B"),
        ("\u202e", "\\xE2\\x80\\xAE"),
    ],
)
def test_escaped(text: str, expected: str) -> None:
    assert escaped(text) == expected


def test_templates_have_parts() -> None:
    template = openjd(["check", "lib"], ledger="/farm/run.ledger", parts=3)
    work, summary = template["steps"]
    assert work["parameterSpace"]["taskParameterDefinitions"][0]["range"] == "1-3"
    assert summary["script"]["actions"]["onRun"]["args"][1:] == [f"/farm/run.ledger.{part}" for part in (1, 2, 3)]
    with pytest.raises(ValueError, match="parts: 1 or more"):
        openjd(["check", "lib"], ledger="x", parts=0)
