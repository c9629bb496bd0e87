// AttrType: the type of a node input and of the value in it.
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

// The enumerator's name; "<unknown>" for a value that is none.
[[nodiscard]] VRN_API const char* attrTypeName(AttrType type) noexcept;

// The same for the type of a value, which is never Null: Null is "<unknown>", too.
[[nodiscard]] VRN_API const char* valueTypeName(AttrType type) noexcept;

// The type of an exact name.
[[nodiscard]] VRN_API std::optional<AttrType> attrTypeByName(std::string_view name) noexcept;

// How many real numbers a value consists of: 1 for Real, 2 to 16 for vectors, points, quaternions,
// colours and matrices, 0 for all others.
[[nodiscard]] VRN_API u32 componentCount(AttrType type) noexcept;

} // namespace vor::velmo_sdk
