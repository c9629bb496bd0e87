// Imports animations of nodes.
#pragma once

#include "convert/import/assimp/ImportContext.h"

namespace vrn::convert {

// Creates an `animation` for each animation. Call after importNodes().
void importAnimations(ImportContext& context);

} // namespace vrn::convert
