// What a file contains besides nodes.
#pragma once

#include "convert/import/gltf/GltfContext.h"

namespace vrn::convert {

// Imports the scenes, and what the file says of itself as a whole; after the nodes.
void importScenes(GltfContext& context);

} // namespace vrn::convert
