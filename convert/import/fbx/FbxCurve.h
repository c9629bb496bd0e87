// A curve of an FBX file: a number that changes with time.
#pragma once

#include "convert/import/fbx/FbxElement.h"

#include <span>

namespace vrn::convert {

class FbxCurve {
public:
    // A constant.
    explicit FbxCurve(double value) : fallback_(value) {}

    // Reads an `AnimationCurve`; without valid keys it is the constant.
    FbxCurve(const FbxElement& element, double fallback, double ticksPerSecond);

    [[nodiscard]] double at(double seconds) const;
    [[nodiscard]] bool isAnimated() const noexcept { return !keys_.empty(); }
    [[nodiscard]] bool isVarying() const; // whether its keys differ

    // What happens between its keys.
    [[nodiscard]] bool isStepped() const;       // nothing: a key holds until the next one
    [[nodiscard]] bool isLinear() const;        // it changes linearly, or not at all
    [[nodiscard]] double largestChange() const; // between two keys

    // Whether it has tangents with a bias, or with tension and continuity, which are read as automatic ones.
    [[nodiscard]] bool hasOtherTangents() const noexcept { return hasOtherTangents_; }

    [[nodiscard]] const std::vector<double>& times() const noexcept { return times_; } // in seconds, increasing

private:
    enum class Interpolation { Step, StepToNext, Linear, Cubic };
    struct Key {
        double value = 0;
        Interpolation interpolation = Interpolation::Linear; // to the next key
        bool isAutomatic = false;                            // its slopes depend on the keys beside it
        u32 flags = 0;
        double slopeBefore = 0; // per second
        double slopeAfter = 0;
        double weightAfter = 1.0 / 3; // the lengths of the tangents after this key and before the next one, as parts
        double weightBeforeNext = 1.0 / 3;
    };

    static Interpolation interpolationOf(u32 flags);
    void readTangents(const FbxElement& element);
    void readTangent(std::size_t key, u32 flags, std::span<const float> data);
    [[nodiscard]] double automaticSlope(std::size_t key) const;
    [[nodiscard]] double cubicAt(double seconds, std::size_t from) const;
    [[nodiscard]] double slopeBetween(std::size_t from, std::size_t to) const;

    double fallback_;
    bool hasOtherTangents_ = false;
    std::vector<double> times_{};
    std::vector<Key> keys_{};
};

} // namespace vrn::convert
