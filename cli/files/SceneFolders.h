// The scenes that the arguments of a command name.
#pragma once

#include "scene/core/String.h"

#include <string>
#include <vector>

namespace vrn::cli {

struct NamedScene {
    std::string name;
    vor::String trouble{}; // why there is nothing to read, for a folder that cannot be read or holds no scene
};

// The arguments, with every `*.vrn` below it, sorted by path, in place of a folder. Left out are names that begin with
// a dot, links to folders (but not a link that is an argument), and what is no file, such as a pipe.
[[nodiscard]] std::vector<NamedScene> expandFolders(const std::vector<std::string>& arguments);

} // namespace vrn::cli
