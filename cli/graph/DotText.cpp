#include "cli/graph/DotText.h"

#include "inspect/value/ValueText.h"
#include "scene/core/TextEncoding.h"

#include <algorithm>
#include <map>
#include <unordered_map>

namespace vrn::cli {

using namespace vor;
using namespace vor::velmo_sdk::impl;

namespace {

constexpr std::size_t maxRows = 40; // of a node; all other links share one more row
constexpr std::size_t maxNameLength = 40;

// Text for an HTML-like label, in which a backslash also starts an escape sequence of DOT.
std::string escapedHtml(std::string_view text) {
    std::string escaped;
    for (const char c : inspect::escapedShort(text, maxNameLength)) {
        if (c == '&' || c == '<' || c == '>' || c == '"')
            escaped += "&#" + std::to_string(int(c)) + ';';
        else
            escaped += c == '\\' ? "\\\\" : std::string(1, c);
    }
    return escaped.empty() ? " " : escaped;
}

// The colours of a type. The hue depends on its name only.
struct Colours {
    std::string fill;
    std::string line;
};

// Mixes the bits of a hash. Chosen among many constants because it keeps the hues of common types farthest apart.
constexpr u64 hueMultiplier = 0x18F38AE0C0E2EB5;

Colours coloursOf(const Node& node) {
    if (node.isDefinition())
        return {"#e4e4e4", "#606060"};
    const u64 hue = (node.type().hash() * hueMultiplier >> 32U) * 1000 >> 32U;
    const std::string digits = std::to_string(1000 + hue).substr(1);
    return {"0." + digits + " 0.22 0.98", "0." + digits + " 0.85 0.55"};
}

std::string shownName(const Output& output) { return escapedHtml(output.name()); }

// The input's path without its node.
std::string shownName(const Input& input) {
    std::vector<const Input*> steps;
    for (const Input* step = &input; step; step = step->parent())
        steps.push_back(step);
    std::string path;
    for (auto step = steps.rbegin(); step != steps.rend() && path.size() <= maxNameLength; ++step) {
        const String name = (*step)->name();
        if ((*step)->isElement())
            path += '[' + std::string(name.view()) + ']';
        else
            path += (path.empty() ? "" : ".") + std::string(name.view());
    }
    return escapedHtml(path);
}

// The linked inputs or outputs of a node, one a row; those beyond maxRows share the last row.
template <class Port> class Ports {
public:
    void add(const Port* port) {
        if (rows_.try_emplace(port, ports_.size()).second)
            ports_.push_back(port);
    }
    [[nodiscard]] std::size_t row(const Port* port) const { return std::min(rows_.at(port), maxRows); }
    [[nodiscard]] std::size_t shown() const { return std::min(ports_.size(), maxRows + 1); }
    [[nodiscard]] std::string text(std::size_t row) const {
        const bool isShared = row == maxRows && ports_.size() > maxRows + 1;
        return isShared ? "... " + std::to_string(ports_.size() - maxRows) + " more" : shownName(*ports_[row]);
    }

private:
    std::unordered_map<const Port*, std::size_t> rows_;
    std::vector<const Port*> ports_;
};

struct NodePorts {
    Ports<Input> inputs;
    Ports<Output> outputs;
};

template <class Port> std::string cell(char side, std::size_t row, const Ports<Port>& ports, bool isAlone) {
    if (row >= ports.shown())
        return {};
    return std::string("<TD PORT=\"") + side + std::to_string(row) + "\" ALIGN=\"" + (side == 'i' ? "LEFT" : "RIGHT") +
           (isAlone ? "\" COLSPAN=\"2" : "") + "\"><FONT POINT-SIZE=\"10\">" + ports.text(row) + "</FONT></TD>";
}

std::string nodeText(std::size_t index, const Node& node, const NodePorts& ports) {
    const Colours colours = coloursOf(node);
    const std::string type = node.isDefinition() ? "definition" : escapedHtml(node.type());
    std::string text = "  n" + std::to_string(index) +
                       " [label=<<TABLE BORDER=\"1\" CELLBORDER=\"0\" CELLSPACING=\"0\" "
                       "CELLPADDING=\"4\" COLOR=\"" +
                       colours.line +
                       "\" BGCOLOR=\"white\"><TR><TD COLSPAN=\"2\" PORT=\"title\" "
                       "BGCOLOR=\"" +
                       colours.fill + "\"><B>" + escapedHtml(node.name()) +
                       "</B><BR/><FONT POINT-SIZE=\"10\" COLOR=\"#404040\">" + type + "</FONT></TD></TR>";
    const std::size_t inputs = ports.inputs.shown();
    const std::size_t outputs = ports.outputs.shown();
    for (std::size_t row = 0; row < std::max(inputs, outputs); ++row)
        text += "<TR>" + cell('i', row, ports.inputs, row >= outputs) + cell('o', row, ports.outputs, row >= inputs) +
                "</TR>";
    return text + "</TABLE>>];\n";
}

// Pairs each reference with one in the opposite direction between the same nodes, such as those of a parent and its
// child. An edge is in at most one pair; the others have null.
std::vector<const LinkEdge*> opposites(const LinkGraph& graph) {
    std::vector<const LinkEdge*> opposite(graph.edges.size());
    std::map<std::pair<std::size_t, std::size_t>, std::vector<std::size_t>> unpaired;
    for (std::size_t i = 0; i < graph.edges.size(); ++i) {
        const LinkEdge& edge = graph.edges[i];
        if (edge.output || edge.from == edge.to)
            continue;
        std::vector<std::size_t>& others = unpaired[{edge.to, edge.from}];
        if (others.empty()) {
            unpaired[{edge.from, edge.to}].push_back(i);
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
    EdgeWriter(const LinkGraph& graph, const std::vector<NodePorts>& ports) : graph_(graph), ports_(ports) {}

    [[nodiscard]] std::string write() const {
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

    [[nodiscard]] std::string inputPort(const LinkEdge& edge) const {
        return 'n' + std::to_string(edge.to) + ":i" + std::to_string(ports_[edge.to].inputs.row(edge.input));
    }

    [[nodiscard]] std::string single(const LinkEdge& edge) const {
        const std::string source =
            edge.output ? 'o' + std::to_string(ports_[edge.from].outputs.row(edge.output)) : "title";
        return "  n" + std::to_string(edge.from) + ':' + source + ":e -> " + inputPort(edge) + ":w [color=\"" +
               colour(edge.from) + '"' + (edge.output ? "" : ", style=dashed") + "];\n";
    }

    // Two opposite references as one edge. The node of `list`, whose input is an array element, is on the left.
    [[nodiscard]] std::string both(const LinkEdge& list, const LinkEdge& other) const {
        return "  " + inputPort(list) + ":e -> " + inputPort(other) + ":w [color=\"" + colour(list.to) +
               "\", style=dashed, dir=both];\n";
    }

    [[nodiscard]] std::string colour(std::size_t node) const { return coloursOf(*graph_.nodes[node]).line; }

    const LinkGraph& graph_;
    const std::vector<NodePorts>& ports_;
};

constexpr const char* opening = "digraph scene {\n"
                                "  graph [rankdir=LR, nodesep=0.25, ranksep=0.9, fontname=\"Helvetica\"];\n"
                                "  node [shape=plain, fontname=\"Helvetica\", fontsize=12];\n"
                                "  edge [arrowsize=0.6, penwidth=1.2];\n";

} // namespace

std::string dotText(const LinkGraph& graph) {
    std::vector<NodePorts> ports(graph.nodes.size());
    for (const LinkEdge& edge : graph.edges) {
        ports[edge.to].inputs.add(edge.input);
        if (edge.output)
            ports[edge.from].outputs.add(edge.output);
    }
    std::string text = opening;
    for (std::size_t i = 0; i < graph.nodes.size(); ++i)
        text += nodeText(i, *graph.nodes[i], ports[i]);
    text += EdgeWriter(graph, ports).write();
    text += "}\n";
    return text;
}

} // namespace vrn::cli
