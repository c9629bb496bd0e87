// Imports the formats that Assimp reads.
#pragma once

#include "convert/import/ReadOptions.h"
#include "convert/shared/Errors.h"
#include "convert/shared/Losses.h"
#include "convert/shared/ReadListener.h"
#include "convert/shared/TexturePaths.h"

#include <string>

namespace vrn::convert {

// Reads a file into an empty scene, with texture paths rebased by `paths`. `listener` may be empty. Throws FileError
// and ContentError.
void importModel(const std::string& path, Scene& scene, const TexturePaths& paths, Losses& losses,
                 const ReadOptions& options, const ReadListener& listener);

} // namespace vrn::convert
