// Refuses OBJ files that Assimp would misread.
#pragma once

#include "convert/shared/Losses.h"

#include <string>

namespace vrn::convert {

// Throws ContentError for `path` if a face refers to a vertex, texture coordinate or normal that the file does not
// have. Reports statements that are not read.
void checkObj(std::string_view content, const std::string& path, Losses& losses);

} // namespace vrn::convert
