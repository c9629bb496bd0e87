// What a file contains besides the nodes of one scene.
#pragma once

#include "convert/model/ExportContext.h"

namespace vrn::convert {

// Reads the names of variants and what is said of the file. Before the meshes, which refer to variants.
void readFileContents(ExportContext& context);

// Reads the scenes that list some of the nodes; after the hierarchy.
void readScenes(ExportContext& context);

// Reads the materials and textures that nothing uses; after the others.
void readUnused(ExportContext& context);

} // namespace vrn::convert
