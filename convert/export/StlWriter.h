// Writes scenes as STL files.
#pragma once

#include "convert/export/WriteOptions.h"
#include "convert/shared/Losses.h"
#include "convert/shared/TexturePaths.h"
#include "scene/Scene.h"

#include <string>

namespace vrn::convert {

// Writes the triangles of all meshes, in world space, with the normals of their planes. Binary, unless `options` ask
// for text. Linear; memory for a part of the file. Throws ContentError if there is no mesh, and vor::OutputFileError.
void writeStl(const Scene& scene, const std::string& path, Losses& losses, const TexturePaths& paths,
              const WriteOptions& options);

} // namespace vrn::convert
