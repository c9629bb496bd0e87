#include "convert/import/gltf/GltfSceneImport.h"

#include <unordered_set>

namespace vrn::convert {

namespace {

// Whether the scenes say no more than that all roots are shown, which needs no node.
bool isPlain(const GltfValue& root) {
    const GltfValue scenes = root["scenes"];
    if (scenes.size() == 0)
        return true;
    const GltfValue only = scenes[u64(0)];
    if (scenes.size() > 1 || !only["name"].text().empty() || only["extras"].exists())
        return false;
    std::unordered_set<u64> children;
    const GltfValue nodes = root["nodes"];
    nodes.forEach([&](const GltfValue& node, u64) {
        node["children"].forEach([&](const GltfValue& child, u64) { children.insert(child.indexIn(nodes)); });
    });
    return only["nodes"].size() + children.size() == nodes.size();
}

void importScene(GltfContext& context, const GltfValue& from, bool isDefault) {
    Node& scene = context.create("scene", from, "scene");
    set(scene, "default", AttrData::boolean(isDefault));
    Input& nodes = *scene.createArray("nodes", AttrType::Null);
    from["nodes"].forEach([&](const GltfValue& node, u64) {
        if (Input* element = nodes.appendElement())
            element->setNode(context.nodes[node.indexIn(context.root["nodes"])]);
    });
}

void importVariants(GltfContext& context) {
    const GltfValue variants = context.root.extension("KHR_materials_variants")["variants"];
    if (variants.size() == 0)
        return;
    Node& node = context.maker.create("variants", "", "variants");
    Input& names = *node.createArray("names", AttrType::Null);
    variants.forEach([&](const GltfValue& variant, u64) {
        if (Input* element = names.appendElement())
            element->assign(AttrData::string(variant["name"].required().text()));
    });
}

// Version and generator are those of the file, not of what it contains.
void importAsset(GltfContext& context) {
    const GltfValue asset = context.root["asset"];
    if (!asset["copyright"].exists() && !asset["extras"].exists() && !context.root["extras"].exists())
        return;
    Node& node = context.maker.create("asset", "", "asset");
    if (asset["copyright"].exists())
        setText(node, "copyright", asset["copyright"].text());
    context.keepExtras(node, "extras", asset);
    context.keepExtras(node, "fileExtras", context.root);
}

} // namespace

void importScenes(GltfContext& context) {
    const GltfValue scenes = context.root["scenes"];
    const GltfValue first = context.root["scene"];
    const u64 firstIndex = first.exists() ? first.indexIn(scenes) : ~u64(0);
    if (!isPlain(context.root))
        scenes.forEach([&](const GltfValue& scene, u64 i) { importScene(context, scene, i == firstIndex); });
    importVariants(context);
    importAsset(context);
}

} // namespace vrn::convert
