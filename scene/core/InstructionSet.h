// Which of the wide instructions this processor has.
#pragma once

namespace vor {

// The sets of instructions that there is code of its own for, the best last.
enum class InstructionSet { Baseline, Avx2, Avx512 };

// The best one that this processor has, found out once, and that is not above the limit.
[[nodiscard]] InstructionSet instructionSet() noexcept;

// For tests and measurements of what other processors do; for all threads, from the next list on.
void limitInstructionSet(InstructionSet best) noexcept;

} // namespace vor
