// Scenes as glTF 2.0: a `.glb` with everything in one file, or a `.gltf` with its numbers in a `.bin` beside it.
//
// Numbers are written as they stand in the scene's buffers, bit for bit, without a copy of them being made.
#pragma once

#include "convert/model/Model.h"

#include <string>

namespace vrn::convert {

inline constexpr Target gltfTarget{.hasPolygons = false,
                                   .hasLinesAndPoints = true,
                                   .hasMaterials = true,
                                   .hasScene = true,
                                   .hasColors = true,
                                   .hasTangents = true,
                                   .uvsets = 8};

// Throws FileError. A file of more than 4 GiB can only be a `.gltf`.
void writeGlb(const Model& model, const std::string& path, Losses& losses);
void writeGltf(const Model& model, const std::string& path, Losses& losses);

} // namespace vrn::convert
