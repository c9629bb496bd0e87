// The nodes of a scene and the links between them.
#pragma once

#include "scene/Scene.h"

#include <vector>

namespace vrn::cli {

// A connection or a reference, in the direction in which values go: from the node that an input is connected to or
// refers to, to the node of the input.
struct LinkEdge {
    std::size_t from; // index of a node
    std::size_t to;
    const vor::velmo_sdk::impl::Input* input;
    const vor::velmo_sdk::impl::Output* output; // null for a reference
};

struct LinkGraph {
    std::vector<const vor::velmo_sdk::impl::Node*> nodes; // in the order of the scene
    std::vector<LinkEdge> edges;                          // by `to`, in the order of the inputs
};

[[nodiscard]] LinkGraph linksOf(const vor::velmo_sdk::impl::Scene& scene);

// The part of it that is at most so many links, in any direction, away from a node of it.
[[nodiscard]] LinkGraph neighbourhood(const LinkGraph& graph, const vor::velmo_sdk::impl::Node& centre, vor::u64 hops);

} // namespace vrn::cli
