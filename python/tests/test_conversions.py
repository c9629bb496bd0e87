"""Conversions are those of the command: the same files, and the same refusals before anything is read."""

import os
import subprocess

import pytest
import vrn
from conftest import ROOT

EXAMPLES = sorted(path for path in (ROOT / "examples").glob("*.vrn") if path.name != "all_types.vrn")
TRIANGLE = "mesh m; m.points = vec3f[3] {0 0 0 1 0 0 0 1 0};"
PLACED = {"up": "Z", "metres": 0.01, "scale": 2.0}

MISUSES = {
    "unknown input": ({"from_format": "xyz"}, "the format '.xyz' cannot be read; these can: .vrn .glb"),
    "unknown output": ({"to_format": ".xyz"}, "the format '.xyz' cannot be written; these can: .vrn .json"),
    "one form": ({"ascii": True}, "the format '.glb' has one form only"),
    "images twice": ({"embed": True, "copy_textures": "maps"}, "images are either embedded or files"),
    "triangles of a text": ({"triangulate": True}, "`triangulate` is for models, not for VRN files and scenes"),
    "negative scale": ({"scale": -1.0}, "the scale is a finite number of at least 0, not -1"),
    "no scale": ({"scale": float("nan")}, "the scale is a finite number of at least 0, not nan"),
    "endless scale": ({"scale": float("inf")}, "the scale is a finite number of at least 0, not inf"),
    "no unit": ({"metres": 0.0}, "the unit is a finite number of metres above 0, not 0"),
    "odd unit": ({"metres": float("nan")}, "the unit is a finite number of metres above 0, not nan"),
    "axis": ({"up": "W"}, "the axis that points up is X, Y or Z, not 'W'"),
}


@pytest.fixture
def folder(tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    (tmp_path / "in.vrn").write_text(TRIANGLE)
    return tmp_path


@pytest.mark.parametrize("case", MISUSES)
def test_misuses_are_refused_before_anything_is_written(folder, case):
    options, message = MISUSES[case]
    sources = ["in.vrn"] if case in ("unknown input", "images twice") else ["in.vrn", vrn.read("in.vrn")]
    for source in sources:
        with pytest.raises(ValueError, match="^" + message.replace(".", r"\.")):
            vrn.convert(source, "out.glb", **options)
    assert [path.name for path in folder.iterdir()] == ["in.vrn"]


def test_options_for_files_are_not_for_scenes(folder):
    for options in ({"up": "Z"}, {"metres": 0.01}, {"scale": 2.0}, {"embed": True}):
        with pytest.raises(ValueError, match="a scene is converted as it is"):
            vrn.convert(vrn.read("in.vrn"), "out.glb", **options)


@pytest.mark.parametrize("path", EXAMPLES, ids=lambda path: path.stem)
def test_the_command_writes_the_same(folder, path):
    for options, arguments in (({}, []), (PLACED, ["--up", "Z", "--units", "cm", "--scale", "2"])):
        losses = vrn.convert(path, "python.gltf", **options)
        command = [os.environ["VRN"], "convert", *arguments, path, "command.gltf"]
        result = subprocess.run(command, capture_output=True, check=True, text=True)
        of_python = (folder / "python.gltf").read_text().replace("python.bin", "command.bin")
        assert of_python == (folder / "command.gltf").read_text()
        reported = [line.split(": lost: ")[1] for line in result.stderr.splitlines()]
        assert [loss.what for loss in losses] == [line.rsplit(":", 1)[0] for line in reported]


def test_a_file_may_have_the_name_of_standard_input(folder):
    (folder / "-").write_text("mesh named; " + TRIANGLE)
    vrn.convert("-", "a.vrn", from_format="vrn")
    assert list(vrn.read("a.vrn")) == ["named", "m"]


def test_formats_are_named_in_either_case(folder):
    vrn.convert("in.vrn", "a", to_format="GLB")
    vrn.convert("in.vrn", "b", to_format=".glb")
    assert (folder / "a").read_bytes() == (folder / "b").read_bytes()
    vrn.convert("a", "c.vrn", from_format="glb", triangulate=True)
    assert "m" in vrn.read("c.vrn")
