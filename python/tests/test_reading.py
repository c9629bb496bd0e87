"""Texts come in from anywhere, and what is wrong with them comes out as data."""

import io
import mmap
import os
import pickle
import signal
import subprocess
import sys
import threading

import pytest
import vrn
from conftest import BOX, ROOT

BROKEN = "mesh a;\na.x = 1;\na.y = ;\na.z = 2;\n"


@pytest.fixture
def path(tmp_path):
    path = tmp_path / "box.vrn"
    path.write_text(BOX)
    return path


def sources(path):
    return [path, str(path), os.fsencode(path), open(path, "rb"), open(path), io.BytesIO(path.read_bytes())]


def test_sources_give_the_same_scene(path, scene):
    for source in sources(path):
        assert vrn.read(source).dumps() == scene.dumps()


def test_data_gives_the_same_scene(path, scene):
    data = path.read_bytes()
    with open(path, "rb") as file:
        mapped = mmap.mmap(file.fileno(), 0, access=mmap.ACCESS_READ)
    for given in (BOX, data, bytearray(data), memoryview(data), mapped):
        assert vrn.loads(given).dumps() == scene.dumps()


def test_no_text_of_other_types():
    for wrong in (5, None, [1], memoryview(b"12345678").cast("I")):
        with pytest.raises(TypeError):
            vrn.loads(wrong)


def test_missing_files_raise_as_open_does(tmp_path):
    for path, error in ((tmp_path / "none.vrn", FileNotFoundError), (tmp_path, IsADirectoryError)):
        with pytest.raises(error) as caught:
            vrn.read(path)
        assert caught.value.errno and str(path) in str(caught.value)


def test_a_file_can_be_called_like_standard_input(tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    (tmp_path / "-").write_text(BOX)
    assert "box" in vrn.read("-")


@pytest.mark.parametrize("function", [vrn.read, vrn.check, lambda path: vrn.Scene().write(path)])
def test_paths_with_nul_are_refused(function):
    with pytest.raises(ValueError, match="NUL"):
        function("a\0b.vrn")


def test_pipes_are_read():
    command = "import sys, vrn; print(list(vrn.read('/dev/stdin')))"
    result = subprocess.run([sys.executable, "-c", command], input=BOX, capture_output=True, text=True, check=True)
    assert result.stdout == "['box', 'red', 'cam']\n"


def test_an_error_ends_the_text():
    with pytest.raises(vrn.ParseError) as caught:
        vrn.loads(BROKEN)
    error = caught.value
    assert (error.filename, error.line, error.column) == ("<string>", 3, 7)
    assert str(error).splitlines()[1:] == ["a.y = ;", "      ^"]
    assert [d.name for d in error.diagnostics] == ["badToken"]
    assert dict(error.scene["a"]) == {"x": 1}
    assert isinstance(error, ValueError) and isinstance(error, vrn.Error)


def test_errors_and_diagnostics_can_be_pickled():
    with pytest.raises(vrn.ParseError) as caught:
        vrn.loads(BROKEN)
    copy = pickle.loads(pickle.dumps(caught.value))
    assert (str(copy), copy.line, copy.diagnostics) == (str(caught.value), 3, caught.value.diagnostics)
    assert copy.diagnostics[0] > vrn.Diagnostic(1, 1, "error", "x", "y")


def test_warnings_are_kept_and_raise_on_request():
    text = "mesh a; a.f = float[2] {1};"
    assert [d.severity for d in vrn.loads(text).diagnostics] == ["warning"]
    with pytest.raises(vrn.DiagnosticsError):
        vrn.loads(text, strict=True)


def test_columns_count_characters():
    wide, narrow = (vrn.loads(f'mesh a; a.s = "{s}"; a.f = float[2] {{1}};').diagnostics for s in ("ää", "aa"))
    assert len(wide) == 1 and wide == narrow


def test_limits_and_catalogues():
    with pytest.raises(vrn.ParseError):
        vrn.loads("mesh a; a.f = float[100] {1};", limits=vrn.Limits(buffer_bytes=100))
    catalogue = vrn.Catalogue.loads('{"types": {"camera": {"inputs": {"fov": {"type": "Real", "default": 45.0}}}}}')
    scene = vrn.loads("camera c;", catalogue=catalogue)
    assert dict(scene["c"]) == {"fov": 45.0} and scene.catalogue.types == ("camera",)
    with pytest.raises(TypeError, match="Catalogue.read"):
        vrn.loads("camera c;", catalogue="types.json")
    with pytest.raises(ValueError, match="<string>:1:"):
        vrn.Catalogue.loads('{"types": 5}')
    assert "mesh" in vrn.Catalogue.builtin().types


def test_updates_change_what_is_there(scene, path):
    points = scene["box"]["points"]
    scene.apply("box.size = 5; remove cam;")
    assert scene["box"]["size"] == 5 and "cam" not in scene and points.shape == (8, 3)
    scene.update(path)
    assert scene["box"]["size"] == 2.5 and "cam" in scene


def test_bytes_that_are_not_utf_8_survive(tmp_path):
    data = b'mesh a;\na.s = "\xfd\xfe x";\n'
    scene = vrn.loads(data)
    assert scene["a"]["s"] == "\udcfd\udcfe x"
    scene["a"]["t"] = scene["a"]["s"]
    scene.write(tmp_path / "a.vrn")
    assert vrn.read(tmp_path / "a.vrn")["a"]["t"] == "\udcfd\udcfe x"
    assert vrn.loads(scene.dumps())["a"]["t"] == "\udcfd\udcfe x"


def test_checks_report(tmp_path):
    bad = tmp_path / "bad.vrn"
    bad.write_text(BROKEN)
    report = vrn.check(bad)
    assert not report and not report.ok and [d.name for d in report.diagnostics] == ["badToken"]
    assert '"badToken"' in report.to_sarif() and "BAD TOKEN" in report.to_json()
    catalogue = vrn.Catalogue.loads('{"types": {"mesh": {"inputs": {"other": {"type": "Real"}}}}}')
    bad.write_text("mesh a; a.oops = 1;")
    assert [d.name for d in vrn.check(bad, catalogue=catalogue).diagnostics] == ["unknownInput"]
    assert vrn.check(bad, catalogue=catalogue, ignored=["unknownInput"]).diagnostics == ()
    with pytest.raises(ValueError, match="nonsense"):
        vrn.check(bad, catalogue=catalogue, ignored=["nonsense"])


def test_texts_are_formatted():
    assert vrn.format("mesh   a;a.x=1;") == "mesh a;\na.x = 1;\n"
    with pytest.raises(vrn.ParseError):
        vrn.format('mesh a; a.s = "')


class Interrupted(Exception):
    """What the handler of the signal raises."""


@pytest.fixture
def handler():
    def handle(number, frame):
        raise Interrupted

    before = signal.signal(signal.SIGINT, handle)
    yield handle
    signal.signal(signal.SIGINT, before)


def test_ctrl_c_ends_a_read(handler):
    text = b"mesh a; a.f = float[50000000] {" + b"1.25 " * 50_000_000 + b"}; mesh last;"
    scene = vrn.Scene()
    sender = threading.Thread(target=lambda: (started.wait(), os.kill(os.getpid(), signal.SIGINT)))
    started = threading.Event()
    sender.start()
    with pytest.raises(Interrupted):
        started.set()
        scene.apply(text)
    sender.join()
    assert "last" not in scene and signal.getsignal(signal.SIGINT) is handler


def bytes_read():
    """By this process, so far."""
    with open("/proc/self/io", "rb", 0) as file:
        return int(file.read().split()[1])


def test_nothing_is_read_after_ctrl_c(tmp_path):
    path = tmp_path / "long.vrn"
    path.write_bytes(b"mesh a; a.f = float[20000000] {" + b"1.25 " * 20_000_000 + b"};")
    at_signal = []

    def handle(number, frame):
        at_signal.append(bytes_read())
        raise Interrupted

    def send():
        start = bytes_read()
        while bytes_read() < start + (1 << 20):
            pass
        os.kill(os.getpid(), signal.SIGINT)

    before = signal.signal(signal.SIGINT, handle)
    sender = threading.Thread(target=send)
    try:
        with pytest.raises(Interrupted):
            sender.start()
            vrn.read(path)
            sender.join()
        assert bytes_read() - at_signal[0] < 1 << 20
    finally:
        sender.join()
        signal.signal(signal.SIGINT, before)


def test_nothing_is_printed(tmp_path):
    code = f"""
import vrn
for text in ({BROKEN!r}, "oops", "mesh a; a.f = float[2] {{1}}; a.n |= b.c;"):
    try:
        vrn.loads(text, notices=True)
    except vrn.ParseError:
        pass
try:
    vrn.read({str(tmp_path / "none")!r})
except OSError:
    pass
"""
    result = subprocess.run([sys.executable, "-c", code], capture_output=True, check=True)
    assert (result.stdout, result.stderr) == (b"", b"")


def test_importing_needs_no_numpy(tmp_path):
    code = f"import sys, vrn; vrn.loads({BOX!r})['box']['size']; print('numpy' in sys.modules)"
    result = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, check=True)
    assert result.stdout == "False\n"


