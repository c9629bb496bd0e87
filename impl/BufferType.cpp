#include "impl/BufferType.h"

#include "scene/DataTypeTable.h"
#include "scene/syntax/Keyword.h"

#include <algorithm>
#include <array>

namespace vor::velmo_sdk::impl {

namespace {

using velmo_sdk::detail::dataTypeRow;

struct BufferType {
    u64 keyword = 0;
    DataType type = DataType::Null;
};

consteval std::size_t countKeywords() {
    std::size_t count = 0;
    for (i32 i = 0; i < dataTypeCount; ++i)
        count += dataTypeRow(static_cast<DataType>(i)).hasKeyword ? 1U : 0U;
    return count;
}

// The keywords of buffers and their element types, sorted by keyword number for binary search.
consteval std::array<BufferType, countKeywords()> sortKeywords() {
    std::array<BufferType, countKeywords()> types;
    std::size_t count = 0;
    for (i32 i = 0; i < dataTypeCount; ++i)
        if (const auto row = dataTypeRow(static_cast<DataType>(i)); row.hasKeyword)
            types[count++] = {keyword(row.name), static_cast<DataType>(i)};
    std::ranges::sort(types, {}, &BufferType::keyword);
    return types;
}

constexpr auto bufferTypes = sortKeywords();
static_assert(std::ranges::adjacent_find(bufferTypes, {}, &BufferType::keyword) == bufferTypes.end());

} // namespace

const DataType* bufferType(std::string_view word) {
    const u64 number = keywordNumber(word);
    const auto found = std::ranges::lower_bound(bufferTypes, number, {}, &BufferType::keyword);
    const bool isFound = number != 0 && found != bufferTypes.end() && found->keyword == number;
    return isFound ? &found->type : nullptr;
}

} // namespace vor::velmo_sdk::impl
