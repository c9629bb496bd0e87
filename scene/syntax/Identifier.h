// Names that a text can contain.
#pragma once

#include <string_view>

namespace vor::velmo_sdk::impl {

// Whether the text is an identifier: letters, digits and `_`, the first no digit, and none of `true`, `false` and
// `null` in any case.
[[nodiscard]] bool isIdentifier(std::string_view text) noexcept;

// Whether the text names an output: an identifier, then any number of bracket lists such as `[0]`.
[[nodiscard]] bool isOutputName(std::string_view text) noexcept;

} // namespace vor::velmo_sdk::impl
