// The node hierarchy.
#pragma once

#include "convert/import/gltf/GltfContext.h"

namespace vrn::convert {

// Imports all nodes with their transforms, meshes, instancing, cameras and lights; after the meshes. Refuses a
// hierarchy that is not a forest of at most 1000 levels.
void importNodes(GltfContext& context);

} // namespace vrn::convert
