// Affine transforms. Matrices are row-major and multiply row vectors (p' = p M), so the last row is the translation.
// In memory, this is the same as the column-major matrices of glTF.
#pragma once

#include <array>
#include <numbers>

namespace vrn::convert {

using Vector = std::array<double, 3>;
using Quaternion = std::array<double, 4>; // x y z w
using Matrix = std::array<double, 16>;

inline constexpr double degreesPerRadian = 180 / std::numbers::pi;
inline constexpr double radiansPerDegree = std::numbers::pi / 180;

inline constexpr Matrix identity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

// Scale, then rotation, then translation.
struct Trs {
    Vector translation = {0, 0, 0};
    Quaternion rotation = {0, 0, 0, 1};
    Vector scale = {1, 1, 1};
};

// The transform `a` followed by `b`.
[[nodiscard]] Matrix multiply(const Matrix& a, const Matrix& b);

[[nodiscard]] Matrix toMatrix(const Trs& trs);

// The closest scale, rotation and translation; shear and perspective are dropped.
[[nodiscard]] Trs decomposeTransform(const Matrix& matrix);

// Whether a matrix has shear or perspective, beyond the rounding of floats: it is not that of its decomposition.
[[nodiscard]] bool isSheared(const Matrix& matrix, const Trs& decomposition);

// The largest absolute difference of corresponding elements.
[[nodiscard]] double maxDifference(const Matrix& a, const Matrix& b);

// A transform at `position` whose -Z axis points along `direction`, which need not be normalized but must not be 0.
[[nodiscard]] Matrix lookAlong(const Vector& position, const Vector& direction, const Vector& up);

[[nodiscard]] double length(const Vector& v);

} // namespace vrn::convert
