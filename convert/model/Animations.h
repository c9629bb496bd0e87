// Animations of translations, rotations and scales.
#pragma once

#include "convert/model/ExportContext.h"

namespace vrn::convert {

// Reads all animations and decomposes the matrices of the nodes that they move. Call after readHierarchy().
void readAnimations(ExportContext& context);

} // namespace vrn::convert
