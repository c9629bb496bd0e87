// Reads a file to its end.
#pragma once

#include "scene/core/File.h"

namespace vrn::inspect {

// The contents of a file, as far as they can be read; then file.error() is the reason.
[[nodiscard]] vor::String readAll(vor::File file);

} // namespace vrn::inspect
