// Expands folders among the arguments of a command.
#pragma once

#include "scene/core/String.h"

#include <string>
#include <vector>

namespace vrn::cli {

struct NamedScene {
    std::string name;
    vor::String trouble{}; // the reason, if it cannot be read or is a folder without scenes
};

// The arguments, each folder replaced by every `*.vrn` file below it, sorted by path. Skips names with a leading dot,
// symbolic links to folders (except arguments), and anything that is not a file, such as a pipe.
[[nodiscard]] std::vector<NamedScene> expandFolders(const std::vector<std::string>& arguments);

} // namespace vrn::cli
