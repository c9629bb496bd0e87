// Creates the nodes of an imported scene with identifiers of their own.
#pragma once

#include "convert/shared/SceneNames.h"

#include <string>
#include <string_view>
#include <unordered_map>

namespace vrn::convert {

class NodeMaker {
public:
    explicit NodeMaker(Scene& scene) : scene_(scene) {}

    // Creates a node whose identifier is derived from `name`, or from `fallback` if there is no name. The input `name`
    // keeps the name unchanged.
    Node& create(const char* type, std::string_view name, const char* fallback);

private:
    Scene& scene_;
    std::unordered_map<std::string, u64> repetitions_; // of each identifier
};

} // namespace vrn::convert
