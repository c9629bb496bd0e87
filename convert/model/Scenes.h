// What a file contains besides the nodes of one scene.
#pragma once

#include "convert/model/ExportContext.h"

namespace vrn::convert {

// Reads the names of variants, what is said of the file, and the materials and textures, used or not, in their order.
// Before everything that refers to them.
void readFileContents(ExportContext& context);

// Reads the scenes that list some of the nodes; after the hierarchy.
void readScenes(ExportContext& context);

} // namespace vrn::convert
