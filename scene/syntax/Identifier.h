// The names that a VRN file can contain.
#pragma once

#include <string_view>

namespace vor::velmo_sdk::impl {

// Whether the text is an identifier: letters, digits and `_`, not beginning with a digit, and not `true`,
// `false` or `null` in any case.
[[nodiscard]] bool isIdentifier(std::string_view text) noexcept;

// Whether the text names an output: an identifier, then any number of bracket lists such as `[0]`.
[[nodiscard]] bool isOutputName(std::string_view text) noexcept;

} // namespace vor::velmo_sdk::impl
