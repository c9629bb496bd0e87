// The order in which nodes are imported.
#pragma once

#include "convert/import/gltf/GltfJson.h"

#include <vector>

namespace vrn::convert {

// The nodes in the order in which parents precede children and siblings have the order of the file: first those of the
// scenes, then the others.
struct GltfHierarchy {
    static constexpr u64 none = ~u64(0);
    std::vector<u64> order{};
    std::vector<u64> parents{}; // by node; none for roots
};

// Refuses nodes with several parents, cycles, more than 1000 levels, and scenes that contain nodes with a parent.
[[nodiscard]] GltfHierarchy readHierarchy(const GltfValue& root);

} // namespace vrn::convert
