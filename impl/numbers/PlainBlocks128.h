// Block readers for processors with SSE4.1 or NEON.
#pragma once

#include "impl/numbers/PlainBlocks.h"

namespace vor::velmo_sdk::impl {

template <class Number> [[nodiscard]] BlockReader blockReader128() noexcept;

} // namespace vor::velmo_sdk::impl
