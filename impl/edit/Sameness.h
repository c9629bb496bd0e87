// Whether two scenes are the same.
#pragma once

#include "scene/Scene.h"

#include <optional>

namespace vor::velmo_sdk::impl {

// The path of the first node or input that differs, empty for the header and comments; nullopt if none does. Compares
// the order of nodes and inputs, and values bit by bit; not outputs, enumerations and marks.
[[nodiscard]] std::optional<String> firstDifference(const Scene& a, const Scene& b);

} // namespace vor::velmo_sdk::impl
