// Skins and the nodes that they deform.
#pragma once

#include "convert/import/gltf/GltfContext.h"

namespace vrn::convert {

// Imports all skins and refers to them from the instances that they deform; after the nodes.
void importSkins(GltfContext& context);

} // namespace vrn::convert
