// Animations with all of their channels.
#pragma once

#include "convert/import/gltf/GltfContext.h"

namespace vrn::convert {

// Imports all animations; after the nodes.
void importAnimations(GltfContext& context);

} // namespace vrn::convert
