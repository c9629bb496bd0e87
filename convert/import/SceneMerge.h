// Brings the nodes of several scenes together.
#pragma once

#include "convert/shared/Losses.h"
#include "convert/shared/TexturePaths.h"

namespace vrn::convert {

// Adds copies of all nodes of `from`, with their links. Names that `scene` has already get a number, which is reported.
void mergeScene(Scene& scene, const Scene& from, Losses& losses);

// Rebases the relative paths of texture files.
void rebaseTextures(Scene& scene, const TexturePaths& paths);

} // namespace vrn::convert
