"""Images of textures: files next to a stage, or in its package."""

from __future__ import annotations

import os
import re
from pathlib import Path
from typing import TYPE_CHECKING

from pxr import Ar, Sdf

import vrn

from .given import Given
from .names import UniqueNames, text_for_usd

if TYPE_CHECKING:
    from .losses import Losses

_KINDS = ((b"\x89PNG\r\n\x1a\n", ".png"), (b"\xff\xd8\xff", ".jpg"))
"""What USD programs read: the first bytes of a file, and its extension."""


def _extension_of(content: bytes) -> str | None:
    return next((extension for start, extension in _KINDS if content.startswith(start)), None)


class Images:
    """Where the images of a scene are, seen from its stage.

    Images that a stage brings along are first written to a temporary folder.
    """

    def __init__(self, source: Path, target: Path, staging: Path, losses: Losses) -> None:
        self._source = source  # the folder that paths of the scene are relative to
        self._folder = Path(os.path.abspath(target)).parent
        self._is_package = target.suffix.lower() == ".usdz"
        self._beside = "textures" if self._is_package else f"{target.stem}_textures"
        self._staging = staging
        self._losses = losses
        self._names = UniqueNames()
        self._paths: dict[str, str | None] = {}

    @property
    def folder(self) -> Path | None:
        """The temporary folder with the images to bring along, if there are any."""
        folder = self._staging / self._beside
        return folder if folder.is_dir() else None

    def path_of(self, given: Given) -> str | None:
        """The path of the image of a texture; None, with a loss, if it has none that USD takes."""
        name = given.node.name
        if name not in self._paths:
            self._paths[name] = self._find(given)
        return self._paths[name]

    def _find(self, given: Given) -> str | None:
        encoded = given.numbers("encoded")
        file = given.text("file").replace("\\", "/")
        if encoded is not None:
            path = self._bring(encoded.tobytes(), given.node.name)
            if path is None:
                given.lose("encoded images that are not PNG or JPEG", "encoded")
            elif file:
                given.lose("files of textures beside embedded images", "file")
            return path
        if not file:
            given.lose("textures without an image")
            return None
        return self._packed(file, given) if self._is_package else self._relative(file, given)

    def _relative(self, file: str, given: Given) -> str | None:
        if "@" in file or not file.isprintable() or file != text_for_usd(file):
            given.lose("paths of textures that a stage cannot have", "file")
            return None
        if os.path.isabs(file) or re.match(r"[A-Za-z]:|\w+://", file):
            return file
        if os.path.abspath(self._source) != str(self._folder):
            file = os.path.relpath(os.path.join(os.path.abspath(self._source), file), self._folder)
        return file if file.startswith((".", "/")) else f"./{file}"

    def _packed(self, file: str, given: Given) -> str | None:
        path = Path(self._source, file)
        try:
            content = path.read_bytes() if path.is_file() else None
        except (OSError, ValueError):
            content = None
        if content is None:
            given.lose("image files that cannot be read", "file")
            return None
        packed = self._bring(content, path.stem)
        if packed is None:
            given.lose("image files that are not PNG or JPEG", "file")
        return packed

    def _bring(self, content: bytes, name: str) -> str | None:
        extension = _extension_of(content)
        if extension is None:
            return None
        stem = self._names.take(re.sub(r"[^A-Za-z0-9_-]+", "_", name) or "image")
        folder = self._staging / self._beside
        folder.mkdir(exist_ok=True)
        (folder / (stem + extension)).write_bytes(content)
        return f"./{self._beside}/{stem}{extension}"


def read_image(node: vrn.Node, asset: Sdf.AssetPath, folder: str) -> bool:
    """Adds the image that an asset path leads to. False if it leads nowhere.

    Images in packages are embedded; paths of others are relative to a folder, where that is possible.
    """
    resolved = asset.resolvedPath
    if resolved and Ar.IsPackageRelativePath(resolved):
        opened = Ar.GetResolver().OpenAsset(Ar.ResolvedPath(resolved))
        if not opened:
            return False
        import numpy as np

        with opened as content:
            node.add("encoded", "byte[]", np.frombuffer(bytes(content.GetBuffer()), np.uint8))
        return True
    path = asset.path
    if resolved and not os.path.isabs(path):
        path = os.path.relpath(resolved, folder)
    node.add("file", "String", path.removeprefix("./"))
    return bool(path)
