// Works around Assimp's handling of shared glTF objects: it finds nodes by name, and assumes that each camera, light
// and skinned mesh belongs to a single node.
#pragma once

#include "convert/import/GltfJson.h"

#include <vector>

namespace vrn::convert {

// Renames each node to its index and duplicates shared cameras and lights, and meshes that are used with several skins.
// Also removes skins that would crash Assimp. Returns the losses.
[[nodiscard]] std::vector<std::string> unshare(GltfDocument& json);

} // namespace vrn::convert
