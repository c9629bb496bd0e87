// Link graphs in DOT, the language of Graphviz.
#pragma once

#include "cli/graph/LinkGraph.h"

#include <string>

namespace vrn::cli {

// Each node is a table: its name and type, below them the linked inputs on the left and the linked outputs on the
// right. References are dashed, and two nodes that refer to each other share one edge with two heads. A type has the
// same colour in all pictures. Long names are truncated, and names may hold any bytes.
[[nodiscard]] std::string dotText(const LinkGraph& graph);

} // namespace vrn::cli
