"""Whole scenes: the examples, and models that the converter makes scenes of."""

import json
import pathlib
import struct

import numpy as np
import pytest
import vrn
import vrn.usd
from conftest import ROOT, findings, png, kinds_of

SCENES = sorted((ROOT / "examples").glob("*.vrn"))


def with_images(scene: vrn.Scene, folder: pathlib.Path) -> None:
    """Gives a scene the image files that it refers to."""
    for node in scene.nodes(type="texture"):
        if isinstance(node.get("file"), str) and node["file"]:
            path = folder / node["file"].replace("\\", "/")
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(png())


def shown(scene: vrn.Scene, folder: pathlib.Path) -> np.ndarray:
    """The numbers of all triangles that a scene shows, in the world."""
    if not scene.nodes(type="mesh"):
        return np.empty(0)
    vrn.convert(scene, folder / "shown.stl")
    content = (folder / "shown.stl").read_bytes()
    (count,) = struct.unpack_from("<I", content, 80)
    kind = np.dtype([("numbers", "<f4", 12), ("rest", "<u2")])
    return np.frombuffer(content, kind, count, 84)["numbers"]


def materials(scene: vrn.Scene, folder: pathlib.Path) -> str:
    """What another format has of the materials of a scene."""
    vrn.convert(scene, folder / "shown.obj")
    library = folder / "shown.mtl"
    return library.read_text() if library.exists() else ""


@pytest.mark.parametrize("extension", [".usda", ".usdc"])
@pytest.mark.parametrize("path", SCENES, ids=lambda path: path.stem)
def test_examples(path: pathlib.Path, extension: str, tmp_path: pathlib.Path) -> None:
    folder = tmp_path / "deep" / "folder"
    folder.mkdir(parents=True)
    scene = vrn.read(path)
    with_images(scene, folder)
    first = folder / f"first{extension}"
    vrn.usd.to_usd(scene, first)
    assert findings(first) == []
    back, losses = vrn.usd.from_usd(first)
    assert losses == ()
    np.testing.assert_allclose(shown(back, tmp_path), shown(scene, tmp_path), atol=1e-4)
    # What came back is kept completely from now on.
    second = folder / f"second{extension}"
    left = set(kinds_of(vrn.usd.to_usd(back, second)))
    assert left <= {"digits beyond float precision"}
    again, losses = vrn.usd.from_usd(second)
    assert losses == ()
    assert [str(difference) for difference in vrn.diff(back, again, tolerance=1e-6)] == []
    assert list(vrn.loads(back.dumps(), strict=True)) == list(back)


@pytest.mark.parametrize("path", SCENES, ids=lambda path: path.stem)
def test_names_of_examples_come_back(path: pathlib.Path, tmp_path: pathlib.Path) -> None:
    scene = vrn.read(path)
    losses = vrn.usd.to_usd(scene, tmp_path / "a.usdc")
    back, _ = vrn.usd.from_usd(tmp_path / "a.usdc")
    assert set(back) <= set(scene)
    lost = sum(loss.count for loss in losses if loss.what.startswith(("nodes of type", "animations after")))
    definitions = sum(node.is_definition for node in scene.nodes())
    assert len(back) == len(scene) - lost - definitions
    for node in back.nodes():
        assert node.get("name") == scene[node.name].get("name") or node.type == "texture"


def test_materials_of_examples_mean_the_same(tmp_path: pathlib.Path) -> None:
    for path in SCENES:
        scene = vrn.read(path)
        if not scene.nodes(type="mesh") or any("opacityMap" in node.inputs for node in scene.nodes()):
            continue  # what another format has of these depends on the names of their inputs
        vrn.usd.to_usd(scene, tmp_path / "a.usdc")
        back, _ = vrn.usd.from_usd(tmp_path / "a.usdc")
        expected = materials(scene, tmp_path).replace("\\", "/")
        assert sorted(materials(back, tmp_path).splitlines()) == sorted(expected.splitlines()), path


