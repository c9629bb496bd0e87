#include "scene/core/Decompress.h"

#include "scene/core/CharBlock.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <libdeflate.h>
#include <new>

namespace vor {

namespace {

// Decodes sixteen digits to eight bytes; false if one is not a hexadecimal digit.
bool decodeSixteen(const char* text, u8* out) noexcept {
    using Lanes = CharBlock::Lanes;
    const CharBlock digits = CharBlock::load(text);
    const CharBlock::Mask isDecimal = digits.between('0', '9');
    const CharBlock::Mask isLetter = digits.lowerCase().between('a', 'f');
    if (!(isDecimal | isLetter).isAll())
        return false;
    // The low four bits of a decimal digit are its value, those of a letter are its number in the alphabet.
    const Lanes values = (digits.lanes() & u8(15)) + (isLetter.lanes() & u8(9));
    // Two digits in a lane of 16 bits: the first one is its first byte.
    using Pairs = u16 __attribute__((vector_size(CharBlock::size)));
    const auto pairs = reinterpret_cast<Pairs>(values);
    const Pairs joined = std::endian::native == std::endian::little ? pairs << 4 | pairs >> 8 : pairs >> 4 | pairs;
    using Bytes = u8 __attribute__((vector_size(CharBlock::size / 2)));
    const auto bytes = __builtin_convertvector(joined & u16(0xFF), Bytes);
    std::memcpy(out, &bytes, sizeof bytes);
    return true;
}

// Decodes pairs of digits up to the first other character; returns the number of bytes.
std::size_t decodePairs(std::string_view text, u8* out) noexcept {
    std::size_t count = 0;
    while (text.size() - 2 * count >= 16 && decodeSixteen(text.data() + 2 * count, out + count))
        count += 8;
    for (; text.size() - 2 * count >= 2; ++count) {
        const int high = String::hexValue(text[2 * count]);
        const int low = String::hexValue(text[2 * count + 1]);
        if ((high | low) < 0)
            break;
        out[count] = static_cast<u8>(high * 16 + low);
    }
    return count;
}

} // namespace

void PayloadDecoder::take(std::string_view part) {
    reserve(part.size() / 2 + 1);
    while (!part.empty() && !invalid_) {
        const std::size_t pairs = pendingDigit_ < 0 ? decodePairs(part, stream_.get() + size_) : 0;
        size_ += pairs;
        part.remove_prefix(2 * pairs);
        if (part.empty())
            break;
        const char c = part[0];
        part.remove_prefix(1);
        const int value = String::hexValue(c);
        if (value < 0 && !isSeparator_(c))
            invalid_ = c;
        if (value < 0)
            continue;
        if (pendingDigit_ >= 0)
            stream_.get()[size_++] = static_cast<u8>(pendingDigit_ * 16 + value);
        pendingDigit_ = pendingDigit_ >= 0 ? -1 : value;
    }
}

// realloc() remaps large blocks. Copying them, as a vector does, takes 15 % of the time of reading a payload.
void PayloadDecoder::reserve(std::size_t more) {
    if (more <= capacity_ - size_)
        return;
    const std::size_t capacity = std::max<std::size_t>({64, size_ + more, 2 * capacity_});
    void* memory = std::realloc(stream_.get(), capacity);
    if (!memory)
        throw std::bad_alloc();
    (void)stream_.release();
    stream_.reset(static_cast<u8*>(memory));
    capacity_ = capacity;
}

std::size_t PayloadDecoder::inflate(std::span<std::byte> target, String& error) const {
    const auto fail = [&](const String& reason) {
        error = reason;
        return std::size_t(0);
    };
    if (invalid_)
        return fail(String::format(payloadMessages::invalidCharacter, *invalid_));
    if (pendingDigit_ >= 0)
        return fail(payloadMessages::oddDigits);
    const std::unique_ptr<libdeflate_decompressor, decltype(&libdeflate_free_decompressor)> decompressor(
        libdeflate_alloc_decompressor(), libdeflate_free_decompressor);
    if (!decompressor)
        throw std::bad_alloc();
    std::size_t consumed = 0;
    std::size_t length = 0;
    const libdeflate_result result = libdeflate_zlib_decompress_ex(decompressor.get(), stream_.get(), size_,
                                                                   target.data(), target.size(), &consumed, &length);
    if (result == LIBDEFLATE_INSUFFICIENT_SPACE)
        return fail(String::format(payloadMessages::tooManyBytes, static_cast<unsigned long long>(target.size())));
    if (result != LIBDEFLATE_SUCCESS || consumed != size_ || length == 0)
        return fail(payloadMessages::corruptData);
    return length;
}

DecompressedBytes decompress(const u8* data, std::size_t size, String& error, std::size_t expectedSize) {
    std::string_view payload(reinterpret_cast<const char*>(data), size);
    payload.remove_prefix(std::min(payload.find_first_not_of(' '), size));
    if (!payload.empty() && payload[0] != '.') {
        error = String::format(payloadMessages::invalidCharacter, payload[0]);
        return {};
    }
    PayloadDecoder decoder([](char c) { return c == ' '; });
    decoder.take(payload.substr(std::min<std::size_t>(payload.size(), 1)));
    auto bytes = std::make_unique_for_overwrite<u8[]>(expectedSize);
    const std::size_t length = decoder.inflate(std::as_writable_bytes(std::span(bytes.get(), expectedSize)), error);
    return length == 0 ? DecompressedBytes() : DecompressedBytes{std::move(bytes), length};
}

} // namespace vor
