// How files are written.
#pragma once

#include <string>

namespace vrn::convert {

struct WriteOptions {
    std::string format{}; // an extension with its dot; empty for that of the file
    bool isAscii = false; // PLY and STL as text
};

} // namespace vrn::convert
