// Skin weights as glTF requires them.
#pragma once

#include "convert/model/Model.h"

namespace vrn::convert {

// Four joints and weights per vertex.
struct GltfInfluences {
    std::vector<u16> joints{};
    std::vector<float> weights{};
};

// The same influences, where the weights of each vertex are not negative and sum to 1, no joint has two of them, and
// those without weight are joint 0. Joints are below 65536. Sets `isChanged` if weights were scaled.
[[nodiscard]] std::vector<GltfInfluences> validInfluences(const std::vector<Influences>& influences, bool& isChanged);

} // namespace vrn::convert
