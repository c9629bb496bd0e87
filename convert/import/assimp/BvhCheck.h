// Refuses BVH files that Assimp would misread.
#pragma once

#include <string>
#include <string_view>

namespace vrn::convert {

// Throws ContentError for `path` if a joint moves with other than six channels, whose positions Assimp leaves out.
void checkBvh(std::string_view content, const std::string& path);

} // namespace vrn::convert
