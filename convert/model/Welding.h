// Turns attributes with their own indices into attributes per vertex.
#pragma once

#include "convert/model/Model.h"

namespace vrn::convert {

// Creates one vertex per distinct combination of point and attribute indices, in the order of first use by a corner.
// On entry, `geometry.indices` are the points of the corners. `attributes[i]` has the indices of `uvsets[i]`, the last
// one those of the normals; an empty one means per point.
void weld(Geometry& geometry, const std::vector<Values<u32>>& attributes);

} // namespace vrn::convert
