// Writes scenes as OBJ files.
#pragma once

#include "convert/shared/Losses.h"
#include "convert/shared/TexturePaths.h"
#include "scene/Scene.h"

#include <string>

namespace vrn::convert {

// Writes each node that shows a mesh as an object, in world space: vertices, with their colours if there are any,
// faces, lines and points. Materials go to a file of the same name with the extension .mtl. Linear; memory for a part
// of the text. Throws ContentError if there is no mesh, and vor::OutputFileError.
void writeObj(const Scene& scene, const std::string& path, Losses& losses, const TexturePaths& paths);

} // namespace vrn::convert
