// Imports the node hierarchy.
#pragma once

#include "convert/import/assimp/ImportContext.h"

namespace vrn::convert {

// Creates a `transform` or `instance` for each node. Call after importMeshes().
void importNodes(ImportContext& context);

} // namespace vrn::convert
