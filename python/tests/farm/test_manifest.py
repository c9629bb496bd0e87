"""The manifest: which files sources lead to."""

from __future__ import annotations

import errno
import inspect
import itertools
import os
import sys
from pathlib import Path

import pytest
from conftest import Library

from vrn.farm import batch
from vrn.farm.ledger import read_ledger
from vrn.farm.manifest import Entry, manifest, part_of


def paths(sources: object) -> list[str]:
    return [entry.path for entry in manifest(sources) if not entry.problem]  # type: ignore[arg-type]


@pytest.fixture
def tree(library: Library) -> Path:
    folder = library("b.vrn", "a.vrn", "x/c.vrn", "x/y/d.vrn", "x/n.txt", ".hidden.vrn", ".h/e.vrn", "q[1].vrn")
    (folder / "link").symlink_to("x")
    (folder / "f.vrn").symlink_to("a.vrn")
    (folder / "dir.vrn").mkdir()
    return folder


ALL = ["lib/a.vrn", "lib/b.vrn", "lib/f.vrn", "lib/q[1].vrn", "lib/x/c.vrn", "lib/x/y/d.vrn"]


@pytest.mark.parametrize(
    ("source", "expected"),
    [
        ("lib", ALL),
        ("lib/", ALL),
        (Path("lib"), ALL),
        ("lib/**/*.vrn", ALL),
        ("**/*.vrn", ALL),
        ("lib/*.vrn", ALL[:4]),
        ("lib/?.vrn", ALL[:3]),
        ("*/a.vrn", ALL[:1]),
        ("l*/x/**/d.vrn", ["lib/x/y/d.vrn"]),
        ("lib/x/**", ["lib/x/c.vrn", "lib/x/n.txt", "lib/x/y/d.vrn"]),
        ("lib/**/x/**/*.vrn", ["lib/x/c.vrn", "lib/x/y/d.vrn"]),
        ("lib/.h*/*.vrn", ["lib/.h/e.vrn"]),
        ("lib/link/*.vrn", ["lib/link/c.vrn"]),
        ("lib/q[1].vrn", ["lib/q[1].vrn"]),
        ("lib/q[[]1].vrn", ["lib/q[1].vrn"]),
        ("lib/x/n.txt", ["lib/x/n.txt"]),
        ("lib/missing.vrn", ["lib/missing.vrn"]),
        (["lib/b.vrn", "lib/*.vrn", "lib/b.vrn"], ["lib/b.vrn", "lib/a.vrn", "lib/f.vrn", "lib/q[1].vrn"]),
    ],
)
def test_sources(tree: Path, source: object, expected: list[str]) -> None:
    assert paths(source) == expected


def test_paths_may_be_bytes(tree: Path) -> None:
    assert paths(b"lib/x") == paths([b"lib/x"]) == paths("lib/x") == ["lib/x/c.vrn", "lib/x/y/d.vrn"]


def test_absolute_patterns_have_absolute_paths(tree: Path) -> None:
    folder = os.path.abspath(tree)
    assert paths(f"{folder}/**/*.vrn") == [os.path.abspath(path) for path in ALL]


@pytest.mark.parametrize("source", ["lib/\0.vrn", "lib/\0*", "\ud800.vrn", "\ud800*"])
def test_impossible_paths_are_problems(tree: Path, source: str) -> None:
    assert list(manifest([source, "lib/a.vrn"]))[0] == Entry(source, problem="no file can have such a name")
    run = batch([source, "lib/a.vrn"], os.path.getsize, ledger="run.ledger")
    assert [(result.path, str(result.status)) for result in run] == [(source, "unreadable"), ("lib/a.vrn", "ok")]
    assert [record.path for record in read_ledger("run.ledger")] == sorted([source, "lib/a.vrn"])


@pytest.mark.parametrize("source", ["lib/*.nothing", "nowhere/**/*.vrn", "lib/dir.vrn"])
def test_sources_without_files_are_problems(tree: Path, source: str) -> None:
    (entry,) = manifest(source)
    assert entry.path == source
    assert entry.problem.startswith("no ")


