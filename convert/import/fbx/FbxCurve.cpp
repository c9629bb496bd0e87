#include "convert/import/fbx/FbxCurve.h"

#include "convert/shared/Floats.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace vrn::convert {

namespace {

// The flags of keys.
constexpr u32 stepped = 0x2;
constexpr u32 cubic = 0x8;
constexpr u32 nextValue = 0x100; // of a step
constexpr u32 tensionTangent = 0x200;
constexpr u32 userTangent = 0x400;
constexpr u32 clamped = 0x1000;
constexpr u32 timeIndependent = 0x2000;
constexpr u32 clampedProgressively = 0x4000;
constexpr u32 weightedAfter = 0x1000000;
constexpr u32 weightedBeforeNext = 0x2000000;

// The bits of an integer that a list of numbers holds; 0 for any other number.
u32 bitsOf(double number) {
    constexpr double limit = 4294967296.0;
    return std::abs(number) < limit ? static_cast<u32>(static_cast<i64>(number)) : 0;
}

std::vector<double> numbersOf(const FbxElement& element, std::string_view name) {
    const FbxElement* child = element.child(name);
    return child ? child->numbers() : std::vector<double>();
}

// Four numbers a tangent. Text files have the bits of the floats as integers since this version of curves.
std::vector<float> tangentData(const FbxElement& element) {
    constexpr i64 firstWithBits = 4008;
    const FbxElement* data = element.child("KeyAttrDataFloat");
    const FbxElement* version = element.child("KeyVer");
    const bool hasBits = data && data->child("a") && version && version->value(0).integer() >= firstWithBits;
    std::vector<float> numbers;
    for (const double number : numbersOf(element, "KeyAttrDataFloat"))
        numbers.push_back(hasBits ? std::bit_cast<float>(bitsOf(number)) : static_cast<float>(number));
    return numbers;
}

} // namespace

FbxCurve::FbxCurve(const FbxElement& element, double fallback, double ticksPerSecond) : fallback_(fallback) {
    const std::vector<double> ticks = numbersOf(element, "KeyTime");
    const std::vector<double> values = numbersOf(element, "KeyValueFloat");
    const bool isValid = ticks.size() == values.size() && std::ranges::is_sorted(ticks, std::less_equal<>()) &&
                         std::ranges::all_of(ticks, fitsFloat) && std::ranges::all_of(values, fitsFloat);
    if (!isValid)
        return;
    for (std::size_t i = 0; i < ticks.size(); ++i) {
        times_.push_back(ticks[i] / ticksPerSecond);
        keys_.push_back({.value = values[i]});
    }
    readTangents(element);
    const bool areTangentsFinite = std::ranges::all_of(
        keys_, [](const Key& key) { return std::isfinite(key.slopeBefore) && std::isfinite(key.slopeAfter); });
    if (areTangentsFinite)
        return;
    times_.clear();
    keys_.clear();
}

FbxCurve::Interpolation FbxCurve::interpolationOf(u32 flags) {
    if ((flags & stepped) != 0)
        return (flags & nextValue) != 0 ? Interpolation::StepToNext : Interpolation::Step;
    return (flags & cubic) != 0 ? Interpolation::Cubic : Interpolation::Linear;
}

// Each entry of the flags, and four numbers, apply to a number of successive keys.
void FbxCurve::readTangents(const FbxElement& element) {
    const std::vector<double> flags = numbersOf(element, "KeyAttrFlags");
    const std::vector<double> counts = numbersOf(element, "KeyAttrRefCount");
    const std::vector<float> data = tangentData(element);
    std::size_t next = 0;
    for (std::size_t i = 0; i < flags.size() && i < counts.size() && data.size() >= 4 * i + 4; ++i)
        for (double left = counts[i]; left > 0 && next < keys_.size(); --left, ++next)
            readTangent(next, bitsOf(flags[i]), std::span(data).subspan(4 * i, 4));
    for (std::size_t i = 0; i < keys_.size(); ++i)
        if (keys_[i].isAutomatic)
            keys_[i].slopeBefore = keys_[i].slopeAfter = automaticSlope(i);
}

// The numbers are the slopes after the key and before the next one, or else biases; and two weights of 16 bits.
void FbxCurve::readTangent(std::size_t index, u32 flags, std::span<const float> data) {
    Key& key = keys_[index];
    key.interpolation = interpolationOf(flags);
    key.flags = flags;
    if (key.interpolation != Interpolation::Cubic)
        return;
    constexpr double weightUnit = 0.0001;
    const u32 weights = std::bit_cast<u32>(data[2]);
    if ((flags & weightedAfter) != 0)
        key.weightAfter = (weights & 0xFFFF) * weightUnit;
    if ((flags & weightedBeforeNext) != 0)
        key.weightBeforeNext = (weights >> 16) * weightUnit;
    key.isAutomatic = (flags & userTangent) == 0;
    if (!key.isAutomatic) {
        key.slopeAfter = static_cast<double>(data[0]);
        if (index + 1 < keys_.size())
            keys_[index + 1].slopeBefore = static_cast<double>(data[1]);
    } else {
        hasOtherTangents_ |= (flags & tensionTangent) != 0 || data[0] != 0 || data[1] != 0;
    }
}

