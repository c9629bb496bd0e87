// Reads the same numbers and nodes from JSON with simdjson On-Demand: bench_json plain|tuned|graph FILE.json
//
// plain: as most users write it; tuned: reuses the parser and reserves the arrays; graph: builds a plain scene of nodes
// with inputs and links.
#include "bench/Process.h"

#include <memory>
#include <simdjson.h>
#include <unordered_map>
#include <vector>

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

// A plain scene: nodes by name, inputs by name with values of any type, links resolved at the end.
struct Node;
struct Input {
    std::string name;
    int type = 0;
    int64_t integer = 0;
    double reals[4] = {};
    std::string text;
    Node* target = nullptr;
};
struct Node {
    std::string type;
    std::string name;
    std::vector<Input> inputs;

    Input& input(std::string_view key) {
        for (Input& each : inputs)
            if (each.name == key)
                return each;
        Input& made = inputs.emplace_back();
        made.name = key;
        return made;
    }
};
struct Graph {
    std::vector<std::unique_ptr<Node>> nodes;
    std::unordered_map<std::string_view, Node*> byName;
    std::vector<std::pair<Input*, std::string>> links;

    Node& add(std::string_view type, std::string_view name) {
        Node& node = *nodes.emplace_back(std::make_unique<Node>());
        node.type = type;
        node.name = name;
        node.inputs.reserve(8);
        byName.emplace(node.name, &node);
        return node;
    }
    void resolve() {
        for (const auto& [input, source] : links) {
            const auto found = byName.find(std::string_view(source).substr(0, source.find('.')));
            input->target = found == byName.end() ? nullptr : found->second;
        }
    }
};

static void setReals(Node& node, const char* key, int type, ondemand::array values) {
    Input& input = node.input(key);
    input.type = type;
    std::size_t i = 0;
    for (const double real : values)
        input.reals[i++] = real;
}

// Looks up each field by name.
static void readGraph(ondemand::parser& parser, const padded_string& json, Graph& graph) {
    ondemand::document document = parser.iterate(json);
    for (ondemand::object object : document["nodes"].get_array()) {
        const std::string_view type = object["type"];
        Node& node = graph.add(type, object["name"]);
        setReals(node, "color", 11, object["color"].get_array());
        Input& intensity = node.input("intensity");
        intensity.type = 4;
        intensity.reals[0] = double(object["intensity"]);
        setReals(node, "position", 6, object["position"].get_array());
        Input& samples = node.input("samples");
        samples.type = 2;
        samples.integer = int64_t(object["samples"]);
        Input& label = node.input("label");
        label.type = 14;
        label.text = std::string_view(object["label"]);
        Input& target = node.input("target");
        target.type = 15;
        graph.links.emplace_back(&target, std::string_view(object["target"]));
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
