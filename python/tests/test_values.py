"""Values are Python's own, and inputs keep their types."""

import math
import pickle
import subprocess
import sys

import numpy as np
import pytest
import vrn


def test_values_have_the_types_of_python(scene):
    box = scene["box"]
    assert {name: type(value).__name__ for name, value in box.items()} == {
        "points": "ndarray", "faces": "ndarray", "size": "float", "count": "int", "visible": "bool", "label": "str",
        "centre": "Vec3", "tint": "Rgba", "uvsets": "Input", "weights": "Input", "material": "Output",
    }  # fmt: skip
    assert box["centre"] == (1, 2, 3) and box["centre"].z == 3 and box["tint"].g == 0.5
    assert list(box["weights"]) == [1.0, 2.0, 3.0] and box["weights"][-1] == 3.0
    assert box["uvsets"][0]["name"] == "uv0" and list(box["uvsets"][0]) == ["name", "coords"]
    assert scene["cam"]["target"] == box and box["material"].label == "red.outColor"


@pytest.mark.parametrize(
    "value",
    [vrn.Vec2(1, 2), vrn.Vec3(1, 2, 3), vrn.Vec4(1, 2, 3, 4), vrn.Pos2(1, 2), vrn.Pos3(1, 2, 3), vrn.Quat(1, 0, 0, 0),
     vrn.Rgba(1, 0, 0), vrn.Mat3((1, 2, 3), (4, 5, 6), (7, 8, 9)), vrn.Mat4(*np.arange(16).reshape(4, 4)),
     True, -5, 2**64 - 1, 2.5, math.inf, "ä\"\\\n", None],
    ids=repr,
)  # fmt: skip
def test_values_come_back(value):
    scene = vrn.Scene()
    node = scene.add("thing", "a")
    node["x"] = value
    assert node["x"] == value and type(node["x"]) is type(value)
    again = vrn.loads(scene.dumps())
    assert again["a"].get("x") == value
    assert pickle.loads(pickle.dumps(value)) == value


@pytest.mark.parametrize(
    ("name", "value", "result"),
    [("size", 3, 3.0), ("size", True, 1.0), ("count", 4.0, 4), ("count", np.int16(7), 7), ("size", np.float32(0.5), 0.5),
     ("visible", 0, False), ("centre", [4, 5, 6], (4, 5, 6)), ("centre", np.array([1.0, 2, 3]), (1, 2, 3)),
     ("centre", 2.0, (2, 2, 2)), ("tint", (1, 0, 0), (1, 0, 0, 1)), ("centre", vrn.Pos3(7, 8, 9), (7, 8, 9)),
     ("count", np.bool_(True), 1)],
)  # fmt: skip
def test_values_are_converted_if_nothing_is_lost(scene, name, value, result):
    box = scene["box"]
    kind = type(box[name])
    box[name] = value
    assert box[name] == result and type(box[name]) is kind


@pytest.mark.parametrize(
    ("name", "value", "error", "words"),
    [("size", "x", TypeError, "box.size.*Real.*String"), ("count", 2.5, TypeError, "Int.*Real"),
     ("label", 5, TypeError, "String.*Int"), ("label", "a\0b", ValueError, "NUL"), ("centre", [1, 2], ValueError, "3 numbers"),
     ("count", 2**64, OverflowError, "int"), ("count", 2**63, OverflowError, "Int"), ("size", None, TypeError, "None"),
     ("points", "text", TypeError, "Buffer.*str"), ("weights", 5, TypeError, "Array.*int"), ("centre", {}, TypeError, "Vec3.*dict"),
     ("size", object(), TypeError, "Real.*object"), ("new", object(), TypeError, "add"), ("new", (1, 2, 3), TypeError, "add")],
)  # fmt: skip
def test_other_values_are_refused(scene, name, value, error, words):
    before = scene.dumps()
    with pytest.raises(error, match=words):
        scene["box"][name] = value
    assert scene.dumps() == before


def test_inputs_are_added_with_a_type(scene):
    box = scene["box"]
    box.add("axis", "Vec3", (0, 1, 0))
    box.add("normals", "vec3f[]", np.ones((8, 3)))
    box.add("names", "String[]", ["a", "b"])
    assert box["axis"] == vrn.Vec3(0, 1, 0) and box["normals"].dtype == np.float32
    assert list(box["names"]) == ["a", "b"] and box.inputs["names"].type == "String[]"
    with pytest.raises(ValueError, match="already"):
        box.add("axis", "Real")
    with pytest.raises(ValueError, match="unknown type 'Foo'"):
        box.add("foo", "Foo")
    with pytest.raises(TypeError):
        box.add("bad", "Real", "text")
    assert "bad" not in box


