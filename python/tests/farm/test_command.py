"""The command `vrn-batch`, as a process: its output, its exit codes, and its jobs for render farms."""

from __future__ import annotations

import json
import os
import pty
import subprocess
import sys
from pathlib import Path

import pytest
from conftest import Cluster, Library

HERE = Path(__file__).parent
COMMAND = [sys.executable, "-m", "vrn.farm.command"]
ENVIRONMENT = {**os.environ, "PYTHONPATH": os.pathsep.join(filter(None, sys.path))}


def run(*arguments: str, stdin: str = "") -> tuple[int, str, str]:
    ended = subprocess.run([*COMMAND, *arguments], input=stdin, capture_output=True, text=True, env=ENVIRONMENT)
    return ended.returncode, ended.stdout, ended.stderr


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
        (["template", "--parts", "2", "--ledger", "x", "--", "verify", "lib"], "verify"),
    ],
)
def test_mistakes(library: Library, arguments: list[str], message: str) -> None:
    library(good=1)
    code, out, err = run(*arguments)
    assert (code, out) == (2, "")
    assert message in err
    assert "Traceback" not in err


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


def test_a_job_of_a_farm(library: Library) -> None:
    library("broken.vrn", good=20)
    arguments = ["--parts", "2", "--ledger", os.path.abspath("run.ledger"), "--", "check", os.path.abspath("lib")]
    code, out, err = run("template", *arguments)
    assert (code, err) == (0, "")
    template = json.loads(out)
    for step in template["steps"]:
        action = step["script"]["actions"]["onRun"]
        action["args"] = [*COMMAND[1:], *action["args"]]
        action["command"] = COMMAND[0]
    Path("job.template.json").write_text(json.dumps(template))
    openjd = [sys.executable, "-m", "openjd"]
    checked = subprocess.run([*openjd, "check", "job.template.json"], capture_output=True, text=True, env=ENVIRONMENT)
    assert checked.returncode == 0, checked.stdout
    ended = subprocess.run(
        [*openjd, "run", "job.template.json", "--step", "Work"], capture_output=True, text=True, env=ENVIRONMENT
    )
    assert ended.returncode == 0, ended.stdout
    code, out, err = run("summary", "run.ledger.1", "run.ledger.2")
    assert (code, out.splitlines()[-1]) == (1, "21 files: 20 ok, 1 errors")
