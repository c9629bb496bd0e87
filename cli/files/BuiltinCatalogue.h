// The text of catalogues/scene.json. The build makes the source file.
#pragma once

#include <string_view>

namespace vrn::cli {

extern const std::string_view builtinCatalogue;

} // namespace vrn::cli
