// AttrType: the type of an input and of its value.
//
//     attrTypeName(AttrType::Vec3)        // "Vec3"
//     componentCount(AttrType::Mat3)      // 9
//
// Pure functions for any value of the enumeration, also one without an enumerator; safe on any thread.
#pragma once

#include "scene/core/Export.h"
#include "scene/core/Types.h"

#include <optional>
#include <string_view>

namespace vor::velmo_sdk {

enum class AttrType : i32 {
    Null,
    Bool,
    Int,
    UInt,
    Real,
    Vec2,
    Vec3,
    Vec4,
    Pos2,
    Pos3,
    Quat,
    Rgba,
    Mat3,
    Mat4,
    String,
    Node,
    Buffer,
    Array,
    Object,
};
inline constexpr i32 attrTypeCount = 19;

// The name of the enumerator; "<unknown>" for any other value.
[[nodiscard]] VRN_API const char* attrTypeName(AttrType type) noexcept;

// The same for messages about the type of a value, in which Null is also "<unknown>".
[[nodiscard]] VRN_API const char* valueTypeName(AttrType type) noexcept;

// The inverse of attrTypeName(), case-sensitive. Linear in the number of types.
[[nodiscard]] VRN_API std::optional<AttrType> attrTypeByName(std::string_view name) noexcept;

// The number of reals in a value: 1 for Real, 2 to 16 for vectors, points, quaternions, colours and matrices, 0 for all
// other types.
[[nodiscard]] VRN_API u32 componentCount(AttrType type) noexcept;

// How a value is held. Code that treats all vectors, points, quaternions, colours and matrices alike switches over this
// rather than over AttrType.
enum class ValueKind : u8 { Null, Bool, Int, UInt, Real, Components, String, Node, Buffer, Array, Object };

// Null for a value that is not an enumerator.
[[nodiscard]] VRN_API ValueKind valueKind(AttrType type) noexcept;

} // namespace vor::velmo_sdk
