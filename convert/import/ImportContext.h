// The state that the steps of importing an Assimp scene share.
#pragma once

#include "convert/import/GltfFile.h"
#include "convert/shared/Losses.h"
#include "convert/shared/TexturePaths.h"
#include "scene/Scene.h"

#include <assimp/scene.h>
#include <map>
#include <unordered_map>
#include <unordered_set>

namespace vrn::convert {

struct ImportContext {
    const aiScene& from;
    Scene& scene;
    Losses& losses;
    bool isGltf = false;
    const GltfFile& gltf; // empty for other formats
    const TexturePaths& paths;
    struct ImportedNode {
        Node* node;
        const aiNode* from;
    };
    std::unordered_map<std::string, ImportedNode> nodes{};    // by their names in Assimp
    std::unordered_set<std::string> animatedNodes{};          // their names in Assimp
    std::map<unsigned, Node*> meshes{};                       // by mesh index; null for rejected ones
    std::map<unsigned, Node*> materials{};                    // by material index
    std::map<std::string, Node*> textures{};                  // by sampler settings and path
    std::unordered_map<std::string, u64> repeatedNodeNames{}; // how often each has been taken again

    // The imported node with a name in Assimp, or null.
    [[nodiscard]] Node* nodeOf(const aiString& name) const;

    // Creates a node whose identifier is derived from `name`, or from `fallback` if there is no name. The input `name`
    // keeps the name unchanged.
    Node& create(const char* type, std::string_view name, const char* fallback);
};

} // namespace vrn::convert
