#include "convert/shared/Transform.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>

namespace vrn::test {

using namespace vrn::convert;

// p' = q p q*, the definition of a rotation by a unit quaternion.
static Vector rotate(const Quaternion& q, const Vector& p) {
    const auto times = [](const Quaternion& a, const Quaternion& b) {
        return Quaternion{a[3] * b[0] + a[0] * b[3] + a[1] * b[2] - a[2] * b[1],
                          a[3] * b[1] - a[0] * b[2] + a[1] * b[3] + a[2] * b[0],
                          a[3] * b[2] + a[0] * b[1] - a[1] * b[0] + a[2] * b[3],
                          a[3] * b[3] - a[0] * b[0] - a[1] * b[1] - a[2] * b[2]};
    };
    const Quaternion r = times(times(q, {p[0], p[1], p[2], 0}), {-q[0], -q[1], -q[2], q[3]});
    return {r[0], r[1], r[2]};
}

static Vector transformed(const Matrix& m, const Vector& p) {
    Vector out{};
    for (std::size_t i = 0; i < 3; ++i)
        out[i] = p[0] * m[i] + p[1] * m[4 + i] + p[2] * m[8 + i] + m[12 + i];
    return out;
}

static std::vector<Quaternion> rotations() {
    const double half = std::sqrt(0.5);
    std::vector<Quaternion> all = {
        {0, 0, 0, 1},       {1, 0, 0, 0},       {0, 1, 0, 0},          {0, 0, 1, 0},          {half, half, 0, 0},
        {0, half, half, 0}, {half, 0, half, 0}, {0.9, 0.1, 0.3, 0.05}, {0.1, 0.9, 0.3, 0.05}, {0.3, 0.1, 0.9, 0.05}};
    std::mt19937 random(1);
    std::normal_distribution<double> normal;
    for (int i = 0; i < 200; ++i)
        all.push_back({normal(random), normal(random), normal(random), normal(random)});
    for (Quaternion& q : all) {
        const double size = std::sqrt(q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + q[3] * q[3]);
        for (double& component : q)
            component /= size;
    }
    return all;
}

TEST(Transform, scalesRotatesAndMoves) {
    for (const Quaternion& q : rotations()) {
        const Trs trs{.translation = {5, -6, 7}, .rotation = q, .scale = {2, 3, -4}};
        const Vector p = {0.5, -1.25, 2};
        Vector expected = rotate(q, {p[0] * 2, p[1] * 3, p[2] * -4});
        const Vector found = transformed(toMatrix(trs), p);
        for (std::size_t i = 0; i < 3; ++i)
            ASSERT_NEAR(found[i], expected[i] + trs.translation[i], 1e-12);
    }
}

TEST(Transform, isDecomposed) {
    for (const Quaternion& q : rotations())
        for (const Vector& scale : {Vector{1, 1, 1}, Vector{2, 3, 4}, Vector{-2, 3, 4}, Vector{-1, -1, 5}}) {
            const Matrix matrix = toMatrix({.translation = {1, 2, 3}, .rotation = q, .scale = scale});
            const Trs trs = decomposeTransform(matrix);
            ASSERT_LT(maxDifference(toMatrix(trs), matrix), 1e-12);
            const double size =
                std::hypot(std::hypot(trs.rotation[0], trs.rotation[1]), std::hypot(trs.rotation[2], trs.rotation[3]));
            ASSERT_NEAR(size, 1, 1e-9);
        }
}

// A flat or empty matrix still yields a rotation.
TEST(Transform, isDecomposedIfDegenerate) {
    for (const Vector& row :
         {Vector{1, 0, 0}, Vector{0, 1, 0}, Vector{0, 0, 1}, Vector{0.6, 0.8, 0}, Vector{0, 0, 0}}) {
        Matrix matrix = identity;
        for (std::size_t i = 0; i < 3; ++i)
            matrix[i] = matrix[4 + i] = matrix[8 + i] = row[i];
        const Trs trs = decomposeTransform(matrix);
        const double size =
            std::hypot(std::hypot(trs.rotation[0], trs.rotation[1]), std::hypot(trs.rotation[2], trs.rotation[3]));
        EXPECT_NEAR(size, 1, 1e-9) << row[0] << ' ' << row[1] << ' ' << row[2];
    }
}

TEST(Transform, looksAlongADirection) {
    for (const Vector& direction : {Vector{0, 0, -2}, Vector{1, 1, 1}, Vector{0, -3, 0}, Vector{0, 1, 0}}) {
        const Vector position = {1, 2, 3};
        const Matrix matrix = lookAlong(position, direction, {0, 1, 0});
        const Vector ahead = transformed(matrix, {0, 0, -1});
        for (std::size_t i = 0; i < 3; ++i)
            EXPECT_NEAR(ahead[i] - position[i], direction[i] / length(direction), 1e-12);
        EXPECT_LT(maxDifference(toMatrix(decomposeTransform(matrix)), matrix), 1e-12) << "a rotation";
    }
}

} // namespace vrn::test
