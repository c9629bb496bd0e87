// The primitive modes of glTF, as lists of points, lines or triangles.
#pragma once

#include "convert/import/gltf/GltfJson.h"

#include <optional>
#include <vector>

namespace vrn::convert {

struct PrimitiveList {
    const char* topology; // as in the input of that name
    std::vector<u32> indices;
    bool isSequence; // whether the indices are 0, 1, 2, ...
};

// Turns strips, fans and loops into lists with the same order and winding. `mode` is the value in the file, `indices`
// those of the primitive; without them the vertices are used in their order. Refuses unknown modes. Corners after the
// last complete line or triangle have no effect; `isComplete` becomes false if there are any.
[[nodiscard]] PrimitiveList listOf(const GltfValue& mode, std::optional<std::vector<u32>> indices, u64 vertices,
                                   bool& isComplete);

} // namespace vrn::convert
