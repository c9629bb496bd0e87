// A curve of an FBX file: a number that changes with time.
#pragma once

#include "convert/import/fbx/FbxElement.h"

namespace vrn::convert {

class FbxCurve {
public:
    // A constant.
    explicit FbxCurve(double value) : fallback_(value) {}

    // Reads an `AnimationCurve`; without valid keys it is the constant.
    FbxCurve(const FbxElement& element, double fallback);

    [[nodiscard]] double at(double seconds) const;
    [[nodiscard]] bool isAnimated() const noexcept { return !keys_.empty(); }
    [[nodiscard]] bool isVarying() const; // whether its keys differ

    // What happens between its keys.
    [[nodiscard]] bool isStepped() const; // nothing: a key holds until the next one
    [[nodiscard]] bool isLinear() const;  // it changes linearly, or not at all
    [[nodiscard]] bool hasWeights() const noexcept { return hasWeights_; }
    [[nodiscard]] double largestChange() const; // between two keys

    [[nodiscard]] const std::vector<double>& times() const noexcept { return times_; } // in seconds, increasing

private:
    enum class Interpolation { Step, StepToNext, Linear, Cubic };
    struct Key {
        double value = 0;
        Interpolation interpolation = Interpolation::Linear; // to the next key
        double slope = 0;                                    // per second, after this key
        double nextSlope = 0;                                // before the next one
    };

    static Interpolation interpolationOf(u32 flags);
    void readTangents(const FbxElement& element);

    double fallback_;
    bool hasWeights_ = false;
    std::vector<double> times_{};
    std::vector<Key> keys_{};
};

// A time of the file in seconds.
[[nodiscard]] double fbxSeconds(double ticks);

} // namespace vrn::convert
