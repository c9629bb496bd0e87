"""The ledger: what it has of a file, what a dying process leaves, and who may have it."""

from __future__ import annotations

import errno
import json
import os
import subprocess
import sys
from pathlib import Path

import pytest
from conftest import ENVIRONMENT

from vrn import Diagnostic
from vrn.farm import FarmError, Result, Status
from vrn.farm.ledger import MAX_DIAGNOSTICS, Ledger, _Past, read_ledger
from vrn.farm.manifest import Entry


def entry(path: str, key: str = "1-2") -> Entry:
    return Entry(path, 1, key)


def ok(path: str, **members: object) -> tuple[Entry, Result]:
    return entry(path), Result(path, Status.OK, **members)  # type: ignore[arg-type]


@pytest.fixture
def path(tmp_path: Path) -> Path:
    return tmp_path / "run.ledger"


def test_records_come_back(path: Path) -> None:
    found = (Diagnostic(1, 2, "error", "badToken", "bad \udcff"), Diagnostic(3, 4, "warning", "", "odd"))
    results = [
        ok("a.vrn", seconds=0.5, worker="host-1"),
        (entry("b\n\udcfe.vrn"), Result("b\n\udcfe.vrn", Status.ERRORS, None, found, 0.25, "host-2", "broken")),
    ]
    with Ledger(path, "work") as ledger:
        ledger.append(results)
    with Ledger(path, "work") as ledger:
        for each, result in results:
            record = ledger.find(each)
            assert record and record.as_result() == result
        assert ledger.find(entry("c.vrn")) is None
    assert [record.path for record in read_ledger(path)] == ["a.vrn", "b\n\udcfe.vrn"]
    members = json.loads(path.read_text().splitlines()[2])
    assert (members["errors"], members["warnings"]) == (1, 1)


def test_other_content_and_unknown_content_do_not_match(path: Path) -> None:
    with Ledger(path, "work") as ledger:
        ledger.append([ok("a.vrn"), (Entry("b.vrn"), Result("b.vrn", Status.OK))])
    with Ledger(path, "work") as ledger:
        assert ledger.find(entry("a.vrn", "other")) is None
        assert ledger.find(Entry("b.vrn")) is None


def test_other_work_does_not_match_until_it_is_the_same_again(path: Path) -> None:
    with Ledger(path, "work") as ledger:
        ledger.append([ok("a.vrn")])
    with Ledger(path, "other work") as ledger:
        assert ledger.find(entry("a.vrn")) is None
        ledger.append([ok("b.vrn")])
    with Ledger(path, "work") as ledger:
        assert ledger.find(entry("a.vrn")) is not None
        assert ledger.find(entry("b.vrn")) is None


def test_the_last_record_counts(path: Path) -> None:
    for key in "old", "new":
        with Ledger(path, "work") as ledger:
            ledger.append([(entry("a.vrn", key), Result("a.vrn", Status.OK))])
    with Ledger(path, "work") as ledger:
        assert ledger.find(entry("a.vrn", "new")) is not None
        assert ledger.find(entry("a.vrn", "old")) is None
    assert [record.key for record in read_ledger(path)] == ["new"]


def test_diagnostics_are_bounded_but_counted(path: Path) -> None:
    many = (Diagnostic(1, 1, "warning", "odd", "x"),) * (MAX_DIAGNOSTICS + 50)
    with Ledger(path, "work") as ledger:
        ledger.append([ok("a.vrn", diagnostics=many)])
    (record,) = read_ledger(path)
    assert len(record.diagnostics) == MAX_DIAGNOSTICS
    assert json.loads(path.read_text().splitlines()[1])["warnings"] == MAX_DIAGNOSTICS + 50


@pytest.mark.parametrize("size", [1, 40, 70_000, 200_000])
def test_half_a_line_is_removed(path: Path, size: int) -> None:
    with Ledger(path, "work") as ledger:
        ledger.append([ok("a.vrn")])
    whole = path.read_bytes()
    path.write_bytes(whole + b'{"path":"b.vrn","key":"' + b"x" * size)
    assert [record.path for record in read_ledger(path)] == ["a.vrn"]
    with Ledger(path, "work") as ledger:
        assert ledger.find(entry("a.vrn")) is not None
        ledger.append([ok("c.vrn")])
    assert path.read_bytes().startswith(whole + b'{"path":"c.vrn"')
    assert [record.path for record in read_ledger(path)] == ["a.vrn", "c.vrn"]
    assert path.read_bytes().count(b"\n") == 3
    assert path.stat().st_size < len(whole) + 200


def test_an_empty_file_is_a_new_ledger(path: Path) -> None:
    path.write_bytes(b"")
    with Ledger(path, "work") as ledger:
        ledger.append([ok("a.vrn")])
    assert len(list(read_ledger(path))) == 1


