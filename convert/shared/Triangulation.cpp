#include "convert/shared/Triangulation.h"

#include "convert/shared/Transform.h"

#include <cmath>

namespace vrn::convert {

namespace {

struct Point2 {
    double x;
    double y;
};

// Twice the area of a triangle; negative if clockwise.
double doubleArea(const Point2& a, const Point2& b, const Point2& c) {
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

// A polygon, projected along the dominant axis of its normal so that it is counterclockwise.
class Polygon {
public:
    Polygon(std::span<const u32> corners, std::span<const float> points) : corners_(corners) {
        const Vector normal = newellNormal(corners, points);
        const std::size_t axis = std::abs(normal[0]) > std::abs(normal[1])
                                     ? (std::abs(normal[0]) > std::abs(normal[2]) ? 0 : 2)
                                     : (std::abs(normal[1]) > std::abs(normal[2]) ? 1 : 2);
        const std::size_t x = (axis + (normal[axis] < 0 ? 2 : 1)) % 3;
        const std::size_t y = (axis + (normal[axis] < 0 ? 1 : 2)) % 3;
        for (const u32 corner : corners)
            projected_.push_back(
                {static_cast<double>(points[3 * corner + x]), static_cast<double>(points[3 * corner + y])});
    }

    [[nodiscard]] bool isConvex() const {
        for (std::size_t i = 0; i < projected_.size(); ++i)
            if (doubleArea(projected_[i], projected_[(i + 1) % projected_.size()],
                           projected_[(i + 2) % projected_.size()]) < 0)
                return false;
        return true;
    }

    // A fan around the first corner: correct for convex polygons.
    void fan(std::vector<u32>& triangles) const {
        for (std::size_t i = 2; i < corners_.size(); ++i)
            triangles.insert(triangles.end(), {corners_[0], corners_[i - 1], corners_[i]});
    }

    // Ear clipping: cuts off corners whose triangle contains no other corner.
    void clipEars(std::vector<u32>& triangles) const {
        std::vector<std::size_t> remaining(corners_.size());
        for (std::size_t i = 0; i < remaining.size(); ++i)
            remaining[i] = i;
        while (remaining.size() > 2) {
            std::size_t ear = 0;
            while (ear < remaining.size() && !isEar(remaining, ear))
                ++ear;
            if (ear == remaining.size())
                ear = 1; // self-intersecting: no triangulation is correct, so cut any corner
            const std::size_t n = remaining.size();
            triangles.insert(triangles.end(), {corners_[remaining[(ear + n - 1) % n]], corners_[remaining[ear]],
                                               corners_[remaining[(ear + 1) % n]]});
            remaining.erase(remaining.begin() + static_cast<std::ptrdiff_t>(ear));
        }
    }

private:
    // Newell's method, which also works for polygons that are not quite planar.
    static Vector newellNormal(std::span<const u32> corners, std::span<const float> points) {
        Vector normal{};
        const auto at = [&](std::size_t i, std::size_t axis) {
            return static_cast<double>(points[3 * corners[i] + axis]);
        };
        for (std::size_t i = 0; i < corners.size(); ++i) {
            const std::size_t next = (i + 1) % corners.size();
            for (std::size_t axis = 0; axis < 3; ++axis) {
                const std::size_t a = (axis + 1) % 3;
                const std::size_t b = (axis + 2) % 3;
                normal[axis] += (at(i, a) - at(next, a)) * (at(i, b) + at(next, b));
            }
        }
        return normal;
    }

    [[nodiscard]] bool isEar(std::span<const std::size_t> remaining, std::size_t at) const {
        const std::size_t n = remaining.size();
        const Point2& a = projected_[remaining[(at + n - 1) % n]];
        const Point2& b = projected_[remaining[at]];
        const Point2& c = projected_[remaining[(at + 1) % n]];
        if (doubleArea(a, b, c) <= 0)
            return false;
        for (std::size_t i = 0; i + 3 < n; ++i) {
            const Point2& other = projected_[remaining[(at + 2 + i) % n]];
            if (doubleArea(a, b, other) >= 0 && doubleArea(b, c, other) >= 0 && doubleArea(c, a, other) >= 0)
                return false;
        }
        return true;
    }

    std::span<const u32> corners_;
    std::vector<Point2> projected_;
};

} // namespace

bool addTriangles(std::span<const u32> corners, std::span<const float> points, std::vector<u32>& triangles) {
    constexpr std::size_t maxClippedCorners = 1000; // ear clipping takes O(n^2) to O(n^3) time
    const Polygon polygon(corners, points);
    const bool isConvex = corners.size() == 3 || polygon.isConvex();
    if (isConvex || corners.size() > maxClippedCorners)
        polygon.fan(triangles);
    else
        polygon.clipEars(triangles);
    return isConvex || corners.size() <= maxClippedCorners;
}

} // namespace vrn::convert
