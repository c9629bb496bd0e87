// Formats values other than buffers as the right-hand sides of VRN statements.
#pragma once

#include "scene/AttrData.h"

#include <string>
#include <string_view>

namespace vor::velmo_sdk::impl {

// Appends a value that reads back the same: Array and Object as empty; Null, Node and Buffer as `null`.
void appendLiteral(const AttrData& value, std::string& text);

// Whether a NaN in the value would read back with other bits. A Real reads back as the negative quiet NaN only, an
// element of a list with either sign.
[[nodiscard]] bool losesNaNBits(const AttrData& value) noexcept;

} // namespace vor::velmo_sdk::impl
