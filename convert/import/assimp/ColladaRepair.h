// Repairs COLLADA files that Assimp misreads.
#pragma once

#include <string>

namespace vrn::convert {

// Gives cameras without a name an empty one: otherwise Assimp ignores what they contain.
[[nodiscard]] std::string withNamedCameras(std::string content);

} // namespace vrn::convert
