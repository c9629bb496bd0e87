// Vertices of a mesh whose faces have indices of their own for some attributes: points that differ in any of them.
#pragma once

#include "convert/model/Model.h"

namespace vrn::convert {

// Gives a geometry whose `indices` say only which points the corners have one vertex for each different combination
// of a point and the other indices, in the order in which the corners first use them. `attributes[i]` belongs to
// `uvsets[i]`, the last one to the normals; an empty one goes by point.
void weld(Geometry& geometry, const std::vector<Values<u32>>& attributes);

} // namespace vrn::convert
