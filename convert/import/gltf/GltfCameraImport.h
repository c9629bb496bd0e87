// Cameras and lights of nodes.
#pragma once

#include "convert/import/gltf/GltfContext.h"

namespace vrn::convert {

// Imports the camera and the light of a node, each connected to the place of the node. Those that several nodes share
// are duplicated.
void importCameraAndLight(GltfContext& context, const GltfValue& from, Node& node);

} // namespace vrn::convert
