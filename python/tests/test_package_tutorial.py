"""The tutorial runs, and what it says of values is true."""

import nbformat
import pytest
from conftest import ROOT
from nbclient import NotebookClient
from nbclient.exceptions import CellExecutionError

TUTORIAL = ROOT / "docs/python/tutorial.ipynb"


@pytest.fixture
def tutorial():
    return nbformat.read(TUTORIAL, nbformat.NO_CONVERT)


def code_of(notebook):
    return [cell for cell in notebook.cells if cell.cell_type == "code"]


def run(notebook, folder):
    return NotebookClient(notebook, timeout=None, resources={"metadata": {"path": str(folder)}}).execute()


def test_the_tutorial_runs(tutorial, tmp_path):
    run(tutorial, tmp_path)
    shown = "".join(str(output) for cell in code_of(tutorial) for output in cell.outputs)
    assert "<details>" in shown  # the scene as HTML
    assert "stderr" not in shown and list(tmp_path.iterdir()) == []


def test_a_wrong_value_is_found(tutorial, tmp_path):
    for cell in code_of(tutorial):
        cell.source = cell.source.replace("cam1.fov = 45.0", "cam1.fov = 46.0")
    with pytest.raises(CellExecutionError, match="AssertionError"):
        run(tutorial, tmp_path)


def test_the_tutorial_is_stored_without_outputs(tutorial):
    nbformat.validate(tutorial)
    assert all(not cell.outputs and cell.execution_count is None for cell in code_of(tutorial))
    assert len(code_of(tutorial)) > 15
