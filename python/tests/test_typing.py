"""The type checkers agree with the package, and with each other, about how it is used."""

import json
import pathlib
import shutil
import subprocess
import sys

import vrn
from conftest import ROOT

PACKAGES = pathlib.Path(vrn.__file__).parents[1]
# Where type checkers look beyond the installed packages: for the package of a checkout.
MORE = {"MYPYPATH": str(PACKAGES)} if PACKAGES == ROOT / "python" else {}
USAGE = pathlib.Path(__file__).with_name("typed_usage.py")

# What stubtest says of every class and function of a module in C++.
OF_THE_MODULE = (
    "metaclass differs", "is not a function", "is a disjoint base at runtime", "stub does not have *args parameter",
    "stub is a staticmethod but runtime is not", "__nb_signature__ is not present in stub",
)  # fmt: skip


def run(*command, cwd, **environment):
    return subprocess.run(
        command, cwd=cwd, env={"PATH": "/usr/bin:/bin", **environment}, capture_output=True, text=True
    )


def mypy(tmp_path, *arguments):
    checked = run(
        sys.executable, "-m", "mypy", "--strict", "--config-file", ROOT / "pyproject.toml", *arguments,
        cwd=tmp_path, **MORE,
    )  # fmt: skip
    assert checked.returncode == 0, checked.stdout + checked.stderr


def test_mypy_accepts_the_package(tmp_path):
    mypy(tmp_path, "-p", "vrn")


def test_mypy_knows_the_mistakes(tmp_path):
    mypy(tmp_path, str(USAGE))


def test_pyright_knows_the_mistakes(tmp_path):
    shutil.copy(USAGE, tmp_path)
    (tmp_path / "pyrightconfig.json").write_text(json.dumps({"extraPaths": [str(PACKAGES)]}))
    command = ROOT / "build/node_modules/.bin/pyright"
    checked = run(command, "--pythonpath", sys.executable, cwd=tmp_path, HOME=str(tmp_path))
    assert checked.returncode == 0, checked.stdout + checked.stderr


def test_the_stubs_have_what_the_module_has(tmp_path):
    checked = run(
        sys.executable, "-m", "mypy.stubtest", "vrn._vrn", "vrn._errors", "vrn._results", "vrn._values", "--concise",
        "--mypy-config-file", str(ROOT / "pyproject.toml"), cwd=tmp_path, PYTHONPATH=str(PACKAGES), **MORE,
    )  # fmt: skip
    findings = [line for line in checked.stdout.splitlines() if not any(words in line for words in OF_THE_MODULE)]
    assert findings == [] and checked.stdout, checked.stderr
