// What a conversion cannot carry over, gathered by kind: how often, and where first.
#pragma once

#include "scene/Node.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace vrn::convert {

using namespace vor;
using namespace vor::velmo_sdk;
using namespace vor::velmo_sdk::impl;

struct Loss {
    std::string what{};
    u64 count = 0;
    String first{}; // the path of the first node or input
};

class Losses {
public:
    void add(std::string_view what, const Node& node) {
        add(what, [&] { return node.name(); });
    }
    void add(std::string_view what, const Input& input) {
        add(what, [&] { return input.label(); });
    }
    void add(std::string_view what, const String& path) {
        add(what, [&] { return path; });
    }

    // In the order in which they were first met.
    [[nodiscard]] const std::vector<Loss>& all() const noexcept { return losses_; }

private:
    // A scene may name its inputs as it likes: beyond this many kinds, the others are counted together.
    static constexpr std::size_t mostKinds = 200;
    static constexpr const char* others = "what is of further kinds";

    template <class Path> void add(std::string_view what, Path path) {
        Loss& loss = ofKind(what);
        if (loss.count++ == 0)
            loss.first = path();
    }
    Loss& ofKind(std::string_view what);

    std::vector<Loss> losses_;
    std::unordered_map<std::string, std::size_t> kinds_;
};

} // namespace vrn::convert
