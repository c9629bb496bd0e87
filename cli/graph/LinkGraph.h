// The nodes of a scene and the links between them.
#pragma once

#include "scene/Scene.h"

#include <vector>

namespace vrn::cli {

// A connection or reference in the direction of data flow: from the node that an input is connected to, or refers to,
// to the node of the input.
struct LinkEdge {
    std::size_t from; // index into LinkGraph::nodes
    std::size_t to;
    const vor::velmo_sdk::impl::Input* input;
    const vor::velmo_sdk::impl::Output* output; // null for a reference
};

struct LinkGraph {
    std::vector<const vor::velmo_sdk::impl::Node*> nodes; // in the order of the scene
    std::vector<LinkEdge> edges;                          // sorted by `to`, then in the order of the inputs
};

[[nodiscard]] LinkGraph linksOf(const vor::velmo_sdk::impl::Scene& scene);

// The subgraph of the nodes at most `hops` links, in any direction, away from `centre`.
[[nodiscard]] LinkGraph neighbourhood(const LinkGraph& graph, const vor::velmo_sdk::impl::Node& centre, vor::u64 hops);

} // namespace vrn::cli
