// Reads whole files.
#pragma once

#include <string>

namespace vrn::convert {

// The bytes of a file. Throws FileError.
[[nodiscard]] std::string readContent(const std::string& path);

// The same; text in UTF-16 becomes UTF-8.
[[nodiscard]] std::string readText(const std::string& path);

} // namespace vrn::convert
