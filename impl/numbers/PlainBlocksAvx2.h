// The readers of blocks for processors with AVX2 and the bit operations (BMI) that came with it.
#pragma once

#include "impl/numbers/PlainBlocks.h"

namespace vor::velmo_sdk::impl {

template <class Number> [[nodiscard]] BlockReader blockReaderAvx2() noexcept;

} // namespace vor::velmo_sdk::impl
