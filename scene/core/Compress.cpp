#include "scene/core/Compress.h"

#include "scene/core/TextEncoding.h"

#include <libdeflate.h>
#include <memory>
#include <new>

namespace vor {

namespace {

struct FreeCompressor {
    void operator()(libdeflate_compressor* compressor) const noexcept { libdeflate_free_compressor(compressor); }
};

constexpr int level = 6; // higher levels cost far more time than they save space

} // namespace

std::string compress(std::span<const std::byte> bytes) {
    const std::unique_ptr<libdeflate_compressor, FreeCompressor> compressor(libdeflate_alloc_compressor(level));
    if (!compressor)
        throw std::bad_alloc();
    const std::size_t bound = libdeflate_zlib_compress_bound(compressor.get(), bytes.size());
    const auto stream = std::make_unique_for_overwrite<u8[]>(bound);
    const std::size_t size =
        libdeflate_zlib_compress(compressor.get(), bytes.data(), bytes.size(), stream.get(), bound);
    std::string text(1 + 2 * size, '.');
    for (std::size_t i = 0; i < size; ++i) {
        const auto [high, low] = hexDigits(stream[i]);
        text[1 + 2 * i] = high;
        text[2 + 2 * i] = low;
    }
    return text;
}

} // namespace vor
