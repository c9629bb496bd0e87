#include "cli/graph/LinkGraph.h"

#include "scene/Walk.h"

#include <algorithm>
#include <unordered_map>

namespace vrn::cli {

using namespace vor;
using namespace vor::velmo_sdk::impl;

namespace {

constexpr std::size_t noIndex = static_cast<std::size_t>(-1);

// Adjacency lists: the neighbours of node i are nodes[starts[i]] up to, and without, nodes[starts[i + 1]].
struct Neighbours {
    std::vector<std::size_t> starts;
    std::vector<std::size_t> nodes;
};

Neighbours neighboursIn(const LinkGraph& graph) {
    Neighbours neighbours;
    neighbours.starts.resize(graph.nodes.size() + 1);
    for (const LinkEdge& edge : graph.edges) {
        ++neighbours.starts[edge.from];
        ++neighbours.starts[edge.to];
    }
    std::size_t end = 0;
    for (std::size_t& start : neighbours.starts)
        start = end += start;
    neighbours.nodes.resize(end);
    for (const LinkEdge& edge : graph.edges) {
        neighbours.nodes[--neighbours.starts[edge.from]] = edge.to;
        neighbours.nodes[--neighbours.starts[edge.to]] = edge.from;
    }
    return neighbours;
}

// Whether each node is within `hops` links of the centre, by breadth-first search.
std::vector<bool> reachable(const LinkGraph& graph, std::size_t centre, u64 hops) {
    const Neighbours neighbours = neighboursIn(graph);
    std::vector<bool> isReached(graph.nodes.size());
    std::vector<std::size_t> ring{centre};
    isReached[centre] = true;
    for (u64 hop = 0; hop < hops && !ring.empty(); ++hop) {
        std::vector<std::size_t> next;
        for (const std::size_t node : ring)
            for (std::size_t i = neighbours.starts[node]; i < neighbours.starts[node + 1]; ++i)
                if (const std::size_t other = neighbours.nodes[i]; !isReached[other]) {
                    isReached[other] = true;
                    next.push_back(other);
                }
        ring = std::move(next);
    }
    return isReached;
}

} // namespace

LinkGraph linksOf(const Scene& scene) {
    LinkGraph graph;
    std::unordered_map<const Node*, std::size_t> indices;
    for (const Node& node : scene.nodes()) {
        indices[&node] = graph.nodes.size();
        graph.nodes.push_back(&node);
    }
    for (std::size_t to = 0; to < graph.nodes.size(); ++to)
        forEachInput(*graph.nodes[to], [&](const Input& input) {
            if (const Output* source = input.connection())
                graph.edges.push_back({indices.at(source->node()), to, &input, source});
            if (const Node* target = input.nodeValue())
                graph.edges.push_back({indices.at(target), to, &input, nullptr});
        });
    return graph;
}

LinkGraph neighbourhood(const LinkGraph& graph, const Node& centre, u64 hops) {
    const auto found = std::ranges::find(graph.nodes, &centre);
    const std::vector<bool> isReached = reachable(graph, static_cast<std::size_t>(found - graph.nodes.begin()), hops);
    LinkGraph part;
    std::vector<std::size_t> indices(graph.nodes.size(), noIndex);
    for (std::size_t i = 0; i < graph.nodes.size(); ++i)
        if (isReached[i]) {
            indices[i] = part.nodes.size();
            part.nodes.push_back(graph.nodes[i]);
        }
    for (const LinkEdge& edge : graph.edges)
        if (isReached[edge.from] && isReached[edge.to])
            part.edges.push_back({indices[edge.from], indices[edge.to], edge.input, edge.output});
    return part;
}

} // namespace vrn::cli
