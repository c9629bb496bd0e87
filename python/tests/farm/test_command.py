"""The command `vrn-batch`, as a process: its output, its exit codes, and its jobs for render farms."""

from __future__ import annotations

import io
import json
import os
import pty
import subprocess
import sys
from collections.abc import Iterator
from pathlib import Path

import pytest
from conftest import ENVIRONMENT, Cluster, Library

from vrn.farm import FarmError, Result, Status, batch, openjd
from vrn.farm.arguments import parser
from vrn.farm.command import main
from vrn.farm.printing import Printer

HERE = Path(__file__).parent
COMMAND = [sys.executable, "-m", "vrn.farm.command"]


def run(*arguments: str, stdin: str = "") -> tuple[int, str, str]:
    ended = subprocess.run([*COMMAND, *arguments], input=stdin, capture_output=True, text=True, env=ENVIRONMENT)
    return ended.returncode, ended.stdout, ended.stderr


def template(*arguments: str, parts: str = "2") -> list[str]:
    return ["template", "--parts", parts, "--ledger", "x", "--", *arguments]


def test_check(library: Library) -> None:
    library("x/broken.vrn", good=10)
    code, out, err = run("check", "lib", "--ledger", "run.ledger")
    first, *rest = out.splitlines()
    assert (code, err) == (1, "")
    assert first.startswith("lib/x/broken.vrn:1:12: error: ")
    assert rest == ["11 files: 10 ok, 1 errors"]
    code, out, err = run("check", "lib", "--ledger", "run.ledger")
    assert (code, out.splitlines()) == (1, [first, "11 files: 11 unchanged"])


@pytest.mark.parametrize(
    ("arguments", "code", "out"),
    [
        (["check", "lib/0"], 0, "2 files: 2 ok\n"),
        (["check", "--quiet", "lib/0"], 0, ""),
        (["check", "lib/none.vrn", "lib/0", "--exit-zero", "-q"], 0, "lib/none.vrn: unreadable: "),
        (["check", "lib/*.none"], 2, "lib/*.none: unreadable: no file matches\n1 file: 1 unreadable\n"),
        (["check", "lib/0/good0000.vrn", "--format", "json"], 0, '{"file":"lib/0/good0000.vrn","status":"ok"'),
        (["check", "lib/0", "--part", "1/1"], 0, "2 files: 2 ok\n"),
        (["check", "lib/0", "lib", "-j", "2", "--executor", "processes"], 0, "10 files: 10 ok\n"),
        (["call", "os.path:getsize", "lib"], 0, "10 files: 10 ok\n"),
    ],
)
def test_runs(library: Library, arguments: list[str], code: int, out: str) -> None:
    library(good=10)
    ended, printed, err = run(*arguments)
    assert (ended, err) == (code, "")
    assert printed.startswith(out) and (out or not printed)


@pytest.mark.parametrize(
    ("arguments", "message"),
    [
        (["check"], "vrn-batch: no paths; name files, folders or patterns"),
        (["check", "lib", "--executor", "cloud"], "vrn-batch: --executor cloud: threads, processes, loky, or"),
        (["check", "lib", "--part", "3/2"], "'3/2' is not K/N"),
        (["check", "lib", "--memory", "many"], "'many' is not a number of bytes"),
        (["check", "lib", "--ledger", "none/x"], "vrn-batch: the ledger none/x cannot be opened: No such file"),
        (["check", "lib", "--types", "none.json"], "none.json"),
        (["call", "os:none", "lib"], "the module os has no none; write MODULE:FUNCTION"),
        (["convert", "out/{x}.glb", "lib"], "unknown {x}; known are {stem}"),
        (["summary", "none.ledger"], "none.ledger"),
        (["check", "lib", "-j", "-1"], "'-1' is not a number from 0"),
        (["check", "lib", "--memory", "99999999999G"], "memory: more than 0 and less than 2**63 bytes"),
        (["check", "lib", "--timeout", "nan"], "timeout: more than 0 seconds"),
        (["check", "lib", "--ignore", "none"], "'none' is no kind of finding"),
        (["check", "lib", "--files-from", "none.txt"], "No such file or directory: 'none.txt'"),
        (["check", "lib", "--parquet", "none/x.parquet"], "none/x.parquet: there is no folder none; make it first"),
        (["scan", "lib", "-c", "*.x", "-o", "none/x.parquet"], "none/x.parquet: there is no folder none; make it first"),
        (["scan", "lib", "-c", "*.x", "-o", "lib"], "lib is a folder; name a file"),
        (template("verify", "lib"), "verify"),
        (template("summary", "x"), "one of check, convert, call"),
        (template("scan", "lib", "-c", "x", "-o", "x"), "one of check, convert, call"),
        (template("check", "lib", "--ledger", "y"), "leave out --ledger and --part"),
        (template("check", "lib", "--part", "1/2"), "leave out --ledger and --part"),
        (template("check", "{{lib}}"), "which starts a parameter in a template"),
        (template("check", "lib", parts="0"), "parts: 1 or more, not 0"),
    ],
)
def test_mistakes(library: Library, arguments: list[str], message: str) -> None:
    library(good=1)
    code, out, err = run(*arguments)
    assert (code, out) == (2, "")
    assert message in err
    assert "Traceback" not in err


