#include "scene/core/Decompress.h"

#include <libdeflate.h>
#include <vector>

namespace vor {

namespace {

struct FreeDecompressor {
    void operator()(libdeflate_decompressor* decompressor) const noexcept {
        libdeflate_free_decompressor(decompressor);
    }
};

// ::= '.' (hexdigit | ' ')*
[[nodiscard]] bool decodeHex(std::string_view payload, std::vector<u8>& bytes, String& error) {
    bytes.reserve(payload.size() / 2);
    bool isLead = true; // spaces may stand before the dot, too
    int high = -1;
    for (const char c : payload) {
        if (c == ' ')
            continue;
        const int value = String::hexValue(c);
        if (isLead ? c != '.' : value < 0) {
            error = String::format(payloadMessages::invalidCharacter, c);
            return false;
        }
        if (isLead) {
            isLead = false;
        } else if (high < 0) {
            high = value;
        } else {
            bytes.push_back(static_cast<u8>(high * 16 + value));
            high = -1;
        }
    }
    if (high >= 0)
        error = payloadMessages::oddDigits;
    return high < 0;
}

[[nodiscard]] DecompressedBytes inflate(const std::vector<u8>& stream, String& error, std::size_t expectedSize) {
    const std::unique_ptr<libdeflate_decompressor, FreeDecompressor> decompressor(libdeflate_alloc_decompressor());
    if (!decompressor)
        throw std::bad_alloc();
    auto bytes = std::make_unique_for_overwrite<u8[]>(expectedSize);
    std::size_t taken = 0;
    std::size_t length = 0;
    const libdeflate_result result = libdeflate_zlib_decompress_ex(decompressor.get(), stream.data(), stream.size(),
                                                                   bytes.get(), expectedSize, &taken, &length);
    if (result == LIBDEFLATE_INSUFFICIENT_SPACE) {
        error = String::format(payloadMessages::tooManyBytes, static_cast<unsigned long long>(expectedSize));
        return {};
    }
    if (result != LIBDEFLATE_SUCCESS || taken != stream.size() || length == 0) {
        error = payloadMessages::corruptData;
        return {};
    }
    return {std::move(bytes), length};
}

} // namespace

DecompressedBytes decompress(const u8* data, std::size_t size, String& error, std::size_t expectedSize) {
    std::vector<u8> stream;
    if (!decodeHex({reinterpret_cast<const char*>(data), size}, stream, error))
        return {};
    return inflate(stream, error, expectedSize);
}

} // namespace vor
