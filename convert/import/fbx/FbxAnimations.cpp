#include "convert/import/fbx/FbxAnimations.h"

#include "convert/import/fbx/FbxCurve.h"
#include "convert/shared/NodeInputs.h"
#include "scene/Scene.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

namespace vrn::convert {

namespace {

// The curves of the three components of a translation, rotation or scaling.
struct VectorCurves {
    std::array<FbxCurve, 3> components;

    [[nodiscard]] Vector at(double seconds) const {
        return {components[0].at(seconds), components[1].at(seconds), components[2].at(seconds)};
    }
    [[nodiscard]] bool isAnimated() const { return std::ranges::any_of(components, &FbxCurve::isAnimated); }
};

struct ModelCurves {
    const FbxModel* model;
    VectorCurves translation;
    VectorCurves rotation;
    VectorCurves scaling;

    [[nodiscard]] Trs at(double seconds) const {
        FbxTransform transform = model->transform;
        transform.translation = translation.at(seconds);
        transform.rotation = rotation.at(seconds);
        transform.scaling = scaling.at(seconds);
        return localTransform(transform);
    }
};

VectorCurves constant(const Vector& value) { return {{FbxCurve(value[0]), FbxCurve(value[1]), FbxCurve(value[2])}}; }

// A channel of an animation as the curves that determine it.
struct ChannelCurves {
    std::vector<const FbxCurve*> curves{};
    bool isBent = false; // linear curves do not make it linear

    void add(const VectorCurves& more) {
        for (const FbxCurve& curve : more.components)
            if (curve.isAnimated())
                curves.push_back(&curve);
    }
    [[nodiscard]] bool isStepped() const {
        return std::ranges::all_of(curves, [](const FbxCurve* curve) { return curve->isStepped(); });
    }
    [[nodiscard]] bool isLinear() const {
        return !isBent && std::ranges::all_of(curves, [](const FbxCurve* curve) { return curve->isLinear(); });
    }
};

// Rotations about several axes, or by more than half a turn between two keys, do not follow the shortest arc.
bool isBentRotation(const VectorCurves& rotation) {
    const auto varying = std::ranges::count_if(rotation.components, &FbxCurve::isVarying);
    const bool isLong =
        std::ranges::any_of(rotation.components, [](const FbxCurve& curve) { return curve.largestChange() > 170; });
    return varying > 1 || isLong;
}

struct Span {
    double start = 0;
    double stop = 0;
};

class StackImport {
public:
    StackImport(const FbxScene& from, const FbxElement& stack, const std::unordered_map<i64, Node*>& nodes,
                NodeMaker& maker, Losses& losses)
        : from_(from), stack_(stack), nodes_(nodes), maker_(maker), losses_(losses),
          name_(std::string_view(nameOf(stack))) {}

    void read() {
        std::set<i64> layers; // a file can connect one very often
        for (const FbxConnection& layer : from_.connectionsTo(stack_.value(0).integer()))
            if (layers.insert(layer.source).second)
                for (const FbxConnection& curves : from_.connectionsTo(layer.source))
                    addCurves(curves.source);
        if (models_.empty())
            return;
        span_ = findSpan();
        Node& node = maker_.create("animation", name_.view(), "animation");
        channels_ = node.createArray("channels", AttrType::Object);
        for (const auto& [id, curves] : models_)
            if (const auto target = nodes_.find(id); target != nodes_.end())
                addChannels(curves, *target->second);
        set(node, "duration", AttrData::real(span_.stop - span_.start));
    }

private:
    // An `AnimationCurveNode` sets one property of a model.
    void addCurves(i64 id) {
        const FbxElement* curves = from_.object(id);
        if (!curves || curves->name != "AnimationCurveNode")
            return;
        for (const FbxConnection& use : from_.connectionsFrom(id)) {
            if (use.property.empty())
                continue;
            const FbxModel* model = from_.model(use.destination);
            VectorCurves ModelCurves::*member = memberOf(use.property);
            if (!model || !member) {
                losses_.add("animations of other properties than translation, rotation and scale", name_);
                continue;
            }
            const auto known =
                models_.emplace(model->id, ModelCurves{.model = model,
                                                       .translation = constant(model->transform.translation),
                                                       .rotation = constant(model->transform.rotation),
                                                       .scaling = constant(model->transform.scaling)});
            VectorCurves& target = known.first->second.*member;
            if (target.isAnimated())
                losses_.add("further layers of animations", name_);
            else
                target = readCurves(*curves, target);
        }
    }