@pytest.mark.parametrize(
    "content",
    [
        b"no ledger\n",
        b"{}\n",
        b'{"path":"a"}\n',
        b"[]\n",
        b'{"ledger":1}\n',
        b'{"ledger":1,"work":"w"}\n7\n',
        b'{"ledger":1,"work":"w"}\n{"path":7}\n',
        b"[" * 100_000 + b"\n",
    ],
)
def test_a_file_that_is_no_ledger_is_refused_and_kept(path: Path, content: bytes) -> None:
    path.write_bytes(content)
    with pytest.raises(FarmError, match=r"run\.ledger:\d: no line of a ledger"):
        Ledger(path, "work")
    assert path.read_bytes() == content


def test_a_ledger_of_another_format_is_refused_and_kept(path: Path) -> None:
    path.write_bytes(b'{"ledger":2,"work":"w"}\n')
    with pytest.raises(FarmError, match=r"run\.ledger:1: the ledger has the format 2, and only 1 is known; name"):
        Ledger(path, "w")
    assert path.read_bytes() == b'{"ledger":2,"work":"w"}\n'


@pytest.mark.parametrize(
    "line", [b'{"path":"a.vrn"}', b'{"path":"a.vrn","key":"1-2","status":"odd","seconds":0,"worker":""}']
)
def test_a_damaged_record_is_named(path: Path, line: bytes) -> None:
    path.write_bytes(b'{"ledger":1,"work":"w"}\n' + line + b"\n")
    with pytest.raises(FarmError, match=r"run\.ledger: no record of a ledger at byte 24; remove this line"):
        list(read_ledger(path))
    with Ledger(path, "w") as ledger, pytest.raises(FarmError, match="no record of a ledger at byte 24"):
        ledger.find(entry("a.vrn"))


def test_a_ledger_that_becomes_shorter_is_an_error(path: Path) -> None:
    with Ledger(path, "work") as ledger:
        ledger.append([ok("a.vrn")])
    with Ledger(path, "work") as ledger:
        os.truncate(path, 40)
        with pytest.raises(FarmError, match=r"run\.ledger has become shorter"):
            ledger.find(entry("a.vrn"))


def test_paths_of_the_same_hash(path: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr("vrn.farm.ledger._hash", len)
    with Ledger(path, "work") as ledger:
        ledger.append([ok("a.vrn", worker="1"), ok("b.vrn"), ok("a.vrn", worker="2"), ok("cc.vrn")])
    found = [(record.path, record.worker) for record in read_ledger(path)]
    assert found == [("a.vrn", "2"), ("b.vrn", ""), ("cc.vrn", "")]
    with Ledger(path, "work") as ledger:
        record = ledger.find(entry("a.vrn"))
        assert record and record.worker == "2"


def test_records_are_parsed_once(path: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    with Ledger(path, "work") as ledger:
        ledger.append([ok(f"{number}.vrn") for number in range(100)])
    parsed: list[int] = []
    record = _Past._record
    monkeypatch.setattr(_Past, "_record", lambda self, offset: parsed.append(offset) or record(self, offset))
    assert len(list(read_ledger(path))) == len(parsed) == 100


def test_a_file_system_without_locks(path: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    def refuse(*_: object) -> None:
        raise OSError(errno.ENOLCK, os.strerror(errno.ENOLCK))

    monkeypatch.setattr("fcntl.flock", refuse)
    with pytest.raises(FarmError, match=r"run\.ledger cannot be locked: No locks available; put it on a file system"):
        Ledger(path, "work")


def test_two_runs_cannot_share_a_ledger(path: Path) -> None:
    with Ledger(path, "work"):
        with pytest.raises(FarmError, match="in use by another run"):
            Ledger(path, "work")
        other = "import sys; from vrn.farm.ledger import Ledger; Ledger(sys.argv[1], 'work')"
        ended = subprocess.run([sys.executable, "-c", other, path], capture_output=True, text=True, env=ENVIRONMENT)
        assert "in use by another run" in ended.stderr
    Ledger(path, "work").close()


def test_a_full_disk_leaves_whole_lines(path: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    import resource
    import signal

    signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
    soft, hard = resource.getrlimit(resource.RLIMIT_FSIZE)
    ledger = Ledger(path, "work")
    ledger.append([ok("a.vrn")])
    whole = path.read_bytes()
    resource.setrlimit(resource.RLIMIT_FSIZE, (len(whole) + 20, hard))
    try:
        with pytest.raises(FarmError, match="cannot be written: File too large"):
            ledger.append([ok("b.vrn")])
    finally:
        resource.setrlimit(resource.RLIMIT_FSIZE, (soft, hard))
    ledger.close()
    assert path.read_bytes() == whole


def test_a_folder_that_does_not_exist(tmp_path: Path) -> None:
    with pytest.raises(FarmError, match="cannot be opened: No such file or directory"):
        Ledger(tmp_path / "none" / "run.ledger", "work")
