// The names that Python programs give: only those that a text can say, so that what is written is what is read.
#pragma once

#include "python/src/Python.h"

namespace vrn::python {

// The name of a node, a type or an input. Raises ValueError, which says what a name may be.
[[nodiscard]] vor::String identifierOf(nb::handle name);

// The same of an output, which may be one of several: `out[0]`.
[[nodiscard]] vor::String outputNameOf(nb::handle name);

} // namespace vrn::python
