"""The manifest: the files that a run is about, one after the other, each once.

    for entry in manifest(["lib/**/*.vrn", "more", "s3://bucket/scenes/*.vrn"]):
        print(entry.path, entry.size, entry.key)

A source is a file, a folder, which stands for every `*.vrn` in it and below it, or a pattern: `*` and `?` match within
a name, `**` any number of folders. Hidden files and folders match only if the pattern names them, and links to folders
are not followed. Files of a folder or pattern come in the order of their names. Nothing is listed in advance: memory
does not depend on the number of files, but for 100 bytes a file if several sources could name the same one.
"""

from __future__ import annotations

import fnmatch
import functools
import hashlib
import os
import re
import stat
from collections.abc import Iterable, Iterator
from typing import Any, NamedTuple

from .files import file_system, is_remote
from .results import Status, describe

Source = str | bytes | os.PathLike[str]
_MAGIC = re.compile(r"[*?\[]")


class Entry(NamedTuple):
    """A file of the manifest."""

    path: str
    size: int = 0
    """In bytes; 0 if unknown."""
    key: str = ""
    """Differs if the content does: size and time of the last change. Empty if unknown."""
    problem: str = ""
    """Why there is nothing to work on."""
    verdict: Status = Status.UNREADABLE
    """The status of an entry with a problem."""


def manifest(sources: Source | Iterable[Source]) -> Iterator[Entry]:
    """The files that the sources lead to, in their order, each once. A source without files is an entry with a problem."""
    if isinstance(sources, bytes | str | os.PathLike):
        pattern = os.fsdecode(sources)
        files = _files(pattern)
        return _unique(files) if pattern.count("**") > 1 else files
    return _unique(entry for source in sources for entry in _files(os.fsdecode(source)))


def digest(text: str) -> int:
    """120 bits that identify a text: a Python integer of 40 bytes."""
    return int.from_bytes(hashlib.blake2b(text.encode("utf-8", "surrogatepass"), digest_size=15).digest(), "big")


def part_of(entries: Iterable[Entry], number: int, parts: int) -> Iterator[Entry]:
    """The entries of one of several parts, counted from 1. A file stays in its part when others come and go."""
    return (entry for entry in entries if digest(entry.path) % parts == number - 1)


def _unique(entries: Iterable[Entry]) -> Iterator[Entry]:
    seen: set[int] = set()
    for entry in entries:
        identity = digest(entry.path)
        if identity not in seen:
            seen.add(identity)
            yield entry


def _files(source: str) -> Iterator[Entry]:
    if not _is_path(source):
        yield Entry(source, problem="no file can have such a name")
        return
    found = False
    for entry in _remote_files(source) if is_remote(source) else _local_files(source):
        found = True
        yield entry
    if not found:
        yield Entry(source, problem="no file matches" if _MAGIC.search(source) else "no *.vrn file in this folder")


def _is_path(text: str) -> bool:
    try:
        return b"\0" not in os.fsencode(text)
    except UnicodeEncodeError:
        return False


def _local_files(source: str) -> Iterator[Entry]:
    if _MAGIC.search(source) and not os.path.lexists(source):
        root = os.sep if source.startswith(os.sep) else ""
        return _matches(_Folder(root), [segment for segment in source.split(os.sep) if segment])
    try:
        status = os.stat(source)
    except OSError:
        return iter([Entry(source)])  # the worker reports why it cannot be read
    if stat.S_ISDIR(status.st_mode):
        return _matches(_Folder(source), ["**", "*.vrn"])
    return iter([_entry(source, status)])


def _entry(path: str, status: os.stat_result) -> Entry:
    return Entry(path, status.st_size, f"{status.st_size}-{status.st_mtime_ns}")


