// Where the nodes of a model show its meshes.
#pragma once

#include "convert/model/Model.h"
#include "convert/model/NodeHierarchy.h"

namespace vrn::convert {

// The transform of one of the instances of a node, within that of the node.
[[nodiscard]] Matrix instanceMatrix(const Instances& instances, std::size_t index);

// Whether each node is in the scene that is shown first: the default one, or else the first one. Without scenes, all
// nodes are shown.
[[nodiscard]] std::vector<bool> shownNodes(const Model& model);

// Calls `show(node, geometry, world)` for each geometry of each shown node, in the order of the nodes: its own, its
// parts, and these once for each of its instances.
void forEachShownMesh(const Model& model, auto show) {
    const std::vector<bool> isShown = shownNodes(model);
    const std::vector<Matrix> worlds = worldMatrices(model.nodes);
    for (std::size_t i = 0; i < model.nodes.size(); ++i) {
        const ModelNode& node = model.nodes[i];
        if (node.geometry == none || !isShown[i])
            continue;
        const auto showAt = [&](const Matrix& world) {
            show(node, node.geometry, world);
            for (const u32 part : node.parts)
                show(node, part, world);
        };
        if (node.instances.count == 0)
            showAt(worlds[i]);
        for (std::size_t k = 0; k < node.instances.count; ++k)
            showAt(multiply(instanceMatrix(node.instances, k), worlds[i]));
    }
}

} // namespace vrn::convert
