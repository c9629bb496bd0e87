"""The documentation of the package: it is built without a warning, and describes every public name."""

import ast
import inspect
import subprocess
import sys

import pytest
import vrn
import vrn.farm
import vrn.typing
import vrn.usd
from conftest import ROOT
from sphinx.util.inventory import InventoryFile

PAGES = ROOT / "build/python/html"


@pytest.fixture(scope="module")
def described():
    """The names that the reference describes."""
    build = ("--quiet", "--fail-on-warning", "--keep-going", "--fresh-env", "--conf-dir", "docs/python", "docs", PAGES)
    built = subprocess.run([sys.executable, "-m", "sphinx", *build], cwd=ROOT, capture_output=True, text=True)
    assert built.returncode == 0, built.stdout + built.stderr
    inventory = InventoryFile.loads((PAGES / "objects.inv").read_bytes(), uri="")
    return {name for kind in inventory.data if kind.startswith("py:") for name in inventory.data[kind]}


def names_of_types():
    """The names that vrn.typing defines; it imports others."""
    for statement in ast.parse(inspect.getsource(vrn.typing)).body:
        if isinstance(statement, ast.ClassDef):
            yield statement.name
        elif isinstance(statement, ast.AnnAssign):
            yield statement.target.id


PUBLIC = {
    "vrn": vrn.__all__,
    "vrn.farm": vrn.farm.__all__,
    "vrn.usd": vrn.usd.__all__,
    "vrn.typing": list(names_of_types()),
}


@pytest.mark.parametrize("module", PUBLIC)
def test_every_public_name_is_described(module, described):
    names = {f"{module}.{name}" for name in PUBLIC[module]}
    assert names and names - described == set()


@pytest.mark.parametrize("module", [vrn, vrn.farm])
def test_every_public_member_of_a_class_is_described(module, described):
    classes = [getattr(module, name) for name in module.__all__ if inspect.isclass(getattr(module, name))]
    members = {f"{module.__name__}.{c.__name__}.{name}" for c in classes for name in vars(c) if name[0] != "_"}
    assert len(members) > 20 and members - {f"vrn.{c.__name__}.size" for c in classes} - described == set()
