// Numbers, truth values, strings, vectors and matrices of Python as values of a scene.
#pragma once

#include "python/src/References.h"

#include <limits>
#include <optional>

namespace vrn::python {

// The value as it is, in the type that it has; nothing if it is of no such type. Scalars of other libraries count as
// those of Python.
[[nodiscard]] std::optional<AttrData> plainFrom(nb::handle value);

// The value in a type that is neither a node, a buffer, an array nor an object, if the conversion can be undone. Raises
// TypeError, ValueError for a wrong number of components, and OverflowError.
[[nodiscard]] AttrData plainFor(nb::handle value, AttrType type, const std::string& label);

// Whether a real number is as exact as the integer.
template <class Integer> [[nodiscard]] constexpr bool isExactReal(Integer integer) noexcept {
    constexpr double upperBound = 2.0 * static_cast<double>(Integer(1) << (std::numeric_limits<Integer>::digits - 1));
    const double real = static_cast<double>(integer);
    return real < upperBound && static_cast<Integer>(real) == integer;
}

// Whether a value has elements in order and is no text.
[[nodiscard]] bool isSequence(nb::handle value);

// The name of the class of a value.
[[nodiscard]] std::string pythonTypeOf(nb::handle value);

// Raises the TypeError of a value that does not fit an input.
[[noreturn]] void raiseMismatch(const std::string& label, AttrType expected, const std::string& given);

} // namespace vrn::python
