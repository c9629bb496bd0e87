// Triangulation of polygons.
#pragma once

#include "convert/model/Model.h"

namespace vrn::convert {

// Replaces polygons by triangles with the same vertices and orientation, n - 2 for n corners. Concave polygons of up to
// 1,000 corners are triangulated correctly; larger ones as if they were convex, with a loss.
void triangulate(Geometry& geometry, Losses& losses);

} // namespace vrn::convert
