// Configures RapidJSON consistently: sizes have 64 bits, and a failed allocation throws. Include this header before
// those of RapidJSON.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <new>

#define RAPIDJSON_NO_SIZETYPEDEFINE
namespace rapidjson {
using SizeType = std::size_t;
}

#include <rapidjson/rapidjson.h>

namespace vor::velmo_sdk::impl {

// For readers and writers, in place of the default allocator, which does not check for failure. Throws std::bad_alloc.
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

} // namespace vor::velmo_sdk::impl
