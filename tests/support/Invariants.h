// Invariants that hold for every scene after any sequence of calls.
#pragma once

#include "scene/Scene.h"

#include <string>

namespace vrn::test {

// The first violated invariant and its path; empty if all hold. Visits the whole scene.
[[nodiscard]] std::string brokenInvariant(const vor::velmo_sdk::impl::Scene& scene);

} // namespace vrn::test
