#include "inspect/path/NotFound.h"

#include "inspect/path/Messages.h"
#include "scene/core/SimilarNames.h"

#include <algorithm>
#include <set>

namespace vrn::inspect {

using namespace vor;
using namespace vor::velmo_sdk::impl;

// The names that the part of a path that leads nowhere may stand for, as a question. `found` is the length of what
// leads to something.
static std::string similarNames(const Scene& scene, const ScenePath& path, std::size_t found) {
    const auto missing = std::ranges::find_if(path.parts, [&](const PathPart& part) { return part.end > found; });
    if (missing == path.parts.end() || missing->isRange() || missing->isPattern)
        return {};
    SimilarNames similar(missing->name);
    if (missing == path.parts.begin()) {
        for (const Node& node : scene.nodes())
            similar.consider(node.name().view());
        return similar.question();
    }
    std::set<std::string, std::less<>> names; // many nodes have inputs of the same names
    const ScenePath before{.text = path.text.substr(0, found), .parts = {path.parts.begin(), missing}};
    forEachMatch(scene, before, [&](const PathMatch& match) {
        for (const Input* input : match.input ? match.input->children() : match.node->inputs())
            if (names.emplace(input->key().view()).second)
                similar.consider(input->key().view());
    });
    return similar.question();
}

std::string notFoundText(const Scene& scene, const ScenePath& path, const PathMatches& matches) {
    const std::string found = path.text.substr(0, matches.found);
    const std::string similar = similarNames(scene, path, matches.found);
    const String text = found.empty() ? String::format(messages::pathWithoutNode, similar.c_str())
                                      : String::format(messages::pathWithoutEnd, found.c_str(), similar.c_str());
    return std::string(text.view());
}

} // namespace vrn::inspect
