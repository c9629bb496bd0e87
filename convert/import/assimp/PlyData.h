// Refuses PLY files that end too early, from which Assimp would make elements up.
#pragma once

#include <string>
#include <string_view>

namespace vrn::convert {

// Throws ContentError for `path` if there are fewer data than the header says. `data` follows the header.
void checkPlyData(std::string_view header, std::string_view data, const std::string& path);

} // namespace vrn::convert
