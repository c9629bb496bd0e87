"""Random steps on a scene, beside a model of plain dicts: what the package holds is never another's or freed memory.

The number of steps is moderate here. `make fuzz-python` takes many, with the module under the address sanitizer.
"""

import copy
import gc
import os
import pickle
import threading

import numpy as np
import pytest
import vrn
from hypothesis import HealthCheck, settings
from hypothesis import strategies as st
from hypothesis.stateful import Bundle, RuleBasedStateMachine, consumes, invariant, multiple, rule

NAMES = st.sampled_from("abcdef")
PLAIN = st.one_of(
    st.booleans(),
    st.integers(-(2**63), 2**64 - 1),
    st.floats(allow_nan=False),
    st.text(st.characters(exclude_characters="\0", exclude_categories=["Cs"]), max_size=40),
    st.builds(vrn.Vec3, *[st.floats(-1e6, 1e6)] * 3),
)
ARRAYS = st.builds(
    lambda dtype, shape, seed: np.random.default_rng(seed).integers(0, 100, shape).astype(dtype),
    st.sampled_from([np.float32, np.float64, np.int32, np.uint8]),
    st.one_of(st.tuples(st.integers(0, 50)), st.tuples(st.integers(0, 20), st.sampled_from([2, 3]))),
    st.integers(0, 2**32),
)


def vectors(array):
    """The keyword of the buffer for an array of numbers or vectors."""
    scalar = {"float32": "float", "float64": "double", "int32": "int32", "uint8": "byte"}[array.dtype.name]
    letter = {"float32": "f", "float64": "d", "int32": "i"}.get(array.dtype.name)
    if array.ndim == 1:
        return f"{scalar}[]"
    return f"vec{array.shape[1]}{letter}[]" if letter else None


