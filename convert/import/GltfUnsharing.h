// A glTF file as Assimp reads it without mistakes: it finds nodes by their names, and takes each camera, light and
// skinned mesh for that of one node.
#pragma once

#include "convert/import/GltfJson.h"

#include <vector>

namespace vrn::convert {

// Names each node by its number, and gives each a camera, a light and, if its skin is another one, a mesh of its own.
// Returns what the file loses by that.
[[nodiscard]] std::vector<std::string> unshare(GltfDocument& json);

} // namespace vrn::convert
