#include "convert/import/assimp/ImportSkins.h"

#include "convert/import/assimp/AssimpValues.h"
#include "convert/shared/NodeInputs.h"

#include <algorithm>
#include <span>

namespace vrn::convert {

namespace {

void addWeights(ImportContext& context, unsigned index, Node& node) {
    const aiMesh& mesh = *context.from.mMeshes[index];
    const std::vector<BoneInfluences> influences = influencesOf(context, mesh, &node);
    const std::vector<u32>& kept = context.keptVertices.at(index);
    AttrData joints = AttrData::buffer(DataType::Vec4u, kept.size());
    AttrData weights = AttrData::buffer(DataType::Vec4f, kept.size());
    for (std::size_t i = 0; i < kept.size(); ++i) {
        std::ranges::copy(influences[kept[i]].joints(), joints.elements<u32>().subspan(4 * i).begin());
        std::ranges::copy(influences[kept[i]].weights(), weights.elements<float>().subspan(4 * i).begin());
    }
    Input& skin = *node.createInput("skin", AttrType::Object);
    setMember(skin, "joints", std::move(joints));
    setMember(skin, "weights", std::move(weights));
}

// The skin of a mesh with a transform of its own; null if one of its joints is not a node.
Node* createSkin(ImportContext& context, const aiMesh& mesh, const Matrix& own, const Node& node) {
    AttrData matrices = AttrData::buffer(DataType::Mat4f, mesh.mNumBones);
    std::vector<Node*> joints;
    for (std::size_t i = 0; i < mesh.mNumBones; ++i) {
        const aiBone& bone = *mesh.mBones[i];
        Node* joint = context.nodeOf(bone.mName);
        if (!joint) {
            context.losses.add("skins with joints that are not nodes", node);
            return nullptr;
        }
        joints.push_back(joint);
        const Matrix matrix = multiply(own, matrixOf(bone.mOffsetMatrix));
        for (std::size_t k = 0; k < 16; ++k)
            matrices.elements<float>()[16 * i + k] = static_cast<float>(matrix[k]);
    }
    Node& skin = context.create("skin", "", (std::string(node.name().view()) + "_skin").c_str());
    Input& list = *skin.createArray("joints", AttrType::Null);
    for (Node* joint : joints)
        if (Input* element = list.appendElement())
            element->setNode(joint);
    set(skin, "inverseBind", std::move(matrices));
    return &skin;
}

} // namespace

bool BoneInfluences::add(u32 joint, float weight) {
    const auto least = std::ranges::min_element(weights_);
    const bool isFull = *least != 0;
    if (weight > *least) {
        const auto slot = static_cast<std::size_t>(least - weights_.begin());
        weights_[slot] = weight;
        joints_[slot] = joint;
    }
    return !isFull;
}

std::vector<BoneInfluences> influencesOf(ImportContext& context, const aiMesh& mesh, const Node* node) {
    std::vector<BoneInfluences> influences(mesh.mNumBones == 0 ? 0 : mesh.mNumVertices);
    bool isComplete = true;
    for (u32 joint = 0; joint < mesh.mNumBones; ++joint)
        for (const aiVertexWeight& weight : std::span(mesh.mBones[joint]->mWeights, mesh.mBones[joint]->mNumWeights))
            if (weight.mVertexId < influences.size() && weight.mWeight > 0)
                isComplete &= influences[weight.mVertexId].add(joint, weight.mWeight);
    if (!isComplete && node)
        context.losses.add("skin weights beyond the four largest of a point", *node);
    return influences;
}

void importSkins(ImportContext& context) {
    std::unordered_map<const Node*, Node*> skins; // by mesh
    for (const auto& [index, node] : context.meshes) {
        const aiMesh& mesh = *context.from.mMeshes[index];
        if (!node || mesh.mNumBones == 0)
            continue;
        if (Node* skin = createSkin(context, mesh, context.meshMatrix(index), *node)) {
            addWeights(context, index, *node);
            skins.emplace(node, skin);
        }
    }
    for (Node& node : context.scene.nodes()) {
        const Input* geometry = node.input("geometry");
        const auto skin = geometry ? skins.find(geometry->nodeValue()) : skins.end();
        if (skin != skins.end())
            setReference(node, "skin", *skin->second);
    }
}

} // namespace vrn::convert
