"""Views are snapshots, edits write in place, setting copies and adopting does not."""

import gc
import weakref

import numpy as np
import pytest
import vrn

KEYWORDS = """char byte int16 int32 int64 uint16 uint32 uint64 float double vec2f vec2d vec2i vec2u vec3f vec3d vec3i vec3u
vec4f vec4d vec4i vec4u pos2f pos2d pos2i pos3f pos3d pos3i quatf quatd rgbf rgbd rgb8 rgbaf rgbad rgba8 mat3f mat3d mat3i
mat4f mat4d mat4i hsvf hsvd hslf hsld argb8 colorref""".split()


def test_there_are_48_types():
    assert len(KEYWORDS) == 48


@pytest.mark.parametrize("keyword", KEYWORDS)
def test_every_type_of_element(keyword):
    scene = vrn.Scene()
    node = scene.add("t", "a")
    input = node.add("b", f"{keyword}[]")
    shape = (5, *input.shape[1:])
    values = np.arange(np.prod(shape), dtype=input.dtype).reshape(shape)
    node["b"] = values
    assert node["b"].dtype == values.dtype and node["b"].shape == shape and not node["b"].flags.writeable
    again = vrn.loads(scene.dumps())
    np.testing.assert_array_equal(again["a"]["b"], values)
    assert again["a"].inputs["b"].type == f"{keyword}[]"


def test_views_share_the_memory(scene):
    box = scene["box"]
    first, second = box["points"], box["points"]
    assert np.shares_memory(first, second) and not first.flags.owndata
    with pytest.raises(ValueError, match="read-only"):
        first[0] = 1
    assert np.shares_memory(first, np.asarray(box.inputs["points"]))
    assert np.shares_memory(first, np.from_dlpack(box.inputs["points"]))
    assert memoryview(box.inputs["points"].buffer).shape == (8, 3)
    assert np.array(box.inputs["points"], dtype="f8").dtype == np.float64


def test_views_outlive_everything(scene):
    box = scene["box"]
    view = box["points"]
    before = view.copy()
    box["points"] = np.zeros((3, 3))
    np.testing.assert_array_equal(view, before)
    faces = box["faces"]
    scene.apply("remove box;")
    del scene, box
    gc.collect()
    np.testing.assert_array_equal(view, before)
    assert faces.tolist() == [0, 1, 2, 3]


def test_edits_write_in_place(scene):
    box = scene["box"]
    with box.edit("points") as points:
        address = points.ctypes.data
        points *= 2
    assert box["points"].max() == 2 and box["points"].ctypes.data == address
    assert not points.flags.writeable
    snapshot = box["points"]
    with box.inputs["points"].edit() as points:
        points[:] = 7
    assert snapshot.max() == 2 and box["points"].min() == 7
    with pytest.raises(TypeError, match="Real, not a Buffer"), box.edit("size"):
        pass


def test_a_buffer_is_edited_once_at_a_time(scene):
    box = scene["box"]
    first = box.edit("points")
    with first as points:
        with pytest.raises(RuntimeError, match="edited"), box.edit("points"):
            pass
        with pytest.raises(RuntimeError), first:
            pass
        points[0] = 5
    assert box["points"][0].tolist() == [5, 5, 5]
    with box.edit("points") as points:
        points[0] = 6
    assert box["points"][0].tolist() == [6, 6, 6]


def test_an_edit_ends_once(scene):
    edit = scene["box"].edit("points")
    with pytest.raises(RuntimeError):
        edit.__exit__(None, None, None)
    with edit:
        pass
    with pytest.raises(RuntimeError):
        edit.__exit__(None, None, None)


def test_views_taken_during_an_edit_are_snapshots(scene):
    box = scene["box"]
    with box.edit("points") as points:
        points[0] = 5
        snapshot = box["points"]
        points[0] = 6
        assert snapshot[0].tolist() == [5, 5, 5]
    assert snapshot[0].tolist() == [5, 5, 5] and box["points"][0].tolist() == [6, 6, 6]


def test_an_edit_of_a_buffer_that_is_replaced_says_so(scene):
    box = scene["box"]
    with pytest.raises(RuntimeError, match="points"), box.edit("points") as points:
        box["points"] = np.zeros((1, 3))
        points[0] = 5
    assert box["points"].tolist() == [[0, 0, 0]]


