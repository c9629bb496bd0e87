// Places in space: matrices of 16 numbers, row after row, that points are multiplied with from the left, so that the
// last row is the translation. That is how scenes write them, and, number by number, how glTF does.
#pragma once

#include <array>

namespace vrn::convert {

using Vector = std::array<double, 3>;
using Quaternion = std::array<double, 4>; // x y z w
using Matrix = std::array<double, 16>;

inline constexpr Matrix identity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

// First scaled, then turned, then moved.
struct Trs {
    Vector translation = {0, 0, 0};
    Quaternion rotation = {0, 0, 0, 1};
    Vector scale = {1, 1, 1};
};

// First `a`, then `b`.
[[nodiscard]] Matrix multiply(const Matrix& a, const Matrix& b);

[[nodiscard]] Matrix toMatrix(const Trs& trs);

// The nearest that scaling, turning and moving come to a matrix: shear and perspective are left out.
[[nodiscard]] Trs decompose(const Matrix& matrix);

// The largest difference of two numbers that stand at the same place.
[[nodiscard]] double difference(const Matrix& a, const Matrix& b);

// Stands at `position` and looks down its -Z axis along `direction`, which may have any length but 0.
[[nodiscard]] Matrix lookAlong(const Vector& position, const Vector& direction, const Vector& up);

[[nodiscard]] double length(const Vector& v);

} // namespace vrn::convert
