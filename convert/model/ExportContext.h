// The state that the steps of building a Model share.
#pragma once

#include "convert/model/Model.h"

#include <unordered_map>
#include <unordered_set>

namespace vrn::convert {

struct ExportContext {
    const Scene& scene;
    const TargetFormat& target;
    Losses& losses;
    Model model{};
    // The index of each node's counterpart in the model; `none` if the node was rejected.
    std::unordered_map<const Node*, u32> nodeIndices{};
    std::unordered_map<const Node*, u32> geometryIndices{};
    std::unordered_map<const Node*, u32> materialIndices{};
    std::unordered_map<const Node*, u32> textureIndices{};
    std::unordered_map<const Node*, u32> skinIndices{};
    std::unordered_set<const Node*> visited{}; // nodes that some step has read, successfully or not

    [[nodiscard]] u32 nodeIndex(const Node* node) const {
        const auto found = nodeIndices.find(node);
        return node && found != nodeIndices.end() ? found->second : none;
    }

    ModelNode& addNode(const Node& node) {
        nodeIndices.emplace(&node, static_cast<u32>(model.nodes.size()));
        visited.insert(&node);
        ModelNode& added = model.nodes.emplace_back();
        added.source = &node;
        return added;
    }
};

} // namespace vrn::convert
