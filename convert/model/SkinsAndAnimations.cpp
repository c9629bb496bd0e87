// Skins, which joints move, and animations.
#include "convert/model/ExportContext.h"
#include "scene/Scene.h"

#include <algorithm>
#include <cmath>

namespace vrn::convert {

namespace {

bool isFinite(std::span<const float> numbers) {
    return std::ranges::all_of(numbers, [](float number) { return std::isfinite(number); });
}

// The root above each placement.
std::vector<u32> rootsOf(const std::vector<Placement>& placements) {
    std::vector<u32> roots(placements.size(), none);
    std::vector<u32> open;
    for (u32 i = 0; i < placements.size(); ++i)
        if (placements[i].parent == none)
            open.push_back(roots[i] = i);
    while (!open.empty()) {
        const u32 at = open.back();
        open.pop_back();
        for (const u32 child : placements[at].children) {
            roots[child] = roots[at];
            open.push_back(child);
        }
    }
    return roots;
}

// Whether the matrices end in a column of 0 0 0 1, as those that only move and shape do.
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
    explicit SkinReader(ExportContext& reading) : reading_(reading), roots_(rootsOf(reading.model.placements)) {}

    // The place of a skin in the model, which is read the first time.
    u32 skinOf(const Node& node) {
        const auto [found, isNew] = reading_.skins.emplace(&node, none);
        if (!isNew)
            return found->second;
        reading_.carried.insert(&node);
        Skin skin{.source = &node};
        if (!readJoints(skin) || !readInverseBind(skin))
            return none;
        skin.skeleton = reading_.placementOf(linkedNode(node.input("skeleton")));
        if (skin.skeleton != none && skin.skeleton != roots_[skin.joints[0]]) {
            reading_.losses.add("skeletons that are not the root of all joints", node);
            skin.skeleton = none;
        }
        noteOthers(node, {"name", "joints", "inverseBind", "skeleton"}, reading_.losses);
        found->second = static_cast<u32>(reading_.model.skins.size());
        reading_.model.skins.push_back(std::move(skin));
        return found->second;
    }

private:
    bool refuse(const char* why, const Skin& skin) {
        reading_.losses.add(std::string("skins with ") + why, *skin.source);
        return false;
    }

    bool readJoints(Skin& skin) {
        const Input* joints = skin.source->input("joints");
        if (!joints || joints->children().empty())
            return refuse("no joints", skin);
        std::unordered_set<u32> known;
        for (const Input* joint : joints->children()) {
            const u32 place = reading_.placementOf(linkedNode(joint));
            if (place == none)
                return refuse("joints that are no placed nodes", skin);
            if (!known.insert(place).second)
                return refuse("the same joint twice", skin);
            if (roots_[place] != roots_[skin.joints.empty() ? place : skin.joints[0]])
                return refuse("joints that have no common root", skin);
            skin.joints.push_back(place);
        }
        return true;
    }

    bool readInverseBind(Skin& skin) {
        skin.inverseBind = readFloats(skin.source->input("inverseBind"), 16, reading_.losses);
        if (skin.inverseBind.empty()) {
            skin.inverseBind = identities(skin.joints.size()); // said, because some readers cannot do without
            return true;
        }
        const bool fits = skin.inverseBind.size() == 16 * skin.joints.size() && isFinite(skin.inverseBind.span()) &&
                          areAffine(skin.inverseBind.span());
        return fits || refuse("inverseBind matrices that do not fit the joints", skin);
    }

    ExportContext& reading_;
    std::vector<u32> roots_;
};

class AnimationReader {
public:
    AnimationReader(ExportContext& reading, const Node& node) : reading_(reading), animation_{.source = &node} {}

    void read() {
        const Input* channels = animation_.source->input("channels");
        if (channels)
            for (const Input* channel : channels->children())
                readChannel(*channel);
        noteOthers(*animation_.source,
                   {"name", "channels[].target", "channels[].path", "channels[].interpolation", "channels[].times",
                    "channels[].values", "duration", "channelCount"},
                   reading_.losses);
        noteDuration();
        if (animation_.channels.empty())
            reading_.losses.add("animations without channels", *animation_.source);
        else
            reading_.model.animations.push_back(std::move(animation_));
    }

private:
    void refuse(const char* why, const Input& channel) {
        reading_.losses.add(std::string("channels of animations with ") + why, channel);
    }

