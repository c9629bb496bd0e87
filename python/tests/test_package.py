"""What is published: the wheel and the sdist. Fresh environments of each CPython of this machine install the wheel."""

import concurrent.futures
import functools
import io
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tarfile
import tomllib
import zipfile

import interpreters
import pytest
from conftest import ROOT
from elftools.elf.elffile import ELFFile

DIST = ROOT / "build/python/dist"
WHEELHOUSE = ROOT / "build/python/wheelhouse"
PROJECT = tomllib.loads((ROOT / "pyproject.toml").read_text())
OFFLINE = {name: value for name, value in os.environ.items() if not name.startswith(("PIP_", "PYTHON"))}

IN_WHEEL = (
    r"vrn/(farm/|usd/)?\w+\.py",
    r"vrn/py\.typed",
    r"vrn/_vrn\.pyi",
    r"vrn/_vrn\.abi3\.so",
    r"vrn\.libs/libmeshoptimizer-\w+\.so\.[\w.]+",
    r"vrn-[\d.]+\.dist-info/(METADATA|WHEEL|RECORD|entry_points\.txt)",
    r"vrn-[\d.]+\.dist-info/licenses/(LICENSE|Apache-2\.0|[\w-]+-dev/copyright)",
    r"vrn-[\d.]+\.dist-info/sboms/[\w.]+\.json",
)
IN_SDIST = (
    r"(check|convert|impl|inspect|scene)/[\w/]+\.(cpp|h)",
    r"catalogues/scene\.json",
    r"cmake/(Unity\.cmake|BuiltinCatalogue\.cpp\.in)",
    r"python/src/\w+\.(cpp|h)",
    r"python/src/(stubs\.txt|symbols\.map)",
    r"python/vrn/(farm/|usd/)?\w+\.py",
    r"python/vrn/py\.typed",
    r"python/(CMakeLists\.txt|README\.md)",
    r"CMakeLists\.txt|LICENSE|PKG-INFO|pyproject\.toml",
)


@functools.cache
def the(pattern: str) -> pathlib.Path:
    paths = list(DIST.glob(pattern))
    assert len(paths) == 1, "`make python-package` builds what is tested here"
    return paths[0]


def sources():
    """The files of the sdist, below its one folder."""
    with tarfile.open(the("*.tar.gz")) as archive:
        return [
            pathlib.PurePosixPath(name).relative_to(the("*.tar.gz").name.removesuffix(".tar.gz"))
            for name in archive.getnames()
        ]


def contents():
    """The files of the wheel."""
    with zipfile.ZipFile(the("*.whl")) as archive:
        return [name for name in archive.namelist() if not name.endswith("/")]


def shared_object(name):
    return ELFFile(io.BytesIO(zipfile.ZipFile(the("*.whl")).read(name)))


def faults(names, patterns):
    """The names that no pattern matches, and the patterns that match no name."""
    names = list(map(str, names))
    return [name for name in names if not any(re.fullmatch(pattern, name) for pattern in patterns)] + [
        pattern for pattern in patterns if not any(re.fullmatch(pattern, name) for name in names)
    ]


def test_the_wheel_is_for_all_cpythons_and_most_linux_systems():
    assert re.fullmatch(r"vrn-[\d.]+-cp310-abi3-manylinux_2_3[456]_\w+\.whl", the("*.whl").name)
    assert the("*.whl").stat().st_size < 1.5 * 2**20


def test_the_wheel_holds_the_package_and_nothing_else():
    assert faults(contents(), IN_WHEEL) == []
    modules = {path.relative_to(ROOT / "python").as_posix() for path in (ROOT / "python/vrn").rglob("*.py")}
    assert modules == {name for name in contents() if name.endswith(".py")}


def test_the_wheel_names_the_licences_of_what_it_contains():
    licences = [name.split("/")[2] for name in contents() if "/licenses/" in name]
    assert sorted(licences) == ["Apache-2.0", "LICENSE", "libdeflate-dev", "libdraco-dev", "libfast-float-dev",
                                "libmeshoptimizer-dev", "rapidjson-dev"]  # fmt: skip


def test_the_wheel_needs_only_what_every_system_has():
    needed = {tag.needed for name in contents() if ".so" in name
              for tag in shared_object(name).get_section_by_name(".dynamic").iter_tags("DT_NEEDED")}  # fmt: skip
    bundled = {pathlib.PurePath(name).name for name in contents() if name.startswith("vrn.libs/")}
    expected = {"libstdc++", "libgcc_s", "libm", "libc", "ld"}
    assert {re.sub(r"[-.].*", "", name) for name in needed - bundled} <= expected
    assert "libstdc++.so.6" in needed  # the parts of nanobind share it


def test_the_module_shows_one_function_and_no_debug_information():
    module = shared_object("vrn/_vrn.abi3.so")
    visible = [symbol.name for symbol in module.get_section_by_name(".dynsym").iter_symbols()
               if symbol["st_shndx"] != "SHN_UNDEF" and symbol["st_info"]["bind"] != "STB_LOCAL"]  # fmt: skip
    assert visible == ["PyInit__vrn"]
    assert not [section.name for section in module.iter_sections() if section.name.startswith((".debug", ".symtab"))]


