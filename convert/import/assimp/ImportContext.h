// The state that the steps of importing an Assimp scene share.
#pragma once

#include "convert/import/assimp/MtlTransforms.h"
#include "convert/scenes/Placement.h"
#include "convert/shared/Losses.h"
#include "convert/shared/NodeMaker.h"
#include "convert/shared/TexturePaths.h"
#include "scene/Scene.h"

#include <assimp/scene.h>
#include <map>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace vrn::convert {

struct ImportContext {
    const aiScene& from;
    Scene& scene;
    Losses& losses;
    const TexturePaths& paths;
    const MtlTransforms& mtl;
    Matrix rootMatrix = identity; // the transform of the root without the placement
    Placement placement{};
    bool isTriangulated = false; // polygons become triangles
    NodeMaker maker{scene};
    std::unordered_map<std::string, Node*> nodes{};      // by their names in Assimp
    std::unordered_set<std::string> animatedNodes{};     // their names in Assimp
    std::map<unsigned, Node*> meshes{};                  // by mesh index; null for rejected ones
    std::map<unsigned, Node*> materials{};               // by material index
    std::map<std::string, Node*> textures{};             // by sampler settings and path
    std::map<unsigned, std::vector<u32>> keptVertices{}; // by mesh index; those that no other one equals
    std::unordered_map<const aiNode*, Node*> made{};

    // The transforms of nodes, and of only their meshes, that do not come from Assimp.
    std::unordered_map<const aiNode*, Trs> localTransforms{};
    std::unordered_map<const aiNode*, Trs> meshTransforms{};
    std::unordered_map<unsigned, Matrix> meshMatrices{}; // the latter below the first node that shows a mesh

    // The imported node with a name in Assimp, or null.
    [[nodiscard]] Node* nodeOf(const aiString& name) const;

    [[nodiscard]] Matrix meshMatrix(unsigned mesh) const;

    Node& create(const char* type, std::string_view name, const char* fallback) {
        return maker.create(type, name, fallback);
    }
};

} // namespace vrn::convert