class _Folder:
    """A folder that is listed once, if that is needed. The current one, of relative patterns, has an empty path."""

    def __init__(self, path: str) -> None:
        self.path = path
        self._problem = ""

    @functools.cached_property
    def _items(self) -> list[os.DirEntry[str]]:
        """What is in the folder, by name. A folder that does not exist is empty."""
        try:
            with os.scandir(self.path or ".") as items:
                return sorted(items, key=lambda item: item.name)
        except (FileNotFoundError, NotADirectoryError):
            return []
        except OSError as error:
            self._problem = f"the folder cannot be listed: {error.strerror}"
            return []

    def problems(self) -> Iterator[Entry]:
        """Why nothing can be known of the folder; only once."""
        if not self._items and self._problem:
            yield Entry(self.path, problem=self._problem)
            self._problem = ""

    def matches(self, pattern: str) -> Iterator[os.DirEntry[str]]:
        """The items with such a name. Hidden ones only match a pattern that names them."""
        is_match = re.compile(fnmatch.translate(pattern)).match
        return (item for item in self._items if is_match(item.name) and (pattern[0] == "." or item.name[0] != "."))

    def path_of(self, item: os.DirEntry[str]) -> str:
        return item.path if self.path else item.name

    def with_folders_below(self) -> Iterator[_Folder]:
        """The folder and those below it, but not those that links lead to, in the order of their paths."""
        waiting = [self]
        while waiting:
            folder = waiting.pop()
            yield folder
            below = [item for item in folder.matches("*") if _is_folder(item, follow_links=False)]
            waiting += (_Folder(folder.path_of(item)) for item in reversed(below))


def _matches(folder: _Folder, segments: list[str]) -> Iterator[Entry]:
    """The files below a folder that match the segments of a pattern."""
    segment, *rest = segments
    if segment == "**":
        for each in folder.with_folders_below():
            yield from _matches(each, rest or ["*"])
            yield from each.problems()
    elif not _MAGIC.search(segment):
        path = os.path.join(folder.path, segment)
        if rest:
            yield from _matches(_Folder(path), rest)
        elif os.path.isfile(path):
            yield _entry_at(path)
    else:
        yield from folder.problems()
        for item in folder.matches(segment):
            path = folder.path_of(item)
            if not rest and _is_file(item):
                yield _entry_at(path, item)
            elif rest and _is_folder(item):
                yield from _matches(_Folder(path), rest)


def _is_file(item: os.DirEntry[str]) -> bool:
    try:
        return item.is_file()
    except OSError:
        return True  # the worker reports why it cannot be read


def _is_folder(item: os.DirEntry[str], follow_links: bool = True) -> bool:
    try:
        return item.is_dir(follow_symlinks=follow_links)
    except OSError:
        return False  # such as a link to itself


def _entry_at(path: str, item: os.DirEntry[str] | None = None) -> Entry:
    try:
        return _entry(path, item.stat() if item else os.stat(path))
    except OSError:
        return Entry(path)


def _remote_files(source: str) -> Iterator[Entry]:
    system, name = file_system(source)
    try:
        if _is_remote_folder(system, name):
            name = name.rstrip("/") + "/**/*.vrn"
        if not _MAGIC.search(name):
            return iter([_remote_entry(source, _info(system, name))])
        found = system.glob(name, detail=True)
    except Exception as error:  # each file system has exceptions of its own
        return iter([Entry(source, problem=f"it cannot be listed: {describe(error)}")])
    files = (path for path in sorted(found) if found[path].get("type") != "directory" and not _is_hidden(path, name))
    return (_remote_entry(system.unstrip_protocol(path), found[path]) for path in files)


def _is_hidden(path: str, pattern: str) -> bool:
    """Whether a name in the path begins with a dot that no name in the pattern begins with."""
    named = [name for name in pattern.split("/") if name.startswith(".")]
    hidden = (name for name in path.split("/") if name.startswith("."))
    return not all(any(fnmatch.fnmatchcase(name, each) for each in named) for name in hidden)


def _is_remote_folder(system: Any, name: str) -> bool:
    return not name.endswith(".vrn") and not _MAGIC.search(name) and bool(system.isdir(name))


def _info(system: Any, name: str) -> dict[str, Any]:
    try:
        return system.info(name)  # type: ignore[no-any-return]
    except Exception:  # each file system has exceptions of its own; the worker reports why it cannot be read
        return {}


def _remote_entry(path: str, info: dict[str, Any]) -> Entry:
    size = int(info.get("size") or 0)
    names = ("ETag", "etag", "md5Hash", "LastModified", "last_modified", "mtime", "updated", "created")
    version = next((str(info[name]) for name in names if info.get(name)), "")
    return Entry(path, size, f"{size}-{version}" if version else "")
