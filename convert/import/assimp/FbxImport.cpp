#include "convert/import/assimp/FbxImport.h"

#include "convert/import/fbx/FbxAnimations.h"
#include "convert/shared/Errors.h"

#include <span>

namespace vrn::convert {

std::string FbxImport::contentForAssimp() const {
    std::string content = file_.content();
    for (const FbxElement* stack : scene_.objects("AnimationStack"))
        content[static_cast<std::size_t>(stack->name.data() - file_.content().data())] = '_';
    return content;
}

// Without pivots, Assimp creates a node for each model, in the order of the file.
void FbxImport::setTransforms(ImportContext& context) {
    struct Pending {
        const aiNode* node;
        i64 id;
    };
    std::vector<Pending> pending = {{context.from.mRootNode, FbxScene::rootId}};
    while (!pending.empty()) {
        const auto [node, id] = pending.back();
        pending.pop_back();
        const std::vector<const FbxModel*> children = scene_.children(id);
        if (children.size() != node->mNumChildren)
            throw ContentError(path_, "its models are not connected as a tree");
        for (std::size_t i = 0; i < children.size(); ++i) {
            const aiNode* child = node->mChildren[i];
            nodes_.emplace(children[i]->id, child);
            context.localTransforms.emplace(child, localTransform(children[i]->transform));
            const Trs geometric = geometricTransform(children[i]->transform);
            if (toMatrix(geometric) != identity)
                context.meshTransforms.emplace(child, geometric);
            for (const unsigned mesh : std::span(child->mMeshes, child->mNumMeshes))
                context.meshMatrices.try_emplace(mesh, toMatrix(geometric));
            pending.push_back({child, children[i]->id});
        }
    }
}

void FbxImport::importAnimations(ImportContext& context) const {
    std::unordered_map<i64, Node*> targets;
    for (const auto& [id, node] : nodes_)
        if (const auto made = context.made.find(node); made != context.made.end())
            targets.emplace(id, made->second);
    importFbxAnimations(scene_, targets, context.maker, context.losses);
}

} // namespace vrn::convert
