// Typed access to the inputs of a node, with a loss for every number that cannot be used.
//
//     InputReader reader(node, losses);
//     double roughness = reader.unitNumber("roughness", 1);     // 0 to 1
//     Vector scale = reader.numbers<3>("scale", {1, 1, 1});
//
// A path is the name of an input, or the names of objects and a member, separated by points. Missing inputs yield the
// fallback. So do values of the wrong type, which addUnreadInputs() names, and with a loss numbers that are not finite
// as floats. Numbers out of range are clamped, with a loss.
#pragma once

#include "convert/model/Model.h"
#include "convert/model/Values.h"
#include "convert/shared/Floats.h"
#include "convert/shared/Losses.h"
#include "convert/shared/NodeInputs.h"

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
    [[nodiscard]] double clampedNumber(std::string_view path, double fallback, double min, double max) const;
    [[nodiscard]] double unitNumber(std::string_view path, double fallback) const;
    [[nodiscard]] bool boolean(std::string_view path, bool fallback) const;
    [[nodiscard]] std::string text(std::string_view path) const;
    template <std::size_t N>
    [[nodiscard]] std::array<double, N> numbers(std::string_view path, std::array<double, N> fallback) const {
        readNumbers(path, fallback);
        return fallback;
    }

    // The node that the input is connected to or refers to, or null.
    [[nodiscard]] const Node* node(std::string_view path) const;

private:
    void readNumbers(std::string_view path, std::span<double> numbers) const;

    const Node& node_;
    Losses& losses_;
};

// Losses.
inline constexpr const char* outsideUnitInterval = "numbers outside 0 to 1 (clamped)";
inline constexpr const char* furtherComponents = "further components of vectors and colours";

// The name of a node in other formats: its input `name`, or if it is empty or missing, its identifier.
[[nodiscard]] String displayName(const Node& node);

// A buffer as floats, with `components` per element; empty if there is no such buffer. Doubles are rounded, with a loss
// if that changes any.
[[nodiscard]] Values<float> readFloats(const Input* input, u32 components, Losses& losses);

// An attribute that only the application gives a meaning: an object with its `name` and a buffer of floats, `values`.
// Nothing, with a loss, if one is missing, or if the name does not start with an underscore.
[[nodiscard]] std::optional<NamedValues> readNamedValues(const Input& object, Losses& losses);

// A buffer of any integer type as indices; nothing if it is not one or if an index is not in [0, limit).
[[nodiscard]] std::optional<Values<u32>> readIndices(const Input* input, u64 limit);

// Inputs, members and elements: `scale`, `alpha.mode`, `uvsets[].coords`, `children[]`.
using InputPatterns = std::set<std::string, std::less<>>;

[[nodiscard]] InputPatterns operator+(InputPatterns a, const InputPatterns& b);

// Adds a loss for each input that matches no pattern and is neither empty nor at its default value, and for each that
// matches one, or contains what does, but has a value of the wrong type, a link where a value is read, or more
// components than are read.
void addUnreadInputs(const Node& node, const InputPatterns& known, Losses& losses);

} // namespace vrn::convert
