// Values, but for buffers, as the right-hand sides of VRN statements.
#pragma once

#include "scene/AttrData.h"

#include <string>
#include <string_view>

namespace vor::velmo_sdk::impl {

// Appends a value that is no buffer, as it is read back: containers empty, a Node as none.
void appendLiteral(const AttrData& value, std::string& text);

// Whether a NaN among the numbers would read back as another one. A Real has only one, a list also the positive one.
[[nodiscard]] bool hasForeignNaN(const AttrData& value) noexcept;

} // namespace vor::velmo_sdk::impl
