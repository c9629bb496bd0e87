#include "convert/model/Skins.h"

#include "convert/model/Inputs.h"
#include "convert/model/NodeHierarchy.h"
#include "scene/Scene.h"

#include <algorithm>

namespace vrn::convert {

namespace {

// The root of the tree that each node belongs to.
std::vector<u32> rootOfEach(const std::vector<ModelNode>& nodes) {
    std::vector<u32> roots(nodes.size(), none);
    std::vector<u32> pending = rootNodes(nodes);
    for (const u32 root : pending)
        roots[root] = root;
    while (!pending.empty()) {
        const u32 index = pending.back();
        pending.pop_back();
        for (const u32 child : nodes[index].children) {
            roots[child] = roots[index];
            pending.push_back(child);
        }
    }
    return roots;
}

// Whether the last column of each matrix is 0 0 0 1.
bool areAffine(std::span<const float> matrices) {
    for (std::size_t i = 0; i < matrices.size(); i += 16)
        if (matrices[i + 3] != 0 || matrices[i + 7] != 0 || matrices[i + 11] != 0 || matrices[i + 15] != 1)
            return false;
    return true;
}

Values<float> identities(std::size_t count) {
    std::vector<float> matrices(16 * count);
    for (std::size_t i = 0; i < matrices.size(); i += 16)
        std::ranges::copy(identity, matrices.begin() + static_cast<std::ptrdiff_t>(i));
    return Values<float>(std::move(matrices));
}

class SkinReader {
public:
    explicit SkinReader(ExportContext& context) : context_(context), roots_(rootOfEach(context.model.nodes)) {}

    // The index of a skin, which is read on first use.
    u32 skinIndex(const Node& node) {
        const auto [found, isNew] = context_.skinIndices.emplace(&node, none);
        if (!isNew)
            return found->second;
        context_.visited.insert(&node);
        Skin skin{.source = &node};
        if (!readJoints(skin) || !readInverseBind(skin))
            return none;
        skin.skeleton = context_.nodeIndex(linkedNode(node.input("skeleton")));
        if (skin.skeleton != none && !isAboveAll(skin.skeleton, skin.joints)) {
            context_.losses.add("skeletons that are not above all joints", node);
            skin.skeleton = none;
        }
        addUnreadInputs(node, {"name", "joints[]", "inverseBind", "skeleton", "extras"}, context_.losses);
        found->second = static_cast<u32>(context_.model.skins.size());
        context_.model.skins.push_back(std::move(skin));
        return found->second;
    }

private:
    bool reject(const char* reason, const Skin& skin) {
        context_.losses.add(std::string("skins with ") + reason, *skin.source);
        return false;
    }

    // Whether each joint is `skeleton` or below it.
    [[nodiscard]] bool isAboveAll(u32 skeleton, const std::vector<u32>& joints) const {
        const std::vector<ModelNode>& nodes = context_.model.nodes;
        return std::ranges::all_of(joints, [&](u32 joint) {
            while (joint != none && joint != skeleton)
                joint = nodes[joint].parent;
            return joint == skeleton;
        });
    }

    bool readJoints(Skin& skin) {
        const Input* joints = skin.source->input("joints");
        if (!joints || joints->children().empty())
            return reject("no joints", skin);
        std::unordered_set<u32> indices;
        for (const Input* joint : joints->children()) {
            const u32 index = context_.nodeIndex(linkedNode(joint));
            if (index == none)
                return reject("joints without a transform", skin);
            if (!indices.insert(index).second)
                return reject("duplicate joints", skin);
            if (roots_[index] != roots_[skin.joints.empty() ? index : skin.joints[0]])
                return reject("joints without a common root", skin);
            skin.joints.push_back(index);
        }
        return true;
    }

    bool readInverseBind(Skin& skin) {
        skin.inverseBind = readFloats(skin.source->input("inverseBind"), 16, context_.losses);
        if (skin.inverseBind.empty()) {
            skin.inverseBind = identities(skin.joints.size()); // explicit: some readers require them
            return true;
        }
        const bool isValid = skin.inverseBind.size() >= 16 * skin.joints.size() && allFinite(skin.inverseBind.span()) &&
                             areAffine(skin.inverseBind.span());
        return isValid || reject("inverseBind matrices that do not match the joints", skin);
    }

    ExportContext& context_;
    std::vector<u32> roots_;
};

} // namespace

void readSkins(ExportContext& context) {
    SkinReader reader(context);
    for (ModelNode& node : context.model.nodes) {
        const Node* skin = linkedNode(node.source->input("skin"));
        if (!skin)
            continue;
        const bool hasWeights = node.geometry != none && !context.model.geometries[node.geometry].influences.empty();
        if (hasWeights)
            node.skin = reader.skinIndex(*skin);
        else
            context.losses.add("skins on nodes whose mesh has no weights", *node.source);
    }
}

} // namespace vrn::convert
