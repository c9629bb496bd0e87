// Paths as the consumers of reports write them.
#pragma once

#include "scene/core/String.h"

#include <algorithm>
#include <string_view>

namespace vrn::inspect {

// The path without leading `./`.
[[nodiscard]] inline std::string_view comparablePath(const vor::String& path) {
    std::string_view rest = path;
    while (rest.starts_with("./"))
        rest.remove_prefix(std::min(rest.find_first_not_of('/', 1), rest.size()));
    return rest;
}

} // namespace vrn::inspect
