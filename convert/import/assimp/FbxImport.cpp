#include "convert/import/assimp/FbxImport.h"

#include "convert/import/assimp/AssimpValues.h"
#include "convert/import/fbx/FbxAnimations.h"
#include "convert/import/fbx/FbxCameras.h"
#include "convert/import/fbx/FbxLosses.h"
#include "convert/shared/Errors.h"
#include "convert/shared/Floats.h"
#include "convert/shared/NodeInputs.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <span>

namespace vrn::convert {

namespace {

void forEachValue(const FbxElement& element, const std::function<void(const FbxValue&)>& take) {
    std::ranges::for_each(element.values, take);
    for (const FbxElement& child : element.children)
        forEachValue(child, take);
}

} // namespace

FbxImport::FbxImport(const std::string& path, Losses& losses) : file_(path), scene_(file_, losses), path_(path) {
    reportUnread(scene_, losses);
}

std::string FbxImport::contentForAssimp() const {
    std::string content = file_.content();
    const auto at = [&](const char* place) -> char& {
        return content[static_cast<std::size_t>(place - file_.content().data())];
    };
    for (const FbxElement* stack : scene_.objects("AnimationStack"))
        at(stack->name.data()) = '_';
    forEachValue(file_.root(), [&](const FbxValue& value) {
        if (value.type == FbxValue::byte)
            at(value.bytes.data() - 1) = 'C'; // a type of the same size
    });
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

// Assimp takes the field of view for the horizontal one, and for 1 degree if a focal length states it.
void FbxImport::setViews(ImportContext& context) const {
    std::unordered_map<std::string_view, i64> models;
    for (const auto& [id, node] : nodes_)
        models.emplace(viewOf(node->mName), id);
    for (aiCamera* camera : std::span(context.from.mCameras, context.from.mNumCameras))
        if (const auto model = models.find(viewOf(camera->mName)); model != models.end())
            setView(*camera, model->second);
}

void FbxImport::setView(aiCamera& camera, i64 model) const {
    for (const FbxConnection& connection : scene_.connectionsTo(model)) {
        const FbxElement* object = scene_.object(connection.source);
        if (!object || object->name != "NodeAttribute" || object->value(2).text() != "Camera")
            continue;
        const FbxView view = viewOf(*object);
        const bool isValid =
            view.aspect > 0 && view.halfWidth > 0 && fitsFloat(view.aspect) && fitsFloat(view.halfWidth);
        camera.mAspect = isValid ? static_cast<float>(view.aspect) : 0; // 0 is unknown
        if (isValid)
            camera.mHorizontalFOV = static_cast<float>(2 * std::atan(view.halfWidth));
    }
}

void FbxImport::hideNodes(ImportContext& context) const {
    for (const auto& [id, node] : nodes_)
        if (!scene_.model(id)->isVisible)
            if (const auto made = context.made.find(node); made != context.made.end())
                set(*made->second, "visible", AttrData::boolean(false));
}

void FbxImport::importAnimations(ImportContext& context) const {
    std::unordered_map<i64, Node*> targets;
    for (const auto& [id, node] : nodes_)
        if (const auto made = context.made.find(node); made != context.made.end())
            targets.emplace(id, made->second);
    importFbxAnimations(scene_, targets, context.maker, context.losses);
}

} // namespace vrn::convert
