// Materials and the textures they use.
#pragma once

#include "convert/model/ExportContext.h"

namespace vrn::convert {

// The index of a texture, which is read on first use; `none` for one without an image.
[[nodiscard]] u32 readTexture(ExportContext& context, const Node& node);

// The index of a material, which is read on first use; `none` for null.
[[nodiscard]] u32 readMaterial(ExportContext& context, const Node* node);

} // namespace vrn::convert
