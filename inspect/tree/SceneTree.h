// Draws the nodes of a scene and their inputs as a tree:
//
//     ├── cam1 (camera)
//     │   └── fov: Real = 45
//
//     writeTree(scene, {.type = "mesh*", .depth = 1}, Style(false), sink);
//
// The text goes to the sink in blocks; what it throws propagates. The scene is only read: several threads may draw it.
// Linear in the inputs that are drawn; memory proportional to their depth.
#pragma once

#include "inspect/text/Style.h"
#include "scene/Scene.h"
#include "scene/core/TextSink.h"

#include <string>

namespace vrn::inspect {

struct TreeOptions {
    std::string name = "*"; // the nodes to draw (path/Glob.h)
    std::string type = "*";
    vor::u64 depth = 64;    // levels of inputs; 0 for nodes only
    vor::u64 elements = 10; // of each array
};

// Long names and values are truncated; all are escaped for terminals.
void writeTree(const vor::velmo_sdk::impl::Scene& scene, const TreeOptions& options, const Style& style,
               const vor::TextSink& sink);

} // namespace vrn::inspect
