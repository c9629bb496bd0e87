// Block readers for processors with AVX-512, including byte permutation and compression (VBMI, VBMI2).
#pragma once

#include "impl/numbers/PlainBlocks.h"

namespace vor::velmo_sdk::impl {

template <class Number> [[nodiscard]] BlockReader blockReaderAvx512() noexcept;

} // namespace vor::velmo_sdk::impl
