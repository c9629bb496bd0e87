// Imports skins.
#pragma once

#include "convert/import/assimp/ImportContext.h"

#include <array>
#include <vector>

namespace vrn::convert {

// The four joints of a vertex with the largest weights.
class BoneInfluences {
public:
    // False if a joint was dropped.
    bool add(u32 joint, float weight);

    [[nodiscard]] const std::array<u32, 4>& joints() const noexcept { return joints_; }
    [[nodiscard]] const std::array<float, 4>& weights() const noexcept { return weights_; }

private:
    std::array<u32, 4> joints_{};
    std::array<float, 4> weights_{};
};

// One per vertex of the mesh; none if it has no bones. Reports dropped joints as losses of `node`, unless it is null.
[[nodiscard]] std::vector<BoneInfluences> influencesOf(ImportContext& context, const aiMesh& mesh, const Node* node);

// Creates the skins of all meshes with bones and refers to them from the nodes that show these meshes. Call after
// importNodes(), which creates the joints.
void importSkins(ImportContext& context);

} // namespace vrn::convert