def test_auditwheel_agrees_with_the_name_of_the_wheel():
    platform = the("*.whl").stem.rpartition("-")[2]
    shown = tool("auditwheel", "show", "--json", the("*.whl"))
    assert platform in shown.stdout, shown.stdout + shown.stderr


def test_the_module_uses_the_stable_abi_alone():
    found = json.loads(tool("abi3audit", "--strict", "--report", the("*.whl")).stdout)
    (wheel,) = found["specs"].values()
    results = [module["result"] for module in wheel["wheel"]]
    assert results and all(result["is_abi3"] and result["is_abi3_baseline_compatible"] for result in results)


def tool(name, *arguments):
    ran = subprocess.run([sys.executable, "-m", name, *arguments], capture_output=True, text=True)
    assert ran.returncode == 0, ran.stdout + ran.stderr
    return ran


def test_the_sdist_holds_what_builds_the_wheel_and_nothing_else():
    assert faults(sources(), IN_SDIST) == []


def test_the_build_uses_the_pinned_packages():
    pinned = (ROOT / "python/requirements-package.txt").read_text().splitlines()
    assert set(PROJECT["build-system"]["requires"]) <= set(pinned)
    assert set(PROJECT["project"]["dependencies"]) <= set(pinned)


# The rest installs the wheel.

EXPECTED = sorted({*interpreters.EXPECTED, *interpreters.found()}, key=lambda version: int(version.partition(".")[2]))

USE = """
import sys
import vrn

assert "numpy" not in sys.modules
scene = vrn.read("city.vrn")
assert vrn.convert(scene, "again.glb") == vrn.convert("city.vrn", "city.glb")
assert open("again.glb", "rb").read(4) == b"glTF"
vrn.convert("city.glb", "back.vrn")
mesh, *_ = vrn.read("back.vrn").nodes(type="mesh")
points = mesh["points"]
assert isinstance(points, memoryview) and points.readonly and points.shape[1:] == (3,)
try:
    mesh["points"] = [(0, 0, 0)]
except ImportError as error:
    assert "vrn[numpy]" in str(error)
else:
    raise AssertionError("lists become arrays without numpy")
"""


INSTALL = ("install", "--quiet", "--no-index", "--find-links", WHEELHOUSE, "--find-links", DIST, "vrn")


def installed(interpreter, folder):
    """Makes an environment with the wheel alone, without a network. Returns its Python."""
    subprocess.run([interpreter, "-m", "venv", "--without-pip", folder], check=True)
    python = folder / "bin/python"
    subprocess.run([sys.executable, "-m", "pip", "--isolated", "--python", python, *INSTALL], check=True, env=OFFLINE)
    return python


@pytest.fixture(scope="session")
def fresh(tmp_path_factory):
    """The Python of a new environment for each version."""
    versions = interpreters.found()
    folders = [tmp_path_factory.mktemp("fresh") for _ in versions]
    with concurrent.futures.ThreadPoolExecutor() as pool:
        return dict(zip(versions, pool.map(installed, versions.values(), folders), strict=True))


@pytest.fixture(params=EXPECTED)
def python(request, fresh, tmp_path):
    """Runs a fresh Python in a folder with a scene, and returns what it prints."""
    if request.param not in fresh:
        pytest.skip(f"there is no CPython {request.param} on this machine")
    shutil.copy(ROOT / "examples/first_scene.vrn", tmp_path / "city.vrn")

    def run(*arguments):
        command = [fresh[request.param], "-I", *arguments]
        ran = subprocess.run(command, cwd=tmp_path, env=OFFLINE, capture_output=True, text=True)
        assert ran.returncode == 0, ran.stdout + ran.stderr
        return ran.stdout

    return run


def test_the_example_of_the_package_runs(python):
    example = ROOT / "python/tests/examples.py"
    assert python(example, ROOT / "python/README.md") == "1 examples ran\n"


def test_scenes_are_read_written_and_converted(python):
    python("-c", USE)


# What a statement imports beyond the modules of the interpreter: each module takes time.
IMPORTS = {
    "import vrn": {"vrn"},
    "from vrn import read": {"vrn", "vrn._vrn", "atexit", "nanobind_backend", "nanobind_backend._nb_backend_v1"},
    "import vrn; vrn.Vec3(1, 2, 3)": {"vrn", "vrn._values", "__future__"},
    "import vrn; vrn.ParseError": {"vrn", "vrn._errors", "__future__"},
}


@pytest.mark.parametrize("statement", IMPORTS)
def test_importing_the_package_imports_little(statement, python):
    script = f"import sys; before = set(sys.modules)\n{statement}\nprint(*set(sys.modules) - before)"
    assert set(python("-c", script).split()) <= IMPORTS[statement]


def test_the_command_is_there(fresh):
    command = fresh[f"3.{sys.version_info.minor}"].with_name("vrn-batch")
    assert "check" in subprocess.run([command, "--help"], capture_output=True, text=True, check=True).stdout
