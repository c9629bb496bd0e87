"""The CPythons of this machine that the wheel is for, and the wheels of what it needs, to install it without a network.

usage: interpreters.py WHEELHOUSE     downloads these wheels
"""

import functools
import os
import pathlib
import shutil
import subprocess
import sys
import tomllib

ROOT = pathlib.Path(__file__).resolve().parents[2]
OLDEST, NEWEST = 10, 19  # minor versions that are looked for
EXPECTED = ("3.10", "3.11", "3.12", "3.13")  # which are named where they are missing
ABOUT = (
    "import sys, sysconfig; v = sys.version_info;"
    "print(f'{v.major}.{v.minor}', sys.implementation.name, sysconfig.get_config_var('Py_GIL_DISABLED') or 0)"
)


@functools.cache
def found() -> dict[str, str]:
    """The program of each version."""
    interpreters = {f"3.{sys.version_info.minor}": sys.executable}
    for program in (*_on_path(), *_of_pyenv()):
        version = _version(program)
        if version:
            interpreters.setdefault(version, program)
    return interpreters


def _on_path() -> list[str]:
    names = [f"python3.{minor}" for minor in range(OLDEST, NEWEST + 1)]
    return [program for program in map(shutil.which, names) if program]


def _of_pyenv() -> list[str]:
    if not shutil.which("pyenv"):
        return []
    versions = _output("pyenv", "versions", "--bare").split()
    prefixes = (_output("pyenv", "prefix", version).strip() for version in versions if version.startswith("3."))
    return [os.path.join(prefix, "bin", "python3") for prefix in prefixes if prefix]


def _version(program: str) -> str | None:
    """The version, if it is a CPython that can load the module."""
    version, implementation, is_free_threaded = (_output(program, "-c", ABOUT).split() or ["3.0", "", "0"])[:3]
    suits = OLDEST <= int(version.split(".")[1]) <= NEWEST and implementation == "cpython" and is_free_threaded == "0"
    return version if suits else None


def _output(*command: str) -> str:
    """What a program prints; nothing if it fails, as those do that only stand for another."""
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True).stdout


def download(wheelhouse: pathlib.Path) -> None:
    """Downloads for each interpreter the packages that the wheel depends on, unless they are there."""
    needed = tomllib.loads((ROOT / "pyproject.toml").read_text())["project"]["dependencies"]
    kept = wheelhouse / "contents"
    wanted = "\n".join([*needed, *sorted(found())])
    if kept.is_file() and kept.read_text() == wanted:
        return
    for version in found():
        options = ("--quiet", "--only-binary", ":all:", "--python-version", version, "--dest", str(wheelhouse))
        subprocess.run([sys.executable, "-m", "pip", "download", *options, *needed], check=True)
    kept.write_text(wanted)


if __name__ == "__main__":
    download(pathlib.Path(sys.argv[1]))
