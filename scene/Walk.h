// Visits every input of a node at any depth.
//
//     forEachInput(node, [](const Input& input) { print(input.label(), input.typeName()); });
#pragma once

#include "scene/InputCursor.h"
#include "scene/Node.h"

namespace vor::velmo_sdk::impl {

// Calls `visit(const Input&)` for all inputs of a node, members and elements in preorder. Iterative, because a file can
// nest inputs to any depth. `visit` must not add or remove inputs; its exceptions propagate. Linear in the inputs.
template <class Visit> void forEachInput(const Node& node, Visit visit) {
    for (InputCursor cursor(node.inputs()); !cursor.isDone();) {
        if (cursor.isAtEnd()) {
            cursor.leave();
            cursor.next();
        } else {
            visit(*cursor);
            cursor.enter();
        }
    }
}

} // namespace vor::velmo_sdk::impl
