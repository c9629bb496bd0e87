// The same numbers and nodes from JSON with simdjson On-Demand: bench_json plain|tuned|graph FILE.json
//
// plain is what most users write; tuned keeps the parser and reserves the arrays; graph fills a
// plain scene of nodes with inputs and links.
#include "bench/Process.h"

#include <array>
#include <memory>
#include <simdjson.h>
#include <tuple>
#include <unordered_map>
#include <variant>

using namespace simdjson;

struct Mesh {
    std::vector<float> points;
    std::vector<int> indices;
};

static void readMesh(ondemand::parser& parser, const padded_string& json, Mesh& mesh) {
    ondemand::document document = parser.iterate(json);
    for (const double value : document["points"].get_array())
        mesh.points.push_back(static_cast<float>(value));
    for (const int64_t value : document["indices"].get_array())
        mesh.indices.push_back(static_cast<int>(value));
}

// A plain scene that can hold what ours does: nodes by name, inputs of any type by name, links.
struct Node;
struct Input {
    std::string name;
    std::variant<std::monostate, int64_t, double, std::array<double, 4>, std::string> value;
    const Node* target = nullptr;
};
struct Node {
    std::string type;
    std::string name;
    std::vector<Input> inputs;

    Input& input(std::string_view key) {
        for (Input& each : inputs)
            if (each.name == key)
                return each;
        return inputs.emplace_back(Input{std::string(key), {}, nullptr});
    }
};
struct Graph {
    std::vector<std::unique_ptr<Node>> nodes;
    std::unordered_map<std::string_view, Node*> byName;
    std::vector<std::tuple<Node*, std::size_t, std::string>> links;

    void resolve() {
        for (const auto& [node, input, source] : links) {
            const auto found = byName.find(std::string_view(source).substr(0, source.find('.')));
            node->inputs[input].target = found == byName.end() ? nullptr : found->second;
        }
    }
};

static std::array<double, 4> realsOf(ondemand::value list) {
    std::array<double, 4> reals = {0, 0, 0, 1};
    std::size_t i = 0;
    for (const double real : list.get_array())
        reals[i++] = real;
    return reals;
}

static void readField(Graph& graph, Node& node, std::string_view key, ondemand::value value) {
    Input& input = node.input(key);
    if (key == "target")
        graph.links.emplace_back(&node, node.inputs.size() - 1, std::string_view(value));
    else if (key == "samples")
        input.value = int64_t(value);
    else if (key == "intensity")
        input.value = double(value);
    else if (key == "label")
        input.value = std::string(value.get_string().value());
    else
        input.value = realsOf(value);
}

static void readGraph(ondemand::parser& parser, const padded_string& json, Graph& graph) {
    ondemand::document document = parser.iterate(json);
    for (ondemand::object object : document["nodes"].get_array()) {
        Node& node = *graph.nodes.emplace_back(std::make_unique<Node>());
        for (ondemand::field field : object) {
            const std::string_view key = field.unescaped_key();
            if (key == "type") {
                node.type = field.value().get_string().value();
            } else if (key == "name") {
                node.name = field.value().get_string().value();
                graph.byName.emplace(node.name, &node);
            } else {
                readField(graph, node, key, field.value());
            }
        }
    }
    graph.resolve();
}

int main(int argc, char** argv) {
    if (argc != 3)
        return 2;
    const std::string mode = argv[1];
    const padded_string json = padded_string::load(argv[2]);
    if (mode == "graph") {
        std::unique_ptr<Graph> graph;
        const auto read = [&] {
            graph = std::make_unique<Graph>();
            ondemand::parser parser;
            readGraph(parser, json, *graph);
        };
        return vrn::bench::measure("json-graph", argv[2], read, [&] { graph.reset(); });
    }
    ondemand::parser kept;
    std::unique_ptr<Mesh> mesh;
    const auto read = [&] {
        mesh = std::make_unique<Mesh>();
        if (mode == "plain") {
            ondemand::parser parser;
            return readMesh(parser, json, *mesh);
        }
        mesh->points.reserve(3000000);
        mesh->indices.reserve(6000000);
        readMesh(kept, json, *mesh);
    };
    return vrn::bench::measure(("json-" + mode).c_str(), argv[2], read, [&] { mesh.reset(); });
}
