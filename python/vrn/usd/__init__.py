"""Scenes as OpenUSD stages: `.usda`, `.usdc` and `.usdz`.

>>> scene = vrn.read("city.vrn")
>>> losses = vrn.usd.to_usd(scene, "city.usdc")
>>> scene, losses = vrn.usd.from_usd("city.usdc")

What a scene holds is in the stage, or named in the losses, or the file is refused. The modules, from what users call to
what does the work:

- `writing`, `reading`: the order in which a scene becomes a stage, and a stage a scene. `files`: writing whole files.
- `given`, `authored`: what a node and a prim hold, and what of it nobody has read. `losses`: what is lost.
- `names`, `numbers`, `arrays`, `transforms`: what both directions share.
- `hierarchy`, `meshes`, `surfaces`, `materials`, `textures`, `cameras`, `aim`, `lights`, `skins`, `morphs`, `animations`,
  `instancers`, `variants`: one kind of content each, in both directions.
"""

from __future__ import annotations

from typing import TYPE_CHECKING

if TYPE_CHECKING:
    import os

    from vrn import Loss, Scene

__all__ = ["from_usd", "to_usd"]


def to_usd(
    scene: Scene, path: str | os.PathLike[str], *, folder: str | os.PathLike[str] | None = None
) -> tuple[Loss, ...]:
    """Writes a scene as `.usda`, `.usdc` or `.usdz`, by the extension, and returns what is lost.

    Paths of textures are relative to `folder`, by default that of the file. Embedded images are written to a folder
    next to the file; a `.usdz` contains all images. The file is written whole or not at all. Raises ValueError for
    another extension, OSError, and ImportError without the packages of `pip install vrn[usd]`.
    """
    _require_packages()
    from .writing import write

    return write(scene, path, folder)


def from_usd(path: str | os.PathLike[str]) -> tuple[Scene, tuple[Loss, ...]]:
    """Reads a stage and returns the scene and what of the stage is not in it.

    Variants, references and payloads are those that the stage selects and loads. Paths of textures are relative to the
    folder of the file. Raises OSError, ConversionError for a file that is not a valid stage, ValueError for another
    extension, and ImportError without the packages of `pip install vrn[usd]`.
    """
    _require_packages()
    from .reading import read

    return read(path)


def _require_packages() -> None:
    try:
        import numpy  # noqa: F401
        from pxr import Usd  # noqa: F401
    except ImportError as error:
        raise ImportError(f"reading and writing USD needs OpenUSD and numpy: pip install vrn[usd] ({error})") from error
