#include "scene/AttrType.h"

#include <array>

namespace vor::velmo_sdk {

namespace {

struct Row {
    const char* name = nullptr; // null for a value without an enumerator
    ValueKind kind = ValueKind::Null;
    u32 components = 0;
};

constexpr Row makeRow(AttrType type) noexcept {
    switch (type) {
        // clang-format off
    case AttrType::Null: return {"Null", ValueKind::Null, 0};
    case AttrType::Bool: return {"Bool", ValueKind::Bool, 0};
    case AttrType::Int: return {"Int", ValueKind::Int, 0};
    case AttrType::UInt: return {"UInt", ValueKind::UInt, 0};
    case AttrType::Real: return {"Real", ValueKind::Real, 1};
    case AttrType::Vec2: return {"Vec2", ValueKind::Components, 2};
    case AttrType::Vec3: return {"Vec3", ValueKind::Components, 3};
    case AttrType::Vec4: return {"Vec4", ValueKind::Components, 4};
    case AttrType::Pos2: return {"Pos2", ValueKind::Components, 2};
    case AttrType::Pos3: return {"Pos3", ValueKind::Components, 3};
    case AttrType::Quat: return {"Quat", ValueKind::Components, 4};
    case AttrType::Rgba: return {"Rgba", ValueKind::Components, 4};
    case AttrType::Mat3: return {"Mat3", ValueKind::Components, 9};
    case AttrType::Mat4: return {"Mat4", ValueKind::Components, 16};
    case AttrType::String: return {"String", ValueKind::String, 0};
    case AttrType::Node: return {"Node", ValueKind::Node, 0};
    case AttrType::Buffer: return {"Buffer", ValueKind::Buffer, 0};
    case AttrType::Array: return {"Array", ValueKind::Array, 0};
    case AttrType::Object: return {"Object", ValueKind::Object, 0};
        // clang-format on
    }
    return {};
}

constexpr std::array<Row, attrTypeCount> rows = [] {
    std::array<Row, attrTypeCount> table;
    for (i32 i = 0; i < attrTypeCount; ++i)
        table[static_cast<std::size_t>(i)] = makeRow(static_cast<AttrType>(i));
    return table;
}();
static_assert(rows.back().name && !makeRow(static_cast<AttrType>(attrTypeCount)).name,
              "attrTypeCount is the number of enumerators");

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

ValueKind valueKind(AttrType type) noexcept {
    const Row* row = rowOf(type);
    return row ? row->kind : ValueKind::Null;
}

} // namespace vor::velmo_sdk
