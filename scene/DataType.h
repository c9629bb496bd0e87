// DataType: the type of the elements of a buffer, and their layout in memory.
//
//     const ElementLayout layout = elementLayout(DataType::Vec3f);    // 3 components of 4 bytes, of type Float
//
// Pure functions for any value of the enumeration, also one without an enumerator; safe on any thread.
#pragma once

#include "scene/core/Export.h"
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

// The name of the enumerator; "<unknown>" for any other value.
[[nodiscard]] VRN_API const char* dataTypeName(DataType type) noexcept;

// The inverse of dataTypeName(), case-sensitive. Linear in the number of types.
[[nodiscard]] VRN_API std::optional<DataType> dataTypeByName(std::string_view name) noexcept;

// Whether a VRN file can contain a buffer of this type. Its keyword is the name, case-insensitive.
[[nodiscard]] VRN_API bool hasKeyword(DataType type) noexcept;

// An element consists of `components` consecutive numbers of `componentType`, without padding.
struct ElementLayout {
    DataType componentType = DataType::Null;
    u32 componentSize = 0; // bytes
    u32 components = 0;

    [[nodiscard]] constexpr u32 elementSize() const noexcept { return componentSize * components; }

    // Whether a VRN file can contain the bytes as a compressed payload.
    [[nodiscard]] constexpr bool isCompressible() const noexcept { return componentSize == 1; }
};

// All zero for Null and for values without an enumerator.
[[nodiscard]] VRN_API ElementLayout elementLayout(DataType type) noexcept;

} // namespace vor::velmo_sdk