    static VectorCurves ModelCurves::*memberOf(std::string_view property) {
        if (property == "Lcl Translation")
            return &ModelCurves::translation;
        if (property == "Lcl Rotation")
            return &ModelCurves::rotation;
        return property == "Lcl Scaling" ? &ModelCurves::scaling : nullptr;
    }

    VectorCurves readCurves(const FbxElement& element, const VectorCurves& rest) {
        VectorCurves curves = rest;
        static constexpr std::string_view names[] = {"d|X", "d|Y", "d|Z"};
        for (std::size_t i = 0; i < 3; ++i)
            if (const FbxElement* value = propertyOf(element, names[i]))
                curves.components[i] = FbxCurve(value->value(4).number());
        for (const FbxConnection& connection : from_.connectionsTo(element.value(0).integer())) {
            const auto component = std::ranges::find(names, connection.property) - std::begin(names);
            const FbxElement* curve = from_.object(connection.source);
            if (component == 3 || !curve)
                continue;
            FbxCurve& target = curves.components[static_cast<std::size_t>(component)];
            target = FbxCurve(*curve, target.at(0), from_.ticksPerSecond());
            if (target.hasOtherTangents())
                losses_.add("biases, tension and continuity of tangents of animation curves", name_);
            if (!target.isAnimated())
                losses_.add("animation curves without valid keys", name_);
            if (isExtrapolated(*curve))
                losses_.add("motions beyond the keys of animation curves", name_);
        }
        return curves;
    }

    // Whether a curve repeats or continues before its first key or after its last one.
    static bool isExtrapolated(const FbxElement& curve) {
        constexpr std::string_view hold = "C";
        for (const char* name : {"Pre-Extrapolation", "Post-Extrapolation"})
            if (const FbxElement* side = curve.child(name))
                if (const FbxElement* type = side->child("Type"); type && type->value(0).bytes != hold)
                    return true;
        return false;
    }

    // Times are relative to the start that the stack gives, or to the first key.
    Span findSpan() const {
        const auto time = [&](std::string_view name) { return numberOf(stack_, name, 0) / from_.ticksPerSecond(); };
        Span span{time("LocalStart"), time("LocalStop")};
        if (span.stop > span.start)
            return span;
        bool isFirst = true;
        for (const auto& [id, model] : models_)
            for (const VectorCurves* curves : {&model.translation, &model.rotation, &model.scaling})
                for (const FbxCurve& curve : curves->components)
                    if (curve.isAnimated()) {
                        span.start = isFirst ? curve.times().front() : std::min(span.start, curve.times().front());
                        span.stop = isFirst ? curve.times().back() : std::max(span.stop, curve.times().back());
                        isFirst = false;
                    }
        return span;
    }

    void addChannels(const ModelCurves& curves, Node& target) {
        ChannelCurves translation;
        translation.add(curves.translation);
        if (rotationMovesOrigin(curves.model->transform) && curves.rotation.isAnimated()) {
            translation.add(curves.rotation);
            translation.isBent = true;
        }
        if (scalingMovesOrigin(curves.model->transform)) {
            translation.add(curves.scaling);
            translation.isBent |= curves.scaling.isAnimated() && curves.rotation.isAnimated();
        }
        ChannelCurves rotation;
        rotation.add(curves.rotation);
        rotation.isBent = isBentRotation(curves.rotation);
        ChannelCurves scale;
        scale.add(curves.scaling);
        const auto sample = [&](double seconds) { return curves.at(seconds); };
        addChannel(target, "translation", DataType::Vec3f, translation,
                   [&](double t) { return sample(t).translation; });
        addChannel(target, "rotation", DataType::Quatf, rotation, [&](double t) { return sample(t).rotation; });
        addChannel(target, "scale", DataType::Vec3f, scale, [&](double t) { return sample(t).scale; });
    }

