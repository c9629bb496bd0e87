"""The Python code in the documents runs, and prints what its comments say."""

import contextlib
import io
import re
import shutil

import pytest
from conftest import ROOT

DOCUMENTS = ["README.md", "docs/python.md", "python/README.md"]


def blocks():
    for name in DOCUMENTS:
        for i, block in enumerate(re.findall(r"```python\n(.*?)```", (ROOT / name).read_text(), re.S)):
            yield pytest.param(block, id=f"{name}:{i}")


@pytest.mark.parametrize("block", list(blocks()))
def test_code_of_documents(block, tmp_path, monkeypatch):
    shutil.copytree(ROOT / "examples", tmp_path / "examples")
    shutil.copy(ROOT / "examples/first_scene.vrn", tmp_path / "city.vrn")
    monkeypatch.chdir(tmp_path)
    printed = io.StringIO()
    with contextlib.redirect_stdout(printed):
        exec(compile(block, "document", "exec"), {})
    lines = printed.getvalue().splitlines()
    for expected in re.findall(r"print\(.*\) +# (.+)", block):
        start = expected.removesuffix(", ...}")
        assert any(line.startswith(start) for line in lines), (expected, lines)


def test_documents_have_code():
    assert sum(1 for _ in blocks()) >= 3
