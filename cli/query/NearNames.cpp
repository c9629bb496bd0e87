#include "cli/query/NearNames.h"

#include "cli/query/ValueText.h"

#include <algorithm>
#include <vector>

namespace vrn::cli {

using namespace vor;
using namespace vor::velmo_sdk::impl;

namespace {

constexpr std::size_t mostCharacters = 64; // of names that are compared

// How many characters have to be inserted, removed or replaced to make one text of the other, letters of both cases
// being the same (Levenshtein).
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

struct Near {
    std::size_t distance;
    const Node* node;
};

} // namespace

std::string nearNames(const Scene& scene, std::string_view name) {
    constexpr std::size_t mostNames = 3;
    const std::size_t farthest = std::max<std::size_t>(1, name.size() / 3);
    std::vector<Near> nearest; // the best ones so far, in the order of the scene where they are as good
    for (const Node& node : scene.nodes()) {
        const std::string_view other = node.key().view();
        if (std::max(name.size(), other.size()) > mostCharacters)
            continue;
        const std::size_t distance = editDistance(name, other);
        if (distance > farthest)
            continue;
        const auto behind = std::ranges::upper_bound(nearest, distance, {}, &Near::distance);
        nearest.insert(behind, {distance, &node});
        nearest.resize(std::min(nearest.size(), mostNames));
    }
    std::string text;
    for (const Near& near : nearest)
        text += (text.empty() ? "; did you mean " : " or ") + escapedShort(near.node->name());
    return text.empty() ? text : text + '?';
}

} // namespace vrn::cli
