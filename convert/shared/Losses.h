// What a conversion loses, by kind, with the number of occurrences and the first one.
#pragma once

#include "convert/shared/SceneNames.h"

#include <concepts>
#include <string>
#include <unordered_map>
#include <vector>

namespace vrn::convert {

struct Loss {
    std::string what{};
    u64 count = 0;
    String first{};         // the path of the first node or input
    bool isWarning = false; // nothing is known to be lost
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

    // Computes the path only for the first occurrence.
    template <std::invocable Path> void add(std::string_view what, Path path) {
        Loss& loss = ofKind(what);
        if (loss.count++ == 0)
            loss.first = path();
    }

    // A defect of a file that its reader noticed; the text of the first one is `first`. Texts that differ only in
    // numbers and in parentheses are one kind.
    void warn(std::string_view text);

    // In the order of their first occurrence.
    [[nodiscard]] const std::vector<Loss>& all() const noexcept { return losses_; }

private:
    // Input names come from the scene, so the number of kinds is bounded; the rest is counted as one.
    static constexpr std::size_t maxKinds = 200;
    static constexpr const char* otherKinds = "other kinds";

    Loss& ofKind(std::string_view what);

    std::vector<Loss> losses_;
    std::unordered_map<std::string, std::size_t> kinds_;
};

} // namespace vrn::convert