def test_threads_read_in_parallel(path):
    scenes = []
    threads = [threading.Thread(target=lambda: scenes.append(vrn.read(path).dumps())) for _ in range(8)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert len(scenes) == 8 and len(set(scenes)) == 1


@pytest.mark.parametrize("golden", sorted((ROOT / "tests/data").rglob("*.vrn"))[:200], ids=lambda p: p.name)
def test_the_command_says_the_same(golden):
    command = os.environ.get("VRN", ROOT / "build/release/vrn")
    told = subprocess.run([command, "check", "--format", "json", golden], capture_output=True, text=True)
    assert vrn.check(golden).to_json() == told.stdout


def test_nothing_is_reported_at_exit():
    code = """
import vrn
kept = vrn.loads("t a; a.x = 1; a.p = float[2] {1 2};")
node, view, edit = kept["a"], kept["a"]["p"], kept["a"].edit("p")
edit.__enter__()
cycle = [node]
cycle.append(cycle)
"""
    result = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, check=True)
    assert (result.stdout, result.stderr) == ("", "")


WITHOUT_NUMPY = """
import sys
sys.modules["numpy"] = None
import vrn
scene = vrn.loads("t a; a.p = vec2f[2] {1 2, 3 4}; a.x = 1.5;")
node = scene["a"]
print(type(node["p"]).__name__, node["p"].tolist(), node["x"])
node["p"] = node["p"]
for use in (lambda: node.edit("p").__enter__(), lambda: scene.column("a.x"), lambda: node.inputs["p"].__array__(),
            lambda: node.__setitem__("p", [[5, 6]])):
    try:
        use()
    except ImportError as error:
        print(error)
"""


def test_without_numpy_arrays_are_memoryviews():
    result = subprocess.run([sys.executable, "-c", WITHOUT_NUMPY], capture_output=True, text=True, check=True)
    lines = result.stdout.splitlines()
    assert lines[0] == "memoryview [[1.0, 2.0], [3.0, 4.0]] 1.5"
    assert len(lines) == 5 and all("pip install vrn[numpy]" in line for line in lines[1:])
