// Compressed byte payloads: a zlib stream (RFC 1950) written as a `.` and hexadecimal digits.
#pragma once

#include "scene/core/String.h"

#include <memory>

namespace vor {

// Every text that decompress() reports: name, text.
#define VRN_PAYLOAD_MESSAGES(MESSAGE)                                                                                  \
    MESSAGE(invalidCharacter, "compressed payload: invalid character '%c'")                                            \
    MESSAGE(oddDigits, "compressed payload: odd number of hexadecimal digits")                                         \
    MESSAGE(corruptData, "compressed payload: corrupt data")                                                           \
    MESSAGE(tooManyBytes, "compressed payload: more than %llu bytes")

namespace payloadMessages {
#define VRN_PAYLOAD_MESSAGE(name, text) inline constexpr char name[] = text;
VRN_PAYLOAD_MESSAGES(VRN_PAYLOAD_MESSAGE)
#undef VRN_PAYLOAD_MESSAGE
} // namespace payloadMessages

struct DecompressedBytes {
    std::unique_ptr<u8[]> bytes;
    std::size_t length = 0; // 0 is failure
};

// Inflates the payload at `data`: a `.`, then two hexadecimal digits a byte in either case, with spaces
// anywhere. Yields at most `expectedSize` bytes; fewer are fine, none is an error. On failure the
// length is 0 and `error` says why. Bytes behind the end of the stream are an error too. Takes memory
// for half the payload and for the expected size; throws std::bad_alloc when there is none.
[[nodiscard]] DecompressedBytes decompress(const u8* data, std::size_t size, String& error, std::size_t expectedSize);

} // namespace vor
