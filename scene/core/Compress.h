// Compressed byte payloads, written as Decompress.h reads them.
#pragma once

#include "scene/core/Types.h"

#include <span>
#include <string>

namespace vor {

// The bytes as a zlib stream (RFC 1950) in hexadecimal digits, a `.` in front. The same bytes always give the same
// text with the same version of the compressing library. Takes memory for some three times the bytes; throws
// std::bad_alloc when there is none.
[[nodiscard]] std::string compress(std::span<const std::byte> bytes);

} // namespace vor
