// Runs tests once with each instruction set that has its own code paths.
#pragma once

#include "scene/core/InstructionSet.h"

namespace vrn::test {

// Calls `test` once for each instruction set; limiting to a set that the processor lacks has no effect.
template <class Test> void withEachSet(Test test) {
    for (const vor::InstructionSet set :
         {vor::InstructionSet::Baseline, vor::InstructionSet::Avx2, vor::InstructionSet::Avx512}) {
        vor::limitInstructionSet(set);
        test();
    }
    vor::limitInstructionSet(vor::InstructionSet::Avx512);
}

} // namespace vrn::test
