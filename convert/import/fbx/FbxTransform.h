// The transform of an FBX model: pivots, offsets and rotations that apply in a fixed order.
//
// In column notation, from the parent to the model, with the post rotation inverted:
//
//     T Roff Rp Rpre R Rpost' Rp' Soff Sp S Sp'
//
// Scaling is always the innermost part that is not a translation, so that the product is exactly a scale, then a
// rotation, then a translation.
#pragma once

#include "convert/shared/Transform.h"

namespace vrn::convert {

// The order in which the rotations about the axes apply. The numbers are those of the property `RotationOrder`.
enum class FbxRotationOrder { Xyz, Xzy, Yzx, Yxz, Zxy, Zyx };

struct FbxTransform {
    Vector translation = {0, 0, 0};
    Vector rotation = {0, 0, 0}; // rotations are in degrees
    Vector scaling = {1, 1, 1};
    FbxRotationOrder order = FbxRotationOrder::Xyz; // of `rotation`
    Vector preRotation = {0, 0, 0};
    Vector postRotation = {0, 0, 0};
    Vector rotationOffset = {0, 0, 0};
    Vector rotationPivot = {0, 0, 0};
    Vector scalingOffset = {0, 0, 0};
    Vector scalingPivot = {0, 0, 0};
    // These apply to the geometry of the model, before everything else, but not to its children.
    Vector geometricTranslation = {0, 0, 0};
    Vector geometricRotation = {0, 0, 0};
    Vector geometricScaling = {1, 1, 1};
};

[[nodiscard]] Trs localTransform(const FbxTransform& transform);
[[nodiscard]] Trs geometricTransform(const FbxTransform& transform);

// Whether the translation of the local transform depends on the rotation, or on the scaling.
[[nodiscard]] bool rotationMovesOrigin(const FbxTransform& transform);
[[nodiscard]] bool scalingMovesOrigin(const FbxTransform& transform);

} // namespace vrn::convert
