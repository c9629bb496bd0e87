// Builds the model of a scene.
#pragma once

#include "convert/model/Model.h"
#include "convert/shared/TexturePaths.h"

namespace vrn::convert {

// Reads what `target` can express, with texture paths rebased by `paths`; everything else is added to `losses`. The
// scene must outlive the model.
[[nodiscard]] Model buildModel(const Scene& scene, const TargetFormat& target, const TexturePaths& paths,
                               Losses& losses);

} // namespace vrn::convert