def test_objects_and_arrays_are_changed(scene):
    box = scene["box"]
    box["uvsets"] = [{"name": "a"}, {"name": "b", "scale": 2.0}]
    assert [s["name"] for s in box["uvsets"]] == ["a", "b"] and box["uvsets"][1]["scale"] == 2.0
    box["uvsets"][0]["extra"] = vrn.Vec2(1, 2)
    del box["uvsets"][1]["scale"]
    box["weights"].append(4)
    del box["weights"][0]
    assert list(box["weights"]) == [2.0, 3.0, 4.0] and list(box["uvsets"][1]) == ["name"]
    with pytest.raises(IndexError):
        box["weights"][3]
    with pytest.raises(KeyError, match="did you mean 'name'"):
        box["uvsets"][0]["namx"]
    del box["size"]
    assert "size" not in box


def test_links_are_made_and_cleared(scene):
    cam, red = scene["cam"], scene["red"]
    cam["image"] = red.outputs["outColor"]
    assert cam["image"] == red.outputs["outColor"] and cam.inputs["image"].connection.node == red
    cam.inputs["image"].connection = None
    assert cam["image"] is None
    cam["target"] = None
    assert cam["target"] is None
    other = vrn.loads("mesh m;")
    for name, value in (("target", other["m"]), ("image", other["m"].outputs["o"])):
        with pytest.raises(ValueError, match="another scene"):
            cam[name] = value
    with pytest.raises(TypeError, match="Real.*Node"):
        cam["fov"] = red
    for wrong in (red, "red.outColor", 5):
        with pytest.raises(TypeError, match="Output"):
            cam.inputs["image"].connection = wrong


def test_inputs_tell_what_they_are(scene):
    inputs = scene["box"].inputs
    assert inputs["points"].type == "vec3f[]" and inputs["points"].dtype == "float32"
    assert inputs["points"].shape == (8, 3) and inputs["points"].nbytes == 96
    assert inputs["uvsets"].children[0].children["name"].label == "box.uvsets[0].name"
    assert inputs["size"].node == scene["box"] and inputs["size"].parent is None
    labels = [i.label for i in scene["box"].walk()]
    assert labels[8:12] == ["box.uvsets", "box.uvsets[0]", "box.uvsets[0].name", "box.uvsets[0].coords"]
    inputs["label"].enumeration = ["a", "b"]
    assert inputs["label"].enumeration == ("a", "b")


def test_scenes_are_mappings(scene):
    assert list(scene) == ["box", "red", "cam"] and len(scene) == 3 and "box" in scene and 5 not in scene
    assert [n.name for n in scene.values()] == list(scene.keys()) and scene.get("none") is None
    assert [n.name for n in scene.nodes(type="paint")] == ["red"]
    with pytest.raises(KeyError, match="did you mean 'box'"):
        scene["bax"]
    with pytest.raises(ValueError, match="already"):
        scene.add("mesh", "box")
    scene["box"].name = "chest"
    assert scene["cam"]["target"].name == "chest" and "box" not in scene


def test_removed_objects_say_so(scene):
    box, points, output = scene["box"], scene["box"].inputs["points"], scene["red"].outputs["outColor"]
    walk = box.walk()
    next(walk)
    scene.apply("remove box; remove red;")
    assert not (box.is_attached or points.is_attached or output.is_attached)
    for use in (lambda: box["size"], lambda: box.name, lambda: points.value, lambda: output.label, lambda: next(walk),
                lambda: box.inputs, lambda: points.edit().__enter__(), lambda: box.__setitem__("a", 1)):  # fmt: skip
        with pytest.raises(vrn.RemovedError):
            use()
    assert "removed" in repr(box) and "removed" in repr(points) and "removed" in repr(output)


def test_nodes_keep_their_scene():
    box = vrn.loads("mesh box; box.p = float[2] {1 2};")["box"]
    assert box["p"].tolist() == [1, 2] and box.scene["box"] == box


def test_paths_select(scene):
    assert scene.get("box.uvsets[0].name") == "uv0" and scene.get("box.size") == 2.5
    assert scene.query("box.points[1]")["box.points[1]"].tolist() == [1, 0, 0]
    assert scene.query("*.material") == {"box.material": scene["red"].outputs["outColor"]}
    assert scene.query("box.weights[1:]") == {"box.weights[1:3]": [2.0, 3.0]}
    for wrong in ("box..x", "[", "box.points["):
        with pytest.raises(ValueError, match="malformed"):
            scene.query(wrong)
    with pytest.raises(ValueError, match="query"):
        scene.get("*.size")


