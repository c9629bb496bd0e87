// Writes OBJ, PLY and STL: meshes with applied transforms and, in OBJ, simple materials.
#pragma once

#include "convert/shared/Losses.h"
#include "convert/shared/TexturePaths.h"

#include <string>

namespace vrn::convert {

// Throw FileError, ContentError if there is no mesh, and vor::OutputFileError. writeObj() writes a material library
// next to the file.
void writeObj(const Scene& scene, const std::string& path, Losses& losses, const TexturePaths& paths);
void writePly(const Scene& scene, const std::string& path, Losses& losses, const TexturePaths& paths);
void writeStl(const Scene& scene, const std::string& path, Losses& losses, const TexturePaths& paths);

} // namespace vrn::convert
