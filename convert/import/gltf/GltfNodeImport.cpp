#include "convert/import/gltf/GltfNodeImport.h"

#include "convert/import/NodeTransforms.h"
#include "convert/import/gltf/GltfCameraImport.h"
#include "convert/import/gltf/GltfHierarchy.h"
#include "convert/shared/Transform.h"

#include <set>

namespace vrn::convert {

namespace {

// The nodes whose translation, rotation or scale some animation changes.
std::set<u64> animatedNodes(const GltfValue& root) {
    std::set<u64> nodes;
    root["animations"].forEach([&](const GltfValue& animation, u64) {
        animation["channels"].forEach([&](const GltfValue& channel, u64) {
            const GltfValue node = channel["target"]["node"];
            if (node.exists() && channel["target"]["path"].text() != "weights")
                nodes.insert(node.indexIn(root["nodes"]));
        });
    });
    return nodes;
}

void setTransform(GltfContext& context, Node& node, const GltfValue& from, bool isAnimated) {
    const GltfValue matrix = from["matrix"];
    if (matrix.exists() && (from["translation"].exists() || from["rotation"].exists() || from["scale"].exists()))
        matrix.refuse("a node has either a matrix, or a translation, rotation and scale");
    if (matrix.exists())
        setMatrix(node, matrix.numbers<16>(identity), isAnimated, context.losses);
    if (from["translation"].exists())
        setNumbers(node, "translation", AttrType::Vec3, from["translation"].numbers<3>({}));
    if (from["rotation"].exists())
        setNumbers(node, "rotation", AttrType::Quat, from["rotation"].numbers<4>({}));
    if (from["scale"].exists())
        setNumbers(node, "scale", AttrType::Vec3, from["scale"].numbers<3>({}));
}

void setMeshes(Node& node, const std::vector<Node*>& meshes) {
    setReference(node, "geometry", *meshes[0]);
    if (meshes.size() == 1)
        return;
    Input& parts = *node.createArray("parts", AttrType::Null);
    for (std::size_t i = 1; i < meshes.size(); ++i)
        if (Input* part = parts.appendElement())
            part->setNode(meshes[i]);
}

void setInstancing(GltfContext& context, Node& node, const GltfValue& from) {
    const GltfValue attributes = from.extension("EXT_mesh_gpu_instancing")["attributes"];
    u64 count = 0;
    const auto read = [&](const GltfValue& accessor, DataType type) {
        AttrData values = context.accessors.floats(accessor, type);
        if (count != 0 && values.count() != count)
            accessor.refuse("it has " + std::to_string(values.count()) + " elements for " + std::to_string(count) +
                            " instances");
        count = values.count();
        return values;
    };
    constexpr struct {
        const char* attribute;
        const char* input;
        DataType type;
    } known[] = {{"TRANSLATION", "instances.translation", DataType::Vec3f},
                 {"ROTATION", "instances.rotation", DataType::Quatf},
                 {"SCALE", "instances.scale", DataType::Vec3f}};
    for (const auto& [attribute, input, type] : known)
        if (const GltfValue accessor = attributes[attribute]; accessor.exists())
            setAt(node, input, read(accessor, type));
    attributes.forEachMember([&](std::string_view name, const GltfValue& accessor) {
        if (!name.starts_with('_'))
            return;
        accessor.ignore(); // which is read now
        context.appendAttribute(node, "instances.attributes", name, accessor,
                                [&](DataType type) { return read(accessor, type); });
    });
}

Node& addNode(GltfContext& context, const GltfValue& from, Node* parent, bool isAnimated) {
    const GltfValue mesh = from["mesh"];
    const std::vector<Node*> meshes =
        mesh.exists() ? context.meshes[mesh.indexIn(context.root["meshes"])] : std::vector<Node*>();
    Node& node = context.create(meshes.empty() ? "transform" : "instance", from, "node");
    if (parent)
        setReference(node, "parent", *parent);
    setTransform(context, node, from, isAnimated);
    if (!meshes.empty())
        setMeshes(node, meshes);
    context.setWeights(node, from["weights"]);
    setInstancing(context, node, from);
    return node;
}

// A small file can show a mesh of many primitives at many nodes.
void checkParts(const GltfContext& context) {
    constexpr u64 maxParts = 4'000'000;
    u64 parts = 0;
    context.root["nodes"].forEach([&](const GltfValue& node, u64) {
        if (const GltfValue mesh = node["mesh"]; mesh.exists())
            parts += context.meshes[mesh.indexIn(context.root["meshes"])].size();
        if (parts > maxParts)
            node.refuse("the nodes show more than " + std::to_string(maxParts) + " primitives together");
    });
}

} // namespace

void importNodes(GltfContext& context) {
    checkParts(context);
    const GltfHierarchy hierarchy = readHierarchy(context.root);
    const std::set<u64> animated = animatedNodes(context.root);
    const GltfValue nodes = context.root["nodes"];
    context.nodes.resize(nodes.size());
    for (const u64 index : hierarchy.order) {
        const u64 parent = hierarchy.parents[index];
        context.nodes[index] =
            &addNode(context, nodes[index], parent == GltfHierarchy::none ? nullptr : context.nodes[parent],
                     animated.contains(index));
    }
    for (const u64 index : hierarchy.order)
        importCameraAndLight(context, nodes[index], *context.nodes[index]);
}

} // namespace vrn::convert
