#include "scene/core/Decompress.h"

#include <array>
#include <libdeflate.h>
#include <new>

namespace vor {

namespace {

struct FreeDecompressor {
    void operator()(libdeflate_decompressor* decompressor) const noexcept {
        libdeflate_free_decompressor(decompressor);
    }
};

// The value of each hexadecimal digit; -1 for every other character.
constexpr std::array<i8, 256> hexValues = [] {
    std::array<i8, 256> values{};
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = static_cast<i8>(String::hexValue(static_cast<char>(static_cast<u8>(i))));
    return values;
}();

int hexValue(char c) noexcept { return hexValues[static_cast<u8>(c)]; }

// ::= '.' (hexdigit | ' ')*   and spaces before the dot
bool decode(std::string_view payload, PayloadDecoder& decoder, String& error) {
    bool hasDot = false;
    while (!payload.empty()) {
        std::size_t taken = hasDot ? decoder.takeDigits(payload) : 0;
        if (taken == 0 && payload[0] != ' ' && (hasDot || payload[0] != '.')) {
            error = String::format(payloadMessages::invalidCharacter, payload[0]);
            return false;
        }
        hasDot = hasDot || payload[0] == '.';
        payload.remove_prefix(taken == 0 ? 1 : taken);
    }
    return true;
}

} // namespace

std::size_t PayloadDecoder::takeDigits(std::string_view piece) {
    std::size_t i = 0;
    if (high_ >= 0 && !piece.empty() && hexValue(piece[0]) >= 0) {
        stream_.push_back(static_cast<u8>(high_ * 16 + hexValue(piece[i++])));
        high_ = -1;
    }
    if (high_ >= 0)
        return 0;
    std::array<u8, 512> some;
    std::size_t count = 0;
    do {
        for (count = 0; count < some.size() && i + 1 < piece.size(); ++count, i += 2) {
            const int high = hexValue(piece[i]);
            const int low = hexValue(piece[i + 1]);
            if ((high | low) < 0)
                break;
            some[count] = static_cast<u8>(high * 16 + low);
        }
        stream_.insert(stream_.end(), some.begin(), some.begin() + static_cast<std::ptrdiff_t>(count));
    } while (count == some.size());
    if (i < piece.size() && hexValue(piece[i]) >= 0)
        high_ = hexValue(piece[i++]);
    return i;
}

std::size_t PayloadDecoder::inflate(std::span<u8> target, String& error) const {
    if (high_ >= 0) {
        error = payloadMessages::oddDigits;
        return 0;
    }
    const std::unique_ptr<libdeflate_decompressor, FreeDecompressor> decompressor(libdeflate_alloc_decompressor());
    if (!decompressor)
        throw std::bad_alloc();
    std::size_t taken = 0;
    std::size_t length = 0;
    const libdeflate_result result = libdeflate_zlib_decompress_ex(decompressor.get(), stream_.data(), stream_.size(),
                                                                   target.data(), target.size(), &taken, &length);
    if (result == LIBDEFLATE_INSUFFICIENT_SPACE) {
        error = String::format(payloadMessages::tooManyBytes, static_cast<unsigned long long>(target.size()));
        return 0;
    }
    if (result != LIBDEFLATE_SUCCESS || taken != stream_.size() || length == 0) {
        error = payloadMessages::corruptData;
        return 0;
    }
    return length;
}

DecompressedBytes decompress(const u8* data, std::size_t size, String& error, std::size_t expectedSize) {
    PayloadDecoder decoder;
    if (!decode({reinterpret_cast<const char*>(data), size}, decoder, error))
        return {};
    auto bytes = std::make_unique_for_overwrite<u8[]>(expectedSize);
    const std::size_t length = decoder.inflate({bytes.get(), expectedSize}, error);
    return length == 0 ? DecompressedBytes() : DecompressedBytes{std::move(bytes), length};
}

} // namespace vor
