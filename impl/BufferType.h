// The keywords of buffers.
#pragma once

#include "scene/DataType.h"

#include <string_view>

namespace vor::velmo_sdk::impl {

// The element type of a buffer keyword, which is not case-sensitive; null for other words.
[[nodiscard]] const DataType* bufferType(std::string_view keyword);

} // namespace vor::velmo_sdk::impl
