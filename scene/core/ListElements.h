// Where a list of numbers may be broken into lines: between its elements.
#pragma once

#include <string_view>

namespace vor {

// So many characters before the list have to be there; it does not matter what they are.
inline constexpr std::size_t elementsSlack = 64;

// How long the elements are, with the spaces behind them, that end within `room` characters: of `numbers`, which have a
// space behind each, `each` make an element. Looks at the last few of these characters if each number is an element.
[[nodiscard]] std::size_t lengthOfElements(std::string_view numbers, std::size_t room, std::size_t each) noexcept;

// How long the first one is.
[[nodiscard]] std::size_t lengthOfElement(std::string_view numbers, std::size_t each) noexcept;

} // namespace vor
