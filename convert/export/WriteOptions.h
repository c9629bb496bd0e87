// How files of formats that have both a binary and a text form are written.
#pragma once

namespace vrn::convert {

struct WriteOptions {
    bool isAscii = false; // PLY and STL as text
};

} // namespace vrn::convert
