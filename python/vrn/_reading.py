"""What C++ leaves to Python of reading files."""

from __future__ import annotations

TYPE_CHECKING = False
if TYPE_CHECKING:
    import os


def text_of_file(path: str | os.PathLike[str]) -> str:
    """The text of a file, with bytes that are not UTF-8 as lone surrogates."""
    with open(path, encoding="utf-8", errors="surrogateescape", newline="") as file:
        return file.read()
