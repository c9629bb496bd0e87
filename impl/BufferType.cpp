#include "impl/BufferType.h"

#include "impl/lexer/Keyword.h"

#include <algorithm>
#include <vector>

namespace vor::velmo_sdk::impl {

namespace {

struct BufferType {
    u64 keyword;
    DataType type;
};

// The keywords of buffers and their element types, in the order of their numbers. Built on the first call.
const std::vector<BufferType>& bufferTypes() {
    static const std::vector<BufferType> types = [] {
        std::vector<BufferType> rows;
        for (i32 i = 0; i < dataTypeCount; ++i)
            if (const auto type = static_cast<DataType>(i); hasKeyword(type))
                rows.push_back({keywordNumber(dataTypeName(type)), type});
        std::ranges::sort(rows, {}, &BufferType::keyword);
        return rows;
    }();
    return types;
}

} // namespace

const DataType* bufferType(std::string_view keyword) {
    const u64 number = keywordNumber(keyword);
    const auto found = std::ranges::lower_bound(bufferTypes(), number, {}, &BufferType::keyword);
    const bool isFound = number != 0 && found != bufferTypes().end() && found->keyword == number;
    return isFound ? &found->type : nullptr;
}

} // namespace vor::velmo_sdk::impl
