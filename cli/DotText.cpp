#include "cli/DotText.h"

#include "cli/ValueText.h"
#include "scene/core/TextEncoding.h"

#include <algorithm>
#include <map>

namespace vrn::cli {

using namespace vor;
using namespace vor::velmo_sdk::impl;

namespace {

constexpr std::size_t mostRows = 40; // of a node; the other links share one more
constexpr std::size_t mostCharacters = 40;

// A text for the inside of an HTML-like label, where backslashes begin escapes of DOT's own, too.
std::string escapedHtml(std::string_view text) {
    std::string escaped;
    for (const char c : escapedShort(text, mostCharacters)) {
        if (c == '&' || c == '<' || c == '>' || c == '"')
            escaped += "&#" + std::to_string(int(c)) + ';';
        else
            escaped += c == '\\' ? "\\\\" : std::string(1, c);
    }
    return escaped.empty() ? " " : escaped;
}

// The shades of a type: its hue comes from its name alone.
struct Shades {
    std::string fill;
    std::string line;
};

// Mixes the bits of a hash. Among many such numbers this one keeps the hues of common types the farthest apart.
constexpr u64 spread = 0x18F38AE0C0E2EB5;

Shades shadesOf(const Node& node) {
    if (node.isDefinition())
        return {"#e4e4e4", "#606060"};
    const u64 hue = (node.type().hash() * spread >> 32U) * 1000 >> 32U;
    const std::string digits = std::to_string(1000 + hue).substr(1);
    return {"0." + digits + " 0.22 0.98", "0." + digits + " 0.85 0.55"};
}

// What of a node links begin and end at.
class Ports {
public:
    // The row of an input or output, made when it is asked for first.
    std::size_t row(const void* key, const String& name) {
        const auto [place, isNew] = rows_.try_emplace(key, names_.size());
        if (isNew)
            names_.push_back(name);
        return std::min(place->second, mostRows);
    }
    [[nodiscard]] std::size_t shown() const { return std::min(names_.size(), mostRows + 1); }
    [[nodiscard]] std::string text(std::size_t row) const {
        const std::size_t rest = names_.size() - mostRows;
        return row < mostRows || rest == 1 ? escapedHtml(names_[row]) : "... " + std::to_string(rest) + " more";
    }

private:
    std::map<const void*, std::size_t> rows_;
    std::vector<String> names_;
};

struct NodePorts {
    Ports inputs;
    Ports outputs;
};

// The input's path without its node.
String pathInNode(const Input& input) {
    const std::size_t nodeLength = input.node()->key().len() + 1;
    const String label = input.label();
    return label.substring(nodeLength, label.len());
}

std::string cell(char side, std::size_t row, const Ports& ports, const Ports& opposite) {
    if (row >= ports.shown())
        return {};
    const std::string span = row < opposite.shown() ? "" : " COLSPAN=\"2\"";
    return std::string("<TD PORT=\"") + side + std::to_string(row) + "\" ALIGN=\"" + (side == 'i' ? "LEFT" : "RIGHT") +
           '"' + span + "><FONT POINT-SIZE=\"10\">" + ports.text(row) + "</FONT></TD>";
}

std::string nodeText(std::size_t index, const Node& node, const NodePorts& ports) {
    const Shades shades = shadesOf(node);
    const std::string type = node.isDefinition() ? "definition" : escapedHtml(node.type());
    std::string text = "  n" + std::to_string(index) +
                       " [label=<<TABLE BORDER=\"1\" CELLBORDER=\"0\" CELLSPACING=\"0\" "
                       "CELLPADDING=\"4\" COLOR=\"" +
                       shades.line +
                       "\" BGCOLOR=\"white\"><TR><TD COLSPAN=\"2\" PORT=\"title\" "
                       "BGCOLOR=\"" +
                       shades.fill + "\"><B>" + escapedHtml(node.name()) +
                       "</B><BR/><FONT POINT-SIZE=\"10\" COLOR=\"#404040\">" + type + "</FONT></TD></TR>";
    const std::size_t rows = std::max(ports.inputs.shown(), ports.outputs.shown());
    for (std::size_t row = 0; row < rows; ++row)
        text += "<TR>" + cell('i', row, ports.inputs, ports.outputs) + cell('o', row, ports.outputs, ports.inputs) +
                "</TR>";
    return text + "</TABLE>>];\n";
}

// For each reference, one in the other direction between the same nodes: of a parent to its child and of the child to
// its parent, say. Each is in one pair at the most.
std::vector<const LinkEdge*> opposites(const LinkGraph& graph) {
    std::vector<const LinkEdge*> opposite(graph.edges.size());
    std::map<std::pair<std::size_t, std::size_t>, std::vector<std::size_t>> alone;
    for (std::size_t i = 0; i < graph.edges.size(); ++i) {
        const LinkEdge& edge = graph.edges[i];
        if (edge.output || edge.from == edge.to)
            continue;
        std::vector<std::size_t>& others = alone[{edge.to, edge.from}];
        if (others.empty()) {
            alone[{edge.from, edge.to}].push_back(i);
            continue;
        }
        opposite[i] = &graph.edges[others.back()];
        opposite[others.back()] = &edge;
        others.pop_back();
    }
    return opposite;
}

class EdgeWriter {
public:
    EdgeWriter(const LinkGraph& graph, std::vector<NodePorts>& ports) : graph_(graph), ports_(ports) {}

