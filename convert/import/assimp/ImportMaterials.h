// Imports materials and their textures.
#pragma once

#include "convert/import/assimp/ImportContext.h"

namespace vrn::convert {

// Whether Assimp added the material as the default for meshes without one.
[[nodiscard]] bool isDefaultMaterial(const ImportContext& context, unsigned index);

// The node of a material, which is created on first use; null for the default material.
[[nodiscard]] Node* importMaterial(ImportContext& context, unsigned index);

} // namespace vrn::convert