def model(tmp_path: pathlib.Path) -> pathlib.Path:
    """A model with a skin, targets, instances, cameras, lights and an animation."""
    points = np.array([(0, 0, 0), (1, 0, 0), (0, 1, 0)], "<f4")
    parts = [
        points.tobytes(),
        np.array([0, 1, 2, 0], "<u2").tobytes(),
        np.array([(0, 0, 0.5)] * 3, "<f4").tobytes(),
        np.array([(0, 1, 0, 0)] * 3, "<u1").tobytes(),
        np.array([(0.25, 0.75, 0, 0)] * 3, "<f4").tobytes(),
        np.array([0, 1, 2.5], "<f4").tobytes(),
        np.array([0, 1, 0.5], "<f4").tobytes(),
    ]
    accessors = [
        (5126, 3, "VEC3"), (5123, 3, "SCALAR"), (5126, 3, "VEC3"), (5121, 3, "VEC4"), (5126, 3, "VEC4"),
        (5126, 3, "SCALAR"), (5126, 3, "SCALAR"),
    ]  # fmt: skip
    views, offset = [], 0
    for part in parts:
        views.append({"buffer": 0, "byteOffset": offset, "byteLength": len(part)})
        offset += len(part)
    document = {
        "asset": {"version": "2.0", "copyright": "nobody"},
        "extensionsUsed": ["KHR_lights_punctual"],
        "extensions": {"KHR_lights_punctual": {"lights": [{"type": "spot", "spot": {}, "name": "lamp"}]}},
        "buffers": [{"byteLength": offset, "uri": "model.bin"}],
        "bufferViews": views,
        "accessors": [
            {"bufferView": i, "componentType": kind, "count": count, "type": shape,
             **({"min": [0, 0, 0], "max": [1, 1, 0]} if i == 0 else {})}
            for i, (kind, count, shape) in enumerate(accessors)
        ],
        "meshes": [
            {
                "primitives": [
                    {
                        "attributes": {"POSITION": 0, "JOINTS_0": 3, "WEIGHTS_0": 4},
                        "indices": 1,
                        "targets": [{"POSITION": 2}],
                        "material": 0,
                    }
                ],
                "weights": [0.5],
            }
        ],
        "materials": [{"pbrMetallicRoughness": {"baseColorFactor": [1, 0.5, 0.25, 0.5]}, "alphaMode": "BLEND"}],
        "cameras": [{"type": "perspective", "perspective": {"yfov": 0.5, "znear": 0.25, "aspectRatio": 1.5}}],
        "skins": [{"joints": [1, 2]}],
        "nodes": [
            {"mesh": 0, "skin": 0},
            {"name": "joint", "children": [2]},
            {"name": "joint", "translation": [0, 1, 0]},
            {"name": "eye", "camera": 0, "translation": [0, 0, 5]},
            {"name": "lamp", "extensions": {"KHR_lights_punctual": {"light": 0}}, "rotation": [0.6, 0, 0, 0.8]},
        ],
        "animations": [
            {
                "channels": [{"sampler": 0, "target": {"node": 0, "path": "weights"}}],
                "samplers": [{"input": 5, "output": 6}],
            }
        ],
        "scenes": [{"nodes": [0, 1, 3, 4]}],
        "scene": 0,
    }  # fmt: skip
    (tmp_path / "model.bin").write_bytes(b"".join(parts))
    (tmp_path / "model.gltf").write_text(json.dumps(document))
    return tmp_path / "model.gltf"


def test_a_converted_model(tmp_path: pathlib.Path) -> None:
    vrn.convert(model(tmp_path), tmp_path / "model.vrn")
    scene = vrn.read(tmp_path / "model.vrn")
    losses = vrn.usd.to_usd(scene, tmp_path / "model.usdc")
    assert set(kinds_of(losses)) <= {"digits beyond float precision"}
    assert findings(tmp_path / "model.usdc") == []
    back, losses = vrn.usd.from_usd(tmp_path / "model.usdc")
    assert losses == ()
    assert sorted(back) == sorted(scene)
    vrn.convert(back, tmp_path / "back.glb")
    assert kinds_of(vrn.convert(tmp_path / "back.glb", tmp_path / "back.vrn")) == []


def test_a_new_scene_of_everything_is_written(tmp_path: pathlib.Path) -> None:
    """Each type of the catalogue with all its inputs, as they are without a value."""
    scene = vrn.Scene(catalogue=vrn.Catalogue.builtin())
    for kind in scene.catalogue.types:
        scene.add(kind, f"the_{kind}")
    losses = vrn.usd.to_usd(scene, tmp_path / "a.usda")
    assert findings(tmp_path / "a.usda") == []
    found = dict.fromkeys(kinds_of(losses))
    assert not any("input" in what for what in found)
