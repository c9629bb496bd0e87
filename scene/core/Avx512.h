// Shared by the sources that use AVX-512 intrinsics; include it only there, and only on x86-64.
#pragma once

#include "scene/core/Types.h"

#include <immintrin.h>

// GCC 12 warns about the deliberately undefined operands in its own AVX-512 headers.
#if defined(__GNUC__) && !defined(__clang__)
#    pragma GCC diagnostic ignored "-Wuninitialized"
#    pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

// The extensions that InstructionSet::Avx512 requires.
#define VRN_AVX512                                                                                                     \
    __attribute__((target("avx512f,avx512bw,avx512dq,avx512vl,avx512cd,avx512vbmi,avx512vbmi2,bmi,bmi2,popcnt")))

namespace vor {

// A constant for each byte of a 64-byte register: value(i) for byte i.
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