@pytest.mark.parametrize(
    ("values", "expected"),
    [(["1", "2"], np.array([1, 2])), (["1", "2.5"], np.array([1, 2.5])), (["true", "false"], np.array([True, False])),
     (["true", "3"], np.array([1, 3])), (["vec2(1 2)", "vec2(3 4)"], np.array([[1, 2], [3, 4.0]])),
     (["\"a\"", "\"b\""], np.array(["a", "b"], object)), (["1", "null", "2"], np.array([1, np.nan, 2])),
     (["n.o", "n.o"], np.array(["n.o", "n.o"], object))],
)  # fmt: skip
def test_columns(values, expected):
    text = "t n;" + "".join(
        f"t a{i}; a{i}.x {'|=' if 'n.' in v else '='} {v};" for i, v in enumerate(values) if v != "null"
    )
    scene = vrn.loads(text)
    for i, v in enumerate(values):
        if v == "null":
            scene.add("t", f"a{i}").add("x", "Null")
    column = scene.column("a*.x")
    assert column.dtype == expected.dtype
    order = [f"a{i}" for i in range(len(values))]
    got = dict(zip([p.split(".")[0] for p in scene.query("a*.x")], column.tolist(), strict=True))
    np.testing.assert_array_equal([got[n] for n in order], expected.tolist())


def test_elements_are_counted(scene):
    assert scene.get("box.points.count") == 8 and scene.query("*.weights.count") == {"box.weights.count": 3}
    assert scene.column("*.*.count").tolist() == [8, 4, 1, 3]


def test_numbers_of_columns_are_numbers():
    column = vrn.loads("t a; a.x = 1.5; t b; b.x = 3.5; t c; c.y = 1;").column("*.x")
    for number in column.max(), column.sum(), column[0], np.add(column, 1)[0], *column:
        assert type(number) is np.float64
    assert (column > 1).any() is np.True_ and column.shape == (2,)
    for array in column > 1, column[:1], column * 2, column.copy(), -column, column[[0]]:
        assert type(array) is np.ndarray


def test_columns_need_a_common_type():
    scene = vrn.loads('t a; a.x = 1; t b; b.x = "s"; t c; c.x = float[1] {1};')
    for path in ("*.x", "c.x"):
        with pytest.raises(TypeError, match="column"):
            scene.column(path)
    assert scene.column("none.*").size == 0


def test_columns_find_inputs_at_any_place():
    texts = ["x = 0; .y = 1", "y = 2; .x = 3", "y = 4", "x.y = 5; .y = 6", "y = 7; .x.y = 8; .x.x = 9", "z = 0", "x = 10"]
    scene = vrn.loads("".join(f"t n{i}: .{text};" for i, text in enumerate(texts)))
    assert scene.column("*.y").tolist() == [1, 2, 4, 6, 7]
    assert scene.column("n*.x.y").tolist() == [5, 8] and scene.column("*.x.*").tolist() == [5, 8, 9]
    assert list(scene.query("n?.z")) == ["n5.z"] and not scene.query("n?x.z")


def test_columns_round_no_integers():
    scene = vrn.loads("t a; t b; a.x = 0.5;")
    scene["b"]["x"] = 2**53 + 1
    with pytest.raises(TypeError, match="2\\*\\*53.*query"):
        scene.column("*.x")


def test_arrays_and_buffers_contain_values(scene):
    box = scene["box"]
    assert 2.0 in box["weights"] and 2.5 not in box["weights"] and "name" in box["uvsets"][0]
    assert 3 in box.inputs["faces"] and 4 not in box.inputs["faces"]
    assert box.inputs["name" if "name" in box else "faces"][1] == 1
    assert box.inputs["weights"].children[0] in box.inputs["weights"].children


@pytest.mark.parametrize("name", [5, None, b"x", ("x",)], ids=repr)
def test_names_are_texts(scene, name):
    assert name not in scene and name not in scene["box"]
    assert scene["box"].get(name) is None
    with pytest.raises(TypeError, match="str"):
        scene[name]
    with pytest.raises(TypeError, match="str"):
        scene["box"][name] = 1
    with pytest.raises(TypeError, match="str"):
        scene.add("t", name)


def test_walks_that_were_not_made_by_a_node_are_refused():
    program = """
from vrn import _vrn
class Made(_vrn.Walk):
    def __init__(self): pass
for walk in _vrn.Walk.__new__(_vrn.Walk), Made():
    try: next(walk)
    except TypeError: print("refused")
"""
    result = subprocess.run([sys.executable, "-W", "ignore", "-c", program], capture_output=True, text=True)
    assert (result.returncode, result.stdout) == (0, "refused\nrefused\n"), result.stderr
