#include "convert/import/gltf/GltfAnimationImport.h"

#include <algorithm>

namespace vrn::convert {

namespace {

struct Path {
    std::string_view name;
    DataType type;
};
constexpr Path channelPaths[] = {{"translation", DataType::Vec3f},
                                 {"rotation", DataType::Quatf},
                                 {"scale", DataType::Vec3f},
                                 {"weights", DataType::Float}};

const char* interpolationOf(const GltfValue& value) {
    const std::string_view name = value.text("LINEAR");
    if (name == "LINEAR")
        return "linear";
    if (name == "STEP")
        return "step";
    if (name != "CUBICSPLINE")
        value.refuse("it is no interpolation");
    return "cubic";
}

class GltfAnimationReader {
public:
    GltfAnimationReader(GltfContext& context, const GltfValue& animation)
        : context_(context), animation_(animation), node_(context.create("animation", animation, "animation")),
          channels_(*node_.createArray("channels", AttrType::Object)) {}

    void read() {
        animation_["channels"].required().forEach([&](const GltfValue& channel, u64) { add(channel); });
        set(node_, "duration", AttrData::real(static_cast<double>(duration_)));
    }

private:
    void add(const GltfValue& channel) {
        const GltfValue target = channel["target"].required();
        const GltfValue samplers = animation_["samplers"].required();
        const GltfValue sampler = samplers[channel["sampler"].indexIn(samplers)];
        const GltfValue path = target["path"].required();
        if (path.text() == "pointer") {
            if (!target["extensions"].exists()) // otherwise the extension is reported
                context_.losses.add("animation channels without a target node", node_);
            return sampler.ignore();
        }
        if (!target["node"].exists())
            return context_.losses.add("animation channels without a target node", node_);
        const auto* known = std::ranges::find(channelPaths, path.text(), &Path::name);
        if (known == std::end(channelPaths))
            path.refuse("it is no path of nodes");
        AttrData times = context_.accessors.floats(sampler["input"].required(), DataType::Float);
        AttrData values = context_.accessors.floats(sampler["output"].required(), known->type);
        checkCounts(sampler, times.count(), values.count(), known->name == "weights");
        duration_ = std::max(duration_, times.elements<float>().back());
        Input* to = channels_.appendElement();
        if (!to)
            return context_.losses.add("animation channels beyond the limit of arrays", node_);
        to->createInput("target", AttrType::Node)->setNode(context_.nodes[target["node"].indexIn(nodes())]);
        setMember(*to, "path", AttrData::string(known->name));
        setMember(*to, "interpolation", AttrData::string(interpolationOf(sampler["interpolation"])));
        setMember(*to, "times", std::move(times));
        setMember(*to, "values", std::move(values));
    }

    // One value per time; three if they have tangents; and any number of weights in each.
    static void checkCounts(const GltfValue& sampler, u64 times, u64 values, bool areWeights) {
        const u64 expected = times * (sampler["interpolation"].text() == "CUBICSPLINE" ? 3 : 1);
        const bool fits = areWeights ? values % expected == 0 : values == expected;
        if (!fits)
            sampler["output"].refuse("it has " + std::to_string(values) + " elements for " + std::to_string(times) +
                                     " times");
    }

    [[nodiscard]] GltfValue nodes() const { return context_.root["nodes"]; }

    GltfContext& context_;
    const GltfValue& animation_;
    Node& node_;
    Input& channels_;
    float duration_ = 0;
};

} // namespace

void importAnimations(GltfContext& context) {
    context.root["animations"].forEach(
        [&](const GltfValue& animation, u64) { GltfAnimationReader(context, animation).read(); });
}

} // namespace vrn::convert
