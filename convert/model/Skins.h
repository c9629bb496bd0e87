// Skins: joints and their inverse bind matrices.
#pragma once

#include "convert/model/ExportContext.h"

namespace vrn::convert {

// Reads the skins of all nodes whose geometry has weights. Call after readGeometries().
void readSkins(ExportContext& context);

} // namespace vrn::convert
