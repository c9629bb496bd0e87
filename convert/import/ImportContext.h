// A scene of Assimp's on its way into one of ours: what the steps of that have made so far.
#pragma once

#include "convert/import/GltfFile.h"
#include "convert/shared/Losses.h"
#include "convert/shared/TexturePaths.h"
#include "convert/shared/Transform.h"
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
    const GltfFile& gltf; // knows nothing of other files
    const TexturePaths& paths;
    struct Place {
        Node* node;
        const aiNode* from;
    };
    std::unordered_map<std::string, Place> places{}; // by the name that Assimp has for them
    std::unordered_set<std::string> animated{};      // names of nodes that move
    std::map<unsigned, Node*> meshes{};              // by their number; null for one that was left out
    std::map<unsigned, Node*> skins{};               // by the number of their mesh
    std::map<unsigned, Node*> materials{};
    std::map<std::string, Node*> textures{};
    std::unordered_map<std::string, u64> names{}; // how often a name has been given

    // The node at the place of that name, or null.
    [[nodiscard]] Node* nodeOf(const aiString& name) const;

    // A new node whose name is made from `name`, which is kept as its input if it had to be changed or could be
    // mistaken. `otherwise` is for things without a name.
    Node& create(const char* type, std::string_view name, const char* otherwise);
};

void importMeshes(ImportContext& import);
void importNodes(ImportContext& import);
void importSkins(ImportContext& import); // of the meshes; after the nodes, which are their joints
void importCameras(ImportContext& import);
void importLights(ImportContext& import);
void importAnimations(ImportContext& import);
[[nodiscard]] bool isAdded(const ImportContext& import, unsigned material); // by Assimp, for meshes that have none
[[nodiscard]] Node* importMaterial(ImportContext& import, unsigned number); // null for the one that stands for none

// Setting inputs of new nodes.
void set(Node& node, const char* name, AttrData value);
void setMember(Input& object, const char* name, AttrData value);
void setText(Node& node, const char* name, std::string_view text);
void setNumbers(Node& node, const char* name, AttrType type, std::span<const double> numbers);
[[nodiscard]] AttrData numbersOf(AttrType type, std::span<const double> numbers);
void refer(Node& node, const char* name, Node& target);
void connect(Node& node, const char* name, Node& source, const char* output);

// The shortest decimal number that is the same float, such as 0.1.
[[nodiscard]] double plain(float number);

[[nodiscard]] Matrix matrixOf(const aiMatrix4x4& matrix);
[[nodiscard]] inline std::string_view textOf(const aiString& text) { return {text.data, text.length}; }

} // namespace vrn::convert
