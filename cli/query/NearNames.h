// Names that may have been meant.
#pragma once

#include "scene/Scene.h"

#include <string>
#include <string_view>

namespace vrn::cli {

// "; did you mean cam1 or cam2?": the nodes of a scene whose names are nearest to one that none has, at most three.
// Empty when none is near.
[[nodiscard]] std::string nearNames(const vor::velmo_sdk::impl::Scene& scene, std::string_view name);

} // namespace vrn::cli
