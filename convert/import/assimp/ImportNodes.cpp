#include "convert/import/assimp/ImportNodes.h"

#include "convert/import/NodeTransforms.h"
#include "convert/import/assimp/AssimpValues.h"
#include "convert/shared/NodeInputs.h"

#include <string>
#include <vector>

namespace vrn::convert {

namespace {

// The axes and the unit of the file apply after the root. If that is animated, they stay a matrix of their own.
void setRootTransform(ImportContext& context, Node& node, bool isAnimated) {
    const Matrix placement = context.placement.matrix();
    setMatrix(node, isAnimated ? context.rootMatrix : multiply(context.rootMatrix, placement), isAnimated,
              context.losses);
    if (isAnimated && placement != identity)
        setNumbers(node, "transform", AttrType::Mat4, placement);
}

void setTransform(ImportContext& context, Node& node, const aiNode& from) {
    const bool isAnimated = context.animatedNodes.contains(std::string(viewOf(from.mName)));
    const auto known = context.localTransforms.find(&from);
    if (known != context.localTransforms.end())
        setTrs(node, known->second, isAnimated);
    else if (&from == context.from.mRootNode)
        setRootTransform(context, node, isAnimated);
    else
        setMatrix(node, matrixOf(from.mTransformation), isAnimated, context.losses);
}

void setGeometry(ImportContext& context, Node& node, unsigned mesh) {
    const auto known = context.meshes.find(mesh);
    if (known != context.meshes.end() && known->second)
        setReference(node, "geometry", *known->second);
}

// An instance shows one mesh, so each further mesh of a node becomes a child, as do meshes with their own transform.
Node& addNode(ImportContext& context, const aiNode& from, Node* parent) {
    const auto meshTransform = context.meshTransforms.find(&from);
    const bool hasOwnMesh = from.mNumMeshes != 0 && meshTransform == context.meshTransforms.end();
    Node& node = context.create(hasOwnMesh ? "instance" : "transform", viewOf(from.mName), "node");
    if (parent)
        setReference(node, "parent", *parent);
    setTransform(context, node, from);
    if (hasOwnMesh)
        setGeometry(context, node, from.mMeshes[0]);
    const std::string more = std::string(node.name().view()) + (hasOwnMesh ? "_more" : "_mesh");
    for (unsigned i = hasOwnMesh ? 1 : 0; i < from.mNumMeshes; ++i) {
        Node& child = context.create("instance", "", more.c_str());
        setReference(child, "parent", node);
        if (meshTransform != context.meshTransforms.end())
            setTrs(child, meshTransform->second, false);
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
        context.made.emplace(from, &node);
        for (unsigned i = from->mNumChildren; i > 0; --i)
            pending.push_back({from->mChildren[i - 1], &node});
    }
}

} // namespace vrn::convert
