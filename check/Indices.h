// Checks that the indices in a buffer are less than the counts of what they index.
#pragma once

#include "check/Declared.h"
#include "check/Findings.h"

namespace vrn::check {

// Reports the first index that is out of bounds. A buffer that is missing has no elements; the count of one that is
// connected to an output is unknown. Linear in the indices.
void checkIndices(const Declared& declared, Findings& findings);

} // namespace vrn::check
