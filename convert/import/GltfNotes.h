// What a glTF file says that does not come out of Assimp, or has no place in a scene.
#pragma once

#include "convert/import/GltfJson.h"

#include <vector>

namespace vrn::convert {

[[nodiscard]] std::vector<std::string> lostParts(const GltfValue& json);

} // namespace vrn::convert
