// Writes the vertices of OBJ files so that Assimp reads them right.
#pragma once

#include "convert/shared/Losses.h"

#include <string>

namespace vrn::convert {

// The file with three coordinates in each vertex, and three numbers of a colour in all of them or none. Assimp leaves
// vertices of other forms out and gives colours to wrong vertices. Empty if the file is of that form already. Throws
// ContentError for `path`.
[[nodiscard]] std::string withUniformVertices(std::string_view content, const std::string& path, Losses& losses);

} // namespace vrn::convert
