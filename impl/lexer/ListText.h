// Scans the source text of lists in parentheses or braces.
#pragma once

#include <cstddef>
#include <string_view>

namespace vor::velmo_sdk::impl {

// The number of characters at the start of a text that may be inside a list in braces and are no braces themselves.
[[nodiscard]] std::size_t flatLength(std::string_view text) noexcept;

// The length of the list at the start of a text if the list is in canonical form: its brackets, and elements separated
// by one space. Otherwise, or if the closing bracket is missing, 0.
[[nodiscard]] std::size_t canonicalLength(std::string_view text, char close) noexcept;

} // namespace vor::velmo_sdk::impl
