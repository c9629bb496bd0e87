// Values of inputs as Python objects.
#pragma once

#include "python/src/References.h"

namespace vrn::python {

// The value of an input: None, bool, int, float, str, an instance of a class of vrn._values, the Node it refers to, a
// read-only array that shares the memory of a buffer, or the Input itself if it is an array or object. An input without
// a value of its own gives the Output it is connected to.
[[nodiscard]] nb::object valueOf(const Box& box, const Input& input);

// The value as the class of its type, except for nodes, buffers, arrays and objects.
[[nodiscard]] nb::object plainValue(const AttrData& value);

// `node.input`, for messages.
[[nodiscard]] std::string labelOf(const Input& input);

} // namespace vrn::python
