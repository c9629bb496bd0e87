// The types of inputs whose values are read directly, not with InputReader, which checks them itself.
#pragma once

#include "convert/shared/SceneNames.h"

#include <string_view>

namespace vrn::convert {

// Whether the value of an input is not of the type that the exporters take from inputs of its pattern. Empty arrays and
// inputs without a value have the right type.
[[nodiscard]] bool hasWrongType(const Input& input, std::string_view pattern);

} // namespace vrn::convert
