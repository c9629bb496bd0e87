#include "convert/import/assimp/ImportNodes.h"

#include "convert/import/NodeInputs.h"
#include "convert/import/assimp/AssimpValues.h"

#include <string>
#include <vector>

namespace vrn::convert {

namespace {

// Decomposes the matrix if that is exact, or if the node is animated: channels set translation, rotation and scale.
void setTransform(ImportContext& context, Node& node, const aiNode& from) {
    const Matrix matrix = matrixOf(from.mTransformation);
    const Trs trs = decomposeTransform(matrix);
    const Matrix recomposed = toMatrix(trs);
    const bool isAnimated = context.animatedNodes.contains(std::string(viewOf(from.mName)));
    if (recomposed != matrix && !isAnimated)
        return setNumbers(node, "transform", AttrType::Mat4, matrix);
    if (maxDifference(recomposed, matrix) > 1e-5)
        context.losses.add("shear of animated nodes", node);
    const Trs initial;
    if (isAnimated || trs.translation != initial.translation)
        setNumbers(node, "translation", AttrType::Vec3, trs.translation);
    if (isAnimated || trs.rotation != initial.rotation)
        setNumbers(node, "rotation", AttrType::Quat, trs.rotation);
    if (isAnimated || trs.scale != initial.scale)
        setNumbers(node, "scale", AttrType::Vec3, trs.scale);
}

void setGeometry(ImportContext& context, Node& node, unsigned mesh) {
    const auto known = context.meshes.find(mesh);
    if (known != context.meshes.end() && known->second)
        setReference(node, "geometry", *known->second);
}

// An instance shows one mesh, so each further mesh of a node becomes a child.
Node& addNode(ImportContext& context, const aiNode& from, Node* parent) {
    Node& node = context.create(from.mNumMeshes == 0 ? "transform" : "instance", viewOf(from.mName), "node");
    if (parent)
        setReference(node, "parent", *parent);
    setTransform(context, node, from);
    if (from.mNumMeshes != 0)
        setGeometry(context, node, from.mMeshes[0]);
    const std::string more = std::string(node.name().view()) + "_more";
    for (unsigned i = 1; i < from.mNumMeshes; ++i) {
        Node& child = context.create("instance", "", more.c_str());
        setReference(child, "parent", node);
        setGeometry(context, child, from.mMeshes[i]);
    }
    if (from.mMetaData && from.mMetaData->mNumProperties != 0)
        context.losses.add("metadata of nodes", node);
    return node;
}

} // namespace

void importNodes(ImportContext& context) {
    struct Pending {
        const aiNode* from;
        Node* parent;
    };
    std::vector<Pending> pending;
    if (context.from.mRootNode)
        pending.push_back({context.from.mRootNode, nullptr});
    while (!pending.empty()) {
        const auto [from, parent] = pending.back();
        pending.pop_back();
        Node& node = addNode(context, *from, parent);
        context.nodes.emplace(viewOf(from->mName), &node);
        for (unsigned i = from->mNumChildren; i > 0; --i)
            pending.push_back({from->mChildren[i - 1], &node});
    }
}

} // namespace vrn::convert