    static std::string textOf(const Input& channel, const char* name) {
        const Input* input = channel.input(name);
        return input ? input->value().asString() : "";
    }

    void readChannel(const Input& input) {
        Channel channel;
        channel.target = reading_.placementOf(linkedNode(input.input("target")));
        if (channel.target == none)
            return refuse("no placed node as target", input);
        channel.path = textOf(input, "path");
        if (channel.path != "translation" && channel.path != "rotation" && channel.path != "scale")
            return refuse("a path other than translation, rotation and scale", input);
        channel.interpolation = textOf(input, "interpolation");
        if (channel.interpolation.empty())
            channel.interpolation = "linear";
        if (channel.interpolation != "linear" && channel.interpolation != "step" && channel.interpolation != "cubic")
            return refuse("an unknown interpolation", input);
        if (!used_.insert(std::to_string(channel.target) + channel.path).second)
            return refuse("the target and path of an earlier one", input);
        channel.times = readFloats(input.input("times"), 1, reading_.losses);
        if (!areTimes(channel.times.span()))
            return refuse("times that do not grow from 0 or more", input);
        if (!readValues(channel, input))
            return refuse("values that do not fit the times and the path", input);
        bePartwise(reading_.model.placements[channel.target]);
        animation_.channels.push_back(std::move(channel));
    }

    // Others end when their last key is reached.
    void noteDuration() {
        double last = 0;
        for (const Channel& channel : animation_.channels)
            last = std::max(last, static_cast<double>(channel.times.span().back()));
        const double duration = InputReader(*animation_.source, reading_.losses).number("duration", last);
        if (!animation_.channels.empty() && std::abs(duration - last) > 1e-6 * std::max(1.0, last))
            reading_.losses.add("durations of animations that are not the time of their last key", *animation_.source);
    }

    static bool areTimes(std::span<const float> times) {
        return !times.empty() && isFinite(times) && times[0] >= 0 &&
               std::ranges::adjacent_find(times, std::greater_equal()) == times.end();
    }

    bool readValues(Channel& channel, const Input& input) {
        const u32 components = channel.path == "rotation" ? 4 : 3;
        const bool isCubic = channel.interpolation == "cubic"; // a tangent before and behind each value
        channel.values = readFloats(input.input("values"), components, reading_.losses);
        return channel.values.size() == channel.times.size() * components * (isCubic ? 3 : 1) &&
               isFinite(channel.values.span()) && (components == 3 || isCubic || areRotations(channel.values.span()));
    }

    static bool areRotations(std::span<const float> values) {
        for (std::size_t i = 0; i < values.size(); i += 4)
            if (std::abs(std::hypot(std::hypot(values[i], values[i + 1]), std::hypot(values[i + 2], values[i + 3])) -
                         1) > 5e-3F)
                return false;
        return true;
    }

    // What moves has its scaling, turning and moving apart, so that each can be replaced.
    void bePartwise(Placement& placement) {
        if (!placement.matrix)
            return;
        placement.trs = decompose(*placement.matrix);
        if (toMatrix(placement.trs) != *placement.matrix)
            reading_.losses.add("the last digits of transforms that are animated", *placement.source);
        placement.matrix.reset();
    }

    ExportContext& reading_;
    Animation animation_;
    std::unordered_set<std::string> used_;
};

} // namespace

void readSkins(ExportContext& reading) {
    SkinReader reader(reading);
    for (Placement& placement : reading.model.placements) {
        const Node* skin = linkedNode(placement.source->input("skin"));
        if (!skin)
            continue;
        const bool hasWeights =
            placement.geometry != none && !reading.model.geometries[placement.geometry].weights.empty();
        if (hasWeights)
            placement.skin = reader.skinOf(*skin);
        else
            reading.losses.add("skins of what has no weights", *placement.source);
    }
}

void readAnimations(ExportContext& reading) {
    for (const Node& node : reading.scene.nodes())
        if (node.type() == "animation" && !node.isDefinition()) {
            reading.carried.insert(&node);
            AnimationReader(reading, node).read();
        }
}

} // namespace vrn::convert