    // The times of the keys within the span, its ends if they are not keys, and those that bent channels need.
    std::vector<double> timesOf(const ChannelCurves& curves) const {
        std::vector<double> times;
        for (const FbxCurve* curve : curves.curves)
            std::ranges::copy_if(curve->times(), std::back_inserter(times),
                                 [&](double time) { return time >= span_.start && time <= span_.stop; });
        const bool isWhole = std::ranges::all_of(curves.curves, [&](const FbxCurve* curve) {
            return curve->times().front() >= span_.start && curve->times().back() <= span_.stop;
        });
        if (!isWhole || times.empty())
            times.insert(times.end(), {span_.start, span_.stop});
        if (!curves.isStepped() && !curves.isLinear())
            addSamples(times);
        std::ranges::sort(times);
        // Keys that are the same time as floats would not be increasing.
        const auto isSame = [](double a, double b) { return static_cast<float>(a) == static_cast<float>(b); };
        times.erase(std::unique(times.begin(), times.end(), isSame), times.end());
        return times;
    }

    static void addSamples(std::vector<double>& times) {
        constexpr double samplesPerSecond = 30;
        constexpr double mostSamples = 1e6;
        const auto [first, last] = std::ranges::minmax(times);
        const double seconds = std::max(1 / samplesPerSecond, (last - first) / mostSamples);
        const auto count = static_cast<u64>(std::ceil((last - first) / seconds));
        for (u64 i = 1; i < count; ++i)
            times.push_back(first + static_cast<double>(i) * seconds);
    }

    template <class Sample>
    void addChannel(Node& target, const char* path, DataType type, const ChannelCurves& curves, Sample sample) {
        if (curves.curves.empty())
            return;
        const std::vector<double> seconds = timesOf(curves);
        AttrData times = AttrData::buffer(DataType::Float, seconds.size());
        AttrData values = AttrData::buffer(type, seconds.size());
        auto previous = sample(seconds[0]);
        for (std::size_t i = 0; i < seconds.size(); ++i) {
            auto value = sample(seconds[i]);
            double alignment = 0;
            for (std::size_t k = 0; k < value.size(); ++k)
                alignment += value[k] * previous[k];
            if (type == DataType::Quatf && alignment < 0)
                for (double& component : value)
                    component = -component; // the same rotation, on the shorter arc
            previous = value;
            times.elements<float>()[i] = static_cast<float>(seconds[i] - span_.start);
            std::ranges::transform(value, values.elements<float>().subspan(i * value.size()).begin(),
                                   [](double component) { return static_cast<float>(component); });
        }
        Input* channel = channels_->appendElement();
        if (!channel)
            return losses_.add("animation channels beyond the limit of arrays", name_);
        channel->createInput("target", AttrType::Node)->setNode(&target);
        setMember(*channel, "path", AttrData::string(path));
        setMember(*channel, "interpolation", AttrData::string(curves.isStepped() ? "step" : "linear"));
        setMember(*channel, "times", std::move(times));
        setMember(*channel, "values", std::move(values));
    }

    const FbxScene& from_;
    const FbxElement& stack_;
    const std::unordered_map<i64, Node*>& nodes_;
    NodeMaker& maker_;
    Losses& losses_;
    String name_;
    Input* channels_ = nullptr;
    std::map<i64, ModelCurves> models_{};
    Span span_{};
};

} // namespace

void importFbxAnimations(const FbxScene& from, const std::unordered_map<i64, Node*>& nodes, NodeMaker& maker,
                         Losses& losses) {
    for (const FbxElement* stack : from.objects("AnimationStack"))
        StackImport(from, *stack, nodes, maker, losses).read();
}

} // namespace vrn::convert
