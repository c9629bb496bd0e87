#include "check/Indices.h"

#include "check/Texts.h"
#include "scene/BufferNumbers.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace vrn::check {

using namespace vor;
using namespace vor::velmo_sdk;
using namespace vor::velmo_sdk::impl;

// Whether there is an element with that index.
template <class Number> static bool isIndex(Number number, u64 count) {
    if constexpr (std::is_same_v<Number, bool>)
        return (number ? 1U : 0U) < count;
    else if constexpr (std::is_integral_v<Number>)
        return std::cmp_greater_equal(number, 0) && std::cmp_less(number, count);
    else
        return number >= 0 && static_cast<double>(number) < static_cast<double>(count) && number == std::floor(number);
}

static std::optional<std::string> firstBadIndex(const AttrData& indices, u64 count) {
    std::optional<std::string> found;
    visitNumbers(indices, [&](const auto& numbers) {
        const auto bad = std::ranges::find_if(numbers, [&](auto number) { return !isIndex(number, count); });
        if (bad != numbers.end())
            found = numberText(*bad);
    });
    return found;
}

void checkIndices(const Declared& declared, Findings& findings) {
    const Input& input = declared.input;
    for (const String& path : declared.type.indexes) {
        const Input* target = follow(input, path);
        if (target && target->linkedNode())
            continue;
        const bool isBuffer = target && target->type() == AttrType::Buffer;
        const u64 count = isBuffer ? target->value().count() : target ? target->size() : 0;
        if (const auto bad = firstBadIndex(input.value(), count))
            findings.add(input, messages::badIndex, pathText(input).c_str(), bad->c_str(), path.buf(),
                         elementsText(count).c_str());
    }
}

} // namespace vrn::check
