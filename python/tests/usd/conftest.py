"""What the tests of stages share: stages made by hand, round trips, and the validators of OpenUSD."""

import io
import json
import pathlib
import struct
import zlib

import numpy as np
import pytest
import vrn
import vrn.usd
from pxr import Sdf, Usd, UsdGeom, UsdValidation

ROOT = pathlib.Path(__file__).resolve().parents[3]


def png(color: tuple[int, int, int] = (200, 100, 50)) -> bytes:
    """An image of one pixel."""

    def chunk(kind: bytes, data: bytes) -> bytes:
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    header = struct.pack(">IIBBBBB", 1, 1, 8, 2, 0, 0, 0)
    pixels = zlib.compress(b"\0" + bytes(color))
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", pixels) + chunk(b"IEND", b"")


def opened(path: pathlib.Path) -> Usd.Stage:
    """The stage of a file as it is now, also if an earlier one of that name is still open."""
    stage = Usd.Stage.Open(str(path))
    stage.Reload()
    return stage


def findings(path: pathlib.Path) -> list[str]:
    """What the validators of OpenUSD find wrong with a file."""
    registry = UsdValidation.ValidationRegistry()
    context = UsdValidation.ValidationContext(registry.GetOrLoadAllValidators())
    stage = opened(path)
    return [f"{error.GetName()}: {error.GetMessage()}" for error in context.Validate(stage)]


def kinds_of(losses: tuple[vrn.Loss, ...]) -> list[str]:
    return sorted(loss.what for loss in losses)


def closed_catalogue() -> vrn.Catalogue:
    """The catalogue that is built in, without leave for inputs that it does not declare."""
    declared = json.loads((ROOT / "catalogues" / "scene.json").read_text())
    for node_type in declared["types"].values():
        del node_type["open"]
    return vrn.Catalogue.loads(json.dumps(declared))


CLOSED = closed_catalogue()


def undeclared(scene: vrn.Scene) -> list[str]:
    """What of a scene that was read the catalogue does not declare."""
    text = io.BytesIO(scene.dumps().encode("utf-8", "surrogateescape"))
    return [found.message for found in vrn.check(text, catalogue=CLOSED, ignored=["missingFile"]).diagnostics]


class Trip:
    """Scenes to files and back. Every file that is written must please the validators."""

    def __init__(self, folder: pathlib.Path) -> None:
        self.folder = folder

    def write(
        self, scene: "str | vrn.Scene", losses: list[str] | None = None, name: str = "scene.usda", check: bool = True
    ) -> Usd.Stage:
        path = self.folder / name
        made = vrn.loads(scene) if isinstance(scene, str) else scene
        found = vrn.usd.to_usd(made, path)
        assert kinds_of(found) == sorted(losses or [])
        if check:
            assert findings(path) == []
        return opened(path)

    def read(self, stage: "Usd.Stage | str", losses: list[str] | None = None) -> vrn.Scene:
        """The scene of a stage, or of the text of one."""
        path = self.folder / "given.usda"
        if isinstance(stage, str):
            path.write_text('#usda 1.0\n(\nmetersPerUnit = 1\nupAxis = "Y"\n)\n' + stage)
        else:
            stage.GetRootLayer().Export(str(path))
        scene, found = vrn.usd.from_usd(path)
        assert kinds_of(found) == sorted(losses or [])
        assert undeclared(scene) == []
        return scene

    def round(
        self, scene: "str | vrn.Scene", losses: list[str] | None = None, name: str = "scene.usdc", check: bool = True
    ) -> vrn.Scene:
        self.write(scene, losses, name, check)
        result, found = vrn.usd.from_usd(self.folder / name)
        assert found == ()
        assert undeclared(result) == []
        return result


@pytest.fixture
def trip(tmp_path: pathlib.Path) -> Trip:
    return Trip(tmp_path)


@pytest.fixture
def stage() -> Usd.Stage:
    """An empty stage in metres, Y up."""
    made = Usd.Stage.CreateInMemory()
    UsdGeom.SetStageUpAxis(made, UsdGeom.Tokens.y)
    UsdGeom.SetStageMetersPerUnit(made, 1.0)
    return made


def equal(found: object, expected: object) -> None:
    """Arrays and tuples of numbers, bit for bit."""
    np.testing.assert_array_equal(np.asarray(found), np.asarray(expected))


def close(found: object, expected: object, tolerance: float = 1e-6) -> None:
    np.testing.assert_allclose(np.asarray(found), np.asarray(expected), rtol=tolerance, atol=tolerance)


def paths_of(stage: Usd.Stage) -> list[str]:
    return [str(prim.GetPath()) for prim in stage.Traverse()]


def attribute(stage: Usd.Stage, path: str) -> object:
    return stage.GetAttributeAtPath(Sdf.Path(path)).Get()
