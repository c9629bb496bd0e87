"""Scenes are compared, copied and pickled, with their buffers shared or out of band."""

import copy
import multiprocessing
import pickle

import numpy as np
import pytest
import vrn
from conftest import BOX, ROOT

DEFINED = """# VRN 1
# first
define wheel; wheel.radius = 0.5; wheel.shape = float[3] {1 2 3};
wheel a; a.shape = float[2] {4 5};
wheel b;
t c; c.lists[0].x = char[2] {1 2}; c.lists[1].x = float[0] {}; c.m = mat3f[1] {1 2 3 4 5 6 7 8 9};
"""


def in_band(scene):
    return pickle.loads(pickle.dumps(scene, protocol=4))


def out_of_band(scene):
    buffers = []
    data = pickle.dumps(scene, protocol=5, buffer_callback=buffers.append)
    return pickle.loads(data, buffers=buffers)


def of_bytes(scene):
    buffers = []
    data = pickle.dumps(scene, protocol=5, buffer_callback=buffers.append)
    return pickle.loads(data, buffers=[bytes(buffer) for buffer in buffers])


def of_unaligned_bytes(scene):
    buffers = []
    data = pickle.dumps(scene, protocol=5, buffer_callback=buffers.append)
    return pickle.loads(data, buffers=[memoryview(b"x" + bytes(buffer))[1:] for buffer in buffers])


COPIES = [copy.copy, copy.deepcopy, in_band, out_of_band, of_bytes, of_unaligned_bytes]


@pytest.mark.parametrize("text", [BOX, DEFINED, "", "# only a comment\n"], ids=["box", "defined", "empty", "comment"])
@pytest.mark.parametrize("make", COPIES, ids=lambda make: make.__name__)
def test_copies_are_equal(make, text):
    scene = vrn.loads(text)
    copied = make(scene)
    assert copied is not scene and copied == scene and copied.dumps() == scene.dumps()
    copied.add("t", "new")
    assert copied != scene and "new" not in scene


@pytest.mark.parametrize("path", sorted((ROOT / "examples").glob("*.vrn")), ids=lambda path: path.name)
def test_examples_are_copied(path):
    scene = vrn.read(path)
    assert copy.copy(scene) == scene == out_of_band(scene)


@pytest.mark.parametrize("make", [copy.copy, copy.deepcopy], ids=lambda make: make.__name__)
def test_copies_share_the_memory_until_one_changes(scene, make):
    copied = make(scene)
    assert np.shares_memory(copied["box"]["points"], scene["box"]["points"])
    with copied["box"].edit("points") as points:
        points += 1
    assert scene["box"]["points"][0].tolist() == [0, 0, 0] and copied["box"]["points"][0].tolist() == [1, 1, 1]


def test_copies_of_a_scene_that_is_edited_are_snapshots(scene):
    with scene["box"].edit("points") as points:
        copied = copy.copy(scene)
        points[0] = 7
    assert copied["box"]["points"][0].tolist() == [0, 0, 0]


def test_no_byte_of_a_buffer_is_in_the_stream():
    node = vrn.Scene().add("t", "a")
    node["p"] = np.random.default_rng(1).random((100_000, 3), np.float32)
    buffers = []
    data = pickle.dumps(node.scene, protocol=5, buffer_callback=buffers.append)
    assert len(data) < 1000 and sum(buffer.raw().nbytes for buffer in buffers) == 1_200_000
    restored = pickle.loads(data, buffers=buffers)
    assert np.shares_memory(restored["a"]["p"], node["p"])


def test_other_parts_of_a_scene_are_kept():
    catalogue = vrn.Catalogue.loads('{"types": {"mesh": {"inputs": {"size": {"type": "Real"}}}}}')
    scene = vrn.loads("mesh a; a.f = float[2] {1};", catalogue=catalogue, limits=vrn.Limits(array_elements=7))
    for make in COPIES:
        copied = make(scene)
        assert copied.catalogue.types == ("mesh",) and copied.limits.array_elements == 7
        assert copied.diagnostics == scene.diagnostics != ()
    assert pickle.loads(pickle.dumps(vrn.Catalogue.builtin())).types == vrn.Catalogue.builtin().types


@pytest.mark.parametrize("make", COPIES, ids=lambda make: make.__name__)
def test_marks_are_kept(scene, make):
    scene["box"].inputs["label"].enumeration = ["a box", "another"]
    scene["box"].inputs["material"].link_only = True
    copied = make(scene)
    assert copied["box"].inputs["label"].enumeration == ("a box", "another")
    assert copied["box"].inputs["material"].link_only and not copied["box"].inputs["size"].link_only


@pytest.mark.parametrize(("make", "error"), [(copy.copy, ValueError), (pickle.dumps, pickle.PicklingError)])
def test_values_that_no_text_sets_are_not_lost_silently(scene, make, error):
    scene["box"].inputs["size"].locked = True
    with pytest.raises(error, match="box.size"):
        make(scene)


@pytest.mark.parametrize(
    "make", [lambda s: s["box"], lambda s: s["box"].inputs["size"], lambda s: s["red"].outputs["outColor"]]
)
def test_parts_of_a_scene_cannot_be_pickled(scene, make):
    with pytest.raises(TypeError, match="pickle"):
        pickle.dumps(make(scene))


@pytest.mark.parametrize(
    "buffers",
    [((99, "float", b"1234"),), ((0, "float", b"123"),), ((0, "nothing", b"1234"),), ((0, "double", b"12345678"),)],
)
def test_damaged_pickles_are_refused(buffers):
    function, (text, _, *rest) = vrn.loads("t a; a.p = float[1] {1};").__reduce_ex__(5)
    with pytest.raises(ValueError, match="pickle"):
        function(text, buffers, *rest)
    with pytest.raises(ValueError, match="pickle"):
        function(b"t a; a.", (), *rest)


def test_scenes_are_equal_if_diff_finds_nothing(scene):
    other = vrn.loads(BOX)
    assert scene == other and not scene != other and scene != 5 and scene is not None
    other["box"]["points"] = other["box"]["points"] + np.float32(1e-6)
    assert scene != other
    with pytest.raises(TypeError, match="unhashable"):
        hash(scene)


def size_of(scene):
    return scene["box"]["size"], scene["box"]["points"].sum()


def test_processes_get_scenes(scene):
    with multiprocessing.get_context("spawn").Pool(1) as pool:
        assert pool.map(size_of, [scene]) == [(2.5, 12)]
