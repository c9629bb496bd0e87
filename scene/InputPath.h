// The paths by which a catalogue names an input of a node type: `points`, `skin.joints`, `uvsets[].coords`.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

namespace vor::velmo_sdk::impl {

// The step of a path from an array to one of its elements.
inline constexpr std::string_view elementStep = "[]";

// The names and element steps of a path, in order; nothing if it is malformed. They refer to `path`.
[[nodiscard]] std::optional<std::vector<std::string_view>> stepsOf(std::string_view path);

} // namespace vor::velmo_sdk::impl
