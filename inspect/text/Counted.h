// Counts in English.
#pragma once

#include "scene/core/String.h"

namespace vrn::inspect {

// "1 error", "2 errors".
[[nodiscard]] inline vor::String counted(unsigned long long count, const char* noun) {
    return vor::String::format("%llu %s%s", count, noun, count == 1 ? "" : "s");
}

} // namespace vrn::inspect
