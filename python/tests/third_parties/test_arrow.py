"""Columns in Arrow, as two independent libraries see them."""

from __future__ import annotations

import gc

import nanoarrow
import numpy as np
import pyarrow
import pytest
import vrn

NAN = float("nan")
LIST = pyarrow.list_(pyarrow.field("item", pyarrow.float64(), nullable=False), 3)
MATRIX = pyarrow.list_(pyarrow.field("item", LIST, nullable=False), 3)
ROWS = [[1.0, 2.0, 3.0], [4.0, 5.0, 6.0], [7.0, 8.0, 9.0]]

# The values of inputs as texts or of Python, their type in Arrow, and what Arrow has. Empty: an input without a value.
COLUMNS = [
    (["true", "false", "true"], pyarrow.bool_(), [True, False, True]),
    (["1", "-2"], pyarrow.int64(), [1, -2]),
    ([2**64 - 1], pyarrow.uint64(), [2**64 - 1]),
    (["0.5", "2"], pyarrow.float64(), [0.5, 2.0]),
    (["0.5", "", "1.5"], pyarrow.float64(), [0.5, None, 1.5]),
    (["", "1"], pyarrow.float64(), [None, 1.0]),
    (["", ""], pyarrow.float64(), [None, None]),
    (['"a"', '""', '"é"'], pyarrow.large_string(), ["a", "", "é"]),
    (["", '"a"', ""], pyarrow.large_string(), [None, "a", None]),
    (["vec3(1 2 3)", "vec3(4 5 6)"], LIST, ROWS[:2]),
    (["", "vec3(1 2 3)", ""], LIST, [None, ROWS[0], None]),
    (["mat3(1 2 3 4 5 6 7 8 9)"], MATRIX, [ROWS]),
    (["mat3(1 2 3 4 5 6 7 8 9)", ""], MATRIX, [ROWS, None]),
    ([], pyarrow.float64(), []),
    (["true"] * 17, pyarrow.bool_(), [True] * 17),
    ([*["0.5"] * 16, ""], pyarrow.float64(), [*[0.5] * 16, None]),
]


def column_of(texts):
    scene = vrn.Scene()
    for i, text in enumerate(texts):
        node = scene.add("t", f"n{i}")
        if not isinstance(text, str):
            node["x"] = text
        elif text:
            scene.apply(f"n{i}.x = {text};")
        else:
            node.add("x", "Null")
    return scene.column("*.x")


@pytest.mark.parametrize("texts, type, values", COLUMNS, ids=lambda value: str(value)[:40])
def test_columns_in_pyarrow(texts, type, values):
    array = pyarrow.array(column_of(texts))
    array.validate(full=True)
    assert (array.type, array.to_pylist(), array.null_count) == (type, values, values.count(None))


@pytest.mark.parametrize("texts, type, values", COLUMNS, ids=lambda value: str(value)[:40])
def test_columns_in_nanoarrow(texts, type, values):
    array = nanoarrow.Array(column_of(texts))
    assert array.to_pylist() == values


def test_null_is_not_nan():
    scene = vrn.loads("t a; t b; a.x = 0.5;")
    scene["a"]["x"] = NAN
    scene["b"].add("x", "Null")
    array = pyarrow.array(scene.column("*.x"))
    assert np.isnan(array[0].as_py()) and array[1].as_py() is None


@pytest.mark.parametrize("text", ["1", 2**64 - 1, "0.5", "vec3(1 2 3)"])
def test_numbers_are_not_copied(text):
    column = column_of([text, text])
    array = pyarrow.array(column)
    values = array.values if isinstance(array.type, pyarrow.FixedSizeListType) else array
    assert values.buffers()[1].address == column.ctypes.data


def test_what_is_no_utf8_is_replaced():
    scene = vrn.loads("t a;")
    scene["a"]["x"] = "a\udcff\udce2\udc82b"
    assert pyarrow.array(scene.column("a.x")).to_pylist() == ["a\ufffd\ufffd\ufffdb"]


def test_names_and_counts():
    scene = vrn.loads("t a; t b; a.x = float[2] {1 2};")
    assert pyarrow.array(scene.column("*.name")).to_pylist() == ["a", "b"]
    assert pyarrow.array(scene.column("*.x.count")).to_pylist() == [2]


def test_arrays_outlive_column_and_scene():
    arrays = [pyarrow.array(column_of(texts)) for texts, _, _ in COLUMNS]
    gc.collect()
    assert [array.to_pylist() for array in arrays] == [values for _, _, values in COLUMNS]


def test_a_child_outlives_its_parent():
    values = pyarrow.array(column_of(["vec3(1 2 3)", "vec3(4 5 6)"])).flatten()
    gc.collect()
    assert values.to_pylist() == [1, 2, 3, 4, 5, 6]


def test_capsules_that_nobody_takes():
    for texts, _, _ in COLUMNS:
        schema, array = column_of(texts).__arrow_c_array__()
        assert '"arrow_schema"' in repr(schema) and '"arrow_array"' in repr(array)


def test_a_type_that_is_asked_for():
    column = column_of(["1", "2"])
    schema, _ = column_of(["0.5"]).__arrow_c_array__()
    assert nanoarrow.Array(column, schema=None).to_pylist() == [1, 2]
    assert len(column.__arrow_c_array__(schema)) == len(column.__arrow_c_array__(requested_schema=None)) == 2
    for array in pyarrow.array(column, type=pyarrow.int32()), pyarrow.array(column[:], type=pyarrow.int32()):
        assert (array.type, array.to_pylist()) == (pyarrow.int32(), [1, 2])
    with pytest.raises(pyarrow.ArrowInvalid):
        pyarrow.array(column_of(['"a"']), type=pyarrow.int32())


def test_a_column_is_an_array_of_numpy():
    column = column_of(["1", "2", "3"])
    assert isinstance(column, np.ndarray) and column.sum() == 6


@pytest.mark.parametrize("texts", [["1", "2"], ["1.5", ""], ["true", "false"], ["vec3(1 2 3)"], ['"a"', ""]])
def test_a_column_cannot_be_changed_behind_the_back_of_arrow(texts):
    column = column_of(texts)
    with pytest.raises(ValueError):
        column[0] = column[0]
    with pytest.raises(ValueError):
        column.sort()
    with pytest.raises(ValueError):
        column.flags.writeable = True
    copy = column.copy()
    copy[0] = copy[0]


def test_what_is_computed_of_a_column_is_what_arrow_gets():
    column = column_of(["1", "2", "3"])
    for derived, expected in (column[1:], [2, 3]), (column + 1, [2, 3, 4]), (column.copy(), [1, 2, 3]):
        assert type(derived) is np.ndarray
        assert pyarrow.array(derived).to_pylist() == expected


def test_columns_make_a_table():
    scene = vrn.loads('t a; a.x = 1; a.s = "p"; t b; b.x = 2; b.s = "q";')
    table = pyarrow.table({"node": scene.column("*.name"), "x": scene.column("*.x"), "s": scene.column("*.s")})
    assert table.to_pylist() == [{"node": "a", "x": 1, "s": "p"}, {"node": "b", "x": 2, "s": "q"}]
