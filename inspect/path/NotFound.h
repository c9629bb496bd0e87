// Says why a path leads to nothing.
//
//     const PathMatches matches = forEachMatch(scene, path, visit);
//     if (matches.count == 0)
//         throw NoSuchPath(notFoundText(scene, path, matches)); // not found below cam1; did you mean fov?
#pragma once

#include "inspect/path/ScenePath.h"

#include <string>

namespace vrn::inspect {

// The longest part of a path that leads to something, and the names that the next part may stand for. The names are
// escaped for terminals, the path is not. Linear in the nodes, or in the inputs next to the missing one.
[[nodiscard]] std::string notFoundText(const vor::velmo_sdk::impl::Scene& scene, const ScenePath& path,
                                       const PathMatches& matches);

} // namespace vrn::inspect
