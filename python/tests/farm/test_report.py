"""Reports of runs for other programs."""

from __future__ import annotations

import io
import json
import os
import subprocess
import sys
from typing import Any

import pytest
from conftest import ENVIRONMENT, Library

import vrn
from vrn import Diagnostic
from vrn.farm import Result, RunReport, Status
from vrn.farm.jobs import openjd
from vrn.farm.json_lines import CATALOGUE_KINDS
from vrn.farm.text import escaped

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
    report = RunReport(RESULTS)
    assert report.counts == {Status.OK: 1, Status.ERRORS: 1, Status.KILLED: 1, Status.UNCHANGED: 1}
    assert list(report.problems) == RESULTS[1:]


def test_json_lines() -> None:
    lines = [json.loads(line) for line in RunReport(RESULTS).to_json_lines().splitlines()]
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
        "message": "bad\ufffd",
        "line": 1,
        "column": 12,
    }
    assert lines[1]["diagnostics"][1] == {
        "severity": "warning",
        "message": "odd",
        "source": "check",
        "line": 0,
        "column": 0,
    }
    assert [(line["ok"], line.get("error"), line.get("previous")) for line in lines[2:]] == [
        (False, "its process was ended by SIGSEGV", None),
        (False, None, "timeout"),
    ]


def test_sarif() -> None:
    (run,) = json.loads(RunReport(RESULTS).to_sarif())["runs"]
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


@pytest.mark.parametrize(
    ("path", "uri"),
    [
        ("a b#?.vrn", "a%20b%23%3F.vrn"),
        (".//./a.vrn", "a.vrn"),
        ("../a.vrn", "../a.vrn"),
        (".hidden/./a.vrn", ".hidden/./a.vrn"),
        ("/lib/\udcff.vrn", "file:///lib/%FF.vrn"),
        ("s3://lib/a b%20\u00e4.vrn?version=1", "s3://lib/a%20b%20%C3%A4.vrn?version=1"),
    ],
)
def test_paths_are_uris(path: str, uri: str) -> None:
    result = Result(path, Status.ERRORS, None, (Diagnostic(1, 1, "error", "badToken", "bad"),))
    (run,) = json.loads(RunReport([result]).to_sarif())["runs"]
    assert run["results"][0]["locations"][0]["physicalLocation"]["artifactLocation"] == {"uri": uri}


def test_kinds_of_a_catalogue() -> None:
    with pytest.raises(ValueError) as refusal:
        vrn.check(io.BytesIO(), ignored=["none"])
    assert set(str(refusal.value).rpartition(":")[2].split()) == CATALOGUE_KINDS


MISTAKES = [
    "a.vrn",
    "b c#%.vrn",
    "sub/\u00e4.vrn",
    "sub/\udce2\udc82.vrn",
]
TEXT = """mesh m:
  .points = vec3f[3] {0 0 0 1 0 0 0 1 0};
  .triangles = vec3u[1] {0 1 3};
  .normals = vec3f[2] {0 0 1 0 0 1};
u m;
texture t: .file = "none.png";
t.x = vec3f[2] {1};
lamp l: .on = 1 "\udce2\udc82";
"""


@pytest.mark.parametrize("root", [".", "./.", "absolute"])
@pytest.mark.parametrize("types", [[], ["--types", "builtin", "--pedantic"]])
def test_reports_agree_with_those_of_the_command_of_one_machine(
    library: Library, root: str, types: list[str]
) -> None:
    folder = library()
    for number, name in enumerate(MISTAKES):
        path = folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        lines = TEXT if number % 2 else TEXT.rpartition("lamp")[0]
        path.write_bytes(lines.encode("utf-8", "surrogateescape"))
    source = os.path.abspath("lib") if root == "absolute" else f"{root}/lib"
    assert json_of("vrn", source, *types) == json_of("farm", source, *types)
    expected, found = sarif_of("vrn", source, *types), sarif_of("farm", source, *types)
    assert len(expected["results"]) > 8
    assert {result["level"] for result in expected["results"]} == {"error", "warning", "note"}
    for rule in expected["tool"]["driver"]["rules"]:
        del rule["shortDescription"]  # a worker does not send it
    assert found == expected


COMMANDS = {"vrn": [os.environ.get("VRN", "vrn")], "farm": [sys.executable, "-m", "vrn.farm.command"]}


def printed(command: str, *arguments: str) -> str:
    ended = subprocess.run(
        [*COMMANDS[command], "check", "-j1", *arguments], stdout=subprocess.PIPE, encoding="utf-8", env=ENVIRONMENT
    )
    assert ended.returncode in (0, 1)
    return ended.stdout


def json_of(command: str, *arguments: str) -> list[dict[str, Any]]:
    lines = [json.loads(line) for line in printed(command, "--format", "json", *arguments).splitlines()]
    for line in lines:
        for found in line["diagnostics"]:
            if found["line"] == TEXT.count("\n"):  # the one that is not ASCII
                del found["column"]  # in bytes there, in characters here
    lines = [{name: line[name] for name in ("file", "ok", "diagnostics")} for line in lines]
    return sorted(lines, key=lambda line: str(line["file"]))


def sarif_of(command: str, *arguments: str) -> dict[str, Any]:
    (run,) = json.loads(printed(command, "--format", "sarif", *arguments))["runs"]
    run["results"].sort(key=json.dumps)
    return dict(run)


def test_sarif_of_nothing() -> None:
    (run,) = json.loads(RunReport([]).to_sarif())["runs"]
    assert run["results"] == []
    assert run["invocations"][0]["executionSuccessful"]


def test_arrow() -> None:
    pytest.importorskip("pyarrow")
    table = RunReport(RESULTS).to_arrow().to_pydict()
    assert table["file"] == ["a.vrn", "lib/b c.vrn", "/c.vrn", "d.vrn"]
    assert table["status"] == ["ok", "errors", "killed", "unchanged"]
    assert table["previous"] == [None, None, None, "timeout"]
    assert [len(found) for found in table["diagnostics"]] == [0, 2, 0, 0]
    assert RunReport([]).to_arrow().num_rows == 0


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
