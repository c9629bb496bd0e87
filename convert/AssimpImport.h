// Whatever Assimp reads as a scene.
#pragma once

#include "convert/Losses.h"

#include <string>

namespace vrn::convert {

// Reads the file into an empty scene. Throws FileError and ContentError.
void importModel(const std::string& path, Scene& scene, Losses& losses);

} // namespace vrn::convert
