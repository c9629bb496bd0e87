// The vertical texture coordinates of a glTF file as they stand in it.
//
// Assimp turns them upside down when it reads them, which costs digits; this looks into the file itself. It looks for
// no more than that: whatever it does not understand, it does not know.
#pragma once

#include "scene/core/Types.h"

#include <memory>
#include <string>
#include <vector>

namespace vrn::convert {

class GltfCoordinates {
public:
    GltfCoordinates(); // knows none
    explicit GltfCoordinates(const std::string& path);
    ~GltfCoordinates();
    GltfCoordinates(const GltfCoordinates&) = delete;
    GltfCoordinates& operator=(const GltfCoordinates&) = delete;

    // The second coordinate of each vertex, `primitive` counting those of all meshes; empty if they are not known, or
    // are not `vertices`.
    [[nodiscard]] std::vector<float> verticals(vor::u32 primitive, vor::u32 set, vor::u64 vertices) const;

private:
    struct Contents;
    std::unique_ptr<Contents> contents_;
};

} // namespace vrn::convert
