// The keywords of buffers.
#pragma once

#include "scene/DataType.h"

#include <string_view>

namespace vor::velmo_sdk::impl {

// The element type that a keyword of any case names, or null.
[[nodiscard]] const DataType* bufferType(std::string_view keyword);

} // namespace vor::velmo_sdk::impl
