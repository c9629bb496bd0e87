// Writes lines of numbers: a prefix and the shortest texts that read back as the same numbers.
#pragma once

#include "convert/export/ByteSink.h"
#include "scene/core/CharBlock.h"
#include "scene/core/ListElements.h"
#include "scene/core/NumberLists.h"

#include <algorithm>
#include <bit>
#include <span>
#include <vector>

namespace vrn::convert {

// Copies the first line of a list, `perLine` numbers with a space after each, and ends it with a line feed instead of
// the last space; returns its length. Most lines are short: 64 characters are copied and searched as a whole, so that
// as many after the list must be readable, and as many writable.
inline std::size_t copyLine(std::string_view list, std::size_t perLine, char* to) {
    using vor::CharBlock;
    constexpr std::size_t window = 4 * CharBlock::size;
    const auto spacesAt = [&](std::size_t at) { return CharBlock::load(list.data() + at).is(' '); };
    vor::u64 spaces = CharBlock::Mask::join(spacesAt(0), spacesAt(16), spacesAt(32), spacesAt(48));
    for (std::size_t i = 1; i < perLine; ++i)
        spaces &= spaces - 1;
    const bool isShort = spaces != 0;
    const std::size_t length =
        isShort ? static_cast<std::size_t>(std::countr_zero(spaces)) + 1 : vor::lengthOfElement(list, perLine);
    std::memcpy(to, list.data(), isShort ? window : length);
    to[length - 1] = '\n';
    return length;
}

// Lines of `perLine` numbers each. Linear.
template <class Number>
void addNumberLines(ByteSink& out, std::string_view prefix, std::span<const Number> numbers, std::size_t perLine) {
    const std::size_t perPart = 1024 * perLine;
    std::vector<char> texts(std::min(perPart, numbers.size()) * vor::listNumberCapacity + vor::listSlack);
    while (!numbers.empty()) {
        const auto part = numbers.first(std::min(perPart, numbers.size()));
        numbers = numbers.subspan(part.size());
        const char* const end = vor::writeNumberList(part, texts.data());
        std::string_view list(texts.data(), static_cast<std::size_t>(end - texts.data()));
        char* const first = out.reserve(list.size() + part.size() / perLine * prefix.size() + vor::listSlack);
        char* to = first;
        while (!list.empty()) {
            to = std::copy(prefix.begin(), prefix.end(), to);
            const std::size_t length = copyLine(list, perLine, to);
            to += length;
            list.remove_prefix(length);
        }
        out.advance(static_cast<std::size_t>(to - first));
    }
}

} // namespace vrn::convert
