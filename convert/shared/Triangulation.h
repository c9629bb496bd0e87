// Triangles of polygons.
#pragma once

#include "convert/shared/SceneNames.h"

#include <span>
#include <vector>

namespace vrn::convert {

// Appends the triangles of a polygon with the same vertices and orientation, n - 2 for n corners. `points` are x y z
// one after another. Concave polygons of up to 1,000 corners are triangulated correctly, larger ones as if they were
// convex: then returns false.
[[nodiscard]] bool addTriangles(std::span<const u32> corners, std::span<const float> points,
                                std::vector<u32>& triangles);

inline constexpr const char* lostConcavities = "concavities of polygons with more than 1,000 corners"; // a loss

} // namespace vrn::convert
