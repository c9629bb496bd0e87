#include "scene/DataType.h"

#include "scene/DataTypeTable.h"

#include <array>

namespace vor::velmo_sdk {

namespace {

using Row = detail::DataTypeRow;

constexpr std::array<Row, dataTypeCount> rows = [] {
    std::array<Row, dataTypeCount> table;
    for (i32 i = 0; i < dataTypeCount; ++i)
        table[static_cast<std::size_t>(i)] = detail::dataTypeRow(static_cast<DataType>(i));
    return table;
}();
static_assert(rows.back().name && !detail::dataTypeRow(static_cast<DataType>(dataTypeCount)).name,
              "dataTypeCount is the number of enumerators");

// Each component type is itself an element type of one component.
static_assert(detail::forAllDataTypes([](DataType type) {
    const Row row = detail::dataTypeRow(type);
    const Row component = detail::dataTypeRow(row.componentType);
    const u32 count = type == DataType::Null ? 0 : 1;
    return component.componentType == row.componentType && component.componentSize == row.componentSize &&
           component.components == count && row.components >= count;
}));

const Row* rowOf(DataType type) noexcept {
    const auto i = static_cast<std::size_t>(static_cast<u32>(type));
    return i < rows.size() ? &rows[i] : nullptr;
}

} // namespace

const char* dataTypeName(DataType type) noexcept {
    const Row* row = rowOf(type);
    return row ? row->name : "<unknown>";
}

bool hasKeyword(DataType type) noexcept {
    const Row* row = rowOf(type);
    return row && row->hasKeyword;
}

std::optional<DataType> dataTypeByName(std::string_view name) noexcept {
    for (std::size_t i = 0; i < rows.size(); ++i)
        if (rows[i].name == name)
            return static_cast<DataType>(i);
    return std::nullopt;
}

ElementLayout elementLayout(DataType type) noexcept {
    const Row* row = rowOf(type);
    return row ? ElementLayout{row->componentType, row->componentSize, row->components} : ElementLayout();
}

} // namespace vor::velmo_sdk
