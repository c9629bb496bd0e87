"""Stages as files: opened without output, and written whole or not at all."""

from __future__ import annotations

import contextlib
import errno
import os
import shutil
import tempfile
from collections.abc import Iterator
from pathlib import Path

import numpy as np
from pxr import Sdf, Tf, Usd, UsdUtils

import vrn

from .losses import Losses

EXTENSIONS = (".usd", ".usda", ".usdc", ".usdz")


def checked_path(path: str | os.PathLike[str], verb: str) -> Path:
    result = Path(os.fspath(path))
    if result.suffix.lower() not in EXTENSIONS:
        raise ValueError(f"{result}: cannot {verb} this format; the extensions of USD are {', '.join(EXTENSIONS)}")
    return result


@contextlib.contextmanager
def quiet(path: Path, losses: Losses) -> Iterator[None]:
    """Makes losses of the warnings that USD would print, and exceptions of this package of its errors."""
    delegate = UsdUtils.CoalescingDiagnosticDelegate()
    try:
        yield
    except Tf.ErrorException as error:
        raise vrn.ConversionError(f"{path}: {_message(error, path)}") from None
    finally:
        for diagnostic in delegate.TakeUncoalescedDiagnostics():
            losses.add(_first_line(diagnostic.commentary), str(path))


@contextlib.contextmanager
def refused(path: Path) -> Iterator[None]:
    """Refuses a file with values of types that no check has foreseen."""
    try:
        with np.errstate(over="ignore", invalid="ignore", divide="ignore"):  # what is not finite is checked for
            yield
    except (TypeError, ValueError, OverflowError) as error:
        if isinstance(error, vrn.Error):
            raise
        raise vrn.ConversionError(f"{path}: values of types that do not fit: {error}") from error


def block_wrong_types(stage: Usd.Stage, losses: Losses) -> None:
    """Hides the attributes whose values are not of the type that their schema says, without a change of the file."""
    with Usd.EditContext(stage, stage.GetSessionLayer()):
        for prim in stage.TraverseAll():
            for attribute in prim.GetAuthoredAttributes():
                value = attribute.Get(Usd.TimeCode.EarliestTime())
                if value is not None and not isinstance(value, type(attribute.GetTypeName().defaultValue)):
                    losses.add("values of the wrong type", str(attribute.GetPath()))
                    attribute.Block()


def _message(error: Tf.ErrorException, path: Path) -> str:
    texts = [_first_line(str(part.commentary)) for part in error.args if hasattr(part, "commentary")]
    texts = [text.removeprefix(f"{path.absolute()}:") for text in texts]
    return "; ".join(dict.fromkeys(texts)) or "not a valid stage"


def _first_line(text: str) -> str:
    return text.strip().splitlines()[0] if text.strip() else "an unnamed warning of USD"


def open_stage(path: Path, losses: Losses) -> Usd.Stage:
    """Opens a stage. Raises OSError if the file cannot be read, ConversionError if it is no stage."""
    with open(path, "rb") as file:  # for an exception with a reason
        if not os.path.isfile(path):
            raise OSError(errno.EINVAL, "not a regular file", str(path))
        if not file.read(1):
            raise vrn.ConversionError(f"{path}: the file is empty")
    with quiet(path, losses):
        known = Sdf.Layer.Find(str(path.absolute()))
        if known and not known.dirty:
            known.Reload(force=True)  # the program may have opened the file before it changed
        stage = Usd.Stage.Open(str(path.absolute()))
        for layer in stage.GetUsedLayers():
            if not layer.dirty and not layer.anonymous:
                layer.Reload()
        return stage


@contextlib.contextmanager
def staging_folder(target: Path) -> Iterator[Path]:
    """A temporary folder next to the file to write, so that what is in it can be moved there."""
    with tempfile.TemporaryDirectory(prefix=f".{target.stem}-", dir=target.absolute().parent) as folder:
        yield Path(folder)


def save(stage: Usd.Stage, images: Path | None, staging: Path, target: Path) -> None:
    """Writes a stage and the images that it brings along."""
    is_package = target.suffix.lower() == ".usdz"
    layer = staging / (f"{Tf.MakeValidIdentifier(target.stem)}.usdc" if is_package else f"stage{target.suffix}")
    if not stage.GetRootLayer().Export(str(layer)):
        raise OSError(errno.EIO, "the stage cannot be written", str(target))
    if is_package:
        package = staging / "package.usdz"
        if not UsdUtils.CreateNewUsdzPackage(str(layer), str(package)):
            raise OSError(errno.EIO, "the package cannot be written", str(target))
        layer = package
    elif images:
        _replace_folder(images, target.absolute().parent / images.name)
    os.replace(layer, target)


def _replace_folder(source: Path, target: Path) -> None:
    """Moves the files of a folder to another one, where others stay."""
    target.mkdir(exist_ok=True)
    for file in source.iterdir():
        os.replace(file, target / file.name)
    shutil.rmtree(source)
