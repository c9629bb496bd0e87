// File extensions, which determine formats.
#pragma once

#include <string>

namespace vrn::convert {

// The extension of a path with its dot, in lower case; empty if there is none.
[[nodiscard]] std::string extensionOf(const std::string& path);

} // namespace vrn::convert
