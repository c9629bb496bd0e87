// Writes compressed byte payloads, the form that Decompress.h reads.
//
//     compress(std::as_bytes(std::span(pixels)))     // ".789C..."
#pragma once

#include "scene/core/Types.h"

#include <span>
#include <string>

namespace vor {

// Returns `.` and the hexadecimal digits of a zlib stream (RFC 1950) of the bytes. Deterministic for one version of
// libdeflate. Needs memory of about three times the bytes for incompressible data; throws std::bad_alloc.
[[nodiscard]] std::string compress(std::span<const std::byte> bytes);

} // namespace vor