def test_packages_that_are_missing_are_known_at_once(
    library: Library, monkeypatch: pytest.MonkeyPatch, capsys: pytest.CaptureFixture[str]
) -> None:
    library(good=1)
    monkeypatch.setitem(sys.modules, "pyarrow", None)
    monkeypatch.setitem(sys.modules, "distributed", None)
    for arguments, message in [
        (["scan", "none", "-c", "*.x", "-o", "x.parquet"], "tables need the package pyarrow; install vrn[farm]"),
        (["check", "none", "--parquet", "x.parquet"], "tables need the package pyarrow; install vrn[farm]"),
        (["check", "none", "--executor", "tcp://none"], "needs the package distributed; install vrn[dask]"),
    ]:
        assert main(arguments) == 2
        out, err = capsys.readouterr()
        assert (out, err.count("\n")) == ("", 1)
        assert message in err
    with pytest.raises(FarmError, match="tables need the package pyarrow"):
        batch("lib", os.path.getsize).report.to_arrow()


@pytest.mark.parametrize("encoding", ["ascii", "latin-1", "utf-8"])
def test_paths_are_printed_as_they_are(library: Library, encoding: str) -> None:
    library("broken \u00e4.vrn", "broken \udcff.vrn")
    ended = subprocess.run(
        [*COMMAND, "check", "lib"], stdout=subprocess.PIPE, env={**ENVIRONMENT, "PYTHONIOENCODING": encoding}
    )
    assert b"lib/broken \xc3\xa4.vrn:1:12: error" in ended.stdout
    assert b"lib/broken \xff.vrn:1:12: error" in ended.stdout


def test_what_is_no_character_is_printed_as_such(library: Library) -> None:
    library("a.vrn")
    Path("odd.py").write_text("def odd(path):\n    raise RuntimeError('half \\ud800')\n")
    assert run("call", "odd:odd", "lib")[:2] == (2, "lib/a.vrn: failed: RuntimeError: half \ufffd\n1 file: 1 failed\n")


def test_the_progress_is_removed_when_a_run_fails(monkeypatch: pytest.MonkeyPatch) -> None:
    class Terminal(io.StringIO):
        def isatty(self) -> bool:
            return True

    def failing() -> Iterator[Result]:
        yield Result("a.vrn", Status.OK)
        raise FarmError("gone")

    monkeypatch.setattr("vrn.farm.progress._FIRST_SECONDS", 0.0)
    monkeypatch.setattr(sys, "stderr", Terminal())
    with pytest.raises(FarmError):
        list(Printer("text", is_quiet=False).printed(failing()))
    assert sys.stderr.getvalue().endswith("\r\x1b[K")  # type: ignore[attr-defined]


def test_paths_from_a_file(library: Library) -> None:
    library(good=10)
    Path("list").write_text("lib/0/good0000.vrn\nlib/1\n\n")
    assert run("check", "--files-from", "list")[1] == "3 files: 3 ok\n"
    assert run("check", "--files-from", "-", "lib/2", stdin="lib/0/good0000.vrn\n")[1] == "3 files: 3 ok\n"


def test_sarif_and_parquet(library: Library) -> None:
    parquet = pytest.importorskip("pyarrow.parquet")
    library("broken.vrn", good=3)
    code, out, _ = run("check", "lib", "--format", "sarif", "--parquet", "run.parquet")
    (found,) = json.loads(out)["runs"][0]["results"]
    assert (code, found["locations"][0]["physicalLocation"]["region"]["startColumn"]) == (1, 12)
    assert sorted(parquet.read_table("run.parquet")["status"].to_pylist()) == ["errors", "ok", "ok", "ok"]


