"""How programs use the package, for the type checkers. No test imports it."""
# pyright: strict, reportUnnecessaryTypeIgnoreComment=true

from __future__ import annotations

import io
import pathlib
from typing import Any

import numpy as np
import numpy.typing as npt
import vrn
import vrn.typing
from typing_extensions import assert_type


def read(path: pathlib.Path, data: memoryview) -> vrn.Scene:
    scene = vrn.read(path, limits=vrn.Limits(buffer_bytes=1 << 30), strict=True)
    assert_type(scene, vrn.Scene)
    vrn.read(io.BytesIO(b"mesh a;"), catalogue=vrn.Catalogue.builtin())
    vrn.loads(data).update("more.vrn")
    try:
        vrn.loads("mesh")
    except vrn.ParseError as error:
        assert_type(error.line, int)
        assert_type(error.diagnostics[0].severity in ("error", "warning"), bool)
        assert_type(error.scene, vrn.Scene | None)
    return scene


def change(scene: vrn.Scene) -> None:
    for name, node in scene.items():
        assert_type(name, str)
        assert_type(node, vrn.Node)
    box = scene["box"]
    points: npt.NDArray[np.float32] = box["points"]
    box["points"] = points * 2
    box["points"] = vrn.adopt(points)
    box["size"], box["label"], box["on"] = 2.5, "a", True
    box["centre"], box["names"], box["object"] = vrn.Vec3(1, 2, 3), ["a", "b"], {"a": 1}
    box["image"] = scene["red"].outputs["outColor"]
    with box.edit("points") as elements:
        elements *= 2
    added = box.add("axis", "Vec3", (0, 1, 0))
    assert_type(added, vrn.Input)
    assert_type(added.connection, vrn.Output | None)
    assert_type([input.label for input in box.walk()], list[str])
    del scene["box"], box["points"]


def query(scene: vrn.Scene, other: vrn.Scene) -> str:
    values: dict[str, Any] = scene.query("*.material")
    column: npt.NDArray[Any] = scene.column("*.fov")
    assert_type(scene.column("*.fov").__arrow_c_array__(), tuple[object, object])
    differences = [str(difference.before) for difference in vrn.diff(scene, other, tolerance=1e-6)]
    return f"{values} {column.mean()} {differences}"


def write(scene: vrn.Scene, target: vrn.typing.Target) -> int:
    losses = scene.write(target, column=80) + vrn.convert(scene, "scene.glb", up="Z")
    return sum(loss.count for loss in losses)


def check(path: vrn.typing.Path) -> bool:
    report = vrn.check(path, pedantic=True)
    return report.ok and not report.diagnostics and "sarif" in report.to_sarif()


def mistakes(scene: vrn.Scene, diagnostic: vrn.Diagnostic, vector: vrn.Vec3) -> None:
    """Each line is one that the checkers have to refuse."""
    scene["box"] = 1  # type: ignore[index]
    scene.write(5)  # type: ignore[arg-type]
    scene.add("mesh")  # type: ignore[call-arg]
    vrn.read("a.vrn", limits=5)  # type: ignore[arg-type]
    vrn.loads(5)  # type: ignore[arg-type]
    vrn.Scene(catalogue="types.json")  # type: ignore[arg-type]
    vrn.no_such_name  # type: ignore[attr-defined]
    scene.add("mesh", "a")["x"] = object()  # type: ignore[assignment]
    diagnostic.line = 5  # type: ignore[misc]
    vector.x = 5.0  # type: ignore[misc]
