// What is true of every scene, whatever was read into it or done to it.
#pragma once

#include "scene/Scene.h"

#include <string>

namespace vrn::test {

// What is wrong with a scene, and where; empty if nothing is. Visits all of it.
[[nodiscard]] std::string brokenInvariant(const vor::velmo_sdk::impl::Scene& scene);

} // namespace vrn::test
