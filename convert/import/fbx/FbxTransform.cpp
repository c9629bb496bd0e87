#include "convert/import/fbx/FbxTransform.h"

#include <cmath>
#include <numbers>

namespace vrn::convert {

namespace {

// The rotation `b` followed by `a`.
Quaternion product(const Quaternion& a, const Quaternion& b) {
    return {
        a[3] * b[0] + a[0] * b[3] + a[1] * b[2] - a[2] * b[1], a[3] * b[1] - a[0] * b[2] + a[1] * b[3] + a[2] * b[0],
        a[3] * b[2] + a[0] * b[1] - a[1] * b[0] + a[2] * b[3], a[3] * b[3] - a[0] * b[0] - a[1] * b[1] - a[2] * b[2]};
}

Quaternion inverse(const Quaternion& q) { return {-q[0], -q[1], -q[2], q[3]}; }

Vector rotated(const Quaternion& q, const Vector& v) {
    const Quaternion turned = product(product(q, {v[0], v[1], v[2], 0}), inverse(q));
    return {turned[0], turned[1], turned[2]};
}

Vector sum(const Vector& a, const Vector& b) { return {a[0] + b[0], a[1] + b[1], a[2] + b[2]}; }
Vector difference(const Vector& a, const Vector& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
Vector scaled(const Vector& a, const Vector& b) { return {a[0] * b[0], a[1] * b[1], a[2] * b[2]}; }

Quaternion aboutAxis(std::size_t axis, double degrees) {
    const double half = degrees * std::numbers::pi / 360;
    Quaternion q = {0, 0, 0, std::cos(half)};
    q[axis] = std::sin(half);
    return q;
}

Quaternion eulerRotation(const Vector& degrees, FbxRotationOrder order = FbxRotationOrder::Xyz) {
    static constexpr std::array<std::size_t, 3> axes[] = {{0, 1, 2}, {0, 2, 1}, {1, 2, 0},
                                                          {1, 0, 2}, {2, 0, 1}, {2, 1, 0}};
    Quaternion rotation = {0, 0, 0, 1};
    for (const std::size_t axis : axes[static_cast<std::size_t>(order)])
        if (degrees[axis] != 0)
            rotation = product(aboutAxis(axis, degrees[axis]), rotation);
    return rotation;
}

// Where the origin is before the rotation about the pivot.
Vector scaledOrigin(const FbxTransform& t) {
    const Vector pivot = difference(t.scalingPivot, scaled(t.scaling, t.scalingPivot));
    return difference(sum(t.scalingOffset, pivot), t.rotationPivot);
}

} // namespace

Trs localTransform(const FbxTransform& t) {
    const Quaternion rotation = product(product(eulerRotation(t.preRotation), eulerRotation(t.rotation, t.order)),
                                        inverse(eulerRotation(t.postRotation)));
    const Vector pivot = sum(sum(t.translation, t.rotationOffset), t.rotationPivot);
    const Vector origin = rotationMovesOrigin(t) ? rotated(rotation, scaledOrigin(t)) : Vector{0, 0, 0};
    return {.translation = sum(pivot, origin), .rotation = rotation, .scale = t.scaling};
}

Trs geometricTransform(const FbxTransform& t) {
    return {.translation = t.geometricTranslation,
            .rotation = eulerRotation(t.geometricRotation),
            .scale = t.geometricScaling};
}

bool rotationMovesOrigin(const FbxTransform& t) { return scaledOrigin(t) != Vector{0, 0, 0}; }

bool scalingMovesOrigin(const FbxTransform& t) { return t.scalingPivot != Vector{0, 0, 0}; }

} // namespace vrn::convert
