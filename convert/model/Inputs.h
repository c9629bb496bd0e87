// Reading the inputs of a node by what they mean, and noting what of them is lost.
//
//     InputReader reader(node, losses);
//     double roughness = reader.portion("roughness", 1);     // 0 to 1
//     Vector size = reader.numbers<3>("scale", {1, 1, 1});
//
// A path is the name of an input or `object.member`. What is not there, or of a type that does not fit, gives the
// fallback; the latter is noted as lost, and so are numbers that are not finite, also as floats, or out of range.
#pragma once

#include "convert/model/Values.h"
#include "convert/shared/Losses.h"

#include <array>
#include <optional>
#include <set>

namespace vrn::convert {

class InputReader {
public:
    InputReader(const Node& node, Losses& losses) : node_(node), losses_(losses) {}

    [[nodiscard]] const Input* find(std::string_view path) const;
    [[nodiscard]] bool has(std::string_view path) const { return find(path) != nullptr; }

    [[nodiscard]] double number(std::string_view path, double fallback) const;
    [[nodiscard]] double within(std::string_view path, double fallback, double least, double most) const;
    [[nodiscard]] double portion(std::string_view path, double fallback) const;
    [[nodiscard]] bool flag(std::string_view path, bool fallback) const;
    [[nodiscard]] std::string text(std::string_view path) const;
    template <std::size_t N>
    [[nodiscard]] std::array<double, N> numbers(std::string_view path, std::array<double, N> fallback) const {
        readNumbers(path, fallback);
        return fallback;
    }

    // The node that the input is connected or refers to.
    [[nodiscard]] const Node* node(std::string_view path) const;

private:
    [[nodiscard]] const Input* findGiven(std::string_view path) const; // null also for one without a value
    void readNumbers(std::string_view path, std::span<double> numbers) const;

    const Node& node_;
    Losses& losses_;
};

// Whether a number is finite as a float, too: the other formats have no larger ones.
[[nodiscard]] bool fitsFloat(double number);

[[nodiscard]] const Node* linkedNode(const Input* input);

// The texts that a name has in other formats: that of the input `name`, or the node's own.
[[nodiscard]] String displayName(const Node& node);

// A buffer as floats, `components` an element; empty if it is none. Doubles are rounded, which is noted if it changes
// any.
[[nodiscard]] Values<float> readFloats(const Input* input, u32 components, Losses& losses);

// A buffer of any integers as indices; nothing if it is none, or if one is negative or `limit` or more.
[[nodiscard]] std::optional<Values<u32>> readIndices(const Input* input, u64 limit);

// Patterns of inputs: `scale`, `alpha.mode`, `uvsets[].coords`.
using Patterns = std::set<std::string, std::less<>>;

// Notes every input of a node that no pattern names and that says something.
void noteOthers(const Node& node, const Patterns& carried, Losses& losses);

} // namespace vrn::convert