def test_an_edit_ends_when_its_block_raises(scene):
    box = scene["box"]
    with pytest.raises(ZeroDivisionError), box.edit("points") as points:
        points[0] = 5
        1 / 0
    assert not points.flags.writeable and box["points"][0].tolist() == [5, 5, 5]


def test_setting_copies_and_converts(scene):
    box = scene["box"]
    array = np.arange(6.0).reshape(2, 3)
    box["points"] = array
    array[:] = 0
    assert box["points"].tolist() == [[0, 1, 2], [3, 4, 5]] and box["points"].dtype == np.float32
    box["points"] = [[1, 2, 3]]
    assert box["points"].tolist() == [[1, 2, 3]]
    box["points"] = np.asfortranarray(np.arange(6.0).reshape(2, 3))[::-1]
    assert box["points"].tolist() == [[3, 4, 5], [0, 1, 2]]
    box["faces"] = np.array([7, 8], np.int64)
    assert box["faces"].dtype == np.int32
    box["points"] = []
    assert box["points"].shape == (0, 3)


@pytest.mark.parametrize(
    ("name", "array", "error"),
    [("faces", np.array([2**40]), OverflowError), ("faces", np.array([1.5]), TypeError),
     ("points", np.zeros((2, 2)), ValueError), ("points", np.zeros(6), ValueError), ("points", np.array(["a"]), TypeError),
     ("points", np.zeros((2, 3), complex), TypeError), ("faces", np.array([-1], np.int64).astype(np.uint64), OverflowError)],
)  # fmt: skip
def test_arrays_that_do_not_fit_are_refused(scene, name, array, error):
    before = scene.dumps()
    with pytest.raises(error):
        scene["box"][name] = array
    assert scene.dumps() == before


def test_new_buffers_have_the_type_of_the_array():
    node = vrn.Scene().add("t", "a")
    for array, type in ((np.zeros((2, 3), "f4"), "vec3f[]"), (np.zeros(2), "double[]"), (np.zeros((1, 4, 4)), "mat4d[]"),
                        (np.zeros((2, 4), "u1"), "rgba8[]"), (np.zeros(3, "i2"), "int16[]")):  # fmt: skip
        node["x"] = array
        assert node.inputs["x"].type == type
        del node["x"]
    with pytest.raises(TypeError, match="say which"):
        node["x"] = np.zeros((2, 7))


def test_adopted_arrays_are_not_copied():
    node = vrn.Scene().add("t", "a")
    array = np.arange(30, dtype=np.float32).reshape(10, 3)
    node["points"] = vrn.adopt(array)
    assert np.shares_memory(array, node["points"]) and not array.flags.writeable
    before = array.copy()
    with node.edit("points") as points:
        points += 1
    np.testing.assert_array_equal(array, before)
    assert node["points"][0, 0] == 1
    with pytest.raises(TypeError, match="without a copy"):
        node["points"] = vrn.adopt(np.zeros((2, 3)))
    with pytest.raises(TypeError):
        vrn.adopt(5)


@pytest.mark.parametrize(
    ("keyword", "make"),
    [("float[]", lambda: np.zeros(4)), ("vec3f[]", lambda: np.zeros((3, 4), np.float32).T),
     ("vec3f[]", lambda: np.zeros((4, 2), np.float32)), ("float[]", lambda: np.zeros(17, np.uint8)[1:].view(np.float32))],
    ids=["type", "order", "shape", "alignment"],
)  # fmt: skip
def test_arrays_that_are_not_adopted_stay_writable(keyword, make):
    node = vrn.Scene().add("t", "a")
    node.add("x", keyword)
    array = make()
    with pytest.raises((TypeError, ValueError)):
        node["x"] = vrn.adopt(array)
    assert array.flags.writeable and len(node["x"]) == 0


def test_adopted_arrays_are_released():
    class Array(np.ndarray):
        pass

    array = np.zeros((4, 3), np.float32).view(Array)
    gone = weakref.ref(array)
    node = vrn.Scene().add("t", "a")
    node["p"] = vrn.adopt(array)
    del array
    gc.collect()
    assert gone() is not None
    del node["p"]
    gc.collect()
    assert gone() is None
