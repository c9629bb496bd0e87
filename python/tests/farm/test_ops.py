"""What is done with many files: checks, conversions, tables of values."""

from __future__ import annotations

import functools
import os
import socket
import threading
from collections.abc import Iterator
from http.server import SimpleHTTPRequestHandler, ThreadingHTTPServer
from pathlib import Path
from typing import Any

import pytest
from conftest import Library

import vrn
from vrn.farm import FarmError, Result, Run, Status, Table, batch, ops, scan
from vrn.farm.worker import attempt

MESH = """
mesh box:
  .points = vec3f[3] {0 0 0 1 0 0 0 1 0};
  .triangles = vec3u[1] {0 1 2};
  .material |= red.outColor;
paint red: .roughness = 0.5;
camera cam1: .fov = 45.0;
camera cam2: .fov = 30;
"""


@pytest.fixture
def scenes(library: Library) -> Path:
    folder = library("broken.vrn")
    for name in "a.vrn", "sub/a.vrn", "sub/b.vrn":
        path = folder / name
        path.parent.mkdir(exist_ok=True)
        path.write_text(MESH)
    return folder


CHECKS: dict[str, Any] = {
    "plain": ops.check,
    "builtin": ops.checking(catalogue="builtin"),
    "ignored": ops.checking(catalogue="builtin", ignored=("unknownInput",)),
    "pedantic": ops.checking(catalogue="builtin", pedantic=True),
}


@pytest.mark.parametrize("check", CHECKS)
def test_files_that_are_checked_together_are_checked_as_each_alone(scenes: Path, check: str) -> None:
    (scenes / "typo.vrn").write_text("camera cam: .fow = 45.0;")
    (scenes / "unused.vrn").write_text("material red;")
    (scenes / "folder.vrn").mkdir()
    (scenes / "secret.vrn").symlink_to("nowhere")
    names = ["a.vrn", "broken.vrn", "typo.vrn", "unused.vrn", "none.vrn", "folder.vrn", "secret.vrn", "a.vrn"]
    paths = [f"lib/{name}" for name in names]
    together = CHECKS[check].attempt_all(paths)
    alone = [attempt(CHECKS[check], path) for path in paths]
    assert all(outcome.seconds > 0 for outcome in together)
    assert [outcome._replace(seconds=0) for outcome in together] == [outcome._replace(seconds=0) for outcome in alone]
    assert {outcome.status for outcome in together} == {Status.OK, Status.ERRORS, Status.UNREADABLE}


def test_a_pipe_among_files_is_read_once(scenes: Path) -> None:
    os.mkfifo(scenes / "pipe.vrn")
    threading.Thread(target=lambda: (scenes / "pipe.vrn").write_text("oops"), daemon=True).start()
    run = batch(["lib/a.vrn", "lib/pipe.vrn"], ops.check)
    assert {result.path: result.status for result in run} == {"lib/a.vrn": Status.OK, "lib/pipe.vrn": Status.ERRORS}


def test_what_is_wrong_with_a_catalogue_is_said_of_each_file(scenes: Path, tmp_path: Path) -> None:
    types = tmp_path / "types.json"
    types.write_text('{"types": {}}')
    check: Any = ops.checking(catalogue=str(types))
    types.write_text("{")
    outcomes = check.attempt_all(["lib/a.vrn", "lib/broken.vrn"])
    assert [outcome.status for outcome in outcomes] == [Status.FAILED] * 2
    assert all("types.json" in outcome.error for outcome in outcomes)


@pytest.mark.parametrize("executor", ["threads", "processes", "dask"])
@pytest.mark.parametrize("check", [ops.check, vrn.check])
def test_check(scenes: Path, request: pytest.FixtureRequest, executor: str, check: Any) -> None:
    workers: Any = request.getfixturevalue("client") if executor == "dask" else executor
    run = batch("lib", check, executor=workers)
    assert run.report.counts == {Status.OK: 3, Status.ERRORS: 1}
    (broken,) = run.report.problems
    assert broken.diagnostics == vrn.check("lib/broken.vrn").diagnostics
    assert run.exit_code == 1


def test_checks_with_options(scenes: Path) -> None:
    Path("lib/odd.vrn").write_text("mesh m: .poinds = vec3f[1] {0 0 0};\n")
    catalogue = vrn.Catalogue.builtin()
    expected = vrn.check("lib/odd.vrn", catalogue=catalogue, pedantic=True).diagnostics
    assert expected
    for check in ops.checking(catalogue="builtin", pedantic=True), functools.partial(
        ops.check, catalogue="builtin", pedantic=True
    ):
        (result,) = batch("lib/odd.vrn", check)
        assert result.diagnostics == expected
    (result,) = batch("lib/odd.vrn", ops.checking(catalogue="builtin", ignored=("unknownInput",)))
    assert result.diagnostics == vrn.check("lib/odd.vrn", catalogue=catalogue, ignored=["unknownInput"]).diagnostics


