// The texture transforms of material libraries of OBJ files, which Assimp skips.
#pragma once

#include "convert/shared/Losses.h"

#include <array>
#include <assimp/material.h>
#include <map>
#include <string>

namespace vrn::convert {

// Texture coordinates are scaled, then moved; their origin is the lower left corner of the image.
struct MtlTransform {
    std::array<double, 2> offset = {0, 0};
    std::array<double, 2> scale = {1, 1};
};

class MtlTransforms {
public:
    explicit MtlTransforms(Losses& losses) : losses_(losses) {}

    // Takes the transforms (-o and -s) out of a library and returns the rest: Assimp misreads those with fewer than
    // three numbers.
    [[nodiscard]] std::string take(std::string_view library);

    // The transform of a map of a material, or null.
    [[nodiscard]] const MtlTransform* find(std::string_view material, aiTextureType type) const;

private:
    [[nodiscard]] std::string takeFromMap(std::string_view line, aiTextureType type);

    Losses& losses_;
    std::string material_{}; // that the lines belong to
    std::map<std::pair<std::string, aiTextureType>, MtlTransform> transforms_{};
};

} // namespace vrn::convert
