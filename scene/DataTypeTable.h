// The table of element types: the name, the layout, and whether the type has a keyword.
//
// A constant expression, so that the compiler can check code that depends on the types. Programs use the functions of
// scene/DataType.h.
#pragma once

#include "scene/DataType.h"

#include <concepts>

namespace vor::velmo_sdk::detail {

struct DataTypeRow {
    const char* name = nullptr; // null for a value without an enumerator
    DataType componentType = DataType::Null;
    u32 componentSize = 0;
    u32 components = 0;
    bool hasKeyword = false;
};

[[nodiscard]] constexpr DataTypeRow dataTypeRow(DataType type) noexcept {
    constexpr bool keyword = true;
    using enum DataType;
    switch (type) {
        // clang-format off
    case Null: return {"Null", Null, 0, 0};
    case Bool: return {"Bool", Bool, 1, 1};
    case Char: return {"Char", Char, 1, 1, keyword};
    case Byte: return {"Byte", Byte, 1, 1, keyword};
    case Int16: return {"Int16", Int16, 2, 1, keyword};
    case Int32: return {"Int32", Int32, 4, 1, keyword};
    case Int64: return {"Int64", Int64, 8, 1, keyword};
    case UInt16: return {"UInt16", UInt16, 2, 1, keyword};
    case UInt32: return {"UInt32", UInt32, 4, 1, keyword};
    case UInt64: return {"UInt64", UInt64, 8, 1, keyword};
    case Float: return {"Float", Float, 4, 1, keyword};
    case Double: return {"Double", Double, 8, 1, keyword};
    case Ptr: return {"Ptr", Ptr, 8, 1};
    case Vec2f: return {"Vec2f", Float, 4, 2, keyword};
    case Vec2d: return {"Vec2d", Double, 8, 2, keyword};
    case Vec2i: return {"Vec2i", Int32, 4, 2, keyword};
    case Vec2u: return {"Vec2u", UInt32, 4, 2, keyword};
    case Vec3f: return {"Vec3f", Float, 4, 3, keyword};
    case Vec3d: return {"Vec3d", Double, 8, 3, keyword};
    case Vec3i: return {"Vec3i", Int32, 4, 3, keyword};
    case Vec3u: return {"Vec3u", UInt32, 4, 3, keyword};
    case Vec4f: return {"Vec4f", Float, 4, 4, keyword};
    case Vec4d: return {"Vec4d", Double, 8, 4, keyword};
    case Vec4i: return {"Vec4i", Int32, 4, 4, keyword};
    case Vec4u: return {"Vec4u", UInt32, 4, 4, keyword};
    case Pos2f: return {"Pos2f", Float, 4, 2, keyword};
    case Pos2d: return {"Pos2d", Double, 8, 2, keyword};
    case Pos2i: return {"Pos2i", Int32, 4, 2, keyword};
    case Pos3f: return {"Pos3f", Float, 4, 3, keyword};
    case Pos3d: return {"Pos3d", Double, 8, 3, keyword};
    case Pos3i: return {"Pos3i", Int32, 4, 3, keyword};
    case Quatf: return {"Quatf", Float, 4, 4, keyword};
    case Quatd: return {"Quatd", Double, 8, 4, keyword};
    case Rgbf: return {"Rgbf", Float, 4, 3, keyword};
    case Rgbd: return {"Rgbd", Double, 8, 3, keyword};
    case Rgb8: return {"Rgb8", Byte, 1, 3, keyword};
    case Rgbaf: return {"Rgbaf", Float, 4, 4, keyword};
    case Rgbad: return {"Rgbad", Double, 8, 4, keyword};
    case Rgba8: return {"Rgba8", Byte, 1, 4, keyword};
    case Mat3f: return {"Mat3f", Float, 4, 9, keyword};
    case Mat3d: return {"Mat3d", Double, 8, 9, keyword};
    case Mat3i: return {"Mat3i", Int32, 4, 9, keyword};
    case Mat4f: return {"Mat4f", Float, 4, 16, keyword};
    case Mat4d: return {"Mat4d", Double, 8, 16, keyword};
    case Mat4i: return {"Mat4i", Int32, 4, 16, keyword};
    case Xformf: return {"Xformf", Float, 4, 10};
    case Xformd: return {"Xformd", Double, 8, 10};
    case Xformi: return {"Xformi", Int32, 4, 10};
    case Aabbf: return {"Aabbf", Float, 4, 6};
    case Aabbd: return {"Aabbd", Double, 8, 6};
    case Aabbi: return {"Aabbi", Int32, 4, 6};
    case Obbf: return {"Obbf", Float, 4, 19};
    case Obbd: return {"Obbd", Double, 8, 19};
    case Obbi: return {"Obbi", Int32, 4, 19};
    case Hsvf: return {"Hsvf", Float, 4, 3, keyword};
    case Hsvd: return {"Hsvd", Double, 8, 3, keyword};
    case Hslf: return {"Hslf", Float, 4, 3, keyword};
    case Hsld: return {"Hsld", Double, 8, 3, keyword};
    case Argb8: return {"Argb8", Byte, 1, 4, keyword};
    case ColorRef: return {"ColorRef", Byte, 1, 4, keyword};
        // clang-format on
    }
    return {};
}

// Whether `check(type)` is true for all element types.
[[nodiscard]] consteval bool forAllDataTypes(std::predicate<DataType> auto check) {
    for (i32 i = 0; i < dataTypeCount; ++i)
        if (!check(static_cast<DataType>(i)))
            return false;
    return true;
}

} // namespace vor::velmo_sdk::detail