def test_a_catalogue_is_found_from_another_folder(scenes: Path, client: Any) -> None:
    Path("types.json").write_text('{"types": {}}')
    check = ops.checking(catalogue="types.json")
    (result,) = batch(os.path.abspath("lib/a.vrn"), check, executor=client)
    assert result.diagnostics == batch("lib/a.vrn", check)[0].diagnostics
    assert result.diagnostics


def test_another_catalogue_is_other_work(scenes: Path) -> None:
    for content, expected in [('{"types": {}}', "ok"), ('{"types": {}}', "unchanged"), ('{"types": {} }', "ok")]:
        Path("types.json").write_text(content)
        (result,) = batch("lib/a.vrn", ops.checking(catalogue="types.json"), ledger="run.ledger")
        assert result.status == expected


@pytest.mark.parametrize("executor", ["threads", "processes", "dask"])
def test_convert(scenes: Path, request: pytest.FixtureRequest, executor: str) -> None:
    workers: Any = request.getfixturevalue("client") if executor == "dask" else executor
    convert = ops.convert("out/{parent}/{stem}.glb")
    run = batch("lib", convert, executor=workers, ledger="run.ledger")
    made = ["out/lib/a.glb", "out/lib/sub/a.glb", "out/lib/sub/b.glb"]
    assert sorted(str(path) for path in Path("out").rglob("*.*")) == made
    vrn.convert("lib/a.vrn", "expected.glb")
    assert Path(made[0]).read_bytes() == Path("expected.glb").read_bytes()
    (broken,) = run.report.problems
    assert (broken.status, broken.path) == ("errors", "lib/broken.vrn")
    assert broken.diagnostics
    os.unlink(made[1])
    again = batch("lib", convert, executor=workers, ledger="run.ledger")
    assert [result.path for result in again if result.status == "ok"] == ["lib/sub/a.vrn"]


@pytest.mark.parametrize("parts", [1, 2, 3])
def test_two_files_with_one_output_in_different_parts(scenes: Path, parts: int) -> None:
    target = ops.convert("out/./x/../{stem}.glb")
    runs = [batch(["lib/a.vrn", "lib/**/?.vrn"], target, part=(number, parts)) for number in range(1, parts + 1)]
    found = sorted((result.path, str(result.status)) for run in runs for result in run)
    assert found == [("lib/a.vrn", "ok"), ("lib/sub/a.vrn", "failed"), ("lib/sub/b.vrn", "ok")]


def test_two_names_of_one_output(scenes: Path) -> None:
    run = batch(["lib/sub/a.vrn", "lib/./a.vrn"], ops.convert("out/{parent}/../{stem}.glb"), workers=1)
    assert [str(result.status) for result in run] == ["ok", "ok"]
    other = Path("lib/other/a.vrn")
    other.parent.mkdir()
    other.write_text(MESH)
    run = batch(["lib/sub/a.vrn", "lib/other/a.vrn"], ops.convert("out/{parent}/../{stem}.glb"))
    statuses = sorted((result.path, str(result.status)) for result in run)
    assert statuses == [("lib/other/a.vrn", "failed"), ("lib/sub/a.vrn", "ok")]


def test_two_files_with_one_output(scenes: Path) -> None:
    run = batch("lib/**/a.vrn", ops.convert("out/{stem}.glb"))
    assert [(result.path, result.status) for result in sorted(run)] == [("lib/a.vrn", "ok"), ("lib/sub/a.vrn", "failed")]
    (problem,) = run.report.problems
    assert problem.error == "out/a.glb is the output of another file; use {parent} in the name of outputs"


@pytest.mark.parametrize(
    ("target", "path", "expected"),
    [
        ("out/{stem}.glb", "lib/a/b.c.vrn", "out/b.c.glb"),
        ("{parent}/{name}.ply", "lib/a/b.vrn", "lib/a/b.vrn.ply"),
        ("out/{parent}/{stem}{suffix}", "/lib/b.vrn", "out/lib/b.vrn"),
        ("out/{parent}/{stem}.glb", "../../b.vrn", "out/./b.glb"),
        ("out/{parent}/{stem}.glb", "b.vrn", "out/./b.glb"),
        ("out/{parent}/{stem}.glb", "s3://bucket/x/b.vrn", "out/bucket/x/b.glb"),
    ],
)
def test_targets(target: str, path: str, expected: str) -> None:
    assert ops.convert(target).target(path) == expected  # type: ignore[attr-defined]


def test_unknown_parts_of_targets() -> None:
    with pytest.raises(ValueError, match=r"unknown \{folder\}; known are \{stem\}"):
        ops.convert("out/{folder}/{stem}.glb")


