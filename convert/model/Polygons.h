// Polygons as triangles.
#pragma once

#include "convert/model/Model.h"

namespace vrn::convert {

// Makes triangles of the polygons of a geometry; dents are kept to. A polygon of n corners becomes n - 2 triangles
// whose corners are its own, in its direction.
void triangulate(Geometry& geometry, Losses& losses);

} // namespace vrn::convert
