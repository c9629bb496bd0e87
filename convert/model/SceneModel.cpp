#include "convert/model/ExportContext.h"
#include "scene/Scene.h"

namespace vrn::convert {

Model modelOf(const Scene& scene, const Target& target, Losses& losses) {
    ExportContext reading{.scene = scene, .target = target, .losses = losses};
    placeNodes(reading);
    readGeometries(reading);
    if (target.hasScene) {
        readSkins(reading);
        readAnimations(reading);
    }
    for (const Node& node : scene.nodes())
        if (!node.isDefinition() && !reading.carried.contains(&node))
            losses.add("nodes of type " + std::string(node.type().view()), node);
    return std::move(reading.model);
}

} // namespace vrn::convert
