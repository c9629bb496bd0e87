// The nodes that the text has defined, in its order, for the with statement to search.
#pragma once

#include "scene/Node.h"
#include "scene/core/HashMap.h"

namespace vor::velmo_sdk::impl {

class DefinedNodes {
public:
    // Appends a node, which may be null or there already.
    void add(Node* node) {
        ds::Vector<std::size_t>* places = places_.find(node);
        (places ? *places : places_.set(node, {})).push(nodes_.size());
        nodes_.push(node);
    }

    // Puts null in every place of a node that is about to go. O(1) for each place.
    void forget(Node* node) {
        ds::Vector<std::size_t>* places = places_.find(node);
        if (!places)
            return;
        for (const std::size_t place : *places)
            nodes_[place] = nullptr;
        places->clear(); // another node may come to stand at the same address
    }

    // The last node whose type is `type`, or null.
    [[nodiscard]] Node* lastOfType(const String& type) const {
        Node* match = nullptr;
        for (Node* node : nodes_)
            if (node && node->type() == type)
                match = node;
        return match;
    }

    [[nodiscard]] std::size_t size() const noexcept { return nodes_.size(); }
    [[nodiscard]] Node* operator[](std::size_t i) const noexcept { return nodes_[i]; }

private:
    ds::Vector<Node*> nodes_;
    ds::HashMap<Node*, ds::Vector<std::size_t>> places_;
};

} // namespace vor::velmo_sdk::impl
