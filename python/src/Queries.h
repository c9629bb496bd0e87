// What paths select in a scene.
#pragma once

#include "inspect/path/ScenePath.h"
#include "python/src/Module.h"

namespace vrn::python {

// A path from a Python string. Raises ValueError for a malformed one.
[[nodiscard]] inspect::ScenePath pathFrom(nb::handle text);

} // namespace vrn::python
