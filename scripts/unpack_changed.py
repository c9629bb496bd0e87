"""Unpacks an sdist into a folder without touching files that are the same, so that a build there compiles what changed.

usage: unpack_changed.py SDIST FOLDER
"""

import pathlib
import sys
import tarfile

BUILD = "build"  # what builds keep in the folder


def unpack(sdist: str, folder: pathlib.Path) -> None:
    with tarfile.open(sdist) as archive:
        members = [member for member in archive if member.isfile()]
        wanted = {folder.joinpath(*pathlib.PurePath(member.name).parts[1:]): member for member in members}
        for path, member in wanted.items():
            content = archive.extractfile(member).read()
            if not path.is_file() or path.read_bytes() != content:
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_bytes(content)
    for path in folder.rglob("*"):
        if path.is_file() and path not in wanted and path.relative_to(folder).parts[0] != BUILD:
            path.unlink()


if __name__ == "__main__":
    unpack(sys.argv[1], pathlib.Path(sys.argv[2]))
