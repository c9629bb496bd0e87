// Identifiers for nodes from the free-form names of other formats.
#pragma once

#include <string>
#include <string_view>

namespace vrn::convert {

// An identifier that VRN accepts where it names a node: each sequence of other characters becomes one underscore, and
// keywords get one appended. `fallback`, an identifier itself, is for names without any valid character.
[[nodiscard]] std::string nodeNameFrom(std::string_view name, const char* fallback);

} // namespace vrn::convert
