"""DLPack and the array API standard, by an implementation that allows nothing beyond it."""

from __future__ import annotations

import array_api_strict as xp
import numpy as np
import pytest
import vrn

BUFFERS = {
    "float[3] {1 2 3}": xp.float32,
    "double[2] {0.5 1.5}": xp.float64,
    "int32[2] {-1 1}": xp.int32,
    "uint64[1] {18446744073709551615}": xp.uint64,
    "byte[3] {0 128 255}": xp.uint8,
    "vec3f[2] {1 2 3, 4 5 6}": xp.float32,
    "mat3f[1] {1 2 3 4 5 6 7 8 9}": xp.float32,
}


@pytest.mark.parametrize("text", BUFFERS)
def test_an_input_is_taken_without_a_copy(text):
    input = vrn.loads(f"t a; a.values = {text};")["a"].inputs["values"]
    array = xp.from_dlpack(input)
    assert (array.dtype, array.shape) == (BUFFERS[text], input.shape)
    assert np.from_dlpack(array).ctypes.data == input.value.ctypes.data
    assert xp.all(array == xp.asarray(input.value))


def test_what_is_taken_cannot_be_written():
    input = vrn.loads("t a; a.values = float[2] {1 2};")["a"].inputs["values"]
    array = xp.from_dlpack(input)
    with pytest.raises(ValueError, match="read-only"):
        array[0] = 5
    assert input.value.tolist() == [1, 2]
