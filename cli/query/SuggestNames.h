// Suggests names for a misspelt one.
#pragma once

#include "scene/Scene.h"

#include <string>
#include <string_view>

namespace vrn::cli {

// "; did you mean cam1 or cam2?", with the names of up to three nodes that are most similar to `name`; empty if none is
// similar.
[[nodiscard]] std::string suggestNames(const vor::velmo_sdk::impl::Scene& scene, std::string_view name);

} // namespace vrn::cli
