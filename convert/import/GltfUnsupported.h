// glTF features that Assimp or scenes do not support.
#pragma once

#include "convert/import/GltfJson.h"

#include <vector>

namespace vrn::convert {

// The features that a file uses, as losses.
[[nodiscard]] std::vector<std::string> unsupportedFeatures(const GltfValue& json);

} // namespace vrn::convert
