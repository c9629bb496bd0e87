"""The Python code in the documents and in docstrings runs, and prints what is said there."""

import pathlib
import re
import shutil
import subprocess
import sys

import pytest
import vrn
from conftest import ROOT
from examples import docstrings

PACKAGE = pathlib.Path(vrn.__file__).parent
DOCUMENTS = [path for path in (ROOT / "README.md", ROOT / "python/README.md", *sorted(ROOT.glob("docs/*.md")))
             if "```python\n" in path.read_text()]  # fmt: skip
MODULES = [path for path in sorted(PACKAGE.rglob("*.py*"))
           if path.suffix in (".py", ".pyi") and any(">>>" in text for _, text in docstrings(path))]  # fmt: skip
SETTINGS = pathlib.Path(__file__).with_name("settings")


def name_of(path):
    return path.relative_to(PACKAGE if path.is_relative_to(PACKAGE) else ROOT).as_posix()


def run(path, folder):
    """Runs the examples in a process of their own, with the files that they read. Returns what it prints."""
    shutil.copytree(ROOT / "examples", folder / "examples")
    shutil.copy(ROOT / "examples/first_scene.vrn", folder / "city.vrn")
    setting = SETTINGS / f"{path.stem}.py"
    command = [sys.executable, pathlib.Path(__file__).with_name("examples.py"), path, *[setting] * setting.is_file()]
    ran = subprocess.run(command, cwd=folder, capture_output=True, text=True)
    assert ran.returncode == 0, ran.stdout + ran.stderr
    return ran.stdout


@pytest.mark.parametrize("path", DOCUMENTS + MODULES, ids=name_of)
def test_examples(path, tmp_path):
    assert re.fullmatch(r"[1-9]\d* examples ran\n", run(path, tmp_path))


def test_there_are_examples():
    assert {name_of(path) for path in DOCUMENTS} >= {"README.md", "python/README.md", "docs/python.md", "docs/farm.md",
                                                     "docs/usd.md"}  # fmt: skip
    assert {name_of(path) for path in MODULES} >= {
        "__init__.py",
        "_vrn.pyi",
        "_values.py",
        "farm/run.py",
        "usd/__init__.py",
    }


@pytest.mark.parametrize(
    ("name", "text"),
    [
        ("wrong.md", "```python\nprint(1)  # 2\n```\n"),
        ("order.md", "```python\nprint(1)  # 1\nprint(2)  # 2\nprint(3)  # 2\n```\n"),
        ("raises.md", "```python\nx = 1\n```\n\n```python\nx.y\n```\n"),
        ("wrong.py", '"""Says one.\n\n>>> 1\n2\n"""\n'),
        (
            "inner.pyi",
            'class A:\n    def f(self) -> int:\n        """Says one.\n\n        >>> 1\n        2\n        """\n',
        ),
    ],
)
def test_wrong_examples_are_found(name, text, tmp_path):
    (tmp_path / name).write_text(text)
    with pytest.raises(AssertionError, match=name):
        run(tmp_path / name, tmp_path)
