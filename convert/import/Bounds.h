// The bounding box of a mesh.
#pragma once

#include "convert/shared/SceneNames.h"

#include <span>

namespace vrn::convert {

// Sets the input `bounds` of a mesh. `points` are x y z of at least one point, without NaN.
void setBounds(Node& mesh, std::span<const float> points);

} // namespace vrn::convert
