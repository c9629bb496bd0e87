"""An assignment happens as a whole or not at all, also if its value runs code."""

import array

import numpy as np
import pytest
import vrn


def looped_list():
    value = []
    value.append(value)
    return value


def looped_dict():
    value = {"a": 1}
    value["b"] = value
    return value


FAILURES = {
    "list in itself": ("new", looped_list, RecursionError),
    "dict in itself": ("new", looped_dict, RecursionError),
    "dict in itself in an array": ("uvsets", lambda: [looped_dict()], RecursionError),
    "last element": ("weights", lambda: [4.0, 5.0, "x"], TypeError),
    "last member": ("new", lambda: {"a": 1, "b": object()}, TypeError),
    "member of an element": ("uvsets", lambda: [{"name": "uv"}, {"name": object()}], TypeError),
    "member that is no name": ("new", lambda: {"a": 1, 5: 2}, TypeError),
    "integers beyond reals": ("size", lambda: 2**53 + 1, OverflowError),
    "integers beyond reals, unsigned": ("size", lambda: 2**64 - 1, OverflowError),
    "integers beyond vectors": ("centre", lambda: [1, 2**53 + 1, 3], OverflowError),
    "node of another scene": ("weights", lambda: vrn.Scene().add("t", "a"), TypeError),
}


@pytest.mark.parametrize("case", FAILURES)
def test_what_fails_changes_nothing(scene, case):
    name, make, error = FAILURES[case]
    before = scene.dumps()
    with pytest.raises(error):
        scene["box"][name] = make()
    assert scene.dumps() == before


@pytest.mark.parametrize("element", ["x", object(), 2**53 + 1], ids=repr)
def test_what_cannot_be_appended_changes_nothing(scene, element):
    before = scene.dumps()
    with pytest.raises((TypeError, OverflowError)):
        scene["box"]["weights"].append(element)
    with pytest.raises((TypeError, OverflowError)):
        scene["box"].add("other", "Real[]", [1.0, element])
    assert scene.dumps() == before


@pytest.mark.parametrize("name", ["points", "size", "label", "centre", "uvsets", "weights", "material"])
def test_values_can_be_assigned_to_themselves(scene, name):
    box, before = scene["box"], scene.dumps()
    box[name] = box[name]
    assert scene.dumps() == before
    box[name] = box.inputs[name]
    assert scene.dumps() == before


@pytest.mark.parametrize("value", [2**53, -(2**53), 2**63, 2**54], ids=repr)
def test_integers_that_are_exact_reals_fit(scene, value):
    scene["box"]["size"] = value
    assert scene["box"]["size"] == value


@pytest.mark.parametrize(
    "value",
    [
        array.array("f", [1, 2, 3]),
        array.array("d", [1, 2, 3]),
        memoryview(array.array("f", [1, 2, 3])),
        (1, 2, 3),
        range(1, 4),
    ],
    ids=lambda value: type(value).__name__,
)
def test_sequences_of_other_kinds_are_values(scene, value):
    box = scene["box"]
    box["weights"] = value
    box["centre"] = value
    box.add("numbers", "float[]", value)
    assert list(box["weights"]) == [1, 2, 3] and box["centre"] == (1, 2, 3) and box["numbers"].tolist() == [1, 2, 3]


def test_bytes_are_buffers_of_bytes():
    node = vrn.Scene().add("t", "a")
    for name, value in {"a": b"\x00\xff", "b": bytearray(b"\x00\xff")}.items():
        node.add(name, "byte[]", value)
        assert node[name].dtype == np.uint8 and node[name].tolist() == [0, 255]


class Number:
    """A number that calls something while it is converted."""

    def __init__(self, call):
        self._call = call

    def __float__(self):
        self._call()
        return 4.0


class Index(Number):
    def __index__(self):
        return int(float(self))


class Array(Number):
    def __array__(self, dtype=None, copy=None):
        return np.full(3, int(float(self)), dtype or np.int32)

    def __len__(self):
        return 3

    def __getitem__(self, index):
        return self.__array__()[index]


@pytest.mark.parametrize(("name", "kind"), [("size", Number), ("count", Index), ("weights", Array), ("faces", Array)])
def test_code_of_a_value_may_remove_the_input(scene, name, kind):
    box = scene["box"]

    def remove():
        if name in box:
            del box[name]

    with pytest.raises(vrn.RemovedError):
        box[name] = kind(remove)
    assert name not in box


def test_code_of_a_value_may_change_the_type(scene):
    box = scene["box"]

    def change():
        del box["size"]
        box["size"] = "text"

    size = box.inputs["size"]
    with pytest.raises(vrn.RemovedError):
        size.value = Number(change)
    assert box["size"] == "text"


def test_code_of_a_value_may_clear_the_array(scene):
    box = scene["box"]

    def clear():
        box["weights"] = []

    with pytest.raises(vrn.RemovedError):
        box["weights"][2] = Number(clear)
    assert list(box["weights"]) == []
    box["weights"].append(Number(clear))
    assert list(box["weights"]) == [4.0]


NO_NAMES = ["", "1a", "two words", "a-b", "a.b", "a[0]", "true", "False", "NULL", "ä", "a\n", "\udcff"]


@pytest.mark.parametrize("name", NO_NAMES, ids=ascii)
def test_names_that_no_text_can_say_are_refused(scene, name):
    before = scene.dumps()
    box = scene["box"]
    for make in (
        lambda: scene.add("t", name),
        lambda: scene.add(name, "a"),
        lambda: scene.define(name),
        lambda: setattr(box, "name", name),
        lambda: box.add(name, "Real"),
        lambda: box.__setitem__(name, 1.0),
        lambda: box.__setitem__("new", {"a": 1, name: 2}),
        lambda: box.__setitem__("new", [{"a": {name: 2}}]),
        lambda: box.inputs["uvsets"].children[0].add(name, "Real"),
    ):
        with pytest.raises(ValueError, match="is not a name: use letters, digits and _"):
            make()
    assert scene.dumps() == before


@pytest.mark.parametrize("name", [name for name in NO_NAMES if name != "a[0]"] + ["a[", "a[x]", "a[0]b"], ids=ascii)
def test_outputs_that_no_text_can_say_are_refused(scene, name):
    with pytest.raises(ValueError, match="is not a name"):
        scene["box"].outputs[name]
    assert name not in scene["box"].outputs


@pytest.mark.parametrize("name", ["a", "_", "A1", "remove", "define", "with", "nullable", "float", "vec3", "x" * 1000])
def test_names_that_texts_can_say_are_taken(name):
    scene = vrn.Scene()
    node = scene.add(name, name)
    node[name] = {name: 1.0}
    node["link"] = node.outputs[name + "[0][1]"]
    assert vrn.loads(scene.dumps()) == scene
