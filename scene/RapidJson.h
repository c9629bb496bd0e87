// The JSON library, set up alike for all who include it: lengths of texts have 64 bits, and no memory is an
// exception. This header comes before any of the library's own.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <new>

#define RAPIDJSON_NO_SIZETYPEDEFINE
namespace rapidjson {
using SizeType = std::size_t;
}

#include "scene/core/TextEncoding.h"

#include <algorithm>
#include <rapidjson/rapidjson.h>
#include <string>

namespace vor::velmo_sdk::impl {

// For its readers and writers, whose own allocator takes it for granted that there is memory. Throws
// std::bad_alloc.
struct JsonAllocator {
    static constexpr bool kNeedFree = true;

    void* Malloc(std::size_t size) { return size == 0 ? nullptr : checked(std::malloc(size)); }
    void* Realloc(void* block, std::size_t, std::size_t size) {
        if (size != 0)
            return checked(std::realloc(block, size));
        std::free(block);
        return nullptr;
    }
    static void Free(void* block) noexcept { std::free(block); }

private:
    static void* checked(void* block) {
        if (!block)
            throw std::bad_alloc();
        return block;
    }
};

// Writes a text of any bytes as a string that any terminal may show.
template <class Writer> void writeJsonText(Writer& writer, const String& text) {
    const String utf8 = toUtf8(text);
    const auto mayBeControl = [](char c) { return c == '\x7F' || c == '\xC2'; }; // all others the writer escapes
    if (std::ranges::none_of(utf8.view(), mayBeControl)) {
        writer.String(utf8.buf(), utf8.len());
        return;
    }
    const std::string quoted = quoteForJson(utf8);
    writer.RawValue(quoted.data(), quoted.size(), rapidjson::kStringType);
}

} // namespace vor::velmo_sdk::impl
