// Reports what Assimp leaves out of DXF files.
#pragma once

#include "convert/shared/Losses.h"

#include <string>

namespace vrn::convert {

// Reports drawn entities that are neither faces nor lines, and warns of a file without an end.
void checkDxf(std::string_view content, const std::string& path, Losses& losses);

} // namespace vrn::convert
