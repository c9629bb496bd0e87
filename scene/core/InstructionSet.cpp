#include "scene/core/InstructionSet.h"

#include <algorithm>
#include <atomic>

namespace vor {

#if defined(__x86_64__)

static InstructionSet findInstructionSet() noexcept {
    __builtin_cpu_init();
    const bool hasBitInstructions =
        __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2") && __builtin_cpu_supports("popcnt");
    if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512dq") &&
        __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512vbmi") &&
        __builtin_cpu_supports("avx512vbmi2") && __builtin_cpu_supports("avx512cd") && hasBitInstructions)
        return InstructionSet::Avx512;
    if (__builtin_cpu_supports("avx2") && hasBitInstructions)
        return InstructionSet::Avx2;
    if (__builtin_cpu_supports("sse4.1"))
        return InstructionSet::Vector128;
    return InstructionSet::Baseline;
}

#elif defined(__aarch64__) && !defined(__AARCH64EB__)

static InstructionSet findInstructionSet() noexcept { return InstructionSet::Vector128; } // NEON is mandatory

#else

static InstructionSet findInstructionSet() noexcept { return InstructionSet::Baseline; }

#endif

static std::atomic<InstructionSet> limit = InstructionSet::Avx512;

InstructionSet instructionSet() noexcept {
    static const InstructionSet best = findInstructionSet();
    return std::min(best, limit.load(std::memory_order_relaxed));
}

void limitInstructionSet(InstructionSet best) noexcept { limit.store(best, std::memory_order_relaxed); }

} // namespace vor
