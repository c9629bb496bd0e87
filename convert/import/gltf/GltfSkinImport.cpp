#include "convert/import/gltf/GltfSkinImport.h"

namespace vrn::convert {

namespace {

Node& importSkin(GltfContext& context, const GltfValue& from) {
    const GltfValue nodes = context.root["nodes"];
    Node& skin = context.create("skin", from, "skin");
    Input& joints = *skin.createArray("joints", AttrType::Null);
    from["joints"].required().forEach([&](const GltfValue& joint, u64) {
        Node* node = context.nodes[joint.indexIn(nodes)];
        if (Input* element = joints.appendElement())
            element->setNode(node);
    });
    if (const GltfValue accessor = from["inverseBindMatrices"]; accessor.exists()) {
        AttrData matrices = context.accessors.floats(accessor, DataType::Mat4f);
        if (matrices.count() < joints.children().size())
            accessor.refuse("it has " + std::to_string(matrices.count()) + " matrices for " +
                            std::to_string(joints.children().size()) + " joints");
        set(skin, "inverseBind", std::move(matrices));
    }
    if (from["skeleton"].exists())
        setReference(skin, "skeleton", *context.nodes[from["skeleton"].indexIn(nodes)]);
    return skin;
}

} // namespace

void importSkins(GltfContext& context) {
    const GltfValue skins = context.root["skins"];
    skins.forEach([&](const GltfValue& skin, u64) { context.skins.push_back(&importSkin(context, skin)); });
    context.root["nodes"].forEach([&](const GltfValue& node, u64 index) {
        if (node["skin"].exists())
            setReference(*context.nodes[index], "skin", *context.skins[node["skin"].indexIn(skins)]);
    });
}

} // namespace vrn::convert
