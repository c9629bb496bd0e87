// Textures with their images and samplers.
#pragma once

#include "convert/import/gltf/GltfContext.h"

namespace vrn::convert {

// Imports all textures with their images and samplers.
void importTextures(GltfContext& context);

} // namespace vrn::convert
