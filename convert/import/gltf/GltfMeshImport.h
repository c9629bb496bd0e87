// Meshes with all of their attributes.
#pragma once

#include "convert/import/gltf/GltfContext.h"

namespace vrn::convert {

// Imports the meshes that nodes use, each primitive as a `mesh` node; after the materials.
void importMeshes(GltfContext& context);

} // namespace vrn::convert
