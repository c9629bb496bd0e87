// Values of inputs as text.
//
//     describe(input, Style(false))   // Real = 45
//
// The strings own what they contain; the scene is only read. Linear in the text, which leaves out buffers and arrays.
#pragma once

#include "inspect/text/Style.h"
#include "scene/Node.h"
#include "scene/core/NumberText.h"

#include <concepts>
#include <string>
#include <string_view>

namespace vrn::inspect {

using vor::velmo_sdk::impl::Input;

// Appends a number; reals as the shortest text that reads back the same.
template <class Number> void appendNumber(std::string& text, Number number) {
    if constexpr (std::floating_point<Number>) {
        char digits[vor::realTextCapacity];
        text += vor::writeReal(number, digits);
    } else {
        text += std::to_string(number);
    }
}

// Appends numbers, separated by spaces.
template <class Number> void appendNumbers(std::string& text, std::span<const Number> numbers) {
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        if (i != 0)
            text += ' ';
        appendNumber(text, numbers[i]);
    }
}

// The text truncated to `length` bytes and escaped for terminals; and as a string literal of VRN.
inline constexpr std::size_t shortLength = 60;
[[nodiscard]] std::string escapedShort(std::string_view text, std::size_t length = shortLength);
[[nodiscard]] std::string quotedShort(std::string_view text);

// The element type of a buffer as VRN spells it: `vec3f`.
[[nodiscard]] std::string dataTypeText(vor::velmo_sdk::DataType type);

// The type of an input: `Real`, `vec3f[413]` for a buffer, `Real[3]` for an array, `Array[3]` while its element type is
// open.
[[nodiscard]] std::string typeText(const Input& input);

// The type of a node, truncated and escaped for terminals; `definition` for a definition.
[[nodiscard]] std::string typeText(const vor::velmo_sdk::impl::Node& node);

// The whole value. Strings are neither escaped nor truncated. A reference is the name of its node, a connection without
// a value its output, a buffer or array its type, an object `{2 members}`.
[[nodiscard]] std::string valueText(const Input& input);

// The same, truncated to about 60 characters and escaped for terminals, strings in quotes.
[[nodiscard]] std::string shortValue(const Input& input);

// Type, truncated value, and the target of the link: `Real = 45`, `vec3f[8]`, `Rgba = 1 0 0 1 -> red.outColor`.
[[nodiscard]] std::string describe(const Input& input, const Style& style);

} // namespace vrn::inspect