def test_an_output_that_cannot_be_written(scenes: Path) -> None:
    Path("out").write_text("not a folder")
    run = batch("lib/a.vrn", ops.convert("out/{stem}.glb"))
    assert run[0].status == "failed"
    assert "out" in run[0].error
    run = batch("lib/a.vrn", ops.convert("/proc/{stem}.glb"))
    assert (run[0].status, "/proc/a.glb" in run[0].error) == ("failed", True)


def test_scan(scenes: Path) -> None:
    table = scan("lib", ["*.fov", "box.material", "*.type", "box.points[*]"], executor="processes")
    assert table.run.report.counts == {Status.OK: 3, Status.ERRORS: 1}
    first = {name: values[:4] for name, values in table.columns.items()}
    assert first == {
        "file": ["lib/a.vrn"] * 4,
        "node": ["cam1", "cam2", "box", "red"],
        "*.fov": [45.0, 30, None, None],
        "box.material": [None, None, "red.outColor", None],
        "*.type": ["camera", "camera", "mesh", "paint"],
        "box.points[*]": [None, None, [[[0, 0, 0], [1, 0, 0], [0, 1, 0]]], None],
    }
    assert len(table) == 12


def test_scan_to_parquet(scenes: Path) -> None:
    parquet = pytest.importorskip("pyarrow.parquet")
    Path("lib/text.vrn").write_text('camera cam3: .fov = "wide";\n')
    scan("lib", ["*.fov"]).to_parquet("lib.parquet")
    read = parquet.read_table("lib.parquet").to_pydict()
    assert read["*.fov"] == ["45.0", "30", "45.0", "30", "45.0", "30", "wide"]
    assert read["node"][-1] == "cam3"
    assert not list(Path().glob("*.new"))


def test_values_of_any_size_in_tables() -> None:
    pytest.importorskip("pyarrow")
    results = [Result(f"{size}.vrn", Status.OK, {"*.x": {"a.x": 2**size}}) for size in (1, 63, 64, 200)]
    assert Table(["*.x"], Run(results)).to_arrow().to_pydict()["*.x"] == [
        str(2**size) for size in (1, 200, 63, 64)
    ]


@pytest.mark.parametrize(("options", "message"), [({"ledger": "x"}, "no ledger"), ({}, "list of paths")])
def test_mistakes_of_scans(scenes: Path, options: dict[str, Any], message: str) -> None:
    with pytest.raises(TypeError, match=message):
        scan("lib", ["*.fov"] if options else "*.fov", **options)


# Files elsewhere


@pytest.fixture
def server(scenes: Path) -> Iterator[str]:
    class Quiet(SimpleHTTPRequestHandler):
        def log_message(self, format: str, *args: Any) -> None:
            pass

    with ThreadingHTTPServer(("127.0.0.1", 0), Quiet) as server:
        threading.Thread(target=server.serve_forever, daemon=True).start()
        yield f"http://127.0.0.1:{server.server_port}"
        server.shutdown()


def test_files_of_a_server(server: str) -> None:
    pytest.importorskip("aiohttp")
    run = batch([f"{server}/lib/a.vrn", f"{server}/lib/broken.vrn", f"{server}/lib/none.vrn"], ops.check, ledger="l")
    assert {result.path.rpartition("/")[2]: str(result.status) for result in run} == {
        "a.vrn": "ok",
        "broken.vrn": "errors",
        "none.vrn": "unreadable",
    }
    (result,) = batch(f"{server}/lib/a.vrn", ops.convert("out/{stem}.glb"))
    assert result.status == "ok"
    assert Path("out/a.glb").exists()


def test_outputs_elsewhere(scenes: Path) -> None:
    target = f"file://{os.path.abspath('elsewhere')}/{{stem}}.glb"
    (result,) = batch("lib/a.vrn", ops.convert(target))
    assert result.status == "ok"
    assert Path("elsewhere/a.glb").exists()


def test_a_server_that_does_not_answer() -> None:
    pytest.importorskip("aiohttp")
    with socket.create_server(("127.0.0.1", 0)) as closed:
        port = closed.getsockname()[1]
    (result,) = batch(f"http://127.0.0.1:{port}/*.vrn", ops.check)
    assert result.status == "unreadable" and result.error.startswith("it cannot be listed: Cannot connect")


def test_an_unknown_protocol() -> None:
    with pytest.raises(FarmError, match="nowhere://a.vrn: .*nowhere"):
        batch("nowhere://a.vrn", ops.check)


@pytest.mark.parametrize("check", CHECKS)
def test_a_function_that_wraps_a_check_is_called(scenes: Path, check: str) -> None:
    called: list[str] = []

    @functools.wraps(CHECKS[check])
    def mine(path: str) -> str:
        called.append(path)
        return "mine"

    assert [result.value for result in batch("lib/a.vrn", mine)] == ["mine"] and called == ["lib/a.vrn"]