    [[nodiscard]] std::string write() {
        const std::vector<const LinkEdge*> opposite = opposites(graph_);
        std::string text;
        for (std::size_t i = 0; i < graph_.edges.size(); ++i) {
            const LinkEdge& edge = graph_.edges[i];
            if (!opposite[i])
                text += single(edge);
            else if (&edge < opposite[i])
                text +=
                    isElement(*opposite[i]) && !isElement(edge) ? both(*opposite[i], edge) : both(edge, *opposite[i]);
        }
        return text;
    }

private:
    static bool isElement(const LinkEdge& edge) { return edge.input->isElement(); }

    [[nodiscard]] std::string inputPort(const LinkEdge& edge) {
        return 'n' + std::to_string(edge.to) + ":i" + std::to_string(ports_[edge.to].inputs.row(edge.input, {}));
    }

    [[nodiscard]] std::string single(const LinkEdge& edge) {
        const std::string source =
            edge.output ? 'o' + std::to_string(ports_[edge.from].outputs.row(edge.output, {})) : "title";
        return "  n" + std::to_string(edge.from) + ':' + source + ":e -> " + inputPort(edge) + ":w [color=\"" +
               colour(edge.from) + '"' + (edge.output ? "" : ", style=dashed") + "];\n";
    }

    // Two opposite references as one line, the node of the first one, which has a list, on the left.
    [[nodiscard]] std::string both(const LinkEdge& list, const LinkEdge& other) {
        return "  " + inputPort(list) + ":e -> " + inputPort(other) + ":w [color=\"" + colour(list.to) +
               "\", style=dashed, dir=both];\n";
    }

    [[nodiscard]] std::string colour(std::size_t node) const { return shadesOf(*graph_.nodes[node]).line; }

    const LinkGraph& graph_;
    std::vector<NodePorts>& ports_;
};

constexpr const char* opening = "digraph scene {\n"
                                "  graph [rankdir=LR, nodesep=0.25, ranksep=0.9, fontname=\"Helvetica\"];\n"
                                "  node [shape=plain, fontname=\"Helvetica\", fontsize=12];\n"
                                "  edge [arrowsize=0.6, penwidth=1.2];\n";

} // namespace

std::string dotText(const LinkGraph& graph) {
    std::vector<NodePorts> ports(graph.nodes.size());
    for (const LinkEdge& edge : graph.edges) {
        ports[edge.to].inputs.row(edge.input, pathInNode(*edge.input));
        if (edge.output)
            ports[edge.from].outputs.row(edge.output, edge.output->name());
    }
    std::string text = opening;
    for (std::size_t i = 0; i < graph.nodes.size(); ++i)
        text += nodeText(i, *graph.nodes[i], ports[i]);
    return text + EdgeWriter(graph, ports).write() + "}\n";
}

} // namespace vrn::cli
