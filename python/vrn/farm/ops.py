"""What is usually done with many files: functions of a path, for `vrn.batch`.

>>> vrn.batch("*.vrn", vrn.ops.check)
<vrn.Run of 1 files: 1 ok>
>>> vrn.batch("*.vrn", vrn.ops.checking(catalogue="builtin"))
<vrn.Run of 1 files: 1 ok>
>>> vrn.batch("*.vrn", vrn.ops.convert("out/{parent}/{stem}.glb"))
<vrn.Run of 1 files: 1 ok>
"""

from __future__ import annotations

import functools
import hashlib
import io
import os
import string
from collections.abc import Callable, Sequence
from dataclasses import dataclass
from typing import Any

from .._errors import Diagnostic
from .._vrn import Catalogue, Node, Output, check_files
from .._vrn import check as check_file
from .._vrn import convert as convert_file
from .._vrn import read as read_file
from .files import local_copy, reading, written_whole
from .results import Answer, Outcome, Status
from .worker import attempt


def check(
    path: str, *, catalogue: str | None = None, ignored: tuple[str, ...] = (), pedantic: bool = False
) -> Answer:
    """Checks a file as `vrn.check` does. The catalogue is `builtin`, or the path of a file that all workers can read."""
    types = _catalogue(catalogue) if catalogue else None
    with reading(path) as source:
        report = check_file(source, catalogue=types, ignored=ignored, pedantic=pedantic)
    return Answer(None, report.diagnostics, report.ok)


def checking(
    *, catalogue: str | None = None, ignored: tuple[str, ...] = (), pedantic: bool = False
) -> Callable[[str], Answer]:
    """`check` with options. Ledgers know the catalogue by its content, not only by its name as in a partial of `check`.

    Raises what `vrn.check` does if the options are wrong.
    """
    if catalogue and catalogue != "builtin":
        catalogue = os.path.abspath(catalogue)
    types = _catalogue(catalogue) if catalogue else None
    check_file(io.BytesIO(), catalogue=types, ignored=ignored, pedantic=pedantic)
    return _Check(catalogue, ignored, pedantic)


def convert(target: str, **options: Any) -> Callable[[str], tuple[Any, ...]]:
    """A function that converts a file to the target; its value is what is lost. The options are those of `vrn.convert`.

    In the target, `{stem}`, `{name}`, `{suffix}` and `{parent}` are parts of the path of the file: for `lib/a/b.vrn`
    they are `b`, `b.vrn`, `.vrn` and `lib/a`. Folders are made. A file appears whole or not at all. Raises ValueError for
    an unknown part.
    """
    return _Convert(target, tuple(sorted(options.items())))


def scan(columns: tuple[str, ...]) -> Callable[[str], dict[str, dict[str, Any]]]:
    """A function that returns, by column, the values that a path of `vrn query` matches, by their own paths.

    Nodes and outputs become text, as `vrn query` prints them.
    """
    return _Scan(tuple(columns))


@dataclass(frozen=True)
class _Check:
    catalogue: str | None
    ignored: tuple[str, ...]
    pedantic: bool

    @property
    def identity(self) -> str:
        types = _content_id(self.catalogue) if self.catalogue and self.catalogue != "builtin" else self.catalogue
        return f"check(catalogue={types}, ignored={sorted(self.ignored)}, pedantic={self.pedantic})"

    def __call__(self, path: str) -> Answer:
        return check(path, catalogue=self.catalogue, ignored=self.ignored, pedantic=self.pedantic)

    def attempt_all(self, paths: Sequence[str]) -> list[Outcome]:
        """What `attempt` would return for each path: most without Python, so that threads do not wait for each other."""
        try:
            types = _catalogue(self.catalogue) if self.catalogue else None
            found = check_files(paths, catalogue=types, ignored=self.ignored, pedantic=self.pedantic)
        except Exception:  # which is said of each file
            found = [None] * len(paths)
        return [_checked(*each) if each else attempt(self, path) for path, each in zip(paths, found, strict=True)]


check.attempt_all = _Check(None, (), False).attempt_all  # type: ignore[attr-defined]


def _checked(ok: bool, diagnostics: tuple[Diagnostic, ...], seconds: float) -> Outcome:
    return Outcome(Status.OK if ok else Status.ERRORS, seconds, None, diagnostics)


@dataclass(frozen=True)
class _Convert:
    template: str
    options: tuple[tuple[str, Any], ...]

    def __post_init__(self) -> None:
        self.target("folder/name.vrn")

    @property
    def identity(self) -> str:
        return f"convert({self.template!r}, {dict(self.options)!r})"

    def target(self, path: str) -> str:
        """Where the file made of this one is."""
        return _filled(self.template, path)

    def __call__(self, path: str) -> tuple[Any, ...]:
        with local_copy(path) as source, written_whole(self.target(path)) as target:
            losses: tuple[Any, ...] = convert_file(source, target, **dict(self.options))
            return losses


@dataclass(frozen=True)
class _Scan:
    columns: tuple[str, ...]

    @property
    def identity(self) -> str:
        return f"scan({list(self.columns)!r})"

    def __call__(self, path: str) -> dict[str, dict[str, Any]]:
        with reading(path) as source:
            scene = read_file(source)
        return {
            column: {place: _plain(value) for place, value in scene.query(column).items()} for column in self.columns
        }


def _plain(value: Any) -> Any:
    """A value without its scene."""
    if isinstance(value, Node):
        return value.name
    if isinstance(value, Output):
        return f"{value.node.name}.{value.name}"
    return value.tolist() if hasattr(value, "tolist") else value


def _filled(template: str, path: str) -> str:
    _, _, local = path.rpartition("://")
    folder, name = os.path.split(local)
    stem, suffix = os.path.splitext(name)
    parent = os.path.normpath(folder).lstrip("./") if folder else ""
    parts = {"stem": stem, "name": name, "suffix": suffix, "parent": parent or "."}
    unknown = {field for _, field, _, _ in string.Formatter().parse(template) if field is not None} - parts.keys()
    if unknown:
        raise ValueError(f"{template}: unknown {{{min(unknown)}}}; known are {{stem}}, {{name}}, {{suffix}}, {{parent}}")
    return template.format_map(parts)


def _catalogue(path: str) -> Catalogue:
    return _catalogue_as_of(path, 0 if path == "builtin" else os.stat(path).st_mtime_ns)


@functools.lru_cache(maxsize=4)
def _catalogue_as_of(path: str, time: int) -> Catalogue:
    return Catalogue.builtin() if path == "builtin" else Catalogue.read(path)


def _content_id(path: str) -> str:
    with open(path, "rb") as file:
        return hashlib.blake2b(file.read(), digest_size=16).hexdigest()
