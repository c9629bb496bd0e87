// Visiting every input of a node, however deep.
#pragma once

#include "scene/Node.h"

#include <vector>

namespace vor::velmo_sdk::impl {

// Calls `visit(const Input&)` for the inputs of a node and all below them, parents first, siblings in
// order. Does not recurse: a text may nest inputs as deep as it likes.
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
