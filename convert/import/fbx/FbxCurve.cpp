#include "convert/import/fbx/FbxCurve.h"

#include <algorithm>
#include <cmath>

namespace vrn::convert {

namespace {

std::vector<double> numbersOf(const FbxElement& element, std::string_view name) {
    const FbxElement* child = element.child(name);
    return child ? child->numbers() : std::vector<double>();
}

} // namespace

double fbxSeconds(double ticks) {
    constexpr double ticksPerSecond = 46186158000;
    return ticks / ticksPerSecond;
}

FbxCurve::FbxCurve(const FbxElement& element, double fallback) : fallback_(fallback) {
    const std::vector<double> ticks = numbersOf(element, "KeyTime");
    const std::vector<double> values = numbersOf(element, "KeyValueFloat");
    const bool isValid = ticks.size() == values.size() && std::ranges::is_sorted(ticks, std::less_equal<>()) &&
                         std::ranges::all_of(values, [](double value) { return std::isfinite(value); });
    if (!isValid)
        return;
    for (std::size_t i = 0; i < ticks.size(); ++i) {
        times_.push_back(fbxSeconds(ticks[i]));
        keys_.push_back({.value = values[i]});
    }
    readTangents(element);
}

FbxCurve::Interpolation FbxCurve::interpolationOf(u32 flags) {
    constexpr u32 constant = 0x2;
    constexpr u32 cubic = 0x8;
    constexpr u32 nextValue = 0x100; // of a constant
    if ((flags & constant) != 0)
        return (flags & nextValue) != 0 ? Interpolation::StepToNext : Interpolation::Step;
    return (flags & cubic) != 0 ? Interpolation::Cubic : Interpolation::Linear;
}

// Each entry of the flags, and four numbers, apply to a number of successive keys.
void FbxCurve::readTangents(const FbxElement& element) {
    constexpr u32 weights = 0x3000000;
    const std::vector<double> flags = numbersOf(element, "KeyAttrFlags");
    const std::vector<double> data = numbersOf(element, "KeyAttrDataFloat");
    const std::vector<double> counts = numbersOf(element, "KeyAttrRefCount");
    std::size_t next = 0;
    for (std::size_t i = 0; i < flags.size() && i < counts.size(); ++i)
        for (double left = counts[i]; left > 0 && next < keys_.size(); --left, ++next) {
            const auto bits = static_cast<u32>(static_cast<i64>(flags[i]));
            keys_[next].interpolation = interpolationOf(bits);
            if (keys_[next].interpolation != Interpolation::Cubic || data.size() < 4 * i + 4)
                continue;
            keys_[next].slope = data[4 * i];
            keys_[next].nextSlope = data[4 * i + 1];
            hasWeights_ |= (bits & weights) != 0;
        }
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
    const double duration = times_[after] - times_[after - 1];
    const double t = (seconds - times_[after - 1]) / duration;
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
    // The cubic Hermite polynomial.
    const double u = 1 - t;
    return u * u * (1 + 2 * t) * from.value + t * t * (1 + 2 * u) * to.value +
           t * u * duration * (u * from.slope - t * from.nextSlope);
}

bool FbxCurve::isVarying() const {
    const auto isSame = [&](const Key& key) {
        const bool isFlat = key.interpolation != Interpolation::Cubic || (key.slope == 0 && key.nextSlope == 0);
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
        const double slope = (keys_[i + 1].value - from.value) / (times_[i + 1] - times_[i]);
        const bool isStraight = from.interpolation == Interpolation::Linear ||
                                (from.interpolation == Interpolation::Cubic && std::abs(from.slope - slope) < 1e-6 &&
                                 std::abs(from.nextSlope - slope) < 1e-6);
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
