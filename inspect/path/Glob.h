// Matches names against patterns like those of shells.
//
//     matchesGlob("mesh_7", "mesh*")
//
// Keeps nothing; any thread may call it.
#pragma once

#include <string_view>

namespace vrn::inspect {

// Whether the text contains `*` or `?`.
[[nodiscard]] bool isGlob(std::string_view text) noexcept;

// Whether the whole text matches: `*` matches any characters, `?` one UTF-8 character, anything else itself. Takes time
// proportional to the product of both lengths in the worst case.
[[nodiscard]] bool matchesGlob(std::string_view text, std::string_view pattern) noexcept;

} // namespace vrn::inspect
