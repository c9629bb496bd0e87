"""Files: whole or not at all, refused with their path, and quiet."""

import builtins
import os
import pathlib
import subprocess
import sys

import pytest
import vrn
import vrn.usd
from conftest import ROOT, findings, kinds_of
from pxr import Sdf, Usd

SCENE = "mesh m; m.points = vec3f[3] {0 0 0, 1 0 0, 0 1 0};"


@pytest.mark.parametrize("extension", [".usda", ".usdc", ".usdz", ".usd", ".USDC"])
def test_all_extensions(tmp_path: pathlib.Path, extension: str) -> None:
    path = tmp_path / f"a scene, 1{extension}"
    assert vrn.usd.to_usd(vrn.loads(SCENE), path) == ()
    assert list(tmp_path.iterdir()) == [path]
    assert findings(path) == []
    scene, losses = vrn.usd.from_usd(path)
    assert (list(scene), losses) == (["m"], ())
    start = path.read_bytes()[:8]
    assert start.startswith({".usda": b"#usda", ".usdz": b"PK"}.get(extension.lower(), b"PXR-USDC"))


def test_paths_can_be_strings_and_relative(tmp_path: pathlib.Path, monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.chdir(tmp_path)
    vrn.usd.to_usd(vrn.loads(SCENE), "a.usda")
    assert list(vrn.usd.from_usd("a.usda")[0]) == ["m"]
    vrn.usd.to_usd(vrn.loads(SCENE.replace("mesh m;", "mesh n;").replace("m.points", "n.points")), "a.usda")
    assert list(vrn.usd.from_usd(pathlib.Path("a.usda"))[0]) == ["n"]


def test_a_file_that_a_program_has_open_is_read_anew(tmp_path: pathlib.Path) -> None:
    path = tmp_path / "a.usda"
    vrn.usd.to_usd(vrn.loads("transform a;"), path)
    stage = Usd.Stage.Open(str(path))
    before = path.stat()
    vrn.usd.to_usd(vrn.loads("transform b;"), path)
    os.utime(path, ns=(before.st_atime_ns, before.st_mtime_ns))  # as if both were written at the same time
    assert list(vrn.usd.from_usd(path)[0]) == ["b"]
    assert stage


def test_unsaved_changes_of_a_program_stay(tmp_path: pathlib.Path) -> None:
    path = tmp_path / "a.usda"
    vrn.usd.to_usd(vrn.loads("transform a;"), path)
    stage = Usd.Stage.Open(str(path))
    stage.DefinePrim("/Root/mine", "Xform")
    assert "mine" in vrn.usd.from_usd(path)[0]
    assert stage.GetPrimAtPath("/Root/mine")


@pytest.mark.parametrize("name", ["a.fbx", "a", "usda"])
def test_other_extensions_are_refused(tmp_path: pathlib.Path, name: str) -> None:
    with pytest.raises(ValueError, match=r"\.usda, \.usdc, \.usdz"):
        vrn.usd.to_usd(vrn.loads(SCENE), tmp_path / name)
    with pytest.raises(ValueError, match=r"\.usda, \.usdc, \.usdz"):
        vrn.usd.from_usd(tmp_path / name)
    assert list(tmp_path.iterdir()) == []


def test_missing_files_and_folders(tmp_path: pathlib.Path) -> None:
    with pytest.raises(FileNotFoundError, match=r"gone\.usda"):
        vrn.usd.from_usd(tmp_path / "gone.usda")
    with pytest.raises(FileNotFoundError):
        vrn.usd.to_usd(vrn.loads(SCENE), tmp_path / "gone" / "a.usda")
    (tmp_path / "folder.usda").mkdir()
    with pytest.raises(OSError, match=r"folder\.usda"):
        vrn.usd.from_usd(tmp_path / "folder.usda")


BROKEN = {
    "empty.usda": b"",
    "text.usda": b'#usda 1.0\ndef Xform "a" { double x = }',
    "no_header.usda": b"hello",
    "binary.usdc": b"PXR-USDC" + bytes(100),
    "short.usdc": b"PXR-USDC",
    "zip.usdz": b"PK\x03\x04" + bytes(50),
    "nothing.usdz": b"nothing",
}


@pytest.mark.parametrize("name", BROKEN)
def test_broken_files_are_refused_with_their_path(
    tmp_path: pathlib.Path, name: str, capfd: pytest.CaptureFixture[str]
) -> None:
    path = tmp_path / name
    path.write_bytes(BROKEN[name])
    with pytest.raises(vrn.ConversionError) as error:
        vrn.usd.from_usd(path)
    assert str(error.value).startswith(f"{path}: ")
    assert capfd.readouterr() == ("", "")


def test_places_of_errors(tmp_path: pathlib.Path) -> None:
    path = tmp_path / "text.usda"
    path.write_bytes(BROKEN["text.usda"])
    with pytest.raises(vrn.ConversionError, match=r"text\.usda: 2:17: Expected }"):
        vrn.usd.from_usd(path)


@pytest.mark.parametrize("start", range(0, 1200, 97))
def test_damaged_binary_files_never_lose_silently(tmp_path: pathlib.Path, start: int) -> None:
    """Cut off anywhere, a file is refused."""
    path = tmp_path / "a.usdc"
    vrn.usd.to_usd(vrn.loads(SCENE), path)
    content = path.read_bytes()
    (tmp_path / "b.usdc").write_bytes(content[: min(start, len(content) - 1)])
    with pytest.raises(vrn.ConversionError):
        vrn.usd.from_usd(tmp_path / "b.usdc")


def test_references_that_are_missing_are_losses(tmp_path: pathlib.Path, capfd: pytest.CaptureFixture[str]) -> None:
    path = tmp_path / "a.usda"
    path.write_text('#usda 1.0\ndef Xform "a" ( references = @gone.usda@ ) { }')
    _, losses = vrn.usd.from_usd(path)
    assert any("gone.usda" in what for what in kinds_of(losses))
    assert capfd.readouterr() == ("", "")


def test_references_are_followed(tmp_path: pathlib.Path) -> None:
    (tmp_path / "parts").mkdir()
    vrn.usd.to_usd(
        vrn.loads(
            'material k; texture t; t.file = "wood.png"; k.baseColorMap |= t.outColor;'
            + SCENE
            + "m.material |= k.outColor;"
        ),
        tmp_path / "parts" / "part.usdc",
    )
    stage = Usd.Stage.CreateNew(str(tmp_path / "all.usda"))
    stage.SetMetadata("metersPerUnit", 1.0)
    for name in "ab":
        stage.DefinePrim(f"/{name}").GetReferences().AddReference("parts/part.usdc")
    (tmp_path / "parts" / "wood.png").write_bytes(b"")
    stage.Save()
    scene, losses = vrn.usd.from_usd(tmp_path / "all.usda")
    assert losses == ()
    assert scene["t"]["file"] == "parts/wood.png"
    meshes = {node["geometry"] for node in scene.nodes(type="instance")} | set(scene.nodes(type="mesh"))
    assert len(meshes) >= 1


def test_a_failed_write_leaves_what_was_there(tmp_path: pathlib.Path, monkeypatch: pytest.MonkeyPatch) -> None:
    path = tmp_path / "a.usda"
    path.write_text("before")

    def fail(*_: object) -> None:
        raise OSError(28, "No space left on device")

    monkeypatch.setattr(os, "replace", fail)
    with pytest.raises(OSError, match="No space"):
        vrn.usd.to_usd(vrn.loads(SCENE), path)
    assert path.read_text() == "before"
    assert list(tmp_path.iterdir()) == [path]


def test_without_the_packages(monkeypatch: pytest.MonkeyPatch, tmp_path: pathlib.Path) -> None:
    original = builtins.__import__

    def without(name: str, *rest: object) -> object:
        if name.startswith("pxr"):
            raise ImportError("No module named 'pxr'")
        return original(name, *rest)  # type: ignore[arg-type]

    monkeypatch.setattr(builtins, "__import__", without)
    with pytest.raises(ImportError, match=r"pip install vrn\[usd\]"):
        vrn.usd.to_usd(vrn.loads(SCENE), tmp_path / "a.usda")
    with pytest.raises(ImportError, match=r"pip install vrn\[usd\]"):
        vrn.usd.from_usd(tmp_path / "a.usda")


def test_nothing_is_imported_before_it_is_used() -> None:
    code = "import sys, vrn, vrn.usd; sys.exit('pxr' in sys.modules or 'numpy' in sys.modules)"
    assert subprocess.run([sys.executable, "-c", code], cwd=pathlib.Path(vrn.__file__).parents[1]).returncode == 0


def test_text_of_a_file_never_becomes_code(tmp_path: pathlib.Path) -> None:
    path = tmp_path / "a.usda"
    name = '__import__(\\"os\\").abort()'
    path.write_text(
        f"""#usda 1.0
        ( metersPerUnit = 1 )
        def Xform "a" (
            displayName = "{name}"
            customData = {{ dictionary vrn = {{
                string name = "b; remove c; \\n define d"
                string extras = "{name}"
            }} }}
        ) {{ }}
        """
    )
    scene, _ = vrn.usd.from_usd(path)
    (node,) = scene.nodes()
    assert node.name == "b_remove_c_define_d"
    assert node["name"] == name.replace("\\", "")
    assert list(vrn.loads(scene.dumps(), strict=True)) == [node.name]


@pytest.mark.parametrize(
    "data",
    [
        "dictionary vrn = { int name = 5 }",
        'dictionary vrn = { string part = "x"\n string root = "y"\n string scene = "z" }',
        "int vrn = 3",
        "dictionary vrn = { bool bare = 1\n bool scope = 0 }",
    ],
)
def test_custom_data_of_other_types_is_harmless(tmp_path: pathlib.Path, data: str) -> None:
    path = tmp_path / "a.usda"
    layer = "customLayerData = { dictionary vrn = { int asset = 1\n int animation = 2 } }"
    path.write_text(f'#usda 1.0\n(\nmetersPerUnit = 1\n{layer}\n)\ndef Xform "a" ( customData = {{ {data} }} ) {{ }}')
    assert "a" in vrn.usd.from_usd(path)[0]


def test_layers_of_stages_are_released(tmp_path: pathlib.Path) -> None:
    path = tmp_path / "a.usda"
    vrn.usd.to_usd(vrn.loads(SCENE), path)
    vrn.usd.from_usd(path)
    assert Sdf.Layer.Find(str(path)) is None


@pytest.mark.parametrize(
    ("text", "losses"),
    [
        ('def Camera "a" { string clippingRange = "x"\n}', 1),
        ('def SphereLight "a" { float[] inputs:color = [1]\n}', 2),
        ('def Mesh "a" { double[] points = [1, 2]\n}', 2),
        ('def Mesh "a" { point3f[] points = [(0,0,0)]\n float[] faceVertexCounts = [1]\n}', 2),
    ],
)
def test_values_of_the_wrong_type_are_losses(tmp_path: pathlib.Path, text: str, losses: int) -> None:
    path = tmp_path / "a.usda"
    path.write_text("#usda 1.0\n(\nmetersPerUnit = 1\n)\n" + text)
    _, found = vrn.usd.from_usd(path)
    assert "values of the wrong type" in kinds_of(found)
    assert len(found) == losses
    assert path.read_text().endswith(text)


def test_transforms_of_other_types_are_losses(tmp_path: pathlib.Path) -> None:
    path = tmp_path / "a.usda"
    text = 'double[] xformOp:translate = [1]\n token[] xformOpOrder = ["xformOp:translate"]'
    path.write_text(f'#usda 1.0\n(metersPerUnit = 1)\ndef Xform "a" {{ {text}\n}}')
    scene, losses = vrn.usd.from_usd(path)
    assert kinds_of(losses) == ["transforms of other values than finite numbers"]
    assert "translation" not in scene["a"].inputs


@pytest.mark.parametrize("number", ["nan", "inf", "1e300"])
def test_transforms_that_are_not_finite_are_losses(
    tmp_path: pathlib.Path, number: str, recwarn: pytest.WarningsRecorder
) -> None:
    path = tmp_path / "a.usda"
    order = 'token[] xformOpOrder = ["xformOp:translate"]'
    path.write_text(
        f"""#usda 1.0
        (metersPerUnit = 1)
        def Xform "a" {{
            double3 xformOp:translate.timeSamples = {{ 0: (0, 0, 0), 1: ({number}, 0, 0) }}
            {order}
        }}
        """
    )
    scene, losses = vrn.usd.from_usd(path)
    assert kinds_of(losses) == ["transforms of other values than finite numbers"]
    assert list(scene) == ["a"]
    assert not recwarn


def test_the_validators_find_something(tmp_path: pathlib.Path) -> None:
    path = tmp_path / "a.usda"
    path.write_text(
        '#usda 1.0\ndef Mesh "a" ( prepend apiSchemas = ["MaterialBindingAPI"] ) { rel material:binding = </b>\n}'
    )
    assert len(findings(path)) > 1
