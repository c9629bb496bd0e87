// Whatever Assimp reads as a scene.
#pragma once

#include "convert/shared/Errors.h"
#include "convert/shared/Losses.h"
#include "convert/shared/ReadListener.h"
#include "convert/shared/TexturePaths.h"

#include <string>

namespace vrn::convert {

// Reads the file into an empty scene, its textures being at `paths`; `listener` may be empty. Throws FileError and
// ContentError.
void importModel(const std::string& path, Scene& scene, const TexturePaths& paths, Losses& losses,
                 const ReadListener& listener);

} // namespace vrn::convert
