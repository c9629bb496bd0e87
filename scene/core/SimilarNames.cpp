#include "scene/core/SimilarNames.h"

#include "scene/core/String.h"
#include "scene/core/TextEncoding.h"

#include <algorithm>

namespace vor {

namespace {

constexpr std::size_t maxLength = 64; // of names that are compared
constexpr std::size_t maxNames = 3;

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

} // namespace

void SimilarNames::consider(std::string_view name) {
    const std::size_t maxDistance = std::max<std::size_t>(1, wanted_.size() / 3);
    if (std::max(wanted_.size(), name.size()) > maxLength || std::ranges::count(nearest_, name, &Candidate::name) != 0)
        return;
    if (std::max(wanted_.size(), name.size()) - std::min(wanted_.size(), name.size()) > maxDistance)
        return;
    // Swapped neighbours are two edits, but a single slip.
    const std::size_t distance = editDistance(wanted_, name);
    const bool isSwapped = distance == 2 && std::ranges::is_permutation(wanted_, name);
    const bool sharesNothing = distance >= std::max(wanted_.size(), name.size());
    if (sharesNothing || (distance > maxDistance && !isSwapped))
        return;
    const auto position = std::ranges::upper_bound(nearest_, distance, {}, &Candidate::distance);
    nearest_.insert(position, {distance, std::string(name)});
    nearest_.resize(std::min(nearest_.size(), maxNames));
}

std::string SimilarNames::list(std::string_view quote) const {
    std::string text;
    for (const Candidate& candidate : nearest_) {
        text.append(text.empty() ? "" : " or ").append(quote);
        text.append(escapeForTerminal(candidate.name).view()).append(quote);
    }
    return text;
}

std::string SimilarNames::question() const { return nearest_.empty() ? "" : "; did you mean " + list() + '?'; }

} // namespace vor
