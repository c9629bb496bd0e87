// Run-time dispatch to vector instructions.
#pragma once

namespace vor {

// Instruction sets with their own code paths, in increasing order. Vector128 is SSE4.1 or NEON.
enum class InstructionSet { Baseline, Vector128, Avx2, Avx512 };

// The best set that the processor supports, detected once, and not above the limit.
[[nodiscard]] InstructionSet instructionSet() noexcept;

// For tests and benchmarks of what lesser processors execute. Affects all threads, starting with their next list.
void limitInstructionSet(InstructionSet best) noexcept;

} // namespace vor
