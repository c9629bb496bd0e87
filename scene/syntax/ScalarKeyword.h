// The keywords of values that are written as a list of components.
#pragma once

#include "scene/AttrType.h"
#include "scene/syntax/Keyword.h"

namespace vor::velmo_sdk::impl {

// The type that a keyword such as `vec3` names; Null for other words.
[[nodiscard]] inline AttrType scalarType(std::string_view word) noexcept {
    static_assert(attrTypeCount == 19); // a new type that is written as a list needs a keyword here
    switch (keywordNumber(word)) {
    case keyword("vec2"):
        return AttrType::Vec2;
    case keyword("vec3"):
        return AttrType::Vec3;
    case keyword("vec4"):
        return AttrType::Vec4;
    case keyword("pos2"):
        return AttrType::Pos2;
    case keyword("pos3"):
        return AttrType::Pos3;
    case keyword("quat"):
        return AttrType::Quat;
    case keyword("mat3"):
        return AttrType::Mat3;
    case keyword("mat4"):
        return AttrType::Mat4;
    case keyword("rgba"):
        return AttrType::Rgba;
    default:
        return AttrType::Null;
    }
}

} // namespace vor::velmo_sdk::impl
