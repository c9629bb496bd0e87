#include "convert/export/GltfInfluences.h"

#include <algorithm>
#include <cmath>

namespace vrn::convert {

namespace {

// Merges the weights of duplicate joints, and sets joints without weight to 0.
void mergeJoints(std::span<u16> joints, std::span<float> weights) {
    for (std::size_t i = 0; i < joints.size(); ++i)
        for (std::size_t k = i + 1; k < joints.size(); ++k)
            if (joints[i] == joints[k] && weights[i] != 0 && weights[k] != 0) {
                weights[i] += weights[k];
                weights[k] = 0;
            }
    for (std::size_t i = 0; i < joints.size(); ++i)
        if (weights[i] == 0)
            joints[i] = 0;
}

// Scales weights to a sum of 1. Returns whether that changed them.
bool normalizeWeights(std::span<float> weights) {
    double sum = 0;
    double count = 0;
    bool isChanged = false;
    for (float& weight : weights) {
        isChanged |= weight < 0;
        weight = std::max(weight, 0.F);
        sum += static_cast<double>(weight);
        count += weight != 0 ? 1 : 0;
    }
    if (!isChanged && std::abs(sum - 1) <= 2e-7 * count)
        return false;
    if (sum == 0)
        weights[0] = 1;
    else
        for (float& weight : weights)
            weight = static_cast<float>(static_cast<double>(weight) / sum);
    return true;
}

} // namespace

std::vector<GltfInfluences> validInfluences(const std::vector<Influences>& influences, bool& isChanged) {
    std::vector<GltfInfluences> valid;
    valid.reserve(influences.size());
    for (const Influences& some : influences)
        valid.push_back({{some.joints.begin(), some.joints.end()}, {some.weights.begin(), some.weights.end()}});
    std::vector<u16> joints(4 * valid.size());
    std::vector<float> weights(4 * valid.size());
    for (std::size_t at = 0; at < valid[0].joints.size(); at += 4) {
        for (std::size_t i = 0; i < joints.size(); ++i) {
            joints[i] = valid[i / 4].joints[at + i % 4];
            weights[i] = valid[i / 4].weights[at + i % 4];
        }
        isChanged |= normalizeWeights(weights);
        mergeJoints(joints, weights);
        for (std::size_t i = 0; i < joints.size(); ++i) {
            valid[i / 4].joints[at + i % 4] = joints[i];
            valid[i / 4].weights[at + i % 4] = weights[i];
        }
    }
    return valid;
}

} // namespace vrn::convert
