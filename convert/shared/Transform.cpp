#include "convert/shared/Transform.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vrn::convert {

namespace {

double dot(const Vector& a, const Vector& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

Vector cross(const Vector& a, const Vector& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

Vector minus(const Vector& a, const Vector& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }

Vector times(const Vector& v, double factor) { return {v[0] * factor, v[1] * factor, v[2] * factor}; }

// The normalized vector, or `fallback` if its length is subnormal, zero or infinite.
Vector normalized(const Vector& v, const Vector& fallback) {
    const double size = length(v);
    return size > std::numeric_limits<double>::min() && std::isfinite(size) ? times(v, 1 / size) : fallback;
}

// The component of `v` orthogonal to the unit vector `axis`.
Vector orthogonalPart(const Vector& v, const Vector& axis) { return minus(v, times(axis, dot(v, axis))); }

// Some unit vector orthogonal to a unit vector.
Vector anyOrthogonal(const Vector& axis) {
    const Vector other = std::abs(axis[0]) < 0.6 ? Vector{1, 0, 0} : Vector{0, 1, 0};
    return normalized(cross(axis, other), {0, 0, 1});
}

// The rotation that maps the axes to three orthonormal vectors (Shepperd, "Quaternion from rotation matrix", 1978).
Quaternion rotationTo(const Vector& x, const Vector& y, const Vector& z) {
    const double trace = x[0] + y[1] + z[2];
    Quaternion q;
    if (trace > 0) {
        const double s = 2 * std::sqrt(1 + trace);
        q = {(y[2] - z[1]) / s, (z[0] - x[2]) / s, (x[1] - y[0]) / s, s / 4};
    } else if (x[0] > y[1] && x[0] > z[2]) {
        const double s = 2 * std::sqrt(1 + x[0] - y[1] - z[2]);
        q = {s / 4, (x[1] + y[0]) / s, (z[0] + x[2]) / s, (y[2] - z[1]) / s};
    } else if (y[1] > z[2]) {
        const double s = 2 * std::sqrt(1 + y[1] - x[0] - z[2]);
        q = {(x[1] + y[0]) / s, s / 4, (y[2] + z[1]) / s, (z[0] - x[2]) / s};
    } else {
        const double s = 2 * std::sqrt(1 + z[2] - x[0] - y[1]);
        q = {(z[0] + x[2]) / s, (y[2] + z[1]) / s, s / 4, (x[1] - y[0]) / s};
    }
    // Nearly collinear axes are only approximately orthogonal.
    const double size = std::hypot(std::hypot(q[0], q[1]), std::hypot(q[2], q[3]));
    if (std::abs(size - 1) > 1e-6)
        for (double& component : q)
            component /= size;
    return q;
}

} // namespace

double length(const Vector& v) { return std::hypot(v[0], v[1], v[2]); }

Matrix multiply(const Matrix& a, const Matrix& b) {
    Matrix product{};
    for (std::size_t row = 0; row < 4; ++row)
        for (std::size_t column = 0; column < 4; ++column)
            for (std::size_t i = 0; i < 4; ++i)
                product[4 * row + column] += a[4 * row + i] * b[4 * i + column];
    return product;
}

Matrix toMatrix(const Trs& trs) {
    const auto [x, y, z, w] = trs.rotation;
    const Vector rows[3] = {{1 - 2 * (y * y + z * z), 2 * (x * y + z * w), 2 * (x * z - y * w)},
                            {2 * (x * y - z * w), 1 - 2 * (x * x + z * z), 2 * (y * z + x * w)},
                            {2 * (x * z + y * w), 2 * (y * z - x * w), 1 - 2 * (x * x + y * y)}};
    Matrix matrix = identity;
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t i = 0; i < 3; ++i) {
            matrix[4 * row + i] = rows[row][i] * trs.scale[row];
            matrix[12 + i] = trs.translation[i];
        }
    return matrix;
}

Trs decomposeTransform(const Matrix& m) {
    const Vector rows[3] = {{m[0], m[1], m[2]}, {m[4], m[5], m[6]}, {m[8], m[9], m[10]}};
    const bool isMirrored = dot(cross(rows[0], rows[1]), rows[2]) < 0;
    const Vector x = times(normalized(rows[0], {1, 0, 0}), isMirrored ? -1 : 1);
    const Vector y = normalized(orthogonalPart(rows[1], x), anyOrthogonal(x));
    const Vector z = cross(x, y);
    return {.translation = {m[12], m[13], m[14]},
            .rotation = rotationTo(x, y, z),
            .scale = {isMirrored ? -length(rows[0]) : length(rows[0]), length(rows[1]), length(rows[2])}};
}

bool isSheared(const Matrix& matrix, const Trs& decomposition) {
    constexpr double tolerance = 1e-5;
    double largest = 1e-30; // of the axes
    for (std::size_t i = 0; i < 12; ++i)
        largest = std::max(largest, i % 4 == 3 ? 0 : std::abs(matrix[i]));
    return maxDifference(toMatrix(decomposition), matrix) > tolerance * largest;
}

double maxDifference(const Matrix& a, const Matrix& b) {
    double largest = 0;
    for (std::size_t i = 0; i < 16; ++i)
        largest = std::max(largest, std::abs(a[i] - b[i]));
    return largest;
}

Matrix lookAlong(const Vector& position, const Vector& direction, const Vector& up) {
    const Vector back = times(normalized(direction, {0, 0, -1}), -1);
    const Vector right = normalized(cross(up, back), anyOrthogonal(back));
    const Vector upward = cross(back, right);
    return {right[0], right[1], right[2], 0, upward[0],   upward[1],   upward[2],   0,
            back[0],  back[1],  back[2],  0, position[0], position[1], position[2], 1};
}

} // namespace vrn::convert
