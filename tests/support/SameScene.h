// Compares two scenes.
#pragma once

#include "scene/Scene.h"

#include <string>

namespace vrn::test {

// Describes the first difference; empty if there is none. Values are compared bit by bit. Outputs, enumerations and
// marks are not compared.
[[nodiscard]] std::string firstDifference(const vor::velmo_sdk::impl::Scene& a, const vor::velmo_sdk::impl::Scene& b);

} // namespace vrn::test