class SceneMachine(RuleBasedStateMachine):
    views = Bundle("views")
    references = Bundle("references")

    def __init__(self):
        super().__init__()
        self.scene = vrn.Scene()
        self.model = {}
        self.kept = []  # views with what they showed when they were taken

    def node_with(self, name, array=False):
        """A node and the name of one of its inputs, which is a buffer or a plain value; the first after `name`."""
        inputs = [
            (node, input)
            for node, values in sorted(self.model.items())
            for input, value in values.items()
            if isinstance(value, np.ndarray) == array
        ]
        return next((found for found in inputs if found >= (name, "")), inputs[0] if inputs else (None, None))

    @rule(name=NAMES)
    def add_node(self, name):
        if name in self.model:
            with pytest.raises(ValueError, match="already"):
                self.scene.add("t", name)
        else:
            self.scene.add("t", name)
            self.model[name] = {}

    @rule(name=NAMES, target=references)
    def hold(self, name):
        if name not in self.model:
            return multiple()
        node = self.scene[name]
        return (node, list(node.inputs.values()))

    @rule(held=references)
    def use_what_is_held(self, held):
        node, inputs = held
        if node.is_attached:
            assert node.scene[node.name] == node  # of an earlier scene, perhaps
        else:
            with pytest.raises(vrn.RemovedError):
                node.inputs
        for input in inputs:
            if input.is_attached:
                assert input.node == node and input.value is not None or input.type == "Null"
            else:
                with pytest.raises(vrn.RemovedError):
                    input.value

    @rule(held=consumes(references))
    def let_go(self, held):
        del held

    @rule(name=NAMES)
    def remove_node(self, name):
        if name in self.model:
            del self.scene[name], self.model[name]

    @rule(name=NAMES, input=NAMES, value=PLAIN)
    def set_plain(self, name, input, value):
        if name not in self.model:
            return
        node, values = self.scene[name], self.model[name]
        keeps_type = input in values and type(values[input]) is type(value) is not int  # large integers are unsigned
        if input in values and not keeps_type:
            del node[input], values[input]
        node[input] = value
        values[input] = value

    @rule(name=NAMES, input=NAMES, array=ARRAYS, adopted=st.booleans())
    def set_array(self, name, input, array, adopted):
        keyword = vectors(array)
        if name not in self.model or keyword is None:
            return
        node, values = self.scene[name], self.model[name]
        if input in values:
            del node[input], values[input]
        node.add(input, keyword, vrn.adopt(array) if adopted else array)
        values[input] = array.copy()

    @rule(name=NAMES, number=st.integers(0, 50))
    def replace_array(self, name, number):
        name, input = self.node_with(name, array=True)
        if name:
            array = self.model[name][input]
            values = np.full((number, *array.shape[1:]), number % 7, array.dtype)
            self.scene[name][input] = values
            self.model[name][input] = values

    @rule(name=NAMES)
    def view(self, name):
        name, input = self.node_with(name, array=True)
        if name:
            self.kept.append((self.scene[name][input], self.model[name][input].copy()))

    @rule(number=st.integers(0, 9))
    def drop_views(self, number):
        del self.kept[number:]
        gc.collect()

    @rule(number=st.integers(0, 9))
    def drop_views_on_a_thread(self, number):
        dropped = [view for view, _ in self.kept[number:]]
        del self.kept[number:]
        thread = threading.Thread(target=dropped.clear)
        thread.start()
        self.scene.dumps()
        thread.join()

    @rule(name=NAMES, number=st.integers(0, 100), fails=st.booleans())
    def edit(self, name, number, fails):
        name, input = self.node_with(name, array=True)
        if not name:
            return
        try:
            with self.scene[name].edit(input) as array:
                array[: number % 8] = number
                if fails:
                    raise ZeroDivisionError
        except ZeroDivisionError:
            pass
        changed = self.model[name][input].copy()
        changed[: number % 8] = number
        self.model[name][input] = changed

    @rule(name=NAMES)
    def edit_what_is_removed(self, name):
        name, input = self.node_with(name, array=True)
        if not name:
            return
        with pytest.raises(RuntimeError), self.scene[name].edit(input) as array:
            del self.scene[name]
            array[:] = 1
        del self.model[name]

    @rule(name=NAMES)
    def remove_input(self, name):
        name, input = self.node_with(name)
        if name:
            del self.scene[name][input], self.model[name][input]

    @rule(name=NAMES, number=st.integers(-100, 100))
    def apply(self, name, number):
        self.scene.apply(f"remove {name}; t {name}; {name}.x = {number}; {name}.y = float[2] {{1 {number}}};")
        self.model.pop(name, None)
        self.model[name] = {"x": number, "y": np.array([1, number], np.float32)}

    @rule(name=NAMES)
    def apply_what_fails(self, name):
        with pytest.raises(vrn.ParseError):
            self.scene.apply(f"remove {name}; oops")
        self.model.pop(name, None)

    @rule()
    def walk(self):
        walked = [(input.node.name, input.name) for node in self.scene.nodes() for input in node.walk()]
        assert walked == [(node, input) for node, values in self.model.items() for input in values]

    @rule(name=NAMES)
    def take_a_column(self, name):
        values = [type(values[name]) for values in self.model.values() if name in values]
        if len(set(values)) == 1 and np.ndarray not in values and int not in values:  # large integers round
            column = self.scene.column(f"*.{name}")
            column.__arrow_c_array__()
            assert len(column) == len(values)

    @rule()
    def take_the_names(self):
        assert self.scene.column("*.name").tolist() == list(self.model)

    @rule()
    def continue_with_a_copy(self):
        self.scene = copy.copy(self.scene)

    @rule()
    def continue_with_a_pickle(self):
        buffers = []
        data = pickle.dumps(self.scene, protocol=5, buffer_callback=buffers.append)
        self.scene = pickle.loads(data, buffers=buffers)

    @rule()
    def continue_with_the_text(self):
        again = vrn.loads(self.scene.dumps())
        assert again == self.scene
        self.scene = again

    @invariant()
    def views_never_change(self):
        for view, before in self.kept:
            np.testing.assert_array_equal(view, before)

    @invariant()
    def the_scene_is_that_of_the_model(self):
        assert list(self.scene) == list(self.model)
        for name, values in self.model.items():
            node = self.scene[name]
            assert list(node) == list(values)
            for input, value in values.items():
                np.testing.assert_array_equal(node[input], value)


STEPS = int(os.environ.get("VRN_STEPS", "3000"))
TestSceneMachine = SceneMachine.TestCase
TestSceneMachine.settings = settings(
    max_examples=max(1, STEPS // 50),
    stateful_step_count=50,
    deadline=None,
    database=None,
    derandomize="VRN_STEPS" not in os.environ,
    suppress_health_check=list(HealthCheck),
)
