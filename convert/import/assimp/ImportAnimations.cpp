#include "convert/import/assimp/ImportAnimations.h"

#include "convert/import/assimp/AssimpValues.h"
#include "convert/shared/NodeInputs.h"

#include <algorithm>
#include <cmath>

namespace vrn::convert {

namespace {

class AnimationImport {
public:
    AnimationImport(ImportContext& context, const aiAnimation& from)
        : context_(context), from_(from), ticksPerSecond_(from.mTicksPerSecond > 0 ? from.mTicksPerSecond : 25) {}

    void read() {
        node_ = &context_.create("animation", viewOf(from_.mName), "animation");
        channels_ = node_->createArray("channels", AttrType::Object);
        for (const aiNodeAnim* channel : std::span(from_.mChannels, from_.mNumChannels)) {
            Node* target = context_.nodeOf(channel->mNodeName);
            if (!target) {
                context_.losses.add("animation channels without a target node", *node_);
                continue;
            }
            Node& moved = *target;
            add(moved, "translation", DataType::Vec3f,
                std::span<const aiVectorKey>(channel->mPositionKeys, channel->mNumPositionKeys));
            add(moved, "rotation", DataType::Quatf,
                std::span<const aiQuatKey>(channel->mRotationKeys, channel->mNumRotationKeys));
            add(moved, "scale", DataType::Vec3f,
                std::span<const aiVectorKey>(channel->mScalingKeys, channel->mNumScalingKeys));
        }
        set(*node_, "duration", AttrData::real(from_.mDuration / ticksPerSecond_));
        if (from_.mNumMeshChannels != 0 || from_.mNumMorphMeshChannels != 0)
            context_.losses.add("animations of meshes and morph targets", *node_);
    }

private:
    static std::array<float, 3> componentsOf(const aiVector3D& v) { return {v.x, v.y, v.z}; }
    static std::array<float, 4> componentsOf(const aiQuaternion& q) { return {q.x, q.y, q.z, q.w}; }

    // Whether the only key of a channel repeats the value of the node.
    static bool isStatic(const Node& moved, const char* path, std::span<const float> values) {
        const Input* input = moved.input(path);
        const std::span<const double> rest = input ? input->value().components() : std::span<const double>();
        return rest.size() == values.size() && std::ranges::equal(rest, values, [](double a, float b) {
                   return std::abs(a - static_cast<double>(b)) < 1e-6;
               });
    }

    template <class Key> void add(Node& moved, const char* path, DataType type, std::span<const Key> keys) {
        AttrData times = AttrData::buffer(DataType::Float, keys.size());
        AttrData values = AttrData::buffer(type, keys.size());
        for (std::size_t i = 0; i < keys.size(); ++i) {
            times.elements<float>()[i] = static_cast<float>(keys[i].mTime / ticksPerSecond_);
            const auto components = componentsOf(keys[i].mValue);
            std::ranges::copy(components, values.elements<float>().subspan(i * components.size()).begin());
        }
        if (keys.empty() || (keys.size() == 1 && isStatic(moved, path, values.elements<float>())))
            return;
        Input* channel = channels_->appendElement();
        if (!channel)
            return context_.losses.add("animation channels beyond the limit of arrays", *node_);
        channel->createInput("target", AttrType::Node)->setNode(&moved);
        setMember(*channel, "path", AttrData::string(path));
        setMember(*channel, "interpolation", AttrData::string("linear"));
        setMember(*channel, "times", std::move(times));
        setMember(*channel, "values", std::move(values));
    }

    ImportContext& context_;
    const aiAnimation& from_;
    double ticksPerSecond_;
    Node* node_ = nullptr;
    Input* channels_ = nullptr;
};

} // namespace

void importAnimations(ImportContext& context) {
    for (const aiAnimation* animation : std::span(context.from.mAnimations, context.from.mNumAnimations))
        AnimationImport(context, *animation).read();
}

} // namespace vrn::convert
