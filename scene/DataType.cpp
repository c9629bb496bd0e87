#include "scene/DataType.h"

#include <array>

namespace vor::velmo_sdk {

namespace {

struct Row {
    const char* name;
    DataType componentType;
    u32 componentSize;
    u32 components;
};

constexpr std::array<Row, dataTypeCount> rows = {{
    {"Null", DataType::Null, 0, 0},     {"Bool", DataType::Bool, 1, 1},      {"Char", DataType::Char, 1, 1},
    {"Byte", DataType::Byte, 1, 1},     {"Int16", DataType::Int16, 2, 1},    {"Int32", DataType::Int32, 4, 1},
    {"Int64", DataType::Int64, 8, 1},   {"UInt16", DataType::UInt16, 2, 1},  {"UInt32", DataType::UInt32, 4, 1},
    {"UInt64", DataType::UInt64, 8, 1}, {"Float", DataType::Float, 4, 1},    {"Double", DataType::Double, 8, 1},
    {"Ptr", DataType::Ptr, 8, 1},       {"Vec2f", DataType::Float, 4, 2},    {"Vec2d", DataType::Double, 8, 2},
    {"Vec2i", DataType::Int32, 4, 2},   {"Vec2u", DataType::UInt32, 4, 2},   {"Vec3f", DataType::Float, 4, 3},
    {"Vec3d", DataType::Double, 8, 3},  {"Vec3i", DataType::Int32, 4, 3},    {"Vec3u", DataType::UInt32, 4, 3},
    {"Vec4f", DataType::Float, 4, 4},   {"Vec4d", DataType::Double, 8, 4},   {"Vec4i", DataType::Int32, 4, 4},
    {"Vec4u", DataType::UInt32, 4, 4},  {"Pos2f", DataType::Float, 4, 2},    {"Pos2d", DataType::Double, 8, 2},
    {"Pos2i", DataType::Int32, 4, 2},   {"Pos3f", DataType::Float, 4, 3},    {"Pos3d", DataType::Double, 8, 3},
    {"Pos3i", DataType::Int32, 4, 3},   {"Quatf", DataType::Float, 4, 4},    {"Quatd", DataType::Double, 8, 4},
    {"Rgbf", DataType::Float, 4, 3},    {"Rgbd", DataType::Double, 8, 3},    {"Rgb8", DataType::Byte, 1, 3},
    {"Rgbaf", DataType::Float, 4, 4},   {"Rgbad", DataType::Double, 8, 4},   {"Rgba8", DataType::Byte, 1, 4},
    {"Mat3f", DataType::Float, 4, 9},   {"Mat3d", DataType::Double, 8, 9},   {"Mat3i", DataType::Int32, 4, 9},
    {"Mat4f", DataType::Float, 4, 16},  {"Mat4d", DataType::Double, 8, 16},  {"Mat4i", DataType::Int32, 4, 16},
    {"Xformf", DataType::Float, 4, 10}, {"Xformd", DataType::Double, 8, 10}, {"Xformi", DataType::Int32, 4, 10},
    {"Aabbf", DataType::Float, 4, 6},   {"Aabbd", DataType::Double, 8, 6},   {"Aabbi", DataType::Int32, 4, 6},
    {"Obbf", DataType::Float, 4, 19},   {"Obbd", DataType::Double, 8, 19},   {"Obbi", DataType::Int32, 4, 19},
    {"Hsvf", DataType::Float, 4, 3},    {"Hsvd", DataType::Double, 8, 3},    {"Hslf", DataType::Float, 4, 3},
    {"Hsld", DataType::Double, 8, 3},   {"Argb8", DataType::Byte, 1, 4},     {"ColorRef", DataType::Byte, 1, 4},
}};

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
    switch (type) {
    case DataType::Null:
    case DataType::Bool:
    case DataType::Ptr:
    case DataType::Xformf:
    case DataType::Xformd:
    case DataType::Xformi:
    case DataType::Aabbf:
    case DataType::Aabbd:
    case DataType::Aabbi:
    case DataType::Obbf:
    case DataType::Obbd:
    case DataType::Obbi:
        return false;
    default:
        return rowOf(type) != nullptr;
    }
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
