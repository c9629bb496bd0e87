// Brings the nodes of several scenes together.
#pragma once

#include "convert/shared/Losses.h"
#include "convert/shared/TexturePaths.h"

namespace vrn::convert {

// Adds copies of all nodes of `from`, with their links. Names that `scene` has already get a number, which is reported.
// Variants are numbered after those of `scene`. If only one of the two lists what its scenes show, the roots of the
// other come into its first one; meshes that no node shows get an instance for that.
void mergeScene(Scene& scene, Scene& from, Losses& losses);

// Rebases the relative paths of texture files.
void rebaseTextures(Scene& scene, const TexturePaths& paths);

} // namespace vrn::convert
