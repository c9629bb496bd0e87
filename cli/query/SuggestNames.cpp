#include "cli/query/SuggestNames.h"

#include "cli/query/ValueText.h"

#include <algorithm>
#include <vector>

namespace vrn::cli {

using namespace vor;
using namespace vor::velmo_sdk::impl;

namespace {

constexpr std::size_t maxLength = 64; // of names that are compared

// The Levenshtein distance, ignoring case.
std::size_t editDistance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j < row.size(); ++j)
        row[j] = j;
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t replaced = diagonal + (String::lower(a[i]) == String::lower(b[j]) ? 0U : 1U);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

struct Candidate {
    std::size_t distance;
    const Node* node;
};

} // namespace

std::string suggestNames(const Scene& scene, std::string_view name) {
    constexpr std::size_t maxNames = 3;
    const std::size_t maxDistance = std::max<std::size_t>(1, name.size() / 3);
    std::vector<Candidate> nearest; // the best so far, in the order of the scene where distances are equal
    for (const Node& node : scene.nodes()) {
        const std::string_view other = node.key().view();
        if (std::max(name.size(), other.size()) > maxLength)
            continue;
        const std::size_t distance = editDistance(name, other);
        if (distance > maxDistance)
            continue;
        const auto position = std::ranges::upper_bound(nearest, distance, {}, &Candidate::distance);
        nearest.insert(position, {distance, &node});
        nearest.resize(std::min(nearest.size(), maxNames));
    }
    std::string text;
    for (const Candidate& candidate : nearest)
        text += (text.empty() ? "; did you mean " : " or ") + escapedShort(candidate.node->name());
    return text.empty() ? text : text + '?';
}

} // namespace vrn::cli
