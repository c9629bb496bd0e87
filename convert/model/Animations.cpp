#include "convert/model/Animations.h"

#include "convert/model/Inputs.h"
#include "scene/Scene.h"

#include <algorithm>
#include <cmath>

namespace vrn::convert {

namespace {

class AnimationReader {
public:
    AnimationReader(ExportContext& context, const Node& node) : context_(context), animation_{.source = &node} {}

    void read() {
        const Input* channels = animation_.source->input("channels");
        if (channels)
            for (const Input* channel : channels->children())
                readChannel(*channel);
        addUnreadInputs(*animation_.source,
                        {"name", "channels[].target", "channels[].path", "channels[].interpolation", "channels[].times",
                         "channels[].values", "duration", "channelCount", "extras"},
                        context_.losses);
        checkDuration();
        if (animation_.channels.empty())
            context_.losses.add("animations without channels", *animation_.source);
        else
            context_.model.animations.push_back(std::move(animation_));
    }

private:
    void reject(const char* reason, const Input& channel) {
        context_.losses.add(std::string("animation channels with ") + reason, channel);
    }

    static std::string textOf(const Input& channel, const char* name) {
        const Input* input = channel.input(name);
        return input ? input->value().asString() : "";
    }

    void readChannel(const Input& input) {
        Channel channel;
        channel.target = context_.nodeIndex(linkedNode(input.input("target")));
        if (channel.target == none)
            return reject("a missing target or one without a transform", input);
        channel.path = textOf(input, "path");
        if (componentsOf(channel) == 0)
            return reject("a path other than translation, rotation, scale, and weights of a mesh with targets", input);
        channel.interpolation = textOf(input, "interpolation");
        if (channel.interpolation.empty())
            channel.interpolation = "linear";
        if (channel.interpolation != "linear" && channel.interpolation != "step" && channel.interpolation != "cubic")
            return reject("an unknown interpolation", input);
        if (!animatedPaths_.insert(std::to_string(channel.target) + channel.path).second)
            return reject("the target and path of an earlier channel", input);
        channel.times = readFloats(input.input("times"), 1, context_.losses);
        if (!areKeyTimes(channel.times.span()))
            return reject("times that are missing, negative or not increasing", input);
        if (!readValues(channel, input))
            return reject("values that do not match the times and the path", input);
        if (channel.path != "weights")
            decompose(context_.model.nodes[channel.target]);
        animation_.channels.push_back(std::move(channel));
    }

    // Other formats end an animation at its last key.
    void checkDuration() {
        double last = 0;
        for (const Channel& channel : animation_.channels)
            last = std::max(last, static_cast<double>(channel.times.span().back()));
        const double duration = InputReader(*animation_.source, context_.losses).number("duration", last);
        if (!animation_.channels.empty() && std::abs(duration - last) > 1e-6 * std::max(1.0, last))
            context_.losses.add("durations of animations other than the time of the last key", *animation_.source);
    }

    static bool areKeyTimes(std::span<const float> times) {
        return !times.empty() && allFinite(times) && times[0] >= 0 &&
               std::ranges::adjacent_find(times, std::greater_equal()) == times.end();
    }

    // The numbers in one value of a channel; 0 if there can be none.
    [[nodiscard]] u32 componentsOf(const Channel& channel) const {
        const u32 geometry = context_.model.nodes[channel.target].geometry;
        if (channel.path == "weights")
            return geometry == none ? 0 : static_cast<u32>(context_.model.geometries[geometry].targets.size());
        return channel.path == "rotation" ? 4 : channel.path == "translation" || channel.path == "scale" ? 3 : 0;
    }

    bool readValues(Channel& channel, const Input& input) {
        const u32 components = componentsOf(channel);
        const bool isCubic = channel.interpolation == "cubic"; // each value has an in- and an out-tangent
        channel.values = readFloats(input.input("values"), channel.path == "weights" ? 1 : components, context_.losses);
        return channel.values.size() == channel.times.size() * components * (isCubic ? 3 : 1) &&
               allFinite(channel.values.span()) &&
               (channel.path != "rotation" || isCubic || areUnitQuaternions(channel.values.span()));
    }

    static bool areUnitQuaternions(std::span<const float> values) {
        for (std::size_t i = 0; i < values.size(); i += 4)
            if (std::abs(std::hypot(std::hypot(values[i], values[i + 1]), std::hypot(values[i + 2], values[i + 3])) -
                         1) > 5e-3F)
                return false;
        return true;
    }

    // Channels replace translation, rotation or scale, so the node must not have a matrix.
    void decompose(ModelNode& node) {
        if (!node.matrix)
            return;
        node.trs = decomposeTransform(*node.matrix);
        if (toMatrix(node.trs) != *node.matrix)
            context_.losses.add("last digits of animated transforms", *node.source);
        node.matrix.reset();
    }

    ExportContext& context_;
    Animation animation_;
    std::unordered_set<std::string> animatedPaths_;
};

} // namespace

void readAnimations(ExportContext& context) {
    for (const Node& node : context.scene.nodes())
        if (node.type() == "animation" && !node.isDefinition()) {
            context.visited.insert(&node);
            AnimationReader(context, node).read();
        }
}

} // namespace vrn::convert
