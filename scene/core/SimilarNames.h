// Finds the names that a misspelt one may stand for.
//
//     SimilarNames similar("fvo");
//     for (const std::string& name : names)
//         similar.consider(name);
//     similar.list("'");   // "'fov' or 'fvr'"
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vor {

class SimilarNames {
public:
    explicit SimilarNames(std::string_view wanted) : wanted_(wanted) {}

    // Linear in the product of the lengths, which are limited.
    void consider(std::string_view name);

    // Up to three names, the most similar first, each between two `quote`s and safe to print; empty if none is similar.
    [[nodiscard]] std::string list(std::string_view quote = "") const;

    // "; did you mean cam1 or cam2?", or nothing.
    [[nodiscard]] std::string question() const;

private:
    struct Candidate {
        std::size_t distance;
        std::string name;
    };
    std::string wanted_;
    std::vector<Candidate> nearest_; // in the order in which they were considered where distances are equal
};

} // namespace vor
