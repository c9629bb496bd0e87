// Imports skins.
#pragma once

#include "convert/import/assimp/ImportContext.h"

namespace vrn::convert {

// Creates the skins of all meshes with bones and refers to them from the nodes that show these meshes. Call after
// importNodes(), which creates the joints.
void importSkins(ImportContext& context);

} // namespace vrn::convert
