// Checks PLY files, which Assimp misreads or ignores in part.
#pragma once

#include "convert/shared/Losses.h"

#include <string>

namespace vrn::convert {

// Reports elements and properties that are not read. Throws ContentError for `path` if the file has triangle strips or
// fewer data than its header says.
void checkPly(std::string_view content, const std::string& path, Losses& losses);

// Whether binary data begins with a line end, which Assimp takes for that of the header; and the content with another
// line end between the two, after which Assimp reads the data as they are.
[[nodiscard]] bool beginsDataWithLineEnd(std::string_view content);
[[nodiscard]] std::string withLineEndBeforeData(std::string_view content);

} // namespace vrn::convert
