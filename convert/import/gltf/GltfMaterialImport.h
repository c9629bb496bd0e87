// Materials with all of their extensions.
#pragma once

#include "convert/import/gltf/GltfContext.h"

namespace vrn::convert {

// Imports all materials; after the textures. convert/shared/MaterialTable.h lists what they have beyond the core model.
void importMaterials(GltfContext& context);

} // namespace vrn::convert
