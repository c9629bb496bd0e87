// Buffers as arrays: read-only views that share the memory of a buffer, and buffers made of arrays.
#pragma once

#include "python/src/References.h"

#include <nanobind/ndarray.h>

#include <optional>
#include <vector>

namespace vrn::python {

// A read-only numpy array of shape (n,), (n, k) or (n, k, k), or a memoryview if numpy is not installed. Shares the
// memory, which stays as it is even when the input changes; while the input is being edited, it has a copy.
[[nodiscard]] nb::object arrayOf(const Box& box, const Input& input);

// The same as an object with the buffer protocol and DLPack, without numpy.
[[nodiscard]] nb::object bufferOf(const Box& box, const Input& input);

// The same writable: what is written into it changes the buffer. Other views keep what they show. Needs numpy.
[[nodiscard]] nb::object writableArrayOf(Input& input);

// The bytes of a buffer that has some, read-only, as an object with the buffer protocol.
[[nodiscard]] nb::object bytesOf(AttrData buffer);

// Raises ImportError, which says what to install, if there is no numpy. The first call imports it, which runs code.
void needNumpy();

// A buffer with a copy of an array, bytes or nested sequence, converted as numpy does within a kind of numbers. If
// `type` is Null, the array determines it. Raises TypeError, ValueError and OverflowError.
[[nodiscard]] AttrData bufferFrom(nb::handle values, DataType type);

// A numpy array whose memory a buffer takes over (vrn.adopt), and becomes read-only.
struct Adopted {
    nb::object array;
};
[[nodiscard]] AttrData adoptedBuffer(const Adopted& adopted, DataType type);

// The number of dimensions of an array, which is what has a buffer or DLPack, but no bytes and no input.
[[nodiscard]] std::optional<std::size_t> dimensionsOf(nb::handle value);
[[nodiscard]] bool isArray(nb::handle value);

// The shape of one element, or of one value of so many numbers: (), (k,) or (k, k).
[[nodiscard]] std::vector<std::size_t> elementShape(DataType type);
[[nodiscard]] std::vector<std::size_t> shapeOfComponents(std::size_t count);

// What dtype and shape say, for `Input.dtype` and `Input.shape`: the name of the numpy type of the components.
[[nodiscard]] const char* numberName(DataType type);

} // namespace vrn::python
