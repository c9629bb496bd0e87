#include "inspect/summary/SceneSummary.h"

#include "scene/Walk.h"

namespace vrn::inspect {

using namespace vor;
using namespace vor::velmo_sdk;
using namespace vor::velmo_sdk::impl;

static void add(const Input& input, SceneSummary& summary) {
    ++summary.inputs;
    if (input.type() == AttrType::Buffer) {
        ++summary.buffers;
        summary.bufferElements += input.value().count();
        summary.bufferBytes += input.value().bytes().size();
    }
    summary.connections += input.connection() ? 1U : 0U;
    summary.references += input.nodeValue() ? 1U : 0U;
}

SceneSummary summarise(const Scene& scene) {
    SceneSummary summary;
    for (const Node& node : scene.nodes()) {
        ++(node.isDefinition() ? summary.definitions : summary.nodes);
        if (!node.isDefinition())
            ++summary.nodesByType[std::string(node.type().view())];
        forEachInput(node, [&](const Input& input) { add(input, summary); });
    }
    return summary;
}

} // namespace vrn::inspect
