// The transforms of imported nodes.
#pragma once

#include "convert/shared/Losses.h"
#include "convert/shared/Transform.h"

namespace vrn::convert {

// Sets `translation`, `rotation` and `scale`; those that change nothing only if `isAnimated`, for the channels of an
// animation to set.
void setTrs(Node& node, const Trs& trs, bool isAnimated);

// Decomposes a matrix if that is exact, or if the node is animated; otherwise sets `transform`. The shear of an
// animated node is lost.
void setMatrix(Node& node, const Matrix& matrix, bool isAnimated, Losses& losses);

} // namespace vrn::convert
