// Scenes as OBJ, PLY and STL, which know meshes and their places, and of materials only a little.
#pragma once

#include "convert/model/Model.h"

#include <string>

namespace vrn::convert {

inline constexpr Target objTarget{.hasPolygons = true, .hasLinesAndPoints = true, .hasMaterials = true, .uvsets = 1};
inline constexpr Target plyTarget{.hasPolygons = true, .mostCorners = 255, .hasColors = true, .uvsets = 1};
inline constexpr Target stlTarget{};

// Writes with the exporter that Assimp has under the name `format`. A material library goes into a file beside. Throws
// FileError.
void exportModel(const Model& model, const char* format, const std::string& path, Losses& losses);

} // namespace vrn::convert
