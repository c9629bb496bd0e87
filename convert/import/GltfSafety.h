// Checks for glTF files on which Assimp would recurse too deeply or forever.
#pragma once

#include "convert/import/GltfJson.h"

namespace vrn::convert {

// Whether arrays and objects of a JSON text are nested more than 1000 levels deep. The JSON may be invalid.
[[nodiscard]] bool isNestedTooDeeply(std::string_view json);

// Why the node hierarchy is not a forest of at most 1000 levels; empty if it is one.
[[nodiscard]] std::string hierarchyProblem(const GltfValue& json);

} // namespace vrn::convert
