#include "impl/numbers/PlainBlocks.h"

#include "impl/numbers/PlainBlocks128.h"
#include "impl/numbers/PlainBlocksAvx2.h"
#include "impl/numbers/PlainBlocksAvx512.h"
#include "scene/core/Vector128.h"

namespace vor::velmo_sdk::impl {

template <class Number> BlockReader blockReader(InstructionSet set) noexcept {
    switch (set) {
    case InstructionSet::Baseline:
        return nullptr;
#if defined(VRN_HAS_VECTOR128)
    case InstructionSet::Vector128:
        return blockReader128<Number>();
#endif
#if defined(__x86_64__)
    case InstructionSet::Avx2:
        return blockReaderAvx2<Number>();
    case InstructionSet::Avx512:
        return blockReaderAvx512<Number>();
#endif
    default: // no other set exists for this processor
        return nullptr;
    }
}

#define VRN_INSTANTIATE(Number) template BlockReader blockReader<Number>(InstructionSet) noexcept;
VRN_BUFFER_NUMBERS(VRN_INSTANTIATE)

} // namespace vor::velmo_sdk::impl
