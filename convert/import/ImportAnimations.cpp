#include "convert/import/ImportContext.h"

#include <algorithm>
#include <cmath>

namespace vrn::convert {

namespace {

class AnimationImport {
public:
    AnimationImport(ImportContext& import, const aiAnimation& from)
        : import_(import), from_(from), ticksPerSecond_(from.mTicksPerSecond > 0 ? from.mTicksPerSecond : 25) {}

    void read() {
        node_ = &import_.create("animation", textOf(from_.mName), "animation");
        channels_ = node_->createArray("channels", AttrType::Object);
        for (const aiNodeAnim* channel : std::span(from_.mChannels, from_.mNumChannels)) {
            Node* target = import_.nodeOf(channel->mNodeName);
            if (!target) {
                import_.losses.add("channels of animations that move no node", *node_);
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
            import_.losses.add("animations of the shape of meshes", *node_);
    }

private:
    static std::array<float, 3> numbersOf(const aiVector3D& v) { return {v.x, v.y, v.z}; }
    static std::array<float, 4> numbersOf(const aiQuaternion& q) { return {q.x, q.y, q.z, q.w}; }

    // One value that the node has anyway is no movement.
    static bool isStill(const Node& moved, const char* path, std::span<const float> values) {
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
            const auto numbers = numbersOf(keys[i].mValue);
            std::ranges::copy(numbers, values.elements<float>().subspan(i * numbers.size()).begin());
        }
        if (keys.empty() || (keys.size() == 1 && isStill(moved, path, values.elements<float>())))
            return;
        Input* channel = channels_->appendElement();
        if (!channel)
            return import_.losses.add("channels of animations beyond what an array may hold", *node_);
        channel->createInput("target", AttrType::Node)->setNode(&moved);
        setMember(*channel, "path", AttrData::string(path));
        setMember(*channel, "interpolation", AttrData::string("linear"));
        setMember(*channel, "times", std::move(times));
        setMember(*channel, "values", std::move(values));
    }

    ImportContext& import_;
    const aiAnimation& from_;
    double ticksPerSecond_;
    Node* node_ = nullptr;
    Input* channels_ = nullptr;
};

} // namespace

void importAnimations(ImportContext& import) {
    for (unsigned i = 0; i < import.from.mNumAnimations; ++i) {
        const aiAnimation& animation = *import.from.mAnimations[i];
        AnimationImport(import, animation).read();
        if (import.gltf.hasCurves(i))
            import.losses.add("ways to join the keys of animations other than linearly",
                              String(animation.mName.C_Str()));
    }
}

} // namespace vrn::convert
