// Imports cameras and lights.
#pragma once

#include "convert/import/assimp/ImportContext.h"

namespace vrn::convert {

// Create a `camera` or `light` for each, connected to the node that positions it. Call after importNodes().
void importCameras(ImportContext& context);
void importLights(ImportContext& context);

} // namespace vrn::convert
