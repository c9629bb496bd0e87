#include "impl/numbers/PlainBlocks.h"

#include "impl/numbers/PlainBlocksAvx2.h"
#include "impl/numbers/PlainBlocksAvx512.h"

#include <algorithm>
#include <atomic>

namespace vor::velmo_sdk::impl {

#if defined(__x86_64__)

static InstructionSet findInstructionSet() noexcept {
    __builtin_cpu_init();
    const bool hasBitInstructions =
        __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2") && __builtin_cpu_supports("popcnt");
    if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512dq") &&
        __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512vbmi") &&
        __builtin_cpu_supports("avx512vbmi2") && hasBitInstructions)
        return InstructionSet::Avx512;
    if (__builtin_cpu_supports("avx2") && hasBitInstructions)
        return InstructionSet::Avx2;
    return InstructionSet::Baseline;
}

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

static InstructionSet findInstructionSet() noexcept { return InstructionSet::Baseline; }

template <class Number> BlockReader blockReader(InstructionSet) noexcept { return nullptr; }

#endif

static std::atomic<InstructionSet> limit = InstructionSet::Avx512;

InstructionSet instructionSet() noexcept {
    static const InstructionSet best = findInstructionSet();
    return std::min(best, limit.load(std::memory_order_relaxed));
}

void limitInstructionSet(InstructionSet best) noexcept { limit.store(best, std::memory_order_relaxed); }

#define VRN_INSTANTIATE(Number) template BlockReader blockReader<Number>(InstructionSet) noexcept;
VRN_BUFFER_NUMBERS(VRN_INSTANTIATE)

} // namespace vor::velmo_sdk::impl
