// Finds where a list of numbers may be broken into lines: after a complete element.
//
//     lengthOfElements("1 2 3 4 5 6 ", 9, 3)   // 6: a second element of three numbers does not fit
//
// Lists are as writeNumberList() writes them: each number is followed by one space. Allocates nothing.
#pragma once

#include <string_view>

namespace vor {

// The functions read up to this many characters before the list, which must therefore be readable.
inline constexpr std::size_t elementsSlack = 64;

// The length, trailing space included, of the complete elements within the first `maxLength` characters. Constant time
// if numbersPerElement is 1, linear otherwise.
[[nodiscard]] std::size_t lengthOfElements(std::string_view numbers, std::size_t maxLength,
                                           std::size_t numbersPerElement) noexcept;

// The length of the first element, trailing space included.
[[nodiscard]] std::size_t lengthOfElement(std::string_view numbers, std::size_t numbersPerElement) noexcept;

} // namespace vor
