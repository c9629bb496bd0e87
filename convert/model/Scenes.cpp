#include "convert/model/Scenes.h"

#include "convert/model/Inputs.h"
#include "convert/model/Materials.h"
#include "scene/Scene.h"

namespace vrn::convert {

namespace {

void readVariantNames(ExportContext& context, const Node& node) {
    context.visited.insert(&node);
    if (const Input* names = node.input("names"))
        for (const Input* name : names->children())
            context.model.variants.emplace_back(name->value().asString());
    addUnreadInputs(node, {"name", "names[]"}, context.losses);
}

void readAsset(ExportContext& context, const Node& node) {
    if (context.model.asset)
        return; // a second one is reported as not read
    context.visited.insert(&node);
    context.model.asset = &node;
    addUnreadInputs(node, {"name", "copyright", "extras", "fileExtras"}, context.losses);
}

void readScene(ExportContext& context, const Node& node) {
    context.visited.insert(&node);
    const InputReader reader(node, context.losses);
    SceneNodes scene{.source = &node, .roots = {}, .isDefault = reader.boolean("default", false)};
    std::unordered_set<u32> listed;
    if (const Input* nodes = node.input("nodes"))
        for (const Input* root : nodes->children()) {
            const u32 index = context.nodeIndex(linkedNode(root));
            if (index == none || context.model.nodes[index].parent != none)
                context.losses.add("nodes of scenes that have a parent or no transform", *root);
            else if (listed.insert(index).second)
                scene.roots.push_back(index);
        }
    InputPatterns inputs = {"name", "default", "nodes[]"};
    if (context.target.hasScene)
        inputs.insert("extras");
    addUnreadInputs(node, inputs, context.losses);
    context.model.scenes.push_back(std::move(scene));
}

} // namespace

void readFileContents(ExportContext& context) {
    for (const Node& node : context.scene.nodes()) {
        if (node.isDefinition())
            continue;
        const String type = node.type();
        if (type == "variants")
            readVariantNames(context, node);
        else if (type == "asset")
            readAsset(context, node);
    }
}

void readScenes(ExportContext& context) {
    for (const Node& node : context.scene.nodes())
        if (!node.isDefinition() && node.type() == "scene")
            readScene(context, node);
}

void readUnused(ExportContext& context) {
    for (const Node& node : context.scene.nodes()) {
        if (!node.isDefinition() && node.type() == "material")
            (void)readMaterial(context, &node);
        if (!node.isDefinition() && node.type() == "texture")
            (void)readTexture(context, node);
    }
}

} // namespace vrn::convert
