// What functions for AVX-512 share: to be included by their sources alone, where the processor may have it.
#pragma once

#include "scene/core/Types.h"

#include <immintrin.h>

// GCC 12 takes what its own AVX-512 functions leave undefined on purpose for a mistake.
#if defined(__GNUC__) && !defined(__clang__)
#    pragma GCC diagnostic ignored "-Wuninitialized"
#    pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

// What InstructionSet::Avx512 stands for.
#define VRN_AVX512                                                                                                     \
    __attribute__((target("avx512f,avx512bw,avx512dq,avx512vl,avx512cd,avx512vbmi,avx512vbmi2,bmi,bmi2,popcnt")))

namespace vor {

// A table with a number for each of the 64 bytes of a register.
struct alignas(64) ByteTable {
    i8 byte[64] = {};
    template <class Value> constexpr explicit ByteTable(Value value) {
        for (int i = 0; i < 64; ++i)
            byte[i] = static_cast<i8>(value(i));
    }
};
inline constexpr ByteTable bytePositions([](int i) { return i; });

VRN_AVX512 inline __m512i load(const ByteTable& table) { return _mm512_load_si512(table.byte); }

} // namespace vor
