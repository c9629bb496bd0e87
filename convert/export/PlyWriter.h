// Writes scenes as PLY files.
#pragma once

#include "convert/export/WriteOptions.h"
#include "convert/shared/Losses.h"
#include "convert/shared/TexturePaths.h"
#include "scene/Scene.h"

#include <string>

namespace vrn::convert {

// Writes all meshes as one, in world space: vertices with normals, colours and one set of texture coordinates, faces,
// and lines as edges. Binary, unless `options` ask for text. Linear; memory for a
// part of the file. Throws ContentError if there is no mesh, and vor::OutputFileError.
void writePly(const Scene& scene, const std::string& path, Losses& losses, const TexturePaths& paths,
              const WriteOptions& options);

} // namespace vrn::convert
