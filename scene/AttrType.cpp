#include "scene/AttrType.h"

#include <array>

namespace vor::velmo_sdk {

namespace {

struct Row {
    const char* name;
    u32 components;
};

constexpr std::array<Row, attrTypeCount> rows = {{
    {"Null", 0},   {"Bool", 0}, {"Int", 0},    {"UInt", 0},  {"Real", 1},   {"Vec2", 2}, {"Vec3", 3},
    {"Vec4", 4},   {"Pos2", 2}, {"Pos3", 3},   {"Quat", 4},  {"Rgba", 4},   {"Mat3", 9}, {"Mat4", 16},
    {"String", 0}, {"Node", 0}, {"Buffer", 0}, {"Array", 0}, {"Object", 0},
}};

const Row* rowOf(AttrType type) noexcept {
    const auto i = static_cast<std::size_t>(static_cast<u32>(type));
    return i < rows.size() ? &rows[i] : nullptr;
}

} // namespace

const char* attrTypeName(AttrType type) noexcept {
    const Row* row = rowOf(type);
    return row ? row->name : "<unknown>";
}

const char* valueTypeName(AttrType type) noexcept { return type == AttrType::Null ? "<unknown>" : attrTypeName(type); }

std::optional<AttrType> attrTypeByName(std::string_view name) noexcept {
    for (std::size_t i = 0; i < rows.size(); ++i)
        if (rows[i].name == name)
            return static_cast<AttrType>(i);
    return std::nullopt;
}

u32 componentCount(AttrType type) noexcept {
    const Row* row = rowOf(type);
    return row ? row->components : 0;
}

} // namespace vor::velmo_sdk
