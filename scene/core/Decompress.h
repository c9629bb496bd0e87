// Reads compressed byte payloads: a zlib stream (RFC 1950) written as `.` and hexadecimal digits.
//
//     String error;
//     const DecompressedBytes result = decompress(data, size, error, 3 * width * height);
//     if (result.length == 0)
//         report(error);
//
// The result owns its bytes. Linear in the payload and the bytes; no shared state.
#pragma once

#include "scene/core/String.h"

#include <cstdlib>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

namespace vor {

// All messages about payloads: name, text.
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
    std::size_t length = 0; // 0 means failure
};

// Inflates a payload: `.`, then two hexadecimal digits per byte in either case, with spaces anywhere. Returns 1 to
// `expectedSize` bytes. On failure, which includes an empty result and bytes after the end of the stream, the length is
// 0 and `error` is the reason. Allocates half the payload plus `expectedSize`; throws std::bad_alloc.
[[nodiscard]] DecompressedBytes decompress(const u8* data, std::size_t size, String& error, std::size_t expectedSize);

// The same for a payload that arrives in parts, without the dot.
class PayloadDecoder {
public:
    // Characters for which `isSeparator` is true are skipped.
    explicit PayloadDecoder(bool (*isSeparator)(char)) noexcept : isSeparator_(isSeparator) {}

    // Decodes the digits of the next part. Ignores everything after a character that is neither digit nor separator.
    void take(std::string_view part);

    // Inflates the decoded bytes into `target`; returns the number of bytes, or 0 with the reason in `error`.
    [[nodiscard]] std::size_t inflate(std::span<std::byte> target, String& error) const;

private:
    struct Free {
        void operator()(void* memory) const noexcept { std::free(memory); }
    };
    void reserve(std::size_t more);

    bool (*isSeparator_)(char);
    std::unique_ptr<u8, Free> stream_;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
    int pendingDigit_ = -1; // the value of the first digit of a byte whose second one has not arrived; else -1
    std::optional<char> invalid_;
};

} // namespace vor
