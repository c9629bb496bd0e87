#include "convert/model/ModelBuilder.h"

#include "convert/model/Animations.h"
#include "convert/model/ExportContext.h"
#include "convert/model/Geometries.h"
#include "convert/model/NodeHierarchy.h"
#include "convert/model/Scenes.h"
#include "convert/model/Skins.h"
#include "scene/Scene.h"

namespace vrn::convert {

Model buildModel(const Scene& scene, const TargetFormat& target, const TexturePaths& paths, Losses& losses) {
    ExportContext context{.scene = scene, .target = target, .losses = losses};
    if (target.hasScene)
        readFileContents(context);
    readHierarchy(context);
    readGeometries(context);
    if (target.hasScene) {
        readSkins(context);
        readAnimations(context);
        readUnused(context);
    }
    readScenes(context);
    for (const Node& node : scene.nodes())
        if (!node.isDefinition() && !context.visited.contains(&node))
            losses.add("nodes of type " + std::string(node.type().view()), node);
    for (Texture& texture : context.model.textures)
        for (Image* image : {&texture.image, &texture.alternative})
            image->file = paths.rebase(image->file);
    return std::move(context.model);
}

} // namespace vrn::convert
