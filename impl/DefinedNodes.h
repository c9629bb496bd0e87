// The nodes that the text defines, in order of definition, which the `with` statement searches.
#pragma once

#include "scene/Node.h"
#include "scene/core/HashMap.h"

namespace vor::velmo_sdk::impl {

class DefinedNodes {
public:
    // Appends a node; null and duplicates are allowed.
    void add(Node* node) {
        ds::Vector<std::size_t>* places = places_.find(node);
        (places ? *places : places_.set(node, {})).push(nodes_.size());
        nodes_.push(node);
    }

    // Replaces all occurrences of a node by null; call before it is destroyed. O(1) for each occurrence.
    void forget(Node* node) {
        ds::Vector<std::size_t>* places = places_.find(node);
        if (!places)
            return;
        for (const std::size_t place : *places)
            nodes_[place] = nullptr;
        places->clear(); // a later node may have the same address
    }

    // The last node of a type, or null. Linear in the number of definitions.
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
