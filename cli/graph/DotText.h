// Links as text in Graphviz's language DOT, which `dot` makes pictures of.
#pragma once

#include "cli/graph/LinkGraph.h"

#include <string>

namespace vrn::cli {

// Each node is a table: its name and type, below them the linked inputs on the left and the linked outputs on the
// right. References are dashed, and two nodes that
// refer to each other have one line with two heads. A type has the same colour in all pictures. Names are cut where
// they are long and may hold anything.
[[nodiscard]] std::string dotText(const LinkGraph& graph);

} // namespace vrn::cli
