// Whether two scenes are the same.
#pragma once

#include "scene/Scene.h"

#include <string>

namespace vrn::test {

// The first thing in which the scenes differ, bit for bit, but for outputs, enumerations and marks; empty if there is
// none.
[[nodiscard]] std::string firstDifference(const vor::velmo_sdk::impl::Scene& a, const vor::velmo_sdk::impl::Scene& b);

} // namespace vrn::test
