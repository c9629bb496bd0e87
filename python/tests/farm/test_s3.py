"""Libraries in a bucket: a real client of S3, and a server that speaks its protocol."""

from __future__ import annotations

import subprocess
import sys
from collections.abc import Iterator
from pathlib import Path
from typing import Any

import conftest
import pytest

import vrn
from vrn.farm import batch, ops, scan

s3fs = pytest.importorskip("s3fs")
pytest.importorskip("moto")

MESH = "mesh box: .points = vec3f[3] {0 0 0 1 0 0 0 1 0}; .triangles = vec3u[1] {0 1 2};\n"
FILES = {
    "lib/.hidden.vrn": "oops",
    "lib/a.vrn": MESH,
    "lib/broken.vrn": "thing a; a.x = ;",
    "lib/sub/b 100% #1?.vrn": "camera cam: .fov = 30.0;",
    "lib/sub/b.vrn": "camera cam: .fov = 45.0;",
    "lib/sub/notes.txt": "no scene",
}
SERVER = """
from moto.server import ThreadedMotoServer
server = ThreadedMotoServer("127.0.0.1", 0)
server.start()
host, port = server.get_host_and_port()
print(f"http://{host}:{port}", flush=True)
input()
"""


@pytest.fixture(scope="module")
def server() -> Iterator[str]:
    command = [sys.executable, "-c", SERVER]
    with subprocess.Popen(
        command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True
    ) as process:
        assert process.stdout
        yield next(line.strip() for line in process.stdout if line.startswith("http://"))
        process.communicate("\n")


@pytest.fixture
def bucket(server: str, tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> Iterator[Any]:
    """The file system, with a bucket `studio` that has the files. The client is configured as users do, by environment."""
    monkeypatch.chdir(tmp_path)
    for name, value in {
        "AWS_ACCESS_KEY_ID": "somebody",
        "AWS_SECRET_ACCESS_KEY": "secret",
        "AWS_DEFAULT_REGION": "us-east-1",
        "AWS_ENDPOINT_URL": server,
    }.items():
        monkeypatch.setenv(name, value)
        monkeypatch.setitem(conftest.ENVIRONMENT, name, value)
    s3fs.S3FileSystem.clear_instance_cache()
    system = s3fs.S3FileSystem()
    system.mkdir("studio")
    for name, text in FILES.items():
        system.pipe(f"studio/{name}", text.encode())
    yield system
    system.rm("studio", recursive=True)


def statuses(run: Any) -> dict[str, str]:
    return {result.path.removeprefix("s3://studio/"): str(result.status) for result in run}


@pytest.mark.parametrize(
    ("source", "executor"),
    [("lib", "threads"), ("lib/", "threads"), ("lib/**/*.vrn", "threads"), ("lib", "processes")],
)
def test_a_folder_and_a_pattern(bucket: Any, source: str, executor: str) -> None:
    assert statuses(batch(f"s3://studio/{source}", ops.check, executor=executor)) == {
        "lib/a.vrn": "ok",
        "lib/broken.vrn": "errors",
        "lib/sub/b 100% #1?.vrn": "ok",
        "lib/sub/b.vrn": "ok",
    }


@pytest.mark.parametrize("pattern", ["lib/.*.vrn", "lib/.hidden.vrn", "**/.h*"])
def test_hidden_files_are_those_that_a_pattern_names(bucket: Any, pattern: str) -> None:
    assert statuses(batch(f"s3://studio/{pattern}", ops.check)) == {"lib/.hidden.vrn": "errors"}


def test_a_file_is_found_by_its_name(bucket: Any) -> None:
    for name in "lib/a.vrn", "lib/sub/b 100% #1?.vrn":
        assert statuses(batch(f"s3://studio/{name}", ops.check)) == {name: "ok"}


def test_workers_of_a_scheduler_read_from_the_bucket(bucket: Any, request: pytest.FixtureRequest) -> None:
    client = request.getfixturevalue("own_cluster").client()
    run = batch("s3://studio/lib", ops.check, executor=client, ledger="check.ledger")
    assert sorted(statuses(run).values()) == ["errors", "ok", "ok", "ok"]
    again = batch("s3://studio/lib", ops.check, executor=client, ledger="check.ledger")
    assert set(statuses(again).values()) == {"unchanged"}


def test_a_ledger_notices_which_file_changed(bucket: Any) -> None:
    list(batch("s3://studio/lib", ops.check, ledger="check.ledger"))
    bucket.pipe("studio/lib/a.vrn", FILES["lib/a.vrn"].replace("0", "2").encode())  # of the same size
    again = statuses(batch("s3://studio/lib", ops.check, ledger="check.ledger"))
    assert [name for name, status in again.items() if status != "unchanged"] == ["lib/a.vrn"]


def test_outputs_in_the_bucket_are_whole_and_made_again_when_they_are_gone(bucket: Any) -> None:
    convert = ops.convert("s3://studio/out/{stem}.glb")
    (result,) = batch("s3://studio/lib/a.vrn", convert, ledger="convert.ledger")
    assert result.status == "ok", result
    Path("a.vrn").write_text(MESH)
    vrn.convert("a.vrn", "a.glb")
    assert bucket.cat("studio/out/a.glb") == Path("a.glb").read_bytes()
    assert statuses(batch("s3://studio/lib/a.vrn", convert, ledger="convert.ledger")) == {"lib/a.vrn": "unchanged"}
    bucket.rm("studio/out/a.glb")
    assert statuses(batch("s3://studio/lib/a.vrn", convert, ledger="convert.ledger")) == {"lib/a.vrn": "ok"}
    assert bucket.exists("studio/out/a.glb")
    (broken,) = batch("s3://studio/lib/broken.vrn", convert)
    assert broken.status == "errors" and not bucket.exists("studio/out/broken.glb")


def test_a_table_of_the_bucket(bucket: Any) -> None:
    table = scan("s3://studio/lib/sub/*.vrn", ["*.fov"])
    assert table.columns["*.fov"] == [30.0, 45.0]


@pytest.mark.parametrize(
    ("source", "error"),
    [
        ("s3://nobody/lib", "bucket does not exist"),
        ("s3://nobody/lib/*.vrn", "no file matches"),
        ("s3://studio/none/*.vrn", "no file matches"),
        ("s3://studio/lib/none.vrn", "none.vrn"),
    ],
)
def test_what_is_not_there(bucket: Any, source: str, error: str) -> None:
    (result,) = batch(source, ops.check)
    assert result.status == "unreadable"
    assert error in result.error


def test_a_link_that_is_signed(bucket: Any) -> None:
    link = bucket.sign("studio/lib/sub/b.vrn")
    assert "?" in link
    (result,) = batch(link, ops.check)
    assert result.status == "ok", result


def test_a_server_that_refuses(bucket: Any, monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setenv("AWS_ENDPOINT_URL", "http://127.0.0.1:9")
    monkeypatch.setenv("AWS_MAX_ATTEMPTS", "1")
    s3fs.S3FileSystem.clear_instance_cache()
    (result,) = batch("s3://studio/lib/*.vrn", ops.check)
    assert result.status == "unreadable" and "cannot be listed" in result.error
