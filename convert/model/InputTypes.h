// The types of the values that the exporters take from the inputs of nodes.
#pragma once

#include "convert/shared/SceneNames.h"

#include <cstddef>
#include <map>
#include <span>
#include <string>
#include <string_view>

namespace vrn::convert {

enum class Taken { Text, Boolean, Number, Components, Buffer, Link };

struct InputUse {
    Taken taken = Taken::Text;
    std::size_t components = 0; // at least, of Components
    std::size_t most = 0;       // and at most: the rest is left out
    bool isColor = false;
};

// By pattern: `scale`, `alpha.mode`, `uvsets[].coords`.
using InputUses = std::map<std::string, InputUse, std::less<>>;

// Of all inputs that the exporters read; the same pattern means the same in all types of nodes.
[[nodiscard]] const InputUses& inputUses();

// Whether an input has no value and no link.
[[nodiscard]] bool hasNothing(const Input& input);

// Whether the value of an input is not of the type that the exporters take from inputs of its pattern. Inputs with
// nothing have the right type.
[[nodiscard]] bool hasWrongType(const Input& input, std::string_view pattern);

// The first `count` components of a vector, point, quaternion or colour. Nothing if there are fewer, and of a matrix
// with more: its first row is not a vector.
[[nodiscard]] std::span<const double> firstComponents(const AttrData& value, std::size_t count);

// Whether a value has components after the first `count` that matter: all but an alpha of 1.
[[nodiscard]] bool hasFurtherComponents(const AttrData& value, std::size_t count, bool isColor);

// The same for an input of a pattern, by what the exporters take from it.
[[nodiscard]] bool losesComponents(const Input& input, std::string_view pattern);

// Whether the exporters take a link from inputs of a pattern.
[[nodiscard]] bool takesLink(std::string_view pattern);

} // namespace vrn::convert
