// The readers of blocks for processors with AVX-512 and its byte permutations (VBMI, VBMI2).
#pragma once

#include "impl/numbers/PlainBlocks.h"

namespace vor::velmo_sdk::impl {

template <class Number> [[nodiscard]] BlockReader blockReaderAvx512() noexcept;

} // namespace vor::velmo_sdk::impl
