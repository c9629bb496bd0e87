// What an output format can express.
#pragma once

#include "convert/shared/SceneNames.h"

#include <limits>

namespace vrn::convert {

struct TargetFormat {
    bool hasPolygons = false;
    u32 maxPolygonCorners = std::numeric_limits<u32>::max();
    bool hasLinesAndPoints = false;
    bool hasMaterials = false;
    bool hasScene = false; // node hierarchy, cameras, lights, skins, animations
    bool hasColors = false;
    bool hasTangents = false;
    std::size_t maxUvsets = 0;
};

} // namespace vrn::convert
