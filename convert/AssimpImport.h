// Whatever Assimp reads as a scene.
#pragma once

#include "convert/Convert.h"

#include <string>

namespace vrn::convert {

// Reads the file into an empty scene, its textures being at `paths`; `listener` may be empty. Throws FileError and
// ContentError.
void importModel(const std::string& path, Scene& scene, const TexturePaths& paths, Losses& losses,
                 const ReadListener& listener);

} // namespace vrn::convert
