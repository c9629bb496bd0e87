// Parses FBX files in text form.
#pragma once

#include "convert/import/fbx/FbxElement.h"

namespace vrn::convert {

// The sections of a file, with views into `content`. Throws ContentError for `path` if they are damaged.
[[nodiscard]] std::vector<FbxElement> parseFbxText(std::string_view content, const std::string& path);

} // namespace vrn::convert
