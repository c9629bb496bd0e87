// Distinguishes files that cannot be read, a FileError, from invalid ones, a ContentError.
#pragma once

#include <string>

namespace vrn::convert {

// Throws FileError if the file cannot be opened or is a pipe or device, from which reading might never end.
void checkReadable(const std::string& path);

} // namespace vrn::convert