double FbxCurve::slopeBetween(std::size_t from, std::size_t to) const {
    return (keys_[to].value - keys_[from].value) / (times_[to] - times_[from]);
}

double FbxCurve::automaticSlope(std::size_t i) const {
    const u32 flags = keys_[i].flags;
    const bool isFirst = i == 0;
    const bool isLast = i + 1 == keys_.size();
    constexpr double nearby = 0.001;
    const auto isNear = [&](std::size_t other) { return std::abs(keys_[other].value - keys_[i].value) <= nearby; };
    if ((flags & clamped) != 0 && ((!isFirst && isNear(i - 1)) || (!isLast && isNear(i + 1))))
        return 0;
    if (isFirst || isLast) {
        const bool isFlat = (flags & clampedProgressively) != 0 || keys_.size() == 1;
        return isFlat ? 0 : isFirst ? slopeBetween(i, i + 1) : slopeBetween(i - 1, i);
    }
    const double before = slopeBetween(i - 1, i);
    const double after = slopeBetween(i, i + 1);
    double slope = slopeBetween(i - 1, i + 1);
    if ((flags & timeIndependent) == 0) {
        const double part = (times_[i] - times_[i - 1]) / (times_[i + 1] - times_[i - 1]);
        slope = (slope + before * (1 - part) + after * part) / 2;
    }
    if ((flags & clampedProgressively) == 0)
        return slope;
    // Not so steep that a tangent would reach beyond the value of the key beside.
    const double sign = slope < 0 ? -1 : 1;
    const double steepest =
        std::min(sign * before / keys_[i - 1].weightBeforeNext, sign * after / keys_[i].weightAfter);
    return sign * std::clamp(sign * slope, 0.0, std::max(steepest, 0.0));
}

double FbxCurve::at(double seconds) const {
    if (keys_.empty())
        return fallback_;
    const auto after = static_cast<std::size_t>(std::ranges::upper_bound(times_, seconds) - times_.begin());
    if (after == 0)
        return keys_.front().value;
    const Key& from = keys_[after - 1];
    if (after == keys_.size())
        return from.value;
    const Key& to = keys_[after];
    const double t = (seconds - times_[after - 1]) / (times_[after] - times_[after - 1]);
    switch (from.interpolation) {
    case Interpolation::Step:
        return from.value;
    case Interpolation::StepToNext:
        return t > 0 ? to.value : from.value;
    case Interpolation::Linear:
        return from.value + (to.value - from.value) * t;
    case Interpolation::Cubic:
        break;
    }
    return cubicAt(seconds, after - 1);
}

// A Bezier curve in time and value. Its parameter is found by bisection.
double FbxCurve::cubicAt(double seconds, std::size_t index) const {
    const Key& from = keys_[index];
    const Key& to = keys_[index + 1];
    const double duration = times_[index + 1] - times_[index];
    const double time = (seconds - times_[index]) / duration;
    const auto bezier = [](double a, double b, double c, double d, double u) {
        const double v = 1 - u;
        return v * v * v * a + 3 * u * v * v * b + 3 * u * u * v * c + u * u * u * d;
    };
    double low = 0;
    double high = 1;
    for (int i = 0; i < 50; ++i) {
        const double middle = (low + high) / 2;
        (bezier(0, from.weightAfter, 1 - from.weightBeforeNext, 1, middle) < time ? low : high) = middle;
    }
    return bezier(from.value, from.value + from.slopeAfter * from.weightAfter * duration,
                  to.value - to.slopeBefore * from.weightBeforeNext * duration, to.value, high);
}

bool FbxCurve::isVarying() const {
    const auto isSame = [&](const Key& key) {
        const bool isFlat = key.interpolation != Interpolation::Cubic || (key.slopeBefore == 0 && key.slopeAfter == 0);
        return key.value == keys_[0].value && isFlat;
    };
    return !std::ranges::all_of(keys_, isSame);
}

bool FbxCurve::isStepped() const {
    return std::ranges::all_of(keys_, [](const Key& key) { return key.interpolation == Interpolation::Step; });
}

bool FbxCurve::isLinear() const {
    for (std::size_t i = 0; i + 1 < keys_.size(); ++i) {
        const Key& from = keys_[i];
        const double slope = slopeBetween(i, i + 1);
        const auto isAlong = [&](double other) { return std::abs(other - slope) < 1e-6; };
        const bool isStraight =
            from.interpolation == Interpolation::Linear ||
            (from.interpolation == Interpolation::Cubic && isAlong(from.slopeAfter) &&
             isAlong(keys_[i + 1].slopeBefore) && (slope == 0 || from.weightAfter == from.weightBeforeNext));
        if (!isStraight && (from.interpolation == Interpolation::Cubic || slope != 0))
            return false;
    }
    return true;
}

double FbxCurve::largestChange() const {
    double largest = 0;
    for (std::size_t i = 0; i + 1 < keys_.size(); ++i)
        largest = std::max(largest, std::abs(keys_[i + 1].value - keys_[i].value));
    return largest;
}

} // namespace vrn::convert
