// DataType: the type of the elements of a buffer, and how such an element lies in memory.
#pragma once

#include "scene/core/Types.h"

#include <optional>
#include <string_view>

namespace vor::velmo_sdk {

enum class DataType : i32 {
    Null,
    Bool,
    Char,
    Byte,
    Int16,
    Int32,
    Int64,
    UInt16,
    UInt32,
    UInt64,
    Float,
    Double,
    Ptr,
    Vec2f,
    Vec2d,
    Vec2i,
    Vec2u,
    Vec3f,
    Vec3d,
    Vec3i,
    Vec3u,
    Vec4f,
    Vec4d,
    Vec4i,
    Vec4u,
    Pos2f,
    Pos2d,
    Pos2i,
    Pos3f,
    Pos3d,
    Pos3i,
    Quatf,
    Quatd,
    Rgbf,
    Rgbd,
    Rgb8,
    Rgbaf,
    Rgbad,
    Rgba8,
    Mat3f,
    Mat3d,
    Mat3i,
    Mat4f,
    Mat4d,
    Mat4i,
    Xformf,
    Xformd,
    Xformi,
    Aabbf,
    Aabbd,
    Aabbi,
    Obbf,
    Obbd,
    Obbi,
    Hsvf,
    Hsvd,
    Hslf,
    Hsld,
    Argb8,
    ColorRef,
};
inline constexpr i32 dataTypeCount = 60;

// The enumerator's name; "<unknown>" for a value that is none.
[[nodiscard]] const char* dataTypeName(DataType type) noexcept;

// The type of an exact name.
[[nodiscard]] std::optional<DataType> dataTypeByName(std::string_view name) noexcept;

// Whether a text can hold a buffer of this type. The keyword is the name in small letters, or in any others.
[[nodiscard]] bool hasKeyword(DataType type) noexcept;

// An element is `components` numbers of `componentType` in a row, without padding.
struct ElementLayout {
    DataType componentType = DataType::Null;
    u32 componentSize = 0; // bytes
    u32 components = 0;

    [[nodiscard]] constexpr u32 elementSize() const noexcept { return componentSize * components; }

    // Whether the text form may carry the bytes as a compressed payload.
    [[nodiscard]] constexpr bool isCompressible() const noexcept { return componentSize == 1; }
};

// The layout of an element; all zero for Null and for a value that is no DataType.
[[nodiscard]] ElementLayout elementLayout(DataType type) noexcept;

} // namespace vor::velmo_sdk
