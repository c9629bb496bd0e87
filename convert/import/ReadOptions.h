// How models are read.
#pragma once

#include "convert/scenes/Placement.h"

#include <string>

namespace vrn::convert {

struct ReadOptions {
    std::string format{}; // an extension with its dot; empty for that of the file
    PlacementOptions placement{};
    bool isTriangulated = false; // polygons become triangles
};

} // namespace vrn::convert
