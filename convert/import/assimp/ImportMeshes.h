// Imports meshes.
#pragma once

#include "convert/import/assimp/ImportContext.h"

namespace vrn::convert {

// Creates a `mesh` for each valid mesh, and the materials that they use.
void importMeshes(ImportContext& context);

} // namespace vrn::convert
