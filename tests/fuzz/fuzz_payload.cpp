// Compressed payloads: any bytes as a payload, and round trips of compressed bytes.
#include "scene/core/Decompress.h"
#include "tests/fuzz/Fuzz.h"

#include <algorithm>
#include <cstring>
#include <libdeflate.h>

using namespace vrn::fuzz;

namespace {

const u8* bytesOf(std::string_view text) { return reinterpret_cast<const u8*>(text.data()); }

struct Inflated {
    std::string bytes;
    String error;
    friend bool operator==(const Inflated&, const Inflated&) = default;
};

Inflated inflate(std::string_view payload, std::size_t maxSize) {
    Inflated result;
    const DecompressedBytes inflated = decompress(bytesOf(payload), payload.size(), result.error, maxSize);
    require(inflated.length <= maxSize, "never more than requested");
    require((inflated.length == 0) == !result.error.isEmpty(), "nothing, or no error");
    if (inflated.length != 0)
        result.bytes.assign(reinterpret_cast<const char*>(inflated.bytes.get()), inflated.length);
    return result;
}

// The same in pieces of digits.
Inflated inflateInPieces(std::string_view digits, std::size_t maxSize, std::size_t piece) {
    PayloadDecoder decoder([](char) { return false; });
    for (; !digits.empty(); digits.remove_prefix(std::min(piece, digits.size())))
        decoder.take(digits.substr(0, piece));
    Inflated result;
    result.bytes.resize(maxSize);
    result.bytes.resize(decoder.inflate(std::as_writable_bytes(std::span(result.bytes)), result.error));
    return result;
}

std::string deflated(std::string_view bytes, int level) {
    libdeflate_compressor* compressor = libdeflate_alloc_compressor(level);
    std::string stream(libdeflate_zlib_compress_bound(compressor, bytes.size()), '\0');
    stream.resize(libdeflate_zlib_compress(compressor, bytes.data(), bytes.size(), stream.data(), stream.size()));
    libdeflate_free_compressor(compressor);
    return stream;
}

void roundTrip(Bytes decisions) {
    const int level = static_cast<int>(decisions.below(10));
    const std::size_t piece = 1 + decisions.below(40);
    const std::string_view bytes = decisions.rest();
    if (bytes.empty())
        return;
    std::string digits;
    for (const char c : deflated(bytes, level)) {
        const u8 byte = static_cast<u8>(c);
        digits += (byte & 1U ? "0123456789abcdef" : "0123456789ABCDEF")[byte >> 4U];
        digits += "0123456789abcdef"[byte & 15U];
    }
    std::string payload = ".";
    for (std::size_t i = 0; i < digits.size(); ++i) {
        payload += digits[i];
        payload += i % piece == 0 ? " " : "";
    }
    const Inflated expected{std::string(bytes), String()};
    require(inflate(payload, bytes.size()) == expected, "what was compressed comes back");
    require(inflate(payload, bytes.size() + 7) == expected, "also when more is expected");
    require(inflateInPieces(digits, bytes.size(), piece) == expected, "and piece by piece");
    if (bytes.size() > 1)
        require(!inflate(payload, bytes.size() - 1).error.isEmpty(), "but not when it does not fit");
}

} // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    Bytes decisions(asText(data, size));
    if (decisions.byte() % 2 == 0) {
        roundTrip(decisions);
        return 0;
    }
    const std::size_t maxSize = 1 + decisions.below(5000);
    (void)inflate(decisions.rest(), maxSize);
    (void)inflate("." + std::string(decisions.rest()), maxSize);
    return 0;
}
