// What has a form of its own for some sets of instructions is tested with each of them.
#pragma once

#include "scene/core/InstructionSet.h"

namespace vrn::test {

// Does something with each set that this processor has.
template <class Work> void withEachSet(Work work) {
    for (const vor::InstructionSet set :
         {vor::InstructionSet::Baseline, vor::InstructionSet::Avx2, vor::InstructionSet::Avx512}) {
        vor::limitInstructionSet(set);
        work();
    }
    vor::limitInstructionSet(vor::InstructionSet::Avx512);
}

} // namespace vrn::test
