// The 32-bit little-endian integers of .glb files.
#pragma once

#include "convert/shared/SceneNames.h"

#include <string>
#include <string_view>

namespace vrn::convert {

[[nodiscard]] inline std::string littleEndian32(u64 number) {
    std::string bytes(4, '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(number & 0xFF);
        number >>= 8;
    }
    return bytes;
}

// `bytes` must have 4 bytes at `offset`.
[[nodiscard]] inline u32 littleEndian32At(std::string_view bytes, std::size_t offset) {
    u32 number = 0;
    for (std::size_t i = 4; i > 0; --i)
        number = number << 8 | static_cast<unsigned char>(bytes[offset + i - 1]);
    return number;
}

} // namespace vrn::convert
