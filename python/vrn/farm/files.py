"""Files here and elsewhere: a path with `://` belongs to a file system of fsspec, any other to this machine."""

from __future__ import annotations

import contextlib
import errno
import os
import tempfile
from collections.abc import Iterator
from typing import IO, Any

from .results import FarmError


def is_remote(path: str) -> bool:
    """Whether the path is a URL such as `s3://bucket/a.vrn`."""
    return "://" in path


def file_system(path: str) -> tuple[Any, str]:
    """The file system of a URL, and the path in it. Raises FarmError if what it needs is not installed."""
    try:
        import fsspec
    except ImportError:
        raise FarmError(f"{path}: URLs need the package fsspec; install vrn[farm]") from None
    try:
        return fsspec.core.url_to_fs(path)  # type: ignore[no-any-return]
    except (ImportError, ValueError) as error:
        raise FarmError(f"{path}: {error}") from error


@contextlib.contextmanager
def reading(path: str) -> Iterator[str | IO[bytes]]:
    """What `vrn.read` and `vrn.check` take: the path itself, or an open file if it is a URL."""
    if not is_remote(path):
        yield path
        return
    with _remote_errors(path):
        system, name = file_system(path)
        file = system.open(name, "rb")
    with file:
        yield file


@contextlib.contextmanager
def local_copy(path: str) -> Iterator[str]:
    """A path on this machine with the content of the file, for as long as the block lasts."""
    if not is_remote(path):
        yield path
        return
    with tempfile.TemporaryDirectory(prefix="vrn-") as folder:
        system, name = file_system(path)
        copy = os.path.join(folder, os.path.basename(name) or "scene.vrn")
        with _remote_errors(path):
            system.get_file(name, copy)
        yield copy


@contextlib.contextmanager
def _remote_errors(path: str) -> Iterator[None]:
    """Errors of any file system as OSError about the path."""
    try:
        yield
    except OSError as error:
        raise OSError(error.errno or errno.EIO, error.strerror or str(error), path) from error
    except FarmError:
        raise
    except Exception as error:  # each file system has exceptions of its own
        raise OSError(errno.EIO, f"{type(error).__name__}: {error}", path) from error


def exists(path: str) -> bool:
    """Whether there is such a file."""
    if not is_remote(path):
        return os.path.exists(path)
    system, name = file_system(path)
    return bool(system.exists(name))


@contextlib.contextmanager
def written_whole(path: str) -> Iterator[str]:
    """A path on this machine to write to. The file appears at its own place when the block ends without an exception.

    Its folder is made. Nothing remains of a file that was not finished, unless the process is killed.
    """
    if is_remote(path):
        system, name = file_system(path)
        with tempfile.TemporaryDirectory(prefix="vrn-") as folder:
            made = os.path.join(folder, os.path.basename(name))
            yield made
            system.put(folder + os.sep, os.path.dirname(name), recursive=True)
        return
    os.makedirs(os.path.dirname(path) or ".", exist_ok=True)
    yield path
