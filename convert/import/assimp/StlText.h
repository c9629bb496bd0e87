// Writes the keywords of text STL files so that Assimp recognises them.
#pragma once

#include <string>

namespace vrn::convert {

// The file with keywords in lower case, because Assimp leaves facets out otherwise. Empty if the file is binary
// or has them in lower case already.
[[nodiscard]] std::string withLowerCaseKeywords(std::string_view content);

} // namespace vrn::convert
