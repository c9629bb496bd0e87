// What an output format can express.
#pragma once

#include "convert/shared/SceneNames.h"

namespace vrn::convert {

struct TargetFormat {
    bool hasPolygons = false;
    bool hasLinesAndPoints = false;
    bool hasMaterials = false;
    bool hasScene = false; // node hierarchy, cameras, lights, skins, animations, and all that glTF has beyond others
    bool hasNormals = false;
    bool hasColors = false;
    bool hasTangents = false;
    std::size_t maxUvsets = 0;
};

} // namespace vrn::convert
