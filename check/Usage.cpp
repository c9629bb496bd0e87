#include "check/Usage.h"

#include "check/Declared.h"
#include "check/Texts.h"
#include "scene/Walk.h"

#include <unordered_set>

namespace vrn::check {

using namespace vor;
using namespace vor::velmo_sdk::impl;

// The nodes that others link to, and the definitions that others are made from.
static std::unordered_set<const Node*> usedNodes(const Scene& scene) {
    std::unordered_set<const Node*> used;
    for (const Node& node : scene.nodes()) {
        if (const Node* definition = scene.findNode(node.type()); definition != &node)
            used.insert(definition);
        forEachInput(node, [&](const Input& input) {
            if (const Node* linked = input.linkedNode(); linked != &node)
                used.insert(linked);
        });
    }
    return used;
}

void checkUsage(const Scene& scene, const Catalogue& catalogue, Findings& findings) {
    const std::unordered_set<const Node*> used = usedNodes(scene);
    for (const Node& node : scene.nodes()) {
        const NodeType* type = catalogue.find(node.type());
        const bool mayBeUnused = node.isDefinition() || (type && !type->isRoot());
        if (mayBeUnused && !used.contains(&node))
            findings.add(node, messages::unused, shortened(node.key()).c_str());
    }
}

} // namespace vrn::check
