// Columns for readers of Arrow: the C data interface, in capsules as Arrow's libraries for Python exchange them.
//
// Numbers share the memory of the column. Truth values become bits, vectors lists of a fixed size, and matrices lists of
// lists. Texts become UTF-8, with U+FFFD for each byte that is not. What has no value is null.
#pragma once

#include "python/src/Column.h"

namespace vrn::python {

// What `__arrow_c_array__` returns: the capsules of a schema and of an array, which keep the column.
[[nodiscard]] nb::tuple arrowCapsules(std::shared_ptr<const Column> column);

} // namespace vrn::python
