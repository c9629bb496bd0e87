#include "impl/numbers/PlainBlocks.h"

#include "impl/numbers/PlainBlocksAvx2.h"
#include "impl/numbers/PlainBlocksAvx512.h"

namespace vor::velmo_sdk::impl {

#if defined(__x86_64__)

template <class Number> BlockReader blockReader(InstructionSet set) noexcept {
    switch (set) {
    case InstructionSet::Avx512:
        return blockReaderAvx512<Number>();
    case InstructionSet::Avx2:
        return blockReaderAvx2<Number>();
    default:
        return nullptr;
    }
}

#else

template <class Number> BlockReader blockReader(InstructionSet) noexcept { return nullptr; }

#endif

#define VRN_INSTANTIATE(Number) template BlockReader blockReader<Number>(InstructionSet) noexcept;
VRN_BUFFER_NUMBERS(VRN_INSTANTIATE)

} // namespace vor::velmo_sdk::impl
