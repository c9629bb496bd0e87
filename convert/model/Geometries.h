// The geometries of a model.
#pragma once

#include "convert/model/ExportContext.h"

namespace vrn::convert {

// Reads the meshes and materials of all nodes of the hierarchy. A mesh that no node shows gets a node without a
// transform. Call after readHierarchy().
void readGeometries(ExportContext& context);

} // namespace vrn::convert
