// The material library (MTL) of an OBJ file.
#pragma once

#include "convert/model/Model.h"
#include "scene/core/OutputFile.h"

#include <string>
#include <vector>

namespace vrn::convert {

// The names of materials that other programs take for no material.
inline constexpr const char* noMaterialName = "DefaultMaterial";

// Writes the materials under these names, one for each, and an empty one under noMaterialName. Colours, opacity and the
// maps for them are those of the original format; metallic, roughness and normal maps have the names that most programs
// read. What cannot be said is added to the losses.
void writeMaterialLibrary(vor::OutputFile& file, const Model& model, const std::vector<std::string>& names,
                          Losses& losses);

} // namespace vrn::convert
