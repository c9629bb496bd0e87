// The hierarchy of nodes, and its cycles.
//
//     Hierarchy hierarchy;
//     hierarchy.add(declared);             // every input that may have a role in the hierarchy
//     hierarchy.reportCycles(findings);
#pragma once

#include "check/Declared.h"
#include "check/Findings.h"

#include <unordered_map>
#include <vector>

namespace vrn::check {

class Hierarchy {
public:
    // Adds the link of an input from a node to its parent or to a child.
    void add(const Declared& declared);

    // Reports each link that closes a cycle in a search from parents to children. Linear in the links.
    void reportCycles(Findings& findings) const;

private:
    struct Child {
        std::size_t node;
        const Input* input; // that makes it a child
    };
    struct Place {
        const Node* node;
        std::vector<Child> children;
    };
    class Search;

    std::size_t placeOf(const Node& node);

    std::vector<Place> places_;
    std::unordered_map<const Node*, std::size_t> indices_; // into places_
};

} // namespace vrn::check
