// Collects what Assimp logs while it reads a file. Its log is global, so that one file is read at a time.
#pragma once

#include "convert/shared/Losses.h"

namespace vrn::convert {

class AssimpLog {
public:
    // Adds warnings and errors to `losses` until it is destroyed.
    explicit AssimpLog(Losses& losses);
    ~AssimpLog();
    AssimpLog(const AssimpLog&) = delete;
    AssimpLog& operator=(const AssimpLog&) = delete;
};

} // namespace vrn::convert