def test_scan(library: Library) -> None:
    parquet = pytest.importorskip("pyarrow.parquet")
    library("broken.vrn", good=3)
    code, out, err = run("scan", "lib", "-c", "*.size", "-o", "sizes.parquet")
    assert (code, out, err.startswith("lib/broken.vrn:1:12: error: ")) == (1, "", True)
    assert parquet.read_table("sizes.parquet")["*.size"].to_pylist() == [0, 1, 2]


def test_convert(library: Library) -> None:
    folder = library(good=3)
    for path in folder.rglob("*.vrn"):
        path.write_text("mesh m: .points = vec3f[3] {0 0 0 1 0 0 0 1 0}; m.triangles = vec3u[1] {0 1 2};\n")
    assert run("convert", "out/{stem}.glb", "lib")[0] == 0
    assert len(list(Path("out").iterdir())) == 3


def test_a_cluster(library: Library, cluster: Cluster) -> None:
    library(good=5)
    cluster.client()
    address = json.loads(cluster.scheduler_file.read_text())["address"]
    assert run("check", "lib", "--executor", address)[:2] == (0, "5 files: 5 ok\n")


def test_terminals_are_not_controlled_by_paths(library: Library) -> None:
    library("broken\x1b[31m.vrn")
    master, terminal = pty.openpty()
    process = subprocess.Popen([*COMMAND, "check", "lib"], stdout=terminal, stderr=subprocess.DEVNULL, env=ENVIRONMENT)
    assert process.wait() == 1
    os.close(terminal)
    out = os.read(master, 1 << 16)
    os.close(master)
    assert b"broken\\x1B[31m.vrn:1:12: error" in out
    assert b"\x1b" not in out


def test_a_reader_that_leaves(library: Library) -> None:
    library(good=2000)
    process = subprocess.Popen(
        [*COMMAND, "check", "lib", "--format", "json"], stdout=subprocess.PIPE, stderr=subprocess.PIPE, env=ENVIRONMENT
    )
    assert process.stdout and process.stderr
    process.stdout.close()
    assert process.wait() == 2
    assert process.stderr.read() == b""


@pytest.mark.parametrize(
    "arguments",
    [
        ["check", "lib", "more"],
        ["check", "--types", "builtin", "lib", "--", "-odd.vrn"],
        ["convert", "out/{stem}.glb", "lib", "-q"],
        ["call", "os.path:getsize", "--", "lib"],
    ],
)
def test_tasks_of_a_template_can_run(arguments: list[str]) -> None:
    job = openjd(arguments, ledger="run.ledger", parts=3)
    action = job["steps"][0]["script"]["actions"]["onRun"]
    task = [text.replace("{{Task.Param.Part}}", "2") for text in action["args"]]
    expected = parser().parse_args(arguments)
    expected.part, expected.ledger, expected.exit_zero = (2, 3), "run.ledger.2", True
    assert parser().parse_args(task) == expected


def test_a_job_of_a_farm(library: Library) -> None:
    library("broken.vrn", good=20)
    arguments = ["--parts", "2", "--ledger", os.path.abspath("run.ledger"), "--", "check", os.path.abspath("lib")]
    code, out, err = run("template", *arguments)
    assert (code, err) == (0, "")
    job = json.loads(out)
    for step in job["steps"]:
        action = step["script"]["actions"]["onRun"]
        action["args"] = [*COMMAND[1:], *action["args"]]
        action["command"] = COMMAND[0]
    Path("job.template.json").write_text(json.dumps(job))
    openjd = [sys.executable, "-m", "openjd"]
    checked = subprocess.run([*openjd, "check", "job.template.json"], capture_output=True, text=True, env=ENVIRONMENT)
    assert checked.returncode == 0, checked.stdout
    ended = subprocess.run(
        [*openjd, "run", "job.template.json", "--step", "Work"], capture_output=True, text=True, env=ENVIRONMENT
    )
    assert ended.returncode == 0, ended.stdout
    code, out, err = run("summary", "run.ledger.1", "run.ledger.2")
    assert (code, out.splitlines()[-1]) == (1, "21 files: 20 ok, 1 errors")
