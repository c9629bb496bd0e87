// Visits every input of a node at any depth.
//
//     forEachInput(node, [](const Input& input) { print(input.label(), input.typeName()); });
#pragma once

#include "scene/Node.h"

#include <vector>

namespace vor::velmo_sdk::impl {

// Calls `visit(const Input&)` for all inputs of a node, members and elements in preorder. Iterative, because a file can
// nest inputs to any depth. `visit` must not add or remove inputs; its exceptions propagate. Linear in the inputs.
template <class Visit> void forEachInput(const Node& node, Visit visit) {
    std::vector<std::span<const Input* const>> open{node.inputs()};
    while (!open.empty()) {
        if (open.back().empty()) {
            open.pop_back();
            continue;
        }
        const Input& input = *open.back().front();
        open.back() = open.back().subspan(1);
        visit(input);
        if (!input.children().empty())
            open.push_back(input.children());
    }
}

} // namespace vor::velmo_sdk::impl