@pytest.mark.parametrize("source", ["lib", "lib/**/*.vrn", "lib/*/*.vrn", "lib/**/d.vrn", "**"])
def test_folders_that_cannot_be_listed_are_problems(
    tree: Path, monkeypatch: pytest.MonkeyPatch, source: str
) -> None:
    """Anything may be in them."""
    scandir = os.scandir

    def refusing(path: str) -> object:
        if path == "lib/x":
            raise PermissionError(errno.EACCES, os.strerror(errno.EACCES), path)
        return scandir(path)

    monkeypatch.setattr(os, "scandir", refusing)
    problems = [(entry.path, entry.problem) for entry in manifest(source) if entry.problem]
    assert problems == [("lib/x", "the folder cannot be listed: Permission denied")]


@pytest.mark.parametrize(
    ("source", "expected"), [("lib", ["lib/loop.vrn", *ALL]), ("lib/*/c.vrn", ["lib/link/c.vrn", "lib/x/c.vrn"])]
)
def test_links_to_themselves(tree: Path, source: str, expected: list[str]) -> None:
    (tree / "loop.vrn").symlink_to("loop.vrn")
    (tree / "loop").symlink_to("loop")
    assert sorted(paths(source)) == sorted(expected)


def test_folders_are_listed_once(tree: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    listed: list[str] = []
    scandir = os.scandir
    monkeypatch.setattr(os, "scandir", lambda path: listed.append(path) or scandir(path))
    assert paths("lib/**/*.vrn") == ALL
    assert listed == ["lib", "lib/dir.vrn", "lib/x", "lib/x/y"]


def test_folders_of_any_depth(tree: Path) -> None:
    deep = tree / "/".join("d" * 200)
    deep.mkdir(parents=True)
    (deep / "e.vrn").touch()
    limit = sys.getrecursionlimit()
    sys.setrecursionlimit(len(inspect.stack()) + 100)
    try:
        found = paths("lib/d/**/e.vrn")
    finally:
        sys.setrecursionlimit(limit)
    assert found == [str(deep / "e.vrn")]


def test_names_that_are_not_utf8(tree: Path) -> None:
    name = os.fsencode(tree / "x" / "y") + b"/\xff.vrn"
    with open(name, "wb"):
        pass
    assert [os.fsencode(path) for path in paths("lib/x/y")] == [b"lib/x/y/d.vrn", name]


def test_keys_change_with_the_file(tree: Path) -> None:
    (before,) = manifest("lib/a.vrn")
    assert before.size == os.path.getsize("lib/a.vrn")
    os.utime("lib/a.vrn", ns=(0, 1))
    (touched,) = manifest("lib/a.vrn")
    (listed,) = (entry for entry in manifest("lib/*.vrn") if entry.path == "lib/a.vrn")
    assert before.key != touched.key
    assert touched == listed


def test_nothing_is_listed_in_advance(tree: Path) -> None:
    endless = (f"{number}.vrn" for number in itertools.count())
    assert [entry.path for entry in itertools.islice(manifest(endless), 3)] == ["0.vrn", "1.vrn", "2.vrn"]


def test_parts_share_the_files() -> None:
    entries = [Entry(f"{number}.vrn") for number in range(1000)]
    parts = [list(part_of(entries, number, 4)) for number in range(1, 5)]
    assert sorted(entry for part in parts for entry in part) == sorted(entries)
    assert all(150 < len(part) < 350 for part in parts)
    assert list(part_of(entries[::2], 1, 4)) == [entry for entry in parts[0] if entry in set(entries[::2])]


def test_remote_files(tree: Path) -> None:
    pytest.importorskip("fsspec")
    root = "file://" + os.path.abspath(tree)
    assert [path.rpartition("/lib/")[2] for path in paths(f"{root}/x/*.vrn")] == ["x/c.vrn"]
    assert [path.rpartition("/lib/")[2] for path in paths(f"{root}/x")] == ["x/c.vrn", "x/y/d.vrn"]
    (entry,) = manifest(f"{root}/a.vrn")
    assert (entry.size, bool(entry.key)) == (os.path.getsize("lib/a.vrn"), True)
