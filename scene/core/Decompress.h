// Compressed byte payloads: a zlib stream (RFC 1950) written as a `.` and hexadecimal digits.
#pragma once

#include "scene/core/String.h"

#include <cstdlib>
#include <memory>
#include <span>
#include <string_view>

namespace vor {

// Every text that a payload may give rise to: name, text.
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

// The same for a payload that comes piece by piece.
class PayloadDecoder {
public:
    // Takes the hexadecimal digits at the start of a piece; returns how many there are.
    [[nodiscard]] std::size_t takeDigits(std::string_view piece);

    // Inflates what the digits say into `target`. Returns how many bytes that are; 0 is failure, and
    // `error` says why.
    [[nodiscard]] std::size_t inflate(std::span<u8> target, String& error) const;

private:
    struct Free {
        void operator()(void* memory) const noexcept { std::free(memory); }
    };
    void append(std::span<const u8> bytes);

    std::unique_ptr<u8, Free> stream_;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
    int high_ = -1; // the first digit of a byte whose second one has not come yet
};

} // namespace vor
