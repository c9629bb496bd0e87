// Values of inputs as text for people and shells.
#pragma once

#include "cli/terminal/Style.h"
#include "scene/Node.h"
#include "scene/core/NumberText.h"

#include <concepts>
#include <string>
#include <string_view>

namespace vrn::cli {

using vor::velmo_sdk::impl::Input;

// Appends a number: reals as the shortest text that reads back the same.
template <class Number> void appendNumber(std::string& text, Number number) {
    if constexpr (std::floating_point<Number>) {
        char digits[vor::realTextCapacity];
        text += vor::writeReal(number, digits);
    } else {
        text += std::to_string(number);
    }
}

// Numbers with a space between two.
template <class Number> void appendNumbers(std::string& text, std::span<const Number> numbers) {
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        if (i != 0)
            text += ' ';
        appendNumber(text, numbers[i]);
    }
}

// A text of any bytes, cut where it is longer, at the end of a character.
inline constexpr std::size_t shortLength = 60;
[[nodiscard]] std::string shortened(std::string_view text, std::size_t length = shortLength);

// The same, fit for a terminal; and in quotes, as in a text.
[[nodiscard]] std::string escapedShort(std::string_view text, std::size_t length = shortLength);
[[nodiscard]] std::string quotedShort(std::string_view text);

// The element type of a buffer as texts write it: `vec3f`.
[[nodiscard]] std::string dataTypeText(vor::velmo_sdk::DataType type);

// The type: `Real`, `vec3f[413]` for a buffer, `Real[3]` for an array, `Array[3]` while its element type is open.
[[nodiscard]] std::string typeText(const Input& input);

// The type of a node, cut and fit for a terminal; of a definition, that it is one.
[[nodiscard]] std::string typeText(const vor::velmo_sdk::impl::Node& node);

// All of the value on one line, a string as it is; what a reference or connection leads to; for buffers and arrays the
// type, for an object `{2 members}`.
[[nodiscard]] std::string valueText(const Input& input);

// The same in some 60 characters at the most, a string in quotes; fit for a terminal.
[[nodiscard]] std::string shortValue(const Input& input);

// Type, short value, and where the input is linked to: `Real = 45`, `vec3f[8]`, `Rgba = 1 0 0 1 -> red.outColor`.
[[nodiscard]] std::string describe(const Input& input, const Style& style);

} // namespace vrn::cli
