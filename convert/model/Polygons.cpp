#include "convert/model/Polygons.h"

#include <cmath>

namespace vrn::convert {

namespace {

struct Flat {
    double x;
    double y;
};

// Twice the area of a triangle; negative if it turns clockwise.
double turn(const Flat& a, const Flat& b, const Flat& c) {
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

// One polygon, seen from the side from which it turns counterclockwise.
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
            flat_.push_back({static_cast<double>(points[3 * corner + x]), static_cast<double>(points[3 * corner + y])});
    }

    [[nodiscard]] bool isConvex() const {
        for (std::size_t i = 0; i < flat_.size(); ++i)
            if (turn(flat_[i], flat_[(i + 1) % flat_.size()], flat_[(i + 2) % flat_.size()]) < 0)
                return false;
        return true;
    }

    // Triangles around the first corner: right for all polygons without dents.
    void fan(std::vector<u32>& triangles) const {
        for (std::size_t i = 2; i < corners_.size(); ++i)
            triangles.insert(triangles.end(), {corners_[0], corners_[i - 1], corners_[i]});
    }

    // Cuts off a corner whose triangle holds no other corner, until three are left.
    void clipEars(std::vector<u32>& triangles) const {
        std::vector<std::size_t> left(corners_.size());
        for (std::size_t i = 0; i < left.size(); ++i)
            left[i] = i;
        while (left.size() > 2) {
            std::size_t ear = 0;
            while (ear < left.size() && !isEar(left, ear))
                ++ear;
            if (ear == left.size())
                ear = 1; // it crosses itself: nothing is right, and any corner will do
            const std::size_t n = left.size();
            triangles.insert(triangles.end(),
                             {corners_[left[(ear + n - 1) % n]], corners_[left[ear]], corners_[left[(ear + 1) % n]]});
            left.erase(left.begin() + static_cast<std::ptrdiff_t>(ear));
        }
    }

private:
    // A vector that stands upright on the polygon, also if it is not quite flat.
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

    [[nodiscard]] bool isEar(std::span<const std::size_t> left, std::size_t at) const {
        const std::size_t n = left.size();
        const Flat& a = flat_[left[(at + n - 1) % n]];
        const Flat& b = flat_[left[at]];
        const Flat& c = flat_[left[(at + 1) % n]];
        if (turn(a, b, c) <= 0)
            return false;
        for (std::size_t i = 0; i + 3 < n; ++i) {
            const Flat& other = flat_[left[(at + 2 + i) % n]];
            if (turn(a, b, other) >= 0 && turn(b, c, other) >= 0 && turn(c, a, other) >= 0)
                return false;
        }
        return true;
    }

    std::span<const u32> corners_;
    std::vector<Flat> flat_;
};

} // namespace

void triangulate(Geometry& geometry, Losses& losses) {
    constexpr std::size_t mostClipped = 1000; // corners: the time that clipping takes grows with their square or cube
    std::vector<u32> triangles;
    std::span<const u32> corners = geometry.indices.span();
    bool hasMore = false;
    for (const u32 count : geometry.faceCounts) {
        const std::span<const u32> face = corners.first(count);
        corners = corners.subspan(count);
        hasMore |= count > 3;
        const Polygon polygon(face, geometry.points.span());
        if (count <= mostClipped && count > 3 && !polygon.isConvex()) {
            polygon.clipEars(triangles);
            continue;
        }
        if (count > mostClipped && !polygon.isConvex())
            losses.add("dents of polygons with more than 1,000 corners", *geometry.source);
        polygon.fan(triangles);
    }
    if (hasMore)
        losses.add("polygons of more than three corners, now triangles", *geometry.source);
    geometry.indices = Values<u32>(std::move(triangles));
    geometry.faceCounts.clear();
    geometry.topology = Topology::Triangles;
}

} // namespace vrn::convert
