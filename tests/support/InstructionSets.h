// Runs tests once with each instruction set that has its own code paths.
#pragma once

#include "scene/core/InstructionSet.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace vrn::test {

inline constexpr vor::InstructionSet instructionSets[] = {vor::InstructionSet::Baseline, vor::InstructionSet::Vector128,
                                                          vor::InstructionSet::Avx2, vor::InstructionSet::Avx512};

// Those that this processor has. Lifts the limit of the library.
inline std::vector<vor::InstructionSet> supportedSets() {
    vor::limitInstructionSet(vor::InstructionSet::Avx512);
    std::vector<vor::InstructionSet> sets;
    std::ranges::copy_if(instructionSets, std::back_inserter(sets),
                         [](vor::InstructionSet set) { return set <= vor::instructionSet(); });
    return sets;
}

// Calls `test` once for each supported set, with the library limited to it.
template <class Test> void withEachSet(Test test) {
    for (const vor::InstructionSet set : supportedSets()) {
        vor::limitInstructionSet(set);
        test();
    }
    vor::limitInstructionSet(vor::InstructionSet::Avx512);
}

} // namespace vrn::test
