// Checks that the counts of buffers and arrays agree.
#pragma once

#include "check/Declared.h"
#include "check/Findings.h"

namespace vrn::check {

// The count must be one of `countOf`. Inputs without elements count as missing, here and there. Nothing is reported if
// an alternative is connected to an output, so that its count is unknown, and for a buffer that an index buffer next to
// it points into: such a buffer may have any count. Linear in the buffers that are summed.
void checkCount(const Declared& declared, Findings& findings);

} // namespace vrn::check
