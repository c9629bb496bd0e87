"""Arrays for buffers: what numpy has to do before C++ copies or adopts the bytes. Imported with the first array."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any

import numpy as np

if TYPE_CHECKING:
    from collections.abc import Iterator

    from numpy.typing import ArrayLike, NDArray


class Column(np.ndarray[Any, np.dtype[Any]]):
    """What `Scene.column` returns: an array that libraries of Arrow take, too.

    pyarrow and nanoarrow share the memory of numbers. What has no value is null for them, where the array has NaN or
    None. A column is read-only. Slices, copies and arrays that are computed of a column are arrays of numpy like any
    other.
    """

    def __getitem__(self, key: Any) -> Any:
        return np.asarray(self)[key]

    def __iter__(self) -> Iterator[Any]:
        return iter(np.asarray(self))

    def __array_wrap__(self, array: NDArray[Any], context: Any = None, return_scalar: bool = False) -> Any:
        plain = np.asarray(array)
        return plain[()] if return_scalar or plain.ndim == 0 else plain

    def copy(self, order: Any = "C") -> Any:
        """A plain array, which can be changed."""
        return np.array(self, order=order)

    if TYPE_CHECKING:

        def __arrow_c_array__(self, requested_schema: object = None) -> tuple[object, object]: ...

    def __arrow_array__(self, type: Any = None) -> Any:
        """For pyarrow, which fails to convert what `__arrow_c_array__` returns to the type that its caller wants."""
        import pyarrow

        array = pyarrow.array(_Exported(self) if hasattr(self, "__arrow_c_array__") else np.asarray(self))
        return array if type is None else array.cast(type)


class _Exported:
    """What a column has for Arrow, and nothing else."""

    def __init__(self, column: Column) -> None:
        self.__arrow_c_array__ = column.__arrow_c_array__


def for_buffer(values: ArrayLike, number: str, shape: tuple[int, ...], keyword: str) -> NDArray[Any]:
    """The values as a C-contiguous array of elements of that shape.

    Converts real numbers to another precision, and integers to any type that can hold them. Raises TypeError for other
    conversions, ValueError for a shape that does not fit, OverflowError for integers out of range.
    """
    dtype = np.dtype(number)
    array = np.frombuffer(values, np.uint8) if isinstance(values, bytes) else np.asarray(values)
    if array.dtype != dtype:
        _check_conversion(array, dtype, keyword)
    wanted = "".join(f", {n}" for n in shape)
    if array.ndim == len(shape) + 1 and array.shape[1:] == shape:
        pass
    elif array.size == 0:
        array = array.reshape((0, *shape))
    else:
        raise ValueError(f"{keyword} needs an array of shape (n{wanted or ','}), not {array.shape}")
    return np.ascontiguousarray(array, dtype)


def _check_conversion(array: NDArray[Any], dtype: np.dtype[Any], keyword: str) -> None:
    if array.size == 0 or np.can_cast(array.dtype, dtype, "same_kind") and array.dtype.kind == dtype.kind:
        if array.dtype.kind != "i" and array.dtype.kind != "u" or np.can_cast(array.dtype, dtype):
            return
    if array.dtype.kind in "iub" and dtype.kind in "iu":
        limits = np.iinfo(dtype)
        if array.size and (int(array.min()) < limits.min or int(array.max()) > limits.max):
            raise OverflowError(f"{keyword} cannot hold integers from {array.min()} to {array.max()}")
    elif not (array.dtype.kind in "iubf" and dtype.kind == "f"):
        raise TypeError(f"{keyword} takes {dtype.name} numbers, not {array.dtype}")


def keyword_of(values: ArrayLike) -> str:
    """The element type that an array has by itself: `vec3f` for float32 of shape (n, 3)."""
    array = np.asarray(values)
    letter = {"float32": "f", "float64": "d", "int32": "i", "uint32": "u"}.get(array.dtype.name)
    single = {
        "int8": "char", "uint8": "byte", "int16": "int16", "int32": "int32", "int64": "int64", "uint16": "uint16",
        "uint32": "uint32", "uint64": "uint64", "float32": "float", "float64": "double",
    }.get(array.dtype.name)  # fmt: skip
    if array.ndim == 1 and single:
        return single
    if array.ndim == 2 and letter and array.shape[1] in (2, 3, 4):
        return f"vec{array.shape[1]}{letter}"
    if array.ndim == 2 and array.dtype == np.uint8 and array.shape[1] in (3, 4):
        return ("rgb8", "rgba8")[array.shape[1] - 3]
    if array.ndim == 3 and letter in ("f", "d", "i") and array.shape[1:] in ((3, 3), (4, 4)):
        return f"mat{array.shape[1]}{letter}"
    raise TypeError(f"no element type has arrays of {array.dtype} of shape {array.shape}; say which one is meant")
