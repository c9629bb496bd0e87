// Block readers for processors with AVX2 and the bit manipulation instructions BMI1 and BMI2.
#pragma once

#include "impl/numbers/PlainBlocks.h"

namespace vor::velmo_sdk::impl {

template <class Number> [[nodiscard]] BlockReader blockReaderAvx2() noexcept;

} // namespace vor::velmo_sdk::impl
