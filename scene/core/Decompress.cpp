#include "scene/core/Decompress.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <libdeflate.h>
#include <new>

#ifdef __SSE2__
#    include <emmintrin.h>
#endif

namespace vor {

namespace {

struct FreeDecompressor {
    void operator()(libdeflate_decompressor* decompressor) const noexcept {
        libdeflate_free_decompressor(decompressor);
    }
};

// The values of hexadecimal digits; -1 for all other characters.
constexpr std::array<i8, 256> makeHexValues() noexcept {
    std::array<i8, 256> values{};
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = static_cast<i8>(String::hexValue(static_cast<char>(static_cast<u8>(i))));
    return values;
}
constexpr std::array<i8, 256> hexValues = makeHexValues();

int hexValue(char c) noexcept { return hexValues[static_cast<u8>(c)]; }

// Decodes sixteen digits to eight bytes; false if one is not a hexadecimal digit.
#ifdef __SSE2__
bool decodeSixteen(const char* text, u8* out) noexcept {
    const __m128i digits = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text));
    const __m128i decimal = _mm_sub_epi8(digits, _mm_set1_epi8('0'));
    const __m128i lowerCase = _mm_or_si128(digits, _mm_set1_epi8('a' ^ 'A'));
    const __m128i letter = _mm_sub_epi8(lowerCase, _mm_set1_epi8('a'));
    const __m128i isDecimal = _mm_cmpeq_epi8(_mm_min_epu8(decimal, _mm_set1_epi8(9)), decimal);
    const __m128i isLetter = _mm_cmpeq_epi8(_mm_min_epu8(letter, _mm_set1_epi8(5)), letter);
    if (_mm_movemask_epi8(_mm_or_si128(isDecimal, isLetter)) != 0xFFFF)
        return false;
    const __m128i letters = _mm_and_si128(isLetter, _mm_add_epi8(letter, _mm_set1_epi8(10)));
    const __m128i values = _mm_or_si128(_mm_and_si128(isDecimal, decimal), letters);
    // The first digit of each pair, the high nibble, is the low byte of a 16-bit lane.
    const __m128i bytes = _mm_or_si128(_mm_slli_epi16(values, 4), _mm_srli_epi16(values, 8));
    const __m128i packed = _mm_packus_epi16(_mm_and_si128(bytes, _mm_set1_epi16(0xFF)), bytes);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out), packed);
    return true;
}
#else
bool decodeSixteen(const char*, u8*) noexcept { return false; }
#endif

// Decodes pairs of digits up to the first other character; returns the number of bytes.
std::size_t decodeDigits(std::string_view text, u8* out) noexcept {
    std::size_t count = 0;
    while (text.size() - 2 * count >= 16 && decodeSixteen(text.data() + 2 * count, out + count))
        count += 8;
    for (; text.size() - 2 * count >= 2; ++count) {
        const int high = hexValue(text[2 * count]);
        const int low = hexValue(text[2 * count + 1]);
        if ((high | low) < 0)
            break;
        out[count] = static_cast<u8>(high * 16 + low);
    }
    return count;
}

// The `.` and the hexadecimal digits of a payload, with spaces anywhere.
bool decode(std::string_view payload, PayloadDecoder& decoder, String& error) {
    bool hasDot = false;
    while (!payload.empty()) {
        const std::size_t taken = hasDot ? decoder.takeDigits(payload) : 0;
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
    if (pendingDigit_ >= 0 && !piece.empty() && hexValue(piece[0]) >= 0) {
        const u8 byte = static_cast<u8>(pendingDigit_ * 16 + hexValue(piece[i++]));
        append({&byte, 1});
        pendingDigit_ = -1;
    }
    if (pendingDigit_ >= 0)
        return 0;
    std::array<u8, 4096> buffer;
    std::size_t count = 0;
    do {
        const std::string_view digits = piece.substr(i, 2 * buffer.size());
        count = decodeDigits(digits, buffer.data());
        append({buffer.data(), count});
        i += 2 * count;
    } while (count == buffer.size());
    if (i < piece.size() && hexValue(piece[i]) >= 0)
        pendingDigit_ = hexValue(piece[i++]);
    return i;
}

// realloc() remaps large blocks instead of copying them.
void PayloadDecoder::append(std::span<const u8> bytes) {
    if (bytes.size() > capacity_ - size_) {
        const std::size_t capacity = std::max<std::size_t>({64, size_ + bytes.size(), 2 * capacity_});
        void* memory = std::realloc(stream_.get(), capacity);
        if (!memory)
            throw std::bad_alloc();
        (void)stream_.release();
        stream_.reset(static_cast<u8*>(memory));
        capacity_ = capacity;
    }
    if (!bytes.empty())
        std::memcpy(stream_.get() + size_, bytes.data(), bytes.size());
    size_ += bytes.size();
}

std::size_t PayloadDecoder::inflate(std::span<u8> target, String& error) const {
    if (pendingDigit_ >= 0) {
        error = payloadMessages::oddDigits;
        return 0;
    }
    const std::unique_ptr<libdeflate_decompressor, FreeDecompressor> decompressor(libdeflate_alloc_decompressor());
    if (!decompressor)
        throw std::bad_alloc();
    std::size_t consumed = 0;
    std::size_t length = 0;
    const libdeflate_result result = libdeflate_zlib_decompress_ex(decompressor.get(), stream_.get(), size_,
                                                                   target.data(), target.size(), &consumed, &length);
    if (result == LIBDEFLATE_INSUFFICIENT_SPACE) {
        error = String::format(payloadMessages::tooManyBytes, static_cast<unsigned long long>(target.size()));
        return 0;
    }
    if (result != LIBDEFLATE_SUCCESS || consumed != size_ || length == 0) {
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
